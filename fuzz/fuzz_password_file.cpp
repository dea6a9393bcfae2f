// Any bytes as a password file: parsing either refuses them with a PasswordFileError or
// gives users with valid names, each found by its name, and a file whose written form
// parses back to the same users and hashes.
#include <Server/auth/PasswordFile.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using qel::auth::PasswordFile;
    const std::string text(reinterpret_cast<const char*>(data), size);
    try
    {
        const PasswordFile file = PasswordFile::parse(text, "fuzz");
        for (const auto& e : file.entries())
            if (!PasswordFile::validUserName(e.user) || file.find(e.user) != &e)
                __builtin_trap();
        const PasswordFile again = PasswordFile::parse(file.format(), "again");
        if (again.entries().size() != file.entries().size())
            __builtin_trap();
        for (size_t i = 0; i < file.entries().size(); ++i)
            if (again.entries()[i].user != file.entries()[i].user ||
                again.entries()[i].hash != file.entries()[i].hash)
                __builtin_trap();
    }
    catch (const qel::auth::PasswordFileError&)
    {
    }
    return 0;
}
