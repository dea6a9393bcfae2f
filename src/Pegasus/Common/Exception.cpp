#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ExceptionRep.h>
#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

void ArrayThrowIndexOutOfBoundsException()
{
    throw IndexOutOfBoundsException();
}

//
// Exception
//

Exception::Exception() : _rep(new ExceptionRep())
{
}

Exception::Exception(const String& message) : _rep(new ExceptionRep(message))
{
}

Exception::Exception(ExceptionRep* rep) : _rep(rep)
{
}

Exception::Exception(const Exception& exception) : _rep(exception._rep->clone())
{
}

Exception::~Exception()
{
    delete _rep;
}

Exception& Exception::operator=(const Exception& exception)
{
    if (this != &exception)
    {
        ExceptionRep* rep = exception._rep->clone();
        delete _rep;
        _rep = rep;
    }
    return *this;
}

const String& Exception::getMessage() const
{
    return _rep->message;
}

//
// Object model exceptions; texts kept as the original runtime words them.
//

IndexOutOfBoundsException::IndexOutOfBoundsException() : Exception("index out of bounds")
{
}

AlreadyExistsException::AlreadyExistsException(const String& message)
    : Exception(String("already exists: ") + message)
{
}

InvalidNameException::InvalidNameException(const String& name)
    : Exception(String("The CIM name is not valid: ") + name)
{
}

InvalidNamespaceNameException::InvalidNamespaceNameException(const String& name)
    : Exception(String("invalid CIM namespace name: ") + name)
{
}

UninitializedObjectException::UninitializedObjectException() : Exception("uninitialized object")
{
}

TypeMismatchException::TypeMismatchException() : Exception("type mismatch")
{
}

TypeMismatchException::TypeMismatchException(const String& message)
    : Exception(String("type mismatch: ") + message)
{
}

DynamicCastFailedException::DynamicCastFailedException() : Exception("dynamic cast failed")
{
}

InvalidDateTimeFormatException::InvalidDateTimeFormatException()
    : Exception("invalid datetime format")
{
}

// The blank before the colon is intended: clients match this text.
DateTimeOutOfRangeException::DateTimeOutOfRangeException(const String& message)
    : Exception(String("DateTime is out of range : ") + message)
{
}

MalformedObjectNameException::MalformedObjectNameException(const String& objectName)
    : Exception(String("malformed object name: ") + objectName)
{
}

BindFailedException::BindFailedException(const String& message)
    : Exception(String("Bind failed: ") + message)
{
}

InvalidLocatorException::InvalidLocatorException(const String& locator)
    : Exception(String("Invalid locator: ") + locator)
{
}

CannotCreateSocketException::CannotCreateSocketException() : Exception("Cannot create socket")
{
}

CannotConnectException::CannotConnectException(const String& message) : Exception(message)
{
}

AlreadyConnectedException::AlreadyConnectedException() : Exception("already connected")
{
}

NotConnectedException::NotConnectedException() : Exception("not connected")
{
}

ConnectionTimeoutException::ConnectionTimeoutException() : Exception("connection timed out")
{
}

SSLException::SSLException(const String& message) : Exception(String("SSL Exception: ") + message)
{
}

//
// CIMException
//

namespace
{
CIMExceptionRep* _cimRep(ExceptionRep* rep)
{
    return static_cast<CIMExceptionRep*>(rep);
}
}  // namespace

CIMException::CIMException(CIMStatusCode code, const String& message)
    : Exception(new CIMExceptionRep(code, message))
{
}

CIMException::CIMException(CIMStatusCode code, const String& message, const CIMInstance& instance)
    : Exception(new CIMExceptionRep(code, message))
{
    _cimRep(_rep)->errors.append(instance);
}

CIMException::CIMException(
    CIMStatusCode code, const String& message, const Array<CIMInstance>& instances)
    : Exception(new CIMExceptionRep(code, message))
{
    _cimRep(_rep)->errors = instances;
}

CIMException::CIMException(ExceptionRep* rep) : Exception(rep)
{
}

CIMException::CIMException(const CIMException& cimException) : Exception(cimException)
{
}

CIMException& CIMException::operator=(const CIMException& cimException)
{
    Exception::operator=(cimException);
    return *this;
}

CIMException::~CIMException()
{
}

CIMStatusCode CIMException::getCode() const
{
    return _cimRep(_rep)->code;
}

Uint32 CIMException::getErrorCount() const
{
    return _cimRep(_rep)->errors.size();
}

CIMConstInstance CIMException::getError(Uint32 index) const
{
    return _cimRep(_rep)->errors[index];
}

void CIMException::addError(const CIMInstance& instance)
{
    _cimRep(_rep)->errors.append(instance);
}

PEGASUS_NAMESPACE_END
