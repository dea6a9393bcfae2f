#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/ExceptionRep.h>

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

namespace
{
String _withArg(const char* text, const String& arg)
{
    return String(text) + arg;
}
}  // namespace

AssertionFailureException::AssertionFailureException(
    const char* file, size_t line, const String& message)
    : Exception(String())
{
    char buf[32];
    snprintf(buf, sizeof(buf), "(%zu): ", line);
    _rep->message = String(file ? file : "") + String(buf) + message;
}

AssertionFailureException::~AssertionFailureException()
{
}

const char NullPointer::MSG[] = "null pointer";
NullPointer::NullPointer() : Exception(MSG)
{
}
NullPointer::~NullPointer()
{
}

const char NoSuchProperty::MSG[] = "no such property: ";
NoSuchProperty::NoSuchProperty(const String& propertyName) : Exception(_withArg(MSG, propertyName))
{
}
NoSuchProperty::~NoSuchProperty()
{
}

const char NotImplemented::MSG[] = "not implemented: ";
NotImplemented::NotImplemented(const String& method) : Exception(_withArg(MSG, method))
{
}
NotImplemented::~NotImplemented()
{
}

const char ParseError::MSG[] = "parse error: ";
ParseError::ParseError(const String& message) : Exception(_withArg(MSG, message))
{
}
ParseError::~ParseError()
{
}

//
// TraceableCIMException
//

namespace
{
CIMExceptionRep*
_tracedRep(CIMStatusCode code, const String& message, const String& file, Uint32 line)
{
    CIMExceptionRep* rep = new CIMExceptionRep(code, message);
    rep->file = file;
    rep->line = line;
    rep->cimMessage = cimStatusCodeToString(code);
    return rep;
}
}  // namespace

TraceableCIMException::TraceableCIMException(
    CIMStatusCode code, const String& message, const String& file, Uint32 line)
    : CIMException(_tracedRep(code, message, file, line))
{
}

namespace
{
// Code, message, origin and code text of another CIM exception; its error
// instances are not carried over, as in the original runtime.
CIMExceptionRep* _tracedCopy(const ExceptionRep* from)
{
    const CIMExceptionRep* src = static_cast<const CIMExceptionRep*>(from);
    CIMExceptionRep* rep = new CIMExceptionRep(src->code, src->message);
    rep->file = src->file;
    rep->line = src->line;
    rep->cimMessage = src->cimMessage;
    return rep;
}
}  // namespace

TraceableCIMException::TraceableCIMException(const CIMException& cimException)
    : CIMException(_tracedCopy(cimException._rep))
{
}

String TraceableCIMException::getDescription() const
{
    const String& codeText = static_cast<const CIMExceptionRep*>(_rep)->cimMessage;
    String text(codeText.size() ? codeText : String(cimStatusCodeToString(getCode())));
    if (getMessage().size() != 0)
    {
        text.append(": ");
        text.append(getMessage());
    }
    return text;
}

String TraceableCIMException::getTraceDescription() const
{
    String text(getFile());
    text.appendPrintf("(%u): ", getLine());
    text.append(getDescription());
    return text;
}

String TraceableCIMException::getCIMMessage() const
{
    return static_cast<const CIMExceptionRep*>(_rep)->cimMessage;
}

void TraceableCIMException::setCIMMessage(const String& cimMessage)
{
    static_cast<CIMExceptionRep*>(_rep)->cimMessage = cimMessage;
}

String TraceableCIMException::getFile() const
{
    return static_cast<const CIMExceptionRep*>(_rep)->file;
}

Uint32 TraceableCIMException::getLine() const
{
    return static_cast<const CIMExceptionRep*>(_rep)->line;
}

PEGASUS_NAMESPACE_END
