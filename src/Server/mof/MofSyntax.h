// What the parser makes of one MOF production, before any name is looked
// up: literal values keep their written form until the declared type is
// known (a qualifier's declaration, a property's type).
#ifndef QEL_Server_MofSyntax_h
#define QEL_Server_MofSyntax_h

#include <string>
#include <vector>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMType.h>

PEGASUS_NAMESPACE_BEGIN

struct MofPos
{
    Uint32 line = 0;
    Uint32 column = 0;
};

struct MofLiteral
{
    enum Kind
    {
        Null,
        Integer,
        Real,
        String,
        Char,
        Boolean,
        Alias,
        Array
    };

    Kind kind = Null;
    MofPos pos;
    // Integer: value is (negative ? -magnitude : magnitude).
    bool negative = false;
    bool overflow = false;
    Uint64 magnitude = 0;
    // Real: as written; String: decoded UTF-8 (adjacent strings joined);
    // Alias: the name with its '$'; Integer: as written (for messages).
    std::string text;
    Uint16 charValue = 0;
    bool boolValue = false;
    std::vector<MofLiteral> elements;  // Array
};

struct MofNamePos
{
    std::string name;
    MofPos pos;
};

struct MofQualifierSyntax
{
    MofNamePos name;
    bool hasValue = false;
    MofLiteral value;
    std::vector<MofNamePos> flavors;
};

typedef std::vector<MofQualifierSyntax> MofQualifierList;

// A data type or an object reference ("CIM_X REF").
struct MofTypeSyntax
{
    CIMType type = CIMTYPE_BOOLEAN;
    MofNamePos referenceClass;  // set for CIMTYPE_REFERENCE
    MofPos pos;
};

struct MofArraySyntax
{
    bool isArray = false;
    Uint32 size = 0;  // 0: variable length
    MofPos pos;
};

struct MofPropertySyntax
{
    MofQualifierList qualifiers;
    MofTypeSyntax type;
    MofNamePos name;
    MofArraySyntax array;
    bool hasDefault = false;
    MofLiteral defaultValue;
};

struct MofParameterSyntax
{
    MofQualifierList qualifiers;
    MofTypeSyntax type;
    MofNamePos name;
    MofArraySyntax array;
};

struct MofMethodSyntax
{
    MofQualifierList qualifiers;
    MofTypeSyntax returnType;
    MofNamePos name;
    std::vector<MofParameterSyntax> parameters;
};

struct MofClassSyntax
{
    MofPos pos;  // of the keyword "class"
    MofQualifierList qualifiers;
    MofNamePos name;
    MofNamePos superClass;  // empty name: none
    std::vector<MofPropertySyntax> properties;
    std::vector<MofMethodSyntax> methods;
};

struct MofValueSyntax
{
    MofQualifierList qualifiers;
    MofNamePos name;
    MofLiteral value;
};

struct MofInstanceSyntax
{
    MofPos pos;  // of the keyword "instance"
    MofQualifierList qualifiers;
    MofNamePos className;
    MofNamePos alias;  // empty name: none
    std::vector<MofValueSyntax> values;
};

struct MofQualifierDeclSyntax
{
    MofPos pos;  // of the keyword "qualifier"
    MofNamePos name;
    MofTypeSyntax type;
    MofArraySyntax array;
    bool hasDefault = false;
    MofLiteral defaultValue;
    std::vector<MofNamePos> scopes;
    std::vector<MofNamePos> flavors;
};

struct MofPragmaSyntax
{
    MofPos pos;
    MofNamePos name;
    std::string value;
    MofPos valuePos;
};

struct MofProduction
{
    enum Kind
    {
        End,
        Pragma,
        QualifierDecl,
        Class,
        Instance
    };

    Kind kind = End;
    MofPragmaSyntax pragma;
    MofQualifierDeclSyntax qualifierDecl;
    MofClassSyntax cls;
    MofInstanceSyntax instance;
};

PEGASUS_NAMESPACE_END

#endif
