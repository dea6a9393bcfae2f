// Text helpers shared by the MOF compiler: the compiler works on UTF-8
// std::string and hands Pegasus String to the object model.
#ifndef QEL_Server_MofText_h
#define QEL_Server_MofText_h

#include <cstddef>
#include <string>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Length in bytes of the UTF-8 sequence that starts at text[pos], or 0 when
// it is not a well-formed sequence of a code point up to U+FFFF (the runtime
// holds UTF-16 units; surrogates and longer sequences are refused).
size_t utf8SequenceLength(const std::string& text, size_t pos);

// True when the whole text is well-formed in the sense above; *badOffset
// gets the first bad byte otherwise.
bool isValidMofUtf8(const std::string& text, size_t* badOffset = 0);

// Appends the UTF-8 encoding of a code point up to U+FFFF.
void appendUtf8(std::string& out, Uint32 codePoint);

// A String from UTF-8 text; bytes that are not well-formed become '?', so a
// message about bad input never throws on its own.
String mofString(const std::string& utf8);

std::string stdString(const String& s);

// Text quoted for an error message: at most 40 characters, control bytes
// and bytes that are not UTF-8 shown as \xNN.
std::string quoted(const std::string& text);

// ASCII lower case, as CIM names compare.
std::string lowerAscii(const std::string& text);
bool equalNoCaseAscii(const std::string& a, const std::string& b);

PEGASUS_NAMESPACE_END

#endif
