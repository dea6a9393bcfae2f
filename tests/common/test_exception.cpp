// Exception texts, CIM status code names and TraceableCIMException
// descriptions as clients of the original runtime see them.
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMInstance.h>  // CIMException needs the complete instance type

#include "test_runtime_support.h"

PEGASUS_USING_PEGASUS;
using qeltest::str;

TEST(ExceptionTexts, MessagesStatusAndTypeNames)
{
    struct Case
    {
        Exception e;
        const char* message;
    } cases[] = {
        {IndexOutOfBoundsException(), "index out of bounds"},
        {TypeMismatchException("m"), "type mismatch: m"},
        {DynamicCastFailedException(), "dynamic cast failed"},
        {ConnectionTimeoutException(), "connection timed out"},
        {NullPointer(), "null pointer"},
        {NoSuchProperty("Name"), "no such property: Name"},
        {NotImplemented("f"), "not implemented: f"},
        {ParseError("at 3"), "parse error: at 3"},
        {AssertionFailureException("a.cpp", 12, "x > 0"), "a.cpp(12): x > 0"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(str(c.e.getMessage()), c.message);

    struct Status
    {
        int code;
        const char* name;
    } statuses[] = {
        {CIM_ERR_METHOD_NOT_FOUND, "CIM_ERR_METHOD_NOT_FOUND"},
        {18, "empty"},
        {19, "empty"},  // the unassigned numbers, named as the original names them
        {CIM_ERR_NAMESPACE_NOT_EMPTY, "CIM_ERR_NAMESPACE_NOT_EMPTY"},
        {CIM_ERR_SERVER_IS_SHUTTING_DOWN, "CIM_ERR_SERVER_IS_SHUTTING_DOWN"},
        {29, "Unrecognized CIM status code"},
    };
    for (const Status& c : statuses)
        EXPECT_STREQ(cimStatusCodeToString(CIMStatusCode(c.code)), c.name) << c.code;
    EXPECT_STREQ(cimTypeToString(CIMTYPE_REFERENCE), "reference");
    EXPECT_STREQ(cimTypeToString(CIMTYPE_INSTANCE), "instance");
    EXPECT_STREQ(cimTypeToString(CIMType(17)), "unknown");
}

TEST(CIMExceptionTexts, DescriptionsWithAndWithoutOrigin)
{
    CIMException e(CIM_ERR_NOT_FOUND, "gone");
    EXPECT_EQ(str(e.getMessage()), "gone");  // no code prefix
    EXPECT_THROW(e.getError(0), IndexOutOfBoundsException);
    TraceableCIMException t(
        CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", "QEL_FCPortProvider", 103);
    EXPECT_EQ(str(t.getMessage()), "Insufficient privilege for the user");
    EXPECT_EQ(
        str(t.getDescription()), "CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
    EXPECT_EQ(
        str(t.getTraceDescription()),
        "QEL_FCPortProvider(103): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
    EXPECT_EQ(str(t.getFile()), "QEL_FCPortProvider");
    EXPECT_EQ(t.getLine(), 103u);
    EXPECT_EQ(
        str(TraceableCIMException(CIM_ERR_FAILED, "", "f", 1).getDescription()), "CIM_ERR_FAILED");

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
        EXPECT_EQ(
            str(again.getDescription()), "CIM_ERR_NOT_SUPPORTED: Does not support in generic!");
    }
    TraceableCIMException plain{CIMException(CIM_ERR_FAILED, "x")};
    EXPECT_EQ(str(plain.getTraceDescription()), "(0): CIM_ERR_FAILED: x");
}
