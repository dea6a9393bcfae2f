// Helpers shared by the MOF and repository tests.
#ifndef QEL_Tests_MofTestSupport_h
#define QEL_Tests_MofTestSupport_h

#include <string>
#include <Pegasus/Common/CIMName.h>
#include "ClassRepository.h"

namespace moftest
{

extern const char* const testNamespace;   // "root/test"

std::string schemaDir();
std::string readText(const std::string& path);

// A repository whose root/test namespace holds the schema's qualifier
// declarations.
void loadQualifiers(Pegasus::ClassRepository& repo);

// Compiles text as "test.mof" into root/test (after loadQualifiers).
void compile(Pegasus::ClassRepository& repo, const std::string& text);

// A scratch directory, removed with its files at the end of the test.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    const std::string& path() const { return _path; }
    // Writes path()/name (creating sub-directories) and returns its path.
    std::string write(const std::string& name, const std::string& text) const;

private:
    std::string _path;
};

}

#endif
