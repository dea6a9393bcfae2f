// Exceptions used inside the runtime and by in-tree providers, among them
// TraceableCIMException, which carries the source file and line of the throw.
// Self-contained: needs no message-loader header.
#ifndef Pegasus_InternalException_h
#define Pegasus_InternalException_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMStatusCode.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE AssertionFailureException : public Exception
{
public:
    AssertionFailureException(const char* file, size_t line, const String& message);
    virtual ~AssertionFailureException();
};

class PEGASUS_COMMON_LINKAGE NullPointer : public Exception
{
public:
    static const char MSG[];
    NullPointer();
    virtual ~NullPointer();
};

class PEGASUS_COMMON_LINKAGE NoSuchProperty : public Exception
{
public:
    static const char MSG[];
    NoSuchProperty(const String& propertyName);
    virtual ~NoSuchProperty();
};

class PEGASUS_COMMON_LINKAGE NotImplemented : public Exception
{
public:
    static const char MSG[];
    NotImplemented(const String& method);
    virtual ~NotImplemented();
};

class PEGASUS_COMMON_LINKAGE ParseError : public Exception
{
public:
    static const char MSG[];
    ParseError(const String& message);
    virtual ~ParseError();
};

class PEGASUS_COMMON_LINKAGE TraceableCIMException : public CIMException
{
public:
    TraceableCIMException(
        CIMStatusCode code, const String& message, const String& file, Uint32 line);

    // Keeps code, message, file and line (empty and 0 for a plain
    // CIMException); error instances are not carried over.
    TraceableCIMException(const CIMException& cimException);

    // "<CODE NAME>: <message>", or only the code name for an empty message;
    // a text set by setCIMMessage() takes the place of the code name.
    String getDescription() const;
    // "<file>(<line>): " followed by getDescription().
    String getTraceDescription() const;

    String getCIMMessage() const;
    void setCIMMessage(const String& cimMessage);

    String getFile() const;
    Uint32 getLine() const;
};

#define PEGASUS_CIM_EXCEPTION(CODE, EXTRA_MESSAGE)                                                 \
    TraceableCIMException(CODE, EXTRA_MESSAGE, String(__FILE__), __LINE__)

PEGASUS_NAMESPACE_END

#endif /* Pegasus_InternalException_h */
