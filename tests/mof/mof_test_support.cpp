#include "mof_test_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include "MofCompiler.h"

namespace moftest
{

const char* const testNamespace = "root/test";

std::string schemaDir() { return QEL_SCHEMA_DIR; }

std::string readText(const std::string& path)
{
    std::ifstream in(path.c_str(), std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void loadQualifiers(Pegasus::ClassRepository& repo)
{
    Pegasus::MofCompiler compiler(repo, testNamespace);
    compiler.compileFile(schemaDir() + "/qualifiers.mof");
}

void compile(Pegasus::ClassRepository& repo, const std::string& text)
{
    Pegasus::MofCompiler compiler(repo, testNamespace);
    compiler.compileString(text, "test.mof");
}

TempDir::TempDir()
{
    char tmpl[] = "/tmp/qel-moftest-XXXXXX";
    if (!::mkdtemp(tmpl))
        throw std::runtime_error("mkdtemp failed");
    _path = tmpl;
}

TempDir::~TempDir()
{
    std::error_code ec;
    std::filesystem::remove_all(_path, ec);
}

std::string TempDir::write(const std::string& name, const std::string& text) const
{
    const std::filesystem::path p = std::filesystem::path(_path) / name;
    std::filesystem::create_directories(p.parent_path());
    std::ofstream out(p.string().c_str(), std::ios::binary);
    out << text;
    return p.string();
}

}
