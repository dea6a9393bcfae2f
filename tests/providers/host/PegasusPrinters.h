// How GoogleTest prints object-model values in failure messages.
#ifndef QEL_TESTS_PegasusPrinters_h
#define QEL_TESTS_PegasusPrinters_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <ostream>

PEGASUS_NAMESPACE_BEGIN

inline void PrintTo(const CIMValue& value, std::ostream* os)
{
    if (value.isNull())
    {
        *os << "null " << cimTypeToString(value.getType()) << (value.isArray() ? "[]" : "");
        return;
    }
    *os << cimTypeToString(value.getType()) << (value.isArray() ? "[] " : " ")
        << (const char*)value.toString().getCString();
}

inline void PrintTo(const CIMObjectPath& path, std::ostream* os)
{
    *os << (const char*)path.toString().getCString();
}

PEGASUS_NAMESPACE_END

#endif
