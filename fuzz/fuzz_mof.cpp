// MOF text: the parser either reads every production or reports a MofError.
#include <Server/mof/MofError.h>
#include <Server/mof/MofParser.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    try
    {
        Pegasus::MofParser parser(text, "fuzz.mof");
        for (int i = 0; i < 100000; ++i)
            if (parser.next().kind == Pegasus::MofProduction::End)
                break;
    }
    catch (const Pegasus::Exception&)
    {
    }
    return 0;
}
