// qel-mofcheck: compiles MOF files the way the server loads its schema and
// reports the first error as file:line:column. Exit status 0 when all
// compile, 1 on a MOF error, 2 on a usage error.
#include <cstring>
#include <iostream>
#include <string>
#include <vector>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>
#include "ClassRepository.h"
#include "MofCompiler.h"
#include "MofText.h"

PEGASUS_USING_PEGASUS;

namespace
{

const char* kSynopsis = "qel-mofcheck [-n NAMESPACE] [--list] FILE.mof...\n";

int usage()
{
    std::cerr << "usage: " << kSynopsis << "(qel-mofcheck --help for more)\n";
    return 2;
}

int help()
{
    std::cout << "NAME\n"
                 "  qel-mofcheck - compile MOF files as the CIM server loads its schema\n"
                 "\n"
                 "SYNOPSIS\n  "
              << kSynopsis
              << "  qel-mofcheck --help\n"
                 "\n"
                 "DESCRIPTION\n"
                 "  Compiles the files in order into an empty repository, with the compiler\n"
                 "  qel-cimserver uses for --schema, and reports the first error as\n"
                 "  FILE:LINE:COLUMN: what is wrong. On success it prints the number of files,\n"
                 "  qualifier declarations, classes and instances compiled. #pragma include and\n"
                 "  #pragma namespace are followed as the server follows them.\n"
                 "\n"
                 "OPTIONS\n"
                 "  -n NAMESPACE   namespace before any #pragma namespace (default root/cimv2)\n"
                 "  --list         also print the classes per namespace, with the number of\n"
                 "                 instances of each class and its subclasses\n"
                 "  -h, --help     this text\n"
                 "\n"
                 "EXIT STATUS\n"
                 "  0  every file compiled\n"
                 "  1  a MOF error, or a file could not be read\n"
                 "  2  wrong command line or namespace name\n"
                 "\n"
                 "SEE ALSO\n"
                 "  qel-cimserver --help\n";
    return 0;
}

void list(const ClassRepository& repo)
{
    const Array<CIMNamespaceName> namespaces = repo.enumerateNamespaces();
    for (Uint32 i = 0; i < namespaces.size(); i++)
    {
        std::cout << namespaces[i].getString() << "\n";
        const Array<CIMName> classes = repo.enumerateClassNames(namespaces[i], CIMName(), true);
        for (Uint32 j = 0; j < classes.size(); j++)
        {
            const Uint32 count = repo.enumerateInstances(namespaces[i], classes[j]).size();
            std::cout << "  " << classes[j].getString();
            if (count)
                std::cout << " (" << count << " instances with subclasses)";
            std::cout << "\n";
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    std::string ns = "root/cimv2";
    bool doList = false;
    std::vector<std::string> files;
    for (int i = 1; i < argc; i++)
    {
        const std::string arg = argv[i];
        if (arg == "-h" || arg == "--help")
            return help();
        if (arg == "-n")
        {
            if (i + 1 >= argc)
                return usage();
            ns = argv[++i];
        }
        else if (arg == "--list")
            doList = true;
        else if (!arg.empty() && arg[0] == '-')
            return usage();
        else
            files.push_back(arg);
    }
    if (files.empty())
        return usage();

    try
    {
        const String nsText = mofString(ns);
        if (!CIMNamespaceName::legal(nsText))
        {
            std::cerr << "qel-mofcheck: invalid namespace name " << quoted(ns) << "\n";
            return 2;
        }
        ClassRepository repo;
        MofCompiler compiler(repo, CIMNamespaceName(nsText));
        for (const std::string& file : files)
            compiler.compileFile(file);
        const MofCompiler::Counts& c = compiler.counts();
        std::cout << "ok: " << c.files << " files, " << c.qualifierDecls
                  << " qualifier declarations, " << c.classes << " classes, " << c.instances
                  << " instances\n";
        if (doList)
            list(repo);
        return 0;
    }
    catch (const Exception& e)
    {
        std::cerr << e.getMessage() << "\n";
        return 1;
    }
}
