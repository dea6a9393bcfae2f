// Certificate map files: parsing either throws CertificateMapError or gives a map whose
// written form parses back to the same mappings.
#include <Server/auth/CertificateMap.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    try
    {
        const qel::auth::CertificateMap map = qel::auth::CertificateMap::parse(text, "fuzz");
        const qel::auth::CertificateMap again =
            qel::auth::CertificateMap::parse(map.format(), "again");
        if (again.entries().size() != map.entries().size())
            __builtin_trap();
        for (size_t i = 0; i < map.entries().size(); ++i)
        {
            const auto& a = map.entries()[i];
            const auto& b = again.entries()[i];
            if (a.user != b.user || a.fingerprint != b.fingerprint || a.note != b.note ||
                again.find(a.fingerprint) != &b)
                __builtin_trap();
        }
    }
    catch (const qel::auth::CertificateMapError&)
    {
    }
    return 0;
}
