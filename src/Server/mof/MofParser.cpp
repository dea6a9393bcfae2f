#include "MofParser.h"

#include "MofError.h"
#include "MofText.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

MofPos posOf(const MofToken& tok)
{
    MofPos p;
    p.line = tok.line;
    p.column = tok.column;
    return p;
}

std::string describe(const MofToken& tok)
{
    switch (tok.kind)
    {
        case MofTokenKind::Identifier:
        case MofTokenKind::Alias:
            return quoted(tok.text);
        case MofTokenKind::Integer:
        case MofTokenKind::Real:
            return "the number " + tok.text;
        default:
            return mofTokenKindName(tok.kind);
    }
}

struct TypeKeyword
{
    const char* name;
    CIMType type;
};

const TypeKeyword typeKeywords[] = {
    {"boolean", CIMTYPE_BOOLEAN}, {"uint8", CIMTYPE_UINT8},       {"sint8", CIMTYPE_SINT8},
    {"uint16", CIMTYPE_UINT16},   {"sint16", CIMTYPE_SINT16},     {"uint32", CIMTYPE_UINT32},
    {"sint32", CIMTYPE_SINT32},   {"uint64", CIMTYPE_UINT64},     {"sint64", CIMTYPE_SINT64},
    {"real32", CIMTYPE_REAL32},   {"real64", CIMTYPE_REAL64},     {"char16", CIMTYPE_CHAR16},
    {"string", CIMTYPE_STRING},   {"datetime", CIMTYPE_DATETIME},
};

}  // namespace

MofParser::MofParser(const std::string& text, const std::string& sourceName)
    : _lexer(text, sourceName)
{
}

const MofToken& MofParser::_peek(size_t ahead)
{
    while (_ahead.size() <= ahead)
        _ahead.push_back(_lexer.next());
    return _ahead[ahead];
}

MofToken MofParser::_take()
{
    _peek();
    MofToken tok = _ahead.front();
    _ahead.pop_front();
    return tok;
}

void MofParser::_fail(const MofToken& at, const std::string& what) const
{
    throw MofError(_lexer.sourceName(), at.line, at.column, what);
}

void MofParser::_unexpected(const MofToken& at, const std::string& expected) const
{
    _fail(at, "expected " + expected + ", found " + describe(at));
}

MofToken MofParser::_expect(MofTokenKind kind, const char* context)
{
    const MofToken& tok = _peek();
    if (tok.kind != kind)
        _unexpected(tok, std::string(mofTokenKindName(kind)) + " " + context);
    return _take();
}

bool MofParser::_isKeyword(const MofToken& tok, const char* keyword) const
{
    return tok.kind == MofTokenKind::Identifier && equalNoCaseAscii(tok.text, keyword);
}

bool MofParser::_acceptKeyword(const char* keyword)
{
    if (!_isKeyword(_peek(), keyword))
        return false;
    _take();
    return true;
}

void MofParser::_expectKeyword(const char* keyword, const char* context)
{
    if (!_acceptKeyword(keyword))
        _unexpected(_peek(), "'" + std::string(keyword) + "' " + context);
}

MofNamePos MofParser::_expectName(const char* what)
{
    const MofToken& tok = _peek();
    if (tok.kind != MofTokenKind::Identifier)
        _unexpected(tok, what);
    MofNamePos n;
    n.name = tok.text;
    n.pos = posOf(tok);
    _take();
    return n;
}

MofProduction MofParser::next()
{
    MofProduction prod;
    const MofToken& first = _peek();
    if (first.kind == MofTokenKind::End)
    {
        prod.kind = MofProduction::End;
        return prod;
    }
    if (first.kind == MofTokenKind::Pragma)
    {
        prod.kind = MofProduction::Pragma;
        _pragma(prod.pragma);
        return prod;
    }
    if (_isKeyword(first, "qualifier"))
    {
        prod.kind = MofProduction::QualifierDecl;
        _qualifierDecl(prod.qualifierDecl);
        return prod;
    }

    MofQualifierList qualifiers;
    if (first.kind == MofTokenKind::LeftBracket)
        _qualifierList(qualifiers);

    const MofToken& head = _peek();
    if (_isKeyword(head, "class"))
    {
        prod.kind = MofProduction::Class;
        prod.cls.qualifiers.swap(qualifiers);
        _class(prod.cls);
        return prod;
    }
    if (_isKeyword(head, "instance"))
    {
        prod.kind = MofProduction::Instance;
        prod.instance.qualifiers.swap(qualifiers);
        _instance(prod.instance);
        return prod;
    }
    _unexpected(
        head, qualifiers.empty() ? "a class, an instance, a qualifier declaration or #pragma"
                                 : "'class' or 'instance' after the qualifier list");
}

void MofParser::_pragma(MofPragmaSyntax& out)
{
    out.pos = posOf(_take());
    out.name = _expectName("a pragma name after #pragma");
    _expect(MofTokenKind::LeftParen, "after the pragma name");
    out.valuePos = posOf(_peek());
    out.value = _stringValue("as the pragma's value");
    _expect(MofTokenKind::RightParen, "after the pragma's value");
}

std::string MofParser::_stringValue(const char* context)
{
    const MofToken& tok = _peek();
    if (tok.kind != MofTokenKind::String)
        _unexpected(tok, std::string("a string ") + context);
    std::string value;
    while (_peek().kind == MofTokenKind::String)
        value += _take().text;
    return value;
}

void MofParser::_qualifierDecl(MofQualifierDeclSyntax& out)
{
    out.pos = posOf(_take());
    out.name = _expectName("a qualifier name after 'qualifier'");
    _expect(MofTokenKind::Colon, "after the qualifier name");
    const MofToken typeTok = _peek();
    if (!_dataType(typeTok, out.type.type))
        _unexpected(typeTok, "the qualifier's data type");
    out.type.pos = posOf(typeTok);
    _take();
    _array(out.array);
    if (_peek().kind == MofTokenKind::Equals)
    {
        _take();
        out.hasDefault = true;
        _initializer(out.defaultValue, true, "as the qualifier's default value");
    }
    _expect(MofTokenKind::Comma, "before 'scope' in the qualifier declaration");
    _expectKeyword("scope", "in the qualifier declaration");
    _expect(MofTokenKind::LeftParen, "after 'scope'");
    for (;;)
    {
        out.scopes.push_back(_expectName("a scope (class, association, indication, "
                                         "property, reference, method, parameter or any)"));
        if (_peek().kind != MofTokenKind::Comma)
            break;
        _take();
    }
    _expect(MofTokenKind::RightParen, "after the scopes");
    if (_peek().kind == MofTokenKind::Comma)
    {
        _take();
        _expectKeyword("flavor", "after ',' in the qualifier declaration");
        _expect(MofTokenKind::LeftParen, "after 'flavor'");
        for (;;)
        {
            out.flavors.push_back(
                _expectName("a flavor (EnableOverride, "
                            "DisableOverride, ToSubclass, Restricted or Translatable)"));
            if (_peek().kind != MofTokenKind::Comma)
                break;
            _take();
        }
        _expect(MofTokenKind::RightParen, "after the flavors");
    }
    _expect(MofTokenKind::Semicolon, "at the end of the qualifier declaration");
}

void MofParser::_class(MofClassSyntax& out)
{
    out.pos = posOf(_take());
    out.name = _expectName("a class name after 'class'");
    if (_isKeyword(_peek(), "as"))
        _fail(_peek(), "class aliases are not supported; only instances take an alias");
    if (_peek().kind == MofTokenKind::Colon)
    {
        _take();
        out.superClass = _expectName("a superclass name after ':'");
    }
    _expect(MofTokenKind::LeftBrace, "to open the class body");
    while (_peek().kind != MofTokenKind::RightBrace)
    {
        if (_peek().kind == MofTokenKind::End)
            _unexpected(_peek(), "'}' to close class " + quoted(out.name.name));
        _feature(out);
    }
    _take();
    _expect(MofTokenKind::Semicolon, "after the class body");
}

bool MofParser::_dataType(const MofToken& tok, CIMType& type) const
{
    if (tok.kind != MofTokenKind::Identifier)
        return false;
    for (const TypeKeyword& k : typeKeywords)
    {
        if (equalNoCaseAscii(tok.text, k.name))
        {
            type = k.type;
            return true;
        }
    }
    return false;
}

void MofParser::_typeOrReference(MofTypeSyntax& out, const char* context)
{
    const MofToken tok = _peek();
    out.pos = posOf(tok);
    if (tok.kind == MofTokenKind::Identifier && _isKeyword(_peek(1), "ref"))
    {
        out.type = CIMTYPE_REFERENCE;
        out.referenceClass.name = tok.text;
        out.referenceClass.pos = posOf(tok);
        _take();
        _take();
        return;
    }
    if (!_dataType(tok, out.type))
    {
        if (tok.kind == MofTokenKind::Identifier)
            _fail(tok, "unknown data type " + quoted(tok.text) + " " + context);
        _unexpected(tok, std::string("a data type ") + context);
    }
    _take();
}

void MofParser::_feature(MofClassSyntax& cls)
{
    MofQualifierList qualifiers;
    if (_peek().kind == MofTokenKind::LeftBracket)
        _qualifierList(qualifiers);

    MofTypeSyntax type;
    _typeOrReference(type, "for a property or method");
    MofNamePos name = _expectName("a property or method name");

    if (_peek().kind == MofTokenKind::LeftParen)
    {
        if (type.type == CIMTYPE_REFERENCE)
        {
            throw MofError(
                _lexer.sourceName(), type.pos.line, type.pos.column,
                "method " + quoted(name.name) + " cannot return a reference");
        }
        MofMethodSyntax m;
        m.qualifiers.swap(qualifiers);
        m.returnType = type;
        m.name = name;
        _take();
        if (_peek().kind != MofTokenKind::RightParen)
        {
            for (;;)
            {
                MofParameterSyntax p;
                _parameter(p);
                m.parameters.push_back(p);
                if (_peek().kind != MofTokenKind::Comma)
                    break;
                _take();
            }
        }
        _expect(MofTokenKind::RightParen, "to close the parameter list");
        _expect(MofTokenKind::Semicolon, "after the method declaration");
        cls.methods.push_back(m);
        return;
    }

    MofPropertySyntax p;
    p.qualifiers.swap(qualifiers);
    p.type = type;
    p.name = name;
    _array(p.array);
    if (_peek().kind == MofTokenKind::Equals)
    {
        _take();
        p.hasDefault = true;
        _initializer(p.defaultValue, true, "as the default value");
    }
    _expect(MofTokenKind::Semicolon, "after the property declaration");
    cls.properties.push_back(p);
}

void MofParser::_parameter(MofParameterSyntax& out)
{
    if (_peek().kind == MofTokenKind::LeftBracket)
        _qualifierList(out.qualifiers);
    _typeOrReference(out.type, "for a parameter");
    out.name = _expectName("a parameter name");
    _array(out.array);
}

void MofParser::_array(MofArraySyntax& out)
{
    if (_peek().kind != MofTokenKind::LeftBracket)
        return;
    out.pos = posOf(_take());
    out.isArray = true;
    const MofToken& tok = _peek();
    if (tok.kind == MofTokenKind::Integer)
    {
        if (tok.negative || tok.overflow || tok.magnitude == 0 || tok.magnitude > 0xFFFFFFFFull)
            _fail(tok, "array size must be a positive 32-bit number, not " + tok.text);
        out.size = static_cast<Uint32>(tok.magnitude);
        _take();
    }
    _expect(MofTokenKind::RightBracket, "to close the array size");
}

void MofParser::_instance(MofInstanceSyntax& out)
{
    out.pos = posOf(_take());
    _expectKeyword("of", "after 'instance'");
    out.className = _expectName("a class name after 'instance of'");
    if (_acceptKeyword("as"))
    {
        const MofToken& tok = _peek();
        if (tok.kind != MofTokenKind::Alias)
            _unexpected(tok, "an alias ($name) after 'as'");
        out.alias.name = tok.text;
        out.alias.pos = posOf(tok);
        _take();
    }
    _expect(MofTokenKind::LeftBrace, "to open the instance body");
    while (_peek().kind != MofTokenKind::RightBrace)
    {
        if (_peek().kind == MofTokenKind::End)
            _unexpected(_peek(), "'}' to close the instance of " + quoted(out.className.name));
        MofValueSyntax v;
        if (_peek().kind == MofTokenKind::LeftBracket)
            _qualifierList(v.qualifiers);
        v.name = _expectName("a property name");
        _expect(MofTokenKind::Equals, "after the property name");
        _initializer(v.value, true, "as the property's value");
        _expect(MofTokenKind::Semicolon, "after the property's value");
        out.values.push_back(v);
    }
    _take();
    _expect(MofTokenKind::Semicolon, "after the instance body");
}

void MofParser::_qualifierList(MofQualifierList& out)
{
    _take();
    for (;;)
    {
        MofQualifierSyntax q;
        _qualifier(q);
        out.push_back(q);
        if (_peek().kind != MofTokenKind::Comma)
            break;
        _take();
    }
    _expect(MofTokenKind::RightBracket, "to close the qualifier list");
}

void MofParser::_qualifier(MofQualifierSyntax& out)
{
    out.name = _expectName("a qualifier name");
    if (_peek().kind == MofTokenKind::LeftParen)
    {
        _take();
        out.hasValue = true;
        _constant(out.value, "as the qualifier's value");
        _expect(MofTokenKind::RightParen, "after the qualifier's value");
    }
    else if (_peek().kind == MofTokenKind::LeftBrace)
    {
        out.hasValue = true;
        _initializer(out.value, true, "as the qualifier's value");
    }
    // Flavors follow, with or without the old ':' before them.
    bool colon = false;
    if (_peek().kind == MofTokenKind::Colon)
    {
        _take();
        colon = true;
    }
    static const char* const flavorWords[] = {
        "enableoverride", "disableoverride", "tosubclass", "restricted", "translatable"};
    for (;;)
    {
        const MofToken& tok = _peek();
        bool isFlavor = false;
        for (const char* f : flavorWords)
            isFlavor = isFlavor || _isKeyword(tok, f);
        if (!isFlavor)
            break;
        MofNamePos f;
        f.name = tok.text;
        f.pos = posOf(tok);
        out.flavors.push_back(f);
        _take();
    }
    if (colon && out.flavors.empty())
        _unexpected(_peek(), "a flavor after ':'");
}

void MofParser::_initializer(MofLiteral& out, bool allowArray, const char* context)
{
    const MofToken& tok = _peek();
    if (tok.kind == MofTokenKind::LeftBrace && allowArray)
    {
        out.kind = MofLiteral::Array;
        out.pos = posOf(tok);
        _take();
        if (_peek().kind != MofTokenKind::RightBrace)
        {
            for (;;)
            {
                MofLiteral element;
                _constant(element, "as an array element");
                out.elements.push_back(element);
                if (_peek().kind != MofTokenKind::Comma)
                    break;
                _take();
            }
        }
        _expect(MofTokenKind::RightBrace, "to close the array value");
        return;
    }
    if (tok.kind == MofTokenKind::Alias)
    {
        out.kind = MofLiteral::Alias;
        out.pos = posOf(tok);
        out.text = tok.text;
        _take();
        return;
    }
    _constant(out, context);
}

void MofParser::_constant(MofLiteral& out, const char* context)
{
    const MofToken& tok = _peek();
    out.pos = posOf(tok);
    switch (tok.kind)
    {
        case MofTokenKind::Integer:
            out.kind = MofLiteral::Integer;
            out.negative = tok.negative;
            out.overflow = tok.overflow;
            out.magnitude = tok.magnitude;
            out.text = tok.text;
            _take();
            return;
        case MofTokenKind::Real:
            out.kind = MofLiteral::Real;
            out.text = tok.text;
            _take();
            return;
        case MofTokenKind::Char:
            out.kind = MofLiteral::Char;
            out.charValue = tok.charValue;
            out.text = tok.text;
            _take();
            return;
        case MofTokenKind::String:
            out.kind = MofLiteral::String;
            out.text = _stringValue(context);
            return;
        case MofTokenKind::Identifier:
            if (equalNoCaseAscii(tok.text, "true") || equalNoCaseAscii(tok.text, "false"))
            {
                out.kind = MofLiteral::Boolean;
                out.boolValue = equalNoCaseAscii(tok.text, "true");
                _take();
                return;
            }
            if (equalNoCaseAscii(tok.text, "null"))
            {
                out.kind = MofLiteral::Null;
                _take();
                return;
            }
            break;
        default:
            break;
    }
    _unexpected(tok, std::string("a value ") + context);
}

PEGASUS_NAMESPACE_END
