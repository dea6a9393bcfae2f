// qel-cimserver's configuration file: a text either stops with a "file:line: ..." error or
// gives settings whose --print-config report, read back as a configuration file, gives the
// same settings again.
#include <Server/main/ConfigFile.h>

#include <cstddef>
#include <cstdint>
#include <string>

using namespace qel::server;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    ServerCommandLine first;
    try
    {
        applyConfigText(text, "fuzz.conf", first);
    }
    catch (const CommandLineError& e)
    {
        if (std::string(e.what()).compare(0, 10, "fuzz.conf:") != 0)
            __builtin_trap();
        return 0;
    }
    ServerCommandLine again;
    try
    {
        applyConfigText(settingsReport(first), "report.conf", again);
    }
    catch (const CommandLineError&)
    {
        __builtin_trap();
    }
    for (const ServerOption& option : serverOptions())
        if (option.show && option.show(first) != option.show(again))
            __builtin_trap();
    return 0;
}
