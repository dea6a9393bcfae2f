// Recursive-descent parser of MOF (DMTF DSP0004 syntax as cimmof accepts
// it), handing out one production at a time so that an include or a
// namespace pragma takes effect before the next production is read.
#ifndef QEL_Server_MofParser_h
#define QEL_Server_MofParser_h

#include <deque>
#include <string>
#include <Pegasus/Common/Config.h>
#include "MofLexer.h"
#include "MofSyntax.h"

PEGASUS_NAMESPACE_BEGIN

class MofParser
{
public:
    MofParser(const std::string& text, const std::string& sourceName);

    // The next production, or one of kind End after the last.
    // Throws MofError on a syntax error.
    MofProduction next();

    const std::string& sourceName() const { return _lexer.sourceName(); }

private:
    const MofToken& _peek(size_t ahead = 0);
    MofToken _take();
    MofToken _expect(MofTokenKind kind, const char* context);
    bool _isKeyword(const MofToken& tok, const char* keyword) const;
    bool _acceptKeyword(const char* keyword);
    MofNamePos _expectName(const char* what);
    void _expectKeyword(const char* keyword, const char* context);
    [[noreturn]] void _fail(const MofToken& at, const std::string& what) const;
    [[noreturn]] void _unexpected(const MofToken& at, const std::string& expected) const;

    void _pragma(MofPragmaSyntax& out);
    void _qualifierDecl(MofQualifierDeclSyntax& out);
    void _class(MofClassSyntax& out);
    void _instance(MofInstanceSyntax& out);
    void _feature(MofClassSyntax& cls);
    void _parameter(MofParameterSyntax& out);
    void _qualifierList(MofQualifierList& out);
    void _qualifier(MofQualifierSyntax& out);
    bool _dataType(const MofToken& tok, CIMType& type) const;
    void _typeOrReference(MofTypeSyntax& out, const char* context);
    void _array(MofArraySyntax& out);
    void _initializer(MofLiteral& out, bool allowArray, const char* context);
    void _constant(MofLiteral& out, const char* context);
    std::string _stringValue(const char* context);

    MofLexer _lexer;
    std::deque<MofToken> _ahead;
};

PEGASUS_NAMESPACE_END

#endif
