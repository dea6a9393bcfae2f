// Internal state behind Exception and CIMException (not installed for
// providers).
#ifndef Pegasus_ExceptionRep_h
#define Pegasus_ExceptionRep_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

class ExceptionRep
{
public:
    explicit ExceptionRep(const String& m = String()) : message(m) {}
    virtual ~ExceptionRep() {}
    virtual ExceptionRep* clone() const { return new ExceptionRep(*this); }

    String message;
};

class CIMExceptionRep : public ExceptionRep
{
public:
    CIMExceptionRep(CIMStatusCode c, const String& m) : ExceptionRep(m), code(c), line(0) {}
    ExceptionRep* clone() const override { return new CIMExceptionRep(*this); }

    CIMStatusCode code;
    // Shared handles as stored; CIMException copies share them.
    Array<CIMInstance> errors;
    // Where a TraceableCIMException was raised; empty/0 otherwise.
    String file;
    Uint32 line;
    String cimMessage;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_ExceptionRep_h */
