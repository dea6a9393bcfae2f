// Object path texts: parsing either throws a Pegasus exception or gives a path whose
// text form parses back to an identical path.
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find('\0') != std::string::npos)
        return 0;
    try
    {
        const Pegasus::CIMObjectPath path{Pegasus::String(text.c_str())};
        const Pegasus::CIMObjectPath again{path.toString()};
        if (!again.identical(path))
            __builtin_trap();
    }
    catch (const Pegasus::Exception&)
    {
    }
    return 0;
}
