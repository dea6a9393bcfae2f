// Compiles MOF into a ClassRepository: qualifier declarations, classes and
// static instances, following #pragma include (relative to the including
// file) and #pragma namespace. The first problem stops the compilation with
// a MofError ("file:line:column: problem"); what was added before it stays
// in the repository.
//
// #pragma namespace("root/x") holds from where it stands to the end of its
// file; an included file starts in the namespace of the line that includes
// it. #pragma locale and instancelocale are accepted and change nothing.
#ifndef QEL_Server_MofCompiler_h
#define QEL_Server_MofCompiler_h

#include <map>
#include <string>
#include <vector>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include "MofError.h"
#include "MofSyntax.h"

PEGASUS_NAMESPACE_BEGIN

class ClassRepository;

class MofCompiler
{
public:
    explicit MofCompiler(
        ClassRepository& repo, const CIMNamespaceName& defaultNamespace = "root/cimv2");
    ~MofCompiler();

    // A file that cannot be read gives a MofError at line 0, column 0.
    void compileFile(const std::string& path);
    // Includes are looked for next to sourceName (the current directory
    // when it names none).
    void compileString(const std::string& text, const std::string& sourceName);

    // What this compiler has added so far.
    struct Counts
    {
        Uint32 files = 0;
        Uint32 qualifierDecls = 0;
        Uint32 classes = 0;
        Uint32 instances = 0;
    };
    const Counts& counts() const { return _counts; }

private:
    struct File;

    void _compile(
        const std::string& text, const std::string& sourceName, const std::string& identity,
        const CIMNamespaceName& ns);
    void _production(File& f, const MofProduction& p);
    void _pragma(File& f, const MofPragmaSyntax& p);
    void _include(File& f, const MofPragmaSyntax& p);
    void _qualifierDecl(File& f, const MofQualifierDeclSyntax& d);
    void _class(File& f, const MofClassSyntax& c);
    void _instance(File& f, const MofInstanceSyntax& s);

    ClassRepository& _repo;
    CIMNamespaceName _defaultNamespace;
    std::vector<std::string> _includeStack;
    // Instance aliases ($name, compared ignoring case) of this compiler.
    std::map<std::string, CIMObjectPath> _aliases;
    Counts _counts;
};

PEGASUS_NAMESPACE_END

#endif
