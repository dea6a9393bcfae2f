// Out-of-line constructors and destructors: the interfaces' type
// information and vtables live in this library, as providers expect.
#include <Pegasus/Provider/CIMProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>

PEGASUS_NAMESPACE_BEGIN

CIMProvider::CIMProvider() = default;
CIMProvider::~CIMProvider() = default;

CIMInstanceProvider::CIMInstanceProvider() = default;
CIMInstanceProvider::~CIMInstanceProvider() = default;

CIMMethodProvider::CIMMethodProvider() = default;
CIMMethodProvider::~CIMMethodProvider() = default;

CIMAssociationProvider::CIMAssociationProvider() = default;
CIMAssociationProvider::~CIMAssociationProvider() = default;

PEGASUS_NAMESPACE_END
