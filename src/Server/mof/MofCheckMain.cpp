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

int usage()
{
    std::cerr << "usage: qel-mofcheck [-n namespace] [--list] file.mof...\n"
                 "  -n namespace  namespace before any #pragma namespace (root/cimv2)\n"
                 "  --list        print the classes and instance counts per namespace\n";
    return 2;
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
