// Exception texts, CIM status code names and TraceableCIMException
// descriptions as clients of the original runtime see them.
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMInstance.h>

#include <gtest/gtest.h>

#include <string>

PEGASUS_USING_PEGASUS;

namespace
{
std::string utf8(const String& s) { return std::string(s.getCString()); }
}  // namespace

TEST(ExceptionTexts, MessagesOfTheObjectModelExceptions)
{
    struct Case
    {
        Exception e;
        const char* message;
    } cases[] = {
        { IndexOutOfBoundsException(), "index out of bounds" },
        { AlreadyExistsException("property \"X\""), "already exists: property \"X\"" },
        { InvalidNameException("1a"), "The CIM name is not valid: 1a" },
        { InvalidNamespaceNameException("a//b"), "invalid CIM namespace name: a//b" },
        { UninitializedObjectException(), "uninitialized object" },
        { TypeMismatchException(), "type mismatch" },
        { TypeMismatchException("m"), "type mismatch: m" },
        { DynamicCastFailedException(), "dynamic cast failed" },
        { InvalidDateTimeFormatException(), "invalid datetime format" },
        { DateTimeOutOfRangeException("m"), "DateTime is out of range : m" },
        { MalformedObjectNameException("x"), "malformed object name: x" },
        { CannotConnectException("refused"), "refused" },
        { AlreadyConnectedException(), "already connected" },
        { NotConnectedException(), "not connected" },
        { ConnectionTimeoutException(), "connection timed out" },
        { NullPointer(), "null pointer" },
        { NoSuchProperty("Name"), "no such property: Name" },
        { NotImplemented("f"), "not implemented: f" },
        { ParseError("at 3"), "parse error: at 3" },
        { AssertionFailureException("a.cpp", 12, "x > 0"), "a.cpp(12): x > 0" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(utf8(c.e.getMessage()), c.message);
}

TEST(ExceptionTexts, StatusAndTypeNames)
{
    EXPECT_STREQ(cimStatusCodeToString(CIM_ERR_SUCCESS), "CIM_ERR_SUCCESS");
    EXPECT_STREQ(cimStatusCodeToString(CIM_ERR_NOT_FOUND), "CIM_ERR_NOT_FOUND");
    EXPECT_STREQ(cimStatusCodeToString(CIM_ERR_METHOD_NOT_FOUND), "CIM_ERR_METHOD_NOT_FOUND");
    EXPECT_STREQ(cimStatusCodeToString(CIMStatusCode(18)), "empty");
    EXPECT_STREQ(cimStatusCodeToString(CIMStatusCode(19)), "empty");
    EXPECT_STREQ(cimStatusCodeToString(CIM_ERR_NAMESPACE_NOT_EMPTY), "CIM_ERR_NAMESPACE_NOT_EMPTY");
    EXPECT_STREQ(cimStatusCodeToString(CIM_ERR_SERVER_IS_SHUTTING_DOWN), "CIM_ERR_SERVER_IS_SHUTTING_DOWN");
    EXPECT_STREQ(cimStatusCodeToString(CIMStatusCode(29)), "Unrecognized CIM status code");

    EXPECT_STREQ(cimTypeToString(CIMTYPE_BOOLEAN), "boolean");
    EXPECT_STREQ(cimTypeToString(CIMTYPE_UINT16), "uint16");
    EXPECT_STREQ(cimTypeToString(CIMTYPE_REFERENCE), "reference");
    EXPECT_STREQ(cimTypeToString(CIMTYPE_INSTANCE), "instance");
    EXPECT_STREQ(cimTypeToString(CIMType(17)), "unknown");
}

TEST(CIMExceptionTexts, MessageHasNoCodePrefix)
{
    CIMException e(CIM_ERR_NOT_FOUND, "gone");
    EXPECT_EQ(e.getCode(), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(utf8(e.getMessage()), "gone");
    CIMException copy(e);
    CIMException assigned;
    assigned = copy;
    EXPECT_EQ(assigned.getCode(), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(utf8(assigned.getMessage()), "gone");
    EXPECT_EQ(CIMException().getCode(), CIM_ERR_SUCCESS);
    EXPECT_EQ(e.getErrorCount(), 0u);
    EXPECT_THROW(e.getError(0), IndexOutOfBoundsException);
}

TEST(TraceableCIMExceptionTexts, DescriptionsWithAndWithoutOrigin)
{
    TraceableCIMException t(
        CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", "QEL_FCPortProvider", 103);
    EXPECT_EQ(utf8(t.getMessage()), "Insufficient privilege for the user");
    EXPECT_EQ(utf8(t.getDescription()), "CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
    EXPECT_EQ(utf8(t.getTraceDescription()),
        "QEL_FCPortProvider(103): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
    EXPECT_EQ(utf8(t.getFile()), "QEL_FCPortProvider");
    EXPECT_EQ(t.getLine(), 103u);

    TraceableCIMException bare(CIM_ERR_FAILED, "", "f", 1);
    EXPECT_EQ(utf8(bare.getDescription()), "CIM_ERR_FAILED");

    // Caught as a plain CIMException, then wrapped again: origin kept.
    try
    {
        throw PEGASUS_CIM_EXCEPTION(CIM_ERR_NOT_SUPPORTED, "Does not support in generic!");
    }
    catch (const CIMException& e)
    {
        TraceableCIMException again(e);
        EXPECT_EQ(again.getCode(), CIM_ERR_NOT_SUPPORTED);
        EXPECT_EQ(again.getLine(), unsigned(__LINE__ - 6));
        EXPECT_EQ(utf8(again.getDescription()), "CIM_ERR_NOT_SUPPORTED: Does not support in generic!");
    }
    TraceableCIMException plain{CIMException(CIM_ERR_FAILED, "x")};
    EXPECT_EQ(utf8(plain.getTraceDescription()), "(0): CIM_ERR_FAILED: x");
}
