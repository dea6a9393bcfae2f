#include "MofCompiler.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include "ClassRepository.h"
#include "QualifierRules.h"
#include "MofParser.h"
#include "MofText.h"
#include "MofValueBuilder.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

// Deeper nesting than this is taken for a runaway include chain.
const size_t maxIncludeDepth = 64;

struct Source
{
    std::string name;

    [[noreturn]] void fail(const MofPos& pos, const std::string& what) const
    {
        throw MofError(name, pos.line, pos.column, what);
    }
};

std::string directoryOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

// The file's identity for include cycles: its real path when it has one.
std::string identityOf(const std::string& path)
{
    char buf[PATH_MAX];
    if (::realpath(path.c_str(), buf))
        return buf;
    return path;
}

// Reads a whole regular file; false with the reason otherwise.
bool readFile(const std::string& path, std::string& text, std::string& reason)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
    {
        reason = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(st.st_mode))
    {
        reason = "not a regular file";
        return false;
    }
    std::ifstream in(path.c_str(), std::ios::in | std::ios::binary);
    if (!in)
    {
        reason = std::strerror(errno);
        return false;
    }
    std::ostringstream content;
    content << in.rdbuf();
    if (in.bad())
    {
        reason = "read error";
        return false;
    }
    text = content.str();
    return true;
}

CIMName legalName(const Source& src, const MofNamePos& n, const char* what)
{
    const String s = mofString(n.name);
    if (!CIMName::legal(s))
        src.fail(n.pos, std::string("invalid ") + what + " name " + quoted(n.name));
    return CIMName(s);
}

std::string q(const CIMName& name)
{
    return quoted(stdString(name.getString()));
}

struct FlavorWord
{
    const char* name;
    const CIMFlavor* flavor;
};

CIMFlavor flavorsOf(const Source& src, const std::vector<MofNamePos>& words)
{
    static const FlavorWord table[] = {
        {"enableoverride", &CIMFlavor::ENABLEOVERRIDE},
        {"disableoverride", &CIMFlavor::DISABLEOVERRIDE},
        {"tosubclass", &CIMFlavor::TOSUBCLASS},
        {"restricted", &CIMFlavor::RESTRICTED},
        {"translatable", &CIMFlavor::TRANSLATABLE},
    };
    CIMFlavor f;
    for (const MofNamePos& w : words)
    {
        const FlavorWord* found = 0;
        for (const FlavorWord& t : table)
        {
            if (equalNoCaseAscii(w.name, t.name))
                found = &t;
        }
        if (!found)
            src.fail(w.pos, "unknown flavor " + quoted(w.name));
        f.addFlavor(*found->flavor);
    }
    return f;
}

// The qualifier a MOF qualifier stands for, typed by its declaration.
// With a scope, it is also checked against the declaration here, so the
// error points at the qualifier rather than at its class.
template <class Element>
void applyQualifiers(
    const Source& src, const ClassRepository& repo, const CIMNamespaceName& ns,
    const MofValueBuilder& values, const MofQualifierList& list, const CIMScope* scope,
    const std::string& where, Element element)
{
    for (const MofQualifierSyntax& qs : list)
    {
        const CIMName name = legalName(src, qs.name, "qualifier");
        CIMQualifierDecl decl;
        if (!repo.findQualifier(ns, name, decl))
        {
            src.fail(
                qs.name.pos, "qualifier " + quoted(qs.name.name) +
                                 " is not declared in namespace " +
                                 quoted(stdString(ns.getString())));
        }
        CIMValue value;
        if (!qs.hasValue)
        {
            // A boolean qualifier named alone is true; others take the default.
            if (decl.getType() == CIMTYPE_BOOLEAN && !decl.isArray())
                value = CIMValue(Boolean(true));
            else
                value = decl.getValue();
        }
        else
        {
            MofLiteral literal = qs.value;
            // Name("x") on an array qualifier gives a one-element array.
            if (decl.isArray() && literal.kind != MofLiteral::Array &&
                literal.kind != MofLiteral::Null)
            {
                MofLiteral array;
                array.kind = MofLiteral::Array;
                array.pos = literal.pos;
                array.elements.push_back(literal);
                literal = array;
            }
            MofValueTarget target;
            target.type = decl.getType();
            target.isArray = decl.isArray();
            target.what = "qualifier " + quoted(qs.name.name);
            value = values.build(literal, target);
        }
        const CIMFlavor given = flavorsOf(src, qs.flavors);
        const CIMQualifier qualifier(decl.getName(), value, given);
        try
        {
            if (scope)
                checkQualifierUse(decl, qualifier, *scope, mofString(where));
            resolveFlavor(decl.getFlavor(), given, name, mofString(where));
        }
        catch (const CIMException& e)
        {
            src.fail(qs.name.pos, stdString(e.getMessage()));
        }
        try
        {
            element.addQualifier(qualifier);
        }
        catch (const AlreadyExistsException&)
        {
            src.fail(
                qs.name.pos, "qualifier " + quoted(qs.name.name) + " is given twice on " + where);
        }
    }
}

}  // namespace

struct MofCompiler::File
{
    Source src;
    std::string directory;
    CIMNamespaceName ns;
    MofValueBuilder values;

    File(
        const std::string& name, const CIMNamespaceName& startNs,
        const MofValueBuilder::AliasLookup& aliases)
        : directory(directoryOf(name)), ns(startNs), values(name, aliases)
    {
        src.name = name;
    }
};

MofCompiler::MofCompiler(ClassRepository& repo, const CIMNamespaceName& defaultNamespace)
    : _repo(repo), _defaultNamespace(defaultNamespace)
{
}

MofCompiler::~MofCompiler()
{
}

void MofCompiler::compileFile(const std::string& path)
{
    std::string text;
    std::string reason;
    if (!readFile(path, text, reason))
        throw MofError(path, 0, 0, "cannot read the file: " + reason);
    _compile(text, path, identityOf(path), _defaultNamespace);
}

void MofCompiler::compileString(const std::string& text, const std::string& sourceName)
{
    _compile(text, sourceName, identityOf(sourceName), _defaultNamespace);
}

void MofCompiler::_compile(
    const std::string& text, const std::string& sourceName, const std::string& identity,
    const CIMNamespaceName& ns)
{
    const MofValueBuilder::AliasLookup aliases =
        [this](const std::string& alias, CIMObjectPath& path)
    {
        auto it = _aliases.find(lowerAscii(alias));
        if (it == _aliases.end())
            return false;
        path = it->second;
        return true;
    };
    File f(sourceName, ns, aliases);
    _includeStack.push_back(identity);
    _counts.files++;
    try
    {
        MofParser parser(text, sourceName);
        for (;;)
        {
            const MofProduction p = parser.next();
            if (p.kind == MofProduction::End)
                break;
            _production(f, p);
        }
    }
    catch (...)
    {
        _includeStack.pop_back();
        throw;
    }
    _includeStack.pop_back();
}

void MofCompiler::_production(File& f, const MofProduction& p)
{
    MofPos at;
    switch (p.kind)
    {
        case MofProduction::Pragma:
            at = p.pragma.pos;
            break;
        case MofProduction::QualifierDecl:
            at = p.qualifierDecl.pos;
            break;
        case MofProduction::Class:
            at = p.cls.pos;
            break;
        case MofProduction::Instance:
            at = p.instance.pos;
            break;
        case MofProduction::End:
            return;
    }
    // Whatever the object model refuses that the checks here did not
    // foresee still becomes an error at the production, never a crash.
    try
    {
        switch (p.kind)
        {
            case MofProduction::Pragma:
                _pragma(f, p.pragma);
                break;
            case MofProduction::QualifierDecl:
                _qualifierDecl(f, p.qualifierDecl);
                break;
            case MofProduction::Class:
                _class(f, p.cls);
                break;
            case MofProduction::Instance:
                _instance(f, p.instance);
                break;
            case MofProduction::End:
                break;
        }
    }
    catch (const MofError&)
    {
        throw;
    }
    catch (const Exception& e)
    {
        f.src.fail(at, stdString(e.getMessage()));
    }
    catch (const std::exception& e)
    {
        f.src.fail(at, e.what());
    }
}

void MofCompiler::_pragma(File& f, const MofPragmaSyntax& p)
{
    const std::string& name = p.name.name;
    if (equalNoCaseAscii(name, "include"))
    {
        _include(f, p);
    }
    else if (equalNoCaseAscii(name, "namespace"))
    {
        const String ns = mofString(p.value);
        if (!CIMNamespaceName::legal(ns))
            f.src.fail(p.valuePos, "invalid namespace name " + quoted(p.value));
        f.ns = CIMNamespaceName(ns);
    }
    else if (!equalNoCaseAscii(name, "locale") && !equalNoCaseAscii(name, "instancelocale"))
    {
        f.src.fail(
            p.name.pos, "unknown pragma " + quoted(name) +
                            "; known are include, namespace, locale and instancelocale");
    }
}

void MofCompiler::_include(File& f, const MofPragmaSyntax& p)
{
    std::string name = p.value;
    for (char& c : name)
    {
        if (c == '\\')
            c = '/';
    }
    if (name.empty())
        f.src.fail(p.valuePos, "#pragma include names no file");
    const std::string path = name[0] == '/' ? name : f.directory + "/" + name;

    std::string text;
    std::string reason;
    if (!readFile(path, text, reason))
    {
        f.src.fail(
            p.valuePos,
            "cannot open included file " + quoted(name) + " (" + quoted(path) + "): " + reason);
    }
    const std::string identity = identityOf(path);
    for (const std::string& open : _includeStack)
    {
        if (open == identity)
            f.src.fail(p.valuePos, "file " + quoted(name) + " includes itself");
    }
    if (_includeStack.size() >= maxIncludeDepth)
    {
        f.src.fail(
            p.valuePos,
            "includes nested deeper than " + std::to_string(maxIncludeDepth) + " files");
    }
    _compile(text, path, identity, f.ns);
}

void MofCompiler::_qualifierDecl(File& f, const MofQualifierDeclSyntax& d)
{
    const CIMName name = legalName(f.src, d.name, "qualifier");
    MofValueTarget target;
    target.type = d.type.type;
    target.isArray = d.array.isArray;
    target.arraySize = d.array.size;
    target.what = "the default of qualifier " + quoted(d.name.name);
    MofLiteral none;
    none.pos = d.name.pos;
    const CIMValue value = f.values.build(d.hasDefault ? d.defaultValue : none, target);

    CIMScope scope;
    static const struct
    {
        const char* name;
        const CIMScope* scope;
    } scopes[] = {
        {"class", &CIMScope::CLASS},           {"association", &CIMScope::ASSOCIATION},
        {"indication", &CIMScope::INDICATION}, {"property", &CIMScope::PROPERTY},
        {"reference", &CIMScope::REFERENCE},   {"method", &CIMScope::METHOD},
        {"parameter", &CIMScope::PARAMETER},   {"any", &CIMScope::ANY},
    };
    for (const MofNamePos& s : d.scopes)
    {
        const CIMScope* found = 0;
        for (const auto& t : scopes)
        {
            if (equalNoCaseAscii(s.name, t.name))
                found = t.scope;
        }
        if (!found)
            f.src.fail(s.pos, "unknown scope " + quoted(s.name));
        scope.addScope(*found);
    }

    const CIMFlavor flavor = flavorsOf(f.src, d.flavors);
    if (flavor.hasFlavor(CIMFlavor::TOSUBCLASS) && flavor.hasFlavor(CIMFlavor::RESTRICTED))
        f.src.fail(
            d.name.pos, "qualifier " + q(name) + " is declared both ToSubclass and Restricted");
    if (flavor.hasFlavor(CIMFlavor::ENABLEOVERRIDE) && flavor.hasFlavor(CIMFlavor::DISABLEOVERRIDE))
    {
        f.src.fail(
            d.name.pos,
            "qualifier " + q(name) + " is declared both EnableOverride and DisableOverride");
    }

    try
    {
        _repo.addQualifierDecl(f.ns, CIMQualifierDecl(name, value, scope, flavor, d.array.size));
    }
    catch (const CIMException& e)
    {
        if (e.getCode() == CIM_ERR_ALREADY_EXISTS)
        {
            f.src.fail(
                d.name.pos, "qualifier " + q(name) + " is already declared in namespace " +
                                quoted(stdString(f.ns.getString())));
        }
        throw;
    }
    _counts.qualifierDecls++;
}

void MofCompiler::_class(File& f, const MofClassSyntax& c)
{
    const CIMName className = legalName(f.src, c.name, "class");
    const std::string where = "class " + q(className);
    if (_repo.namespaceExists(f.ns) && _repo.classExists(f.ns, className))
    {
        f.src.fail(
            c.name.pos,
            where + " is already defined in namespace " + quoted(stdString(f.ns.getString())));
    }
    CIMName superName;
    bool association = false;
    if (!c.superClass.name.empty())
    {
        superName = legalName(f.src, c.superClass, "superclass");
        if (!_repo.namespaceExists(f.ns) || !_repo.classExists(f.ns, superName))
        {
            f.src.fail(c.superClass.pos, "unknown superclass " + q(superName) + " of " + where);
        }
        association =
            _repo.getClass(f.ns, superName, false, true, false, CIMPropertyList()).isAssociation();
    }

    // The scope of the class qualifiers depends on whether it is an
    // association, by its own Association qualifier or its superclass's.
    for (const MofQualifierSyntax& qs : c.qualifiers)
    {
        if (equalNoCaseAscii(qs.name.name, "Association"))
        {
            association = association || !qs.hasValue ||
                          (qs.value.kind == MofLiteral::Boolean && qs.value.boolValue);
        }
    }
    const CIMScope classScope = association ? CIMScope::ASSOCIATION : CIMScope::CLASS;
    CIMClass cls(className, superName);
    applyQualifiers(f.src, _repo, f.ns, f.values, c.qualifiers, &classScope, where, cls);

    auto referenceClass = [&](const MofTypeSyntax& t, const std::string& what)
    {
        const CIMName ref = legalName(f.src, t.referenceClass, "class");
        if (!ref.equal(className) &&
            (!_repo.namespaceExists(f.ns) || !_repo.classExists(f.ns, ref)))
            f.src.fail(t.referenceClass.pos, "unknown class " + q(ref) + " in " + what);
        return ref;
    };

    for (const MofPropertySyntax& p : c.properties)
    {
        const CIMName name = legalName(f.src, p.name, "property");
        const std::string pwhere = "property " + q(name) + " of " + where;
        const bool isRef = p.type.type == CIMTYPE_REFERENCE;
        CIMName ref;
        if (isRef)
        {
            if (p.array.isArray)
                f.src.fail(p.array.pos, "reference " + q(name) + " cannot be an array");
            if (!association)
            {
                f.src.fail(
                    p.type.pos, "reference " + q(name) +
                                    " is only allowed in an "
                                    "association, and " +
                                    where + " is not one");
            }
            ref = referenceClass(p.type, "reference " + q(name));
        }
        MofValueTarget target;
        target.type = p.type.type;
        target.isArray = p.array.isArray;
        target.arraySize = p.array.size;
        target.what = "property " + q(name);
        MofLiteral none;
        none.pos = p.name.pos;
        const CIMValue value = f.values.build(p.hasDefault ? p.defaultValue : none, target);
        CIMProperty prop(name, value, p.array.size, ref);
        const CIMScope scope = isRef ? CIMScope::REFERENCE : CIMScope::PROPERTY;
        applyQualifiers(f.src, _repo, f.ns, f.values, p.qualifiers, &scope, pwhere, prop);
        try
        {
            cls.addProperty(prop);
        }
        catch (const AlreadyExistsException&)
        {
            f.src.fail(p.name.pos, "property " + q(name) + " is declared twice in " + where);
        }
    }

    for (const MofMethodSyntax& m : c.methods)
    {
        const CIMName name = legalName(f.src, m.name, "method");
        const std::string mwhere = "method " + q(name) + " of " + where;
        CIMMethod method(name, m.returnType.type);
        const CIMScope methodScope = CIMScope::METHOD;
        applyQualifiers(f.src, _repo, f.ns, f.values, m.qualifiers, &methodScope, mwhere, method);
        for (const MofParameterSyntax& a : m.parameters)
        {
            const CIMName pname = legalName(f.src, a.name, "parameter");
            CIMName ref;
            if (a.type.type == CIMTYPE_REFERENCE)
                ref = referenceClass(a.type, "parameter " + q(pname) + " of " + mwhere);
            CIMParameter param(pname, a.type.type, a.array.isArray, a.array.size, ref);
            const CIMScope paramScope = CIMScope::PARAMETER;
            applyQualifiers(
                f.src, _repo, f.ns, f.values, a.qualifiers, &paramScope,
                "parameter " + q(pname) + " of " + mwhere, param);
            try
            {
                method.addParameter(param);
            }
            catch (const AlreadyExistsException&)
            {
                f.src.fail(a.name.pos, "parameter " + q(pname) + " is declared twice in " + mwhere);
            }
        }
        try
        {
            cls.addMethod(method);
        }
        catch (const AlreadyExistsException&)
        {
            f.src.fail(m.name.pos, "method " + q(name) + " is declared twice in " + where);
        }
    }

    try
    {
        _repo.addClass(f.ns, cls);
    }
    catch (const CIMException& e)
    {
        f.src.fail(c.name.pos, "cannot add " + where + ": " + stdString(e.getMessage()));
    }
    _counts.classes++;
}

void MofCompiler::_instance(File& f, const MofInstanceSyntax& s)
{
    const CIMName className = legalName(f.src, s.className, "class");
    if (!_repo.namespaceExists(f.ns) || !_repo.classExists(f.ns, className))
    {
        f.src.fail(
            s.className.pos, "unknown class " + q(className) + " in namespace " +
                                 quoted(stdString(f.ns.getString())));
    }
    const CIMClass cls = _repo.getClass(f.ns, className, false, true, true, CIMPropertyList());
    const std::string where = "the instance of " + q(cls.getClassName());
    if (!s.alias.name.empty() && _aliases.count(lowerAscii(s.alias.name)))
        f.src.fail(s.alias.pos, "alias " + s.alias.name + " is already defined");

    CIMInstance inst(cls.getClassName());
    applyQualifiers(f.src, _repo, f.ns, f.values, s.qualifiers, 0, where, inst);
    for (const MofValueSyntax& v : s.values)
    {
        const CIMName name = legalName(f.src, v.name, "property");
        const Uint32 index = cls.findProperty(name);
        if (index == PEG_NOT_FOUND)
            f.src.fail(
                v.name.pos, "class " + q(cls.getClassName()) + " has no property " + q(name));
        if (inst.findProperty(name) != PEG_NOT_FOUND)
            f.src.fail(v.name.pos, "property " + q(name) + " is given twice in " + where);
        const CIMConstProperty cp = cls.getProperty(index);
        MofValueTarget target;
        target.type = cp.getType();
        target.isArray = cp.isArray();
        target.arraySize = cp.getArraySize();
        target.what = "property " + q(cp.getName());
        const CIMValue value = f.values.build(v.value, target);
        CIMProperty prop(cp.getName(), value, 0, cp.getReferenceClassName());
        applyQualifiers(
            f.src, _repo, f.ns, f.values, v.qualifiers, 0,
            "property " + q(cp.getName()) + " of " + where, prop);
        inst.addProperty(prop);
    }

    CIMObjectPath path;
    try
    {
        path = _repo.addInstance(f.ns, inst);
    }
    catch (const CIMException& e)
    {
        f.src.fail(s.pos, "cannot add " + where + ": " + stdString(e.getMessage()));
    }
    if (!s.alias.name.empty())
        _aliases[lowerAscii(s.alias.name)] = path;
    _counts.instances++;
}

PEGASUS_NAMESPACE_END
