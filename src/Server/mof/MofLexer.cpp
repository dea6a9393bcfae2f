#include "MofLexer.h"

#include "MofError.h"
#include "MofText.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

Uint32 hexValue(char c)
{
    if (isDigit(c))
        return Uint32(c - '0');
    if (c >= 'a' && c <= 'f')
        return Uint32(c - 'a' + 10);
    return Uint32(c - 'A' + 10);
}

bool isAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isNameStart(char c)
{
    return isAsciiLetter(c) || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool isNamePart(char c)
{
    return isNameStart(c) || isDigit(c);
}

}  // namespace

const char* mofTokenKindName(MofTokenKind kind)
{
    switch (kind)
    {
        case MofTokenKind::End:
            return "end of file";
        case MofTokenKind::Identifier:
            return "a name";
        case MofTokenKind::Alias:
            return "an alias";
        case MofTokenKind::Integer:
            return "an integer";
        case MofTokenKind::Real:
            return "a real number";
        case MofTokenKind::String:
            return "a string";
        case MofTokenKind::Char:
            return "a character";
        case MofTokenKind::Pragma:
            return "'#pragma'";
        case MofTokenKind::LeftBrace:
            return "'{'";
        case MofTokenKind::RightBrace:
            return "'}'";
        case MofTokenKind::LeftBracket:
            return "'['";
        case MofTokenKind::RightBracket:
            return "']'";
        case MofTokenKind::LeftParen:
            return "'('";
        case MofTokenKind::RightParen:
            return "')'";
        case MofTokenKind::Colon:
            return "':'";
        case MofTokenKind::Semicolon:
            return "';'";
        case MofTokenKind::Comma:
            return "','";
        case MofTokenKind::Equals:
            return "'='";
        case MofTokenKind::Period:
            return "'.'";
    }
    return "a token";
}

MofLexer::MofLexer(const std::string& text, const std::string& sourceName)
    : _text(text), _source(sourceName), _pos(0), _line(1), _column(1)
{
    // A UTF-8 byte order mark is not part of the text.
    if (_text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        _pos = 3;
}

void MofLexer::_fail(Uint32 line, Uint32 column, const std::string& what) const
{
    throw MofError(_source, line, column, what);
}

// Moves over bytes that do not hold a line end; columns count characters.
void MofLexer::_advance(size_t bytes)
{
    const size_t end = _pos + bytes;
    while (_pos < end)
    {
        if ((static_cast<unsigned char>(_text[_pos]) & 0xC0) != 0x80)
            _column++;
        _pos++;
    }
}

void MofLexer::_skipSpaceAndComments()
{
    for (;;)
    {
        if (_pos >= _text.size())
            return;
        const char c = _text[_pos];
        if (c == '\n')
        {
            _pos++;
            _line++;
            _column = 1;
        }
        else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v')
        {
            _advance(1);
        }
        else if (c == '/' && _pos + 1 < _text.size() && _text[_pos + 1] == '/')
        {
            while (_pos < _text.size() && _text[_pos] != '\n')
                _advance(1);
        }
        else if (c == '/' && _pos + 1 < _text.size() && _text[_pos + 1] == '*')
        {
            const Uint32 line = _line;
            const Uint32 column = _column;
            _advance(2);
            for (;;)
            {
                if (_pos >= _text.size())
                    _fail(line, column, "comment not closed with '*/'");
                if (_text[_pos] == '*' && _pos + 1 < _text.size() && _text[_pos + 1] == '/')
                {
                    _advance(2);
                    break;
                }
                if (_text[_pos] == '\n')
                {
                    _pos++;
                    _line++;
                    _column = 1;
                }
                else
                    _advance(1);
            }
        }
        else
            return;
    }
}

MofToken MofLexer::next()
{
    _skipSpaceAndComments();
    MofToken tok;
    tok.line = _line;
    tok.column = _column;
    if (_pos >= _text.size())
    {
        tok.kind = MofTokenKind::End;
        return tok;
    }

    const char c = _text[_pos];
    MofTokenKind single = MofTokenKind::End;
    switch (c)
    {
        case '{':
            single = MofTokenKind::LeftBrace;
            break;
        case '}':
            single = MofTokenKind::RightBrace;
            break;
        case '[':
            single = MofTokenKind::LeftBracket;
            break;
        case ']':
            single = MofTokenKind::RightBracket;
            break;
        case '(':
            single = MofTokenKind::LeftParen;
            break;
        case ')':
            single = MofTokenKind::RightParen;
            break;
        case ':':
            single = MofTokenKind::Colon;
            break;
        case ';':
            single = MofTokenKind::Semicolon;
            break;
        case ',':
            single = MofTokenKind::Comma;
            break;
        case '=':
            single = MofTokenKind::Equals;
            break;
        default:
            break;
    }
    if (single != MofTokenKind::End)
    {
        tok.kind = single;
        tok.text = std::string(1, c);
        _advance(1);
        return tok;
    }

    const bool nextIsDigit = _pos + 1 < _text.size() && isDigit(_text[_pos + 1]);
    if (isDigit(c) ||
        ((c == '+' || c == '-') &&
         (nextIsDigit ||
          (_pos + 2 < _text.size() && _text[_pos + 1] == '.' && isDigit(_text[_pos + 2])))) ||
        (c == '.' && nextIsDigit))
    {
        return _number(tok);
    }
    if (c == '.')
    {
        tok.kind = MofTokenKind::Period;
        tok.text = ".";
        _advance(1);
        return tok;
    }
    if (c == '"')
        return _string(tok);
    if (c == '\'')
        return _char(tok);
    if (c == '$')
    {
        size_t end = _pos + 1;
        while (end < _text.size() && (isAsciiLetter(_text[end]) || isDigit(_text[end]) ||
                                      _text[end] == '_' || _text[end] == '$'))
            end++;
        if (end == _pos + 1)
            _fail(tok.line, tok.column, "'$' must be followed by an alias name");
        tok.kind = MofTokenKind::Alias;
        tok.text = _text.substr(_pos, end - _pos);
        _advance(end - _pos);
        return tok;
    }
    if (c == '#')
    {
        size_t end = _pos + 1;
        while (end < _text.size() && isNamePart(_text[end]) &&
               static_cast<unsigned char>(_text[end]) < 0x80)
            end++;
        const std::string word = _text.substr(_pos + 1, end - _pos - 1);
        if (!equalNoCaseAscii(word, "pragma"))
        {
            _fail(
                tok.line, tok.column,
                "unknown directive " + quoted("#" + word) + "; only #pragma is known");
        }
        tok.kind = MofTokenKind::Pragma;
        tok.text = "#" + word;
        _advance(end - _pos);
        return tok;
    }
    if (isNameStart(c))
    {
        size_t end = _pos;
        while (end < _text.size() && isNamePart(_text[end]))
        {
            if (static_cast<unsigned char>(_text[end]) >= 0x80)
            {
                const size_t len = utf8SequenceLength(_text, end);
                if (len == 0)
                {
                    _advance(end - _pos);
                    char buf[48];
                    std::snprintf(
                        buf, sizeof(buf), "byte 0x%02X is not valid UTF-8",
                        static_cast<unsigned char>(_text[end]));
                    _fail(_line, _column, buf);
                }
                end += len;
            }
            else
                end++;
        }
        tok.kind = MofTokenKind::Identifier;
        tok.text = _text.substr(_pos, end - _pos);
        _advance(end - _pos);
        return tok;
    }

    const unsigned char uc = static_cast<unsigned char>(c);
    if (uc < 0x20 || uc == 0x7F)
    {
        char buf[40];
        std::snprintf(buf, sizeof(buf), "unexpected control byte 0x%02X", uc);
        _fail(tok.line, tok.column, buf);
    }
    _fail(tok.line, tok.column, "unexpected character " + quoted(std::string(1, c)));
}

MofToken MofLexer::_number(MofToken tok)
{
    const size_t start = _pos;
    size_t p = _pos;
    if (_text[p] == '+' || _text[p] == '-')
    {
        tok.negative = _text[p] == '-';
        p++;
    }
    const size_t digitsStart = p;
    bool isReal = false;
    int radix = 10;
    std::string digits;

    if (_text[p] == '0' && p + 1 < _text.size() && (_text[p + 1] == 'x' || _text[p + 1] == 'X'))
    {
        radix = 16;
        p += 2;
        while (p < _text.size() && isHexDigit(_text[p]))
            digits += _text[p++];
    }
    else
    {
        while (p < _text.size() && isDigit(_text[p]))
            p++;
        if (p < _text.size() && _text[p] == '.' && p + 1 < _text.size() && isDigit(_text[p + 1]))
        {
            isReal = true;
            p++;
            while (p < _text.size() && isDigit(_text[p]))
                p++;
            if (p < _text.size() && (_text[p] == 'e' || _text[p] == 'E'))
            {
                size_t q = p + 1;
                if (q < _text.size() && (_text[q] == '+' || _text[q] == '-'))
                    q++;
                if (q < _text.size() && isDigit(_text[q]))
                {
                    while (q < _text.size() && isDigit(_text[q]))
                        q++;
                    p = q;
                }
            }
        }
        else
        {
            digits = _text.substr(digitsStart, p - digitsStart);
            if (p < _text.size() && (_text[p] == 'b' || _text[p] == 'B'))
            {
                radix = 2;
                p++;
            }
            else if (digits.size() > 1 && digits[0] == '0')
            {
                radix = 8;
                digits = digits.substr(1);
            }
        }
    }

    // The number must end where a name could not go on.
    size_t end = p;
    while (end < _text.size() && (isNamePart(_text[end]) || _text[end] == '.') &&
           static_cast<unsigned char>(_text[end]) < 0x80)
        end++;
    tok.text = _text.substr(start, end - start);
    if (end != p || (radix == 16 && digits.empty()))
        _fail(tok.line, tok.column, "malformed number " + quoted(tok.text));

    if (isReal)
    {
        tok.kind = MofTokenKind::Real;
        _advance(end - start);
        return tok;
    }

    tok.kind = MofTokenKind::Integer;
    for (char d : digits)
    {
        const Uint32 v = hexValue(d);
        if (static_cast<int>(v) >= radix)
        {
            _fail(
                tok.line, tok.column,
                std::string(radix == 2 ? "binary" : "octal") + " number " + quoted(tok.text) +
                    " holds the digit " + std::string(1, d));
        }
        const Uint64 limit = ~Uint64(0);
        if (tok.magnitude > (limit - v) / Uint64(radix))
            tok.overflow = true;
        else
            tok.magnitude = tok.magnitude * Uint64(radix) + v;
    }
    _advance(end - start);
    return tok;
}

// Reads one escape sequence after its backslash; returns the code point.
Uint32 MofLexer::_escape()
{
    const Uint32 line = _line;
    const Uint32 column = _column - 1;
    if (_pos >= _text.size())
        _fail(line, column, "escape sequence cut off by the end of file");
    const char e = _text[_pos];
    switch (e)
    {
        case 'b':
            _advance(1);
            return '\b';
        case 't':
            _advance(1);
            return '\t';
        case 'n':
            _advance(1);
            return '\n';
        case 'f':
            _advance(1);
            return '\f';
        case 'r':
            _advance(1);
            return '\r';
        case '"':
            _advance(1);
            return '"';
        case '\'':
            _advance(1);
            return '\'';
        case '\\':
            _advance(1);
            return '\\';
        case 'x':
        case 'X':
        {
            _advance(1);
            Uint32 cp = 0;
            int n = 0;
            while (n < 4 && _pos < _text.size() && isHexDigit(_text[_pos]))
            {
                cp = cp * 16 + hexValue(_text[_pos]);
                _advance(1);
                n++;
            }
            if (n == 0)
                _fail(line, column, "\\x must be followed by 1 to 4 hexadecimal digits");
            if (cp == 0)
                _fail(line, column, "\\x0 would put a NUL character into the text");
            if (cp >= 0xD800 && cp <= 0xDFFF)
                _fail(line, column, "\\x escape names a UTF-16 surrogate, not a character");
            return cp;
        }
        default:
            break;
    }
    const size_t len = utf8SequenceLength(_text, _pos);
    _fail(
        line, column,
        "unknown escape sequence " + quoted("\\" + _text.substr(_pos, len ? len : 1)));
}

MofToken MofLexer::_string(MofToken tok)
{
    tok.kind = MofTokenKind::String;
    _advance(1);
    for (;;)
    {
        if (_pos >= _text.size() || _text[_pos] == '\n' || _text[_pos] == '\r')
            _fail(tok.line, tok.column, "string not closed before the end of the line");
        const char c = _text[_pos];
        if (c == '"')
        {
            _advance(1);
            return tok;
        }
        if (c == '\\')
        {
            _advance(1);
            appendUtf8(tok.text, _escape());
            continue;
        }
        if (c == '\0')
            _fail(_line, _column, "NUL byte inside a string");
        const size_t len = utf8SequenceLength(_text, _pos);
        if (len == 0)
        {
            char buf[48];
            std::snprintf(
                buf, sizeof(buf), "byte 0x%02X is not valid UTF-8", static_cast<unsigned char>(c));
            _fail(_line, _column, buf);
        }
        tok.text.append(_text, _pos, len);
        _advance(len);
    }
}

MofToken MofLexer::_char(MofToken tok)
{
    tok.kind = MofTokenKind::Char;
    _advance(1);
    if (_pos >= _text.size() || _text[_pos] == '\n' || _text[_pos] == '\r' || _text[_pos] == '\'')
        _fail(tok.line, tok.column, "a character literal holds exactly one character");
    Uint32 cp;
    if (_text[_pos] == '\\')
    {
        _advance(1);
        cp = _escape();
    }
    else
    {
        const size_t len = utf8SequenceLength(_text, _pos);
        if (len == 0 || _text[_pos] == '\0')
            _fail(_line, _column, "character literal is not valid UTF-8");
        cp = static_cast<unsigned char>(_text[_pos]);
        if (len == 2)
            cp = ((cp & 0x1F) << 6) | (static_cast<unsigned char>(_text[_pos + 1]) & 0x3F);
        else if (len == 3)
            cp = ((cp & 0x0F) << 12) | ((static_cast<unsigned char>(_text[_pos + 1]) & 0x3F) << 6) |
                 (static_cast<unsigned char>(_text[_pos + 2]) & 0x3F);
        _advance(len);
    }
    if (_pos >= _text.size() || _text[_pos] != '\'')
        _fail(tok.line, tok.column, "a character literal holds exactly one character");
    _advance(1);
    tok.charValue = static_cast<Uint16>(cp);
    appendUtf8(tok.text, cp);
    return tok;
}

PEGASUS_NAMESPACE_END
