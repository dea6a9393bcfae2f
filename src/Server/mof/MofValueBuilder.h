// Turns a MOF literal into a CIMValue of the type its target declares
// (property, parameter default, qualifier): integer ranges, real numbers,
// datetime and object-path strings, char16, arrays and aliases.
#ifndef QEL_Server_MofValueBuilder_h
#define QEL_Server_MofValueBuilder_h

#include <functional>
#include <string>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include "MofSyntax.h"

PEGASUS_NAMESPACE_BEGIN

// What a literal is converted to.
struct MofValueTarget
{
    CIMType type = CIMTYPE_BOOLEAN;
    bool isArray = false;
    Uint32 arraySize = 0;  // fixed-size arrays: the required length
    std::string what;      // for messages, e.g. "property 'Speed'"
};

class MofValueBuilder
{
public:
    // Finds the object path an instance alias ($name) stands for.
    typedef std::function<bool(const std::string& alias, CIMObjectPath& path)> AliasLookup;

    MofValueBuilder(const std::string& sourceName, const AliasLookup& aliases);

    // Throws MofError at the literal's position when it does not fit.
    CIMValue build(const MofLiteral& literal, const MofValueTarget& target) const;

private:
    CIMValue _scalar(const MofLiteral& literal, const MofValueTarget& target) const;
    CIMValue _integer(const MofLiteral& literal, const MofValueTarget& target) const;
    CIMValue _real(const MofLiteral& literal, const MofValueTarget& target) const;
    CIMValue _string(const MofLiteral& literal, const MofValueTarget& target) const;
    [[noreturn]] void _fail(const MofLiteral& at, const std::string& what) const;
    [[noreturn]] void _mismatch(const MofLiteral& at, const MofValueTarget& target) const;

    std::string _source;
    AliasLookup _aliases;
};

PEGASUS_NAMESPACE_END

#endif
