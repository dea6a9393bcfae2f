// Splits MOF text into tokens with their line and column. Keywords are not
// told apart here: they are identifiers that the parser recognises where the
// grammar expects them, so names such as "Scope" or "Property" stay usable.
#ifndef QEL_Server_MofLexer_h
#define QEL_Server_MofLexer_h

#include <string>
#include <Pegasus/Common/Config.h>

PEGASUS_NAMESPACE_BEGIN

enum class MofTokenKind
{
    End,
    Identifier,
    Alias,  // $name; text holds the name with its '$'
    Integer,
    Real,
    String,  // text holds the decoded UTF-8 value
    Char,    // charValue holds the UTF-16 unit
    Pragma,  // #pragma
    LeftBrace,
    RightBrace,
    LeftBracket,
    RightBracket,
    LeftParen,
    RightParen,
    Colon,
    Semicolon,
    Comma,
    Equals,
    Period
};

// How a token kind is named in "expected ..." messages.
const char* mofTokenKindName(MofTokenKind kind);

struct MofToken
{
    MofTokenKind kind = MofTokenKind::End;
    Uint32 line = 0;
    Uint32 column = 0;
    // Identifier or alias spelling, decoded string, or the number as written.
    std::string text;
    // Integers: the value is (negative ? -magnitude : magnitude); overflow
    // is set when the magnitude does not fit 64 bits.
    bool negative = false;
    bool overflow = false;
    Uint64 magnitude = 0;
    Uint16 charValue = 0;
};

class MofLexer
{
public:
    // sourceName is used in error positions only.
    MofLexer(const std::string& text, const std::string& sourceName);

    // The next token; End at the end of the text, and again after it.
    // Throws MofError for anything that is not a token.
    MofToken next();

    const std::string& sourceName() const { return _source; }

private:
    void _skipSpaceAndComments();
    MofToken _number(MofToken tok);
    MofToken _string(MofToken tok);
    MofToken _char(MofToken tok);
    Uint32 _escape();
    void _advance(size_t bytes);
    [[noreturn]] void _fail(Uint32 line, Uint32 column, const std::string& what) const;

    std::string _text;
    std::string _source;
    size_t _pos;
    Uint32 _line;
    Uint32 _column;
};

PEGASUS_NAMESPACE_END

#endif
