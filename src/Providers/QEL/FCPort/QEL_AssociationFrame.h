//%/////////////////////////////////////////////////////////////////////////////
// QEL_AssociationFrame: the seven read requests of the module's association
// providers (QEL_FCPortSFPProvider, QEL_FCPortElementStatisticalDataProvider),
// written once.
//
// What differs between the two providers is data: class and role names, the
// result classes an associator request may ask for and the direction rules,
// the access-refusal line numbers and the trace texts (with their spacing, as
// the array's log readers know them). Each provider describes itself in one
// QEL_AssociationProfile and hands its four list builders to the frame
// through QEL_AssociationFrame::Lists.
//
//   Request order     entry trace, argument trace (association requests),
//                     session check, parameter check, list build, then
//                     processing -> deliver* -> complete and the exit trace.
//   Refusals          a refused association request is traced at level 2 and
//                     returns without touching the handler and without an
//                     exception.
//   Association ends  the FC port is always the first reference; both ends
//                     are re-hosted to the provider's host name and keep their
//                     namespace (QEL_Common::buildAssocPath / buildAssocInstance).
//%/////////////////////////////////////////////////////////////////////////////

#ifndef QEL_AssociationFrame_h
#define QEL_AssociationFrame_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "QEL_ProviderFrame.h"

PEGASUS_NAMESPACE_BEGIN

// The line number and trace texts of one request of one provider. The texts
// are printf formats for log_message; entry and exit are level 4, the
// argument line level 4, the refusal line level 2.
struct QEL_AssociationRequestTexts
{
    Uint32 line;  // carried by the access refusal
    const char* entry;
    const char* arguments;  // null: the request traces no arguments
    const char* refused;    // null: the request is never refused
    const char* exit;
};

// Everything one association provider says about itself.
struct QEL_AssociationProfile
{
    // Source name carried by the access refusals.
    const char* sourceName;

    // The CIM parent of the association class, accepted as the result class
    // of references.
    const char* parentClass;

    // Reference names: the FC port end and the other end.
    const char* portRole;
    const char* otherRole;

    // Result classes an associator request may name (null-terminated), and
    // those refused when the request starts at the port end or at the other
    // end (null-terminated).
    const char* const* acceptedResultClasses;
    const char* const* refusedFromPort;
    const char* const* refusedFromOther;

    // references / referenceNames from the other end: true takes every
    // related port, false only the first one.
    bool everyPortFromOtherEnd;

    QEL_AssociationRequestTexts associators;
    QEL_AssociationRequestTexts associatorNames;
    QEL_AssociationRequestTexts references;
    QEL_AssociationRequestTexts referenceNames;
    QEL_AssociationRequestTexts getInstance;
    QEL_AssociationRequestTexts enumerateInstances;
    QEL_AssociationRequestTexts enumerateInstanceNames;
};

class QEL_AssociationFrame
{
public:
    // The four list builders of a provider, as the frame calls them.
    class Lists
    {
    public:
        virtual ~Lists() {}

        // The objects at the far end of objectName.
        virtual Array<CIMInstance> relatedInstances(
            const OperationContext& context, const CIMObjectPath& objectName,
            const Boolean includeQualifiers, const Boolean includeClassOrigin,
            const CIMPropertyList& propertyList) = 0;

        // Their paths, in the same order.
        virtual Array<CIMObjectPath>
        relatedInstanceNames(const OperationContext& context, const CIMObjectPath& objectName) = 0;

        // Every association instance; objectName is the getInstance
        // reference, or an empty path.
        virtual Array<CIMInstance> instances(
            const CIMObjectPath& objectName, const Boolean includeQualifiers,
            const Boolean includeClassOrigin, const CIMPropertyList& propertyList) = 0;

        // Their paths, in the same order.
        virtual Array<CIMObjectPath> instanceNames() = 0;
    };

    // The frame works on the provider's own members, set by initialize; it
    // keeps references only and lives for one request.
    QEL_AssociationFrame(
        const QEL_AssociationProfile& profile, const String& messagePrefix, CIMOMHandle& cimom,
        const CIMName& associationClass, const CIMName& portClass, const CIMName& otherClass,
        const String& hostName);

    void associators(
        Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler) const;

    void associatorNames(
        Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, ObjectPathResponseHandler& handler) const;

    void references(
        Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        ObjectResponseHandler& handler) const;

    void referenceNames(
        Lists& lists, const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler) const;

    void getInstance(
        Lists& lists, const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler) const;

    void enumerateInstances(
        Lists& lists, const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler) const;

    void enumerateInstanceNames(
        Lists& lists, const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler) const;

    // True when the request is to be refused. method is the request's name:
    // "associators", "associatorNames", "references" or "referenceNames".
    Boolean _invalidParms(
        const CIMObjectPath& objectName, const String& role, const String& resultRole,
        const CIMName& resultClass, const String& method) const;

    // The association's path: the port end first, the other end second.
    CIMObjectPath
    _buildAssociationName(const CIMObjectPath& port, const CIMObjectPath& other) const;

    // The association instance, from the stored class definition.
    CIMInstance _buildAssociationInstance(
        const CIMObjectPath& port, const CIMObjectPath& other, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList) const;

    // The paths of instances, in the same order: what the name lists of the
    // providers are made of.
    static Array<CIMObjectPath> pathsOf(const Array<CIMInstance>& instances);

private:
    // Entry trace, argument trace when given, session check.
    void _open(const QEL_AssociationRequestTexts& texts, const OperationContext& context) const;

    // The opening of the four association requests: entry trace, the
    // argument line with the texts given, session check, then the parameter
    // check of method. False when the request is refused; the caller then
    // writes its refusal line and returns without touching the handler.
    template <typename... Texts>
    bool _openAssociation(
        const QEL_AssociationRequestTexts& texts, const OperationContext& context,
        const CIMObjectPath& objectName, const String& role, const String& resultRole,
        const CIMName& resultClass, const char* method, Texts... argumentTexts) const;

    // Which end objectName names.
    bool _isPortEnd(const CIMObjectPath& objectName) const;
    bool _isOtherEnd(const CIMObjectPath& objectName) const;

    // The related paths that references / referenceNames turn into
    // associations, as (port, other) pairs in delivery order; calls build
    // for each pair.
    template <typename Build>
    void _forEachReference(
        const CIMObjectPath& objectName, const Array<CIMObjectPath>& related, Build&& build) const;

    const QEL_AssociationProfile& _profile;
    const String& _messagePrefix;
    CIMOMHandle& _cimom;
    const CIMName& _associationClass;
    const CIMName& _portClass;
    const CIMName& _otherClass;
    const String& _hostName;
};

PEGASUS_NAMESPACE_END

#endif
