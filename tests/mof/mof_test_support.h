// Helpers shared by the MOF and repository tests.
#ifndef QEL_Tests_MofTestSupport_h
#define QEL_Tests_MofTestSupport_h

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include "ClassRepository.h"
#include "MofCompiler.h"

namespace moftest
{

inline const char* const testNamespace = "root/test";

inline std::string schemaDir()
{
    return QEL_SCHEMA_DIR;
}

// Gives root/test of repo the schema's qualifier declarations.
inline void loadQualifiers(Pegasus::ClassRepository& repo)
{
    Pegasus::MofCompiler(repo, testNamespace).compileFile(schemaDir() + "/qualifiers.mof");
}

// Compiles text as "test.mof" into root/test (after loadQualifiers).
inline void compile(Pegasus::ClassRepository& repo, const std::string& text)
{
    Pegasus::MofCompiler(repo, testNamespace).compileString(text, "test.mof");
}

// A scratch directory, removed with its files at the end of the test.
class TempDir
{
public:
    TempDir()
    {
        char tmpl[] = "/tmp/qel-moftest-XXXXXX";
        if (!::mkdtemp(tmpl))
            throw std::runtime_error("mkdtemp failed");
        _path = tmpl;
    }

    ~TempDir()
    {
        std::error_code ec;
        std::filesystem::remove_all(_path, ec);
    }

    const std::string& path() const { return _path; }

    // Writes path()/name (creating sub-directories) and returns its path.
    std::string write(const std::string& name, const std::string& text) const
    {
        const std::filesystem::path p = std::filesystem::path(_path) / name;
        std::filesystem::create_directories(p.parent_path());
        std::ofstream(p.string().c_str(), std::ios::binary) << text;
        return p.string();
    }

private:
    std::string _path;
};

}  // namespace moftest

#endif
