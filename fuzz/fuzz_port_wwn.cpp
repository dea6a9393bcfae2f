// WWN key texts: the reader gives what the "%016LX" scan always gave (glibc reads it as "%16llX"),
// and every WWN it writes reads back to itself.
#include <QEL_PortWWN.h>
#include <QEL_ProviderFrame.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Pegasus;
    const std::string text(reinterpret_cast<const char*>(data), size);
    unsigned long long expected = QEL_ALL_PORTS;
    sscanf(text.c_str(), "%16llX", &expected);
    if (QEL_scanWWN(text.c_str()) != expected)
        __builtin_trap();

    Uint64 wwn = 0;
    std::memcpy(&wwn, data, size < sizeof(wwn) ? size : sizeof(wwn));
    const String written = QEL_wwnText(wwn);
    if (written.size() != 16 || QEL_scanWWN((const char*)written.getCString()) != wwn)
        __builtin_trap();
    return 0;
}
