// Typed property and parameter access: result codes, the out-argument rule,
// the trace texts, and the writers' silence on absent properties.
#include "QEL_Common.h"
#include "qelcommon_test_support.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <functional>

using namespace Pegasus;
using namespace qelcommontest;

static std::string str(const String& s)
{
    return (const char*)s.getCString();
}

static CIMValue typedNull(const CIMValue& like)
{
    CIMValue v;
    v.setNullValue(like.getType(), like.isArray());
    return v;
}

// One getProperty overload through found (name in other case), absent,
// illegal name and null: codes, the out-argument and the traces.
template <class T>
static void checkPropertyReader(
    const std::string& label, const T& expected, const T& sentinel, const Texts& exitFound)
{
    const CIMValue stored(expected);
    SCOPED_TRACE(label);
    CIMInstance inst("QEL_Test");
    inst.addProperty(CIMProperty("Present", stored));
    inst.addProperty(CIMProperty("Empty", typedNull(stored)));
    TraceCapture trace;
    T out = sentinel;
    EXPECT_EQ(0u, QEL_Common::getProperty(inst, "pRESENT", out));
    EXPECT_EQ(CIMValue(out), CIMValue(expected));
    Texts want = {"-->QEL_Common::getProperty(" + label + "), propertyName = pRESENT\n"};
    want.insert(want.end(), exitFound.begin(), exitFound.end());
    EXPECT_EQ(want, trace.texts());
    out = sentinel;
    EXPECT_EQ(3u, QEL_Common::getProperty(inst, "Missing", out));
    EXPECT_EQ(3u, QEL_Common::getProperty(inst, "", out));
    EXPECT_EQ(4u, QEL_Common::getProperty(inst, "Empty", out));
    EXPECT_EQ(CIMValue(out), CIMValue(sentinel));
}

// One getParameter overload: name in other case, null-then-valued, null only (3, never 4) and absent.
template <class T>
static void checkParameterReader(
    const std::string& label, const T& expected, const T& sentinel, const std::string& exitFound)
{
    const CIMValue stored(expected);
    SCOPED_TRACE(label);
    Array<CIMParamValue> params;
    params.append(CIMParamValue("Other", CIMValue(Uint8(1))));
    params.append(CIMParamValue("Wanted", typedNull(stored)));
    params.append(CIMParamValue("WANTED", stored));
    params.append(CIMParamValue("OnlyNull", typedNull(stored)));
    TraceCapture trace;
    T out = sentinel;
    EXPECT_EQ(0u, QEL_Common::getParameter(params, "wanted", out));
    EXPECT_EQ(CIMValue(out), CIMValue(expected));
    EXPECT_EQ(
        (Texts{"-->QEL_Common::getParameter(" + label + "), paramName = wanted\n", exitFound}),
        trace.texts());
    out = sentinel;
    EXPECT_EQ(3u, QEL_Common::getParameter(params, "OnlyNull", out));
    EXPECT_EQ(3u, QEL_Common::getParameter(params, "Missing", out));
    EXPECT_EQ(CIMValue(out), CIMValue(sentinel));
}

TEST(Accessors, EveryGetPropertyOverloadReportsFoundAbsentAndNull)
{
    loadTestArray();
    Array<String> names;
    names.append("a");
    names.append("b");
    CIMObjectPath path("root/qel:QEL_FCPort.DeviceID=\"20110002AC00A001\"");
    CIMDateTime when("20090301140509.000000-300");
    // The path reader carries the Array<String> reader's trace texts.
    checkPropertyReader<CIMObjectPath>(
        "Array<String>", path, CIMObjectPath(),
        {"<--QEL_Common::getProperty(Array<String>), value = " + str(path.toString()) + "\n"});
    checkPropertyReader<Array<String>>(
        "Array<String>", names, Array<String>(),
        {"<--QEL_Common::getProperty(Array<String>), value = a\n",
         "<--QEL_Common::getProperty(Array<String>), value = b\n"});
    checkPropertyReader<Array<Sint32>>(
        "Array<Sint32>", Array<Sint32>(2, -7), Array<Sint32>(),
        {"<--QEL_Common::getProperty(Array<Sint32>)\n"});
    checkPropertyReader<Array<Uint16>>(
        "Array<Uint16>", Array<Uint16>(1, 2), Array<Uint16>(),
        {"<--QEL_Common::getProperty(Array<Uint16>)\n"});
    checkPropertyReader<Uint64>(
        "uint64", Uint64(18446744073709551615ULL), Uint64(1),
        {"<--QEL_Common::getProperty(uint64), value = 18446744073709551615\n"});
    checkPropertyReader<Uint32>(
        "uint32", Uint32(70000), Uint32(1),
        {"<--QEL_Common::getProperty(uint32), value = 70000\n"});
    checkPropertyReader<Uint16>(
        "uint16", Uint16(7), Uint16(99), {"<--QEL_Common::getProperty(uint16), value = 7\n"});
    checkPropertyReader<Uint8>(
        "uint8", Uint8(255), Uint8(1), {"<--QEL_Common::getProperty(uint8), value = 255\n"});
    checkPropertyReader<Boolean>(
        "Boolean", true, false, {"<--QEL_Common::getProperty(Boolean), value = 1\n"});
    checkPropertyReader<CIMDateTime>(
        "CIMDateTime", when, CIMDateTime(),
        {"<--QEL_Common::getProperty(CIMDateTime), value = 20090301140509.000000-300\n"});
}

TEST(Accessors, EveryGetParameterOverloadSkipsNullsAndNeverReportsFour)
{
    loadTestArray();
    CIMObjectPath path("QEL_FCPort.DeviceID=\"20110002AC00A001\"");
    checkParameterReader<Uint8>(
        "Uint8", Uint8(200), Uint8(1), "<--QEL_Common::getParameter(Uint8), paramValue = 200\n");
    checkParameterReader<Uint16>(
        "Uint16", Uint16(65535), Uint16(1),
        "<--QEL_Common::getParameter(Uint16), paramValue = 65535\n");
    checkParameterReader<Array<Uint16>>(
        "Array<Uint16>", Array<Uint16>(2, 5), Array<Uint16>(),
        "<--QEL_Common::getParameter(Array<Uint16>)\n");
    checkParameterReader<Uint32>(
        "Uint32", Uint32(123456), Uint32(1),
        "<--QEL_Common::getParameter(Uint32), paramValue = 123456\n");
    checkParameterReader<Uint64>(
        "Uint64", Uint64(1ULL << 40), Uint64(1),
        "<--QEL_Common::getParameter(Uint64), paramValue = 1099511627776\n");
    checkParameterReader<Boolean>(
        "Boolean", true, false, "<--QEL_Common::getParameter(Boolean), paramValue = 1\n");
    checkParameterReader<CIMDateTime>(
        "CIMDateTime", CIMDateTime("20240131120000.000000+000"), CIMDateTime(),
        "<--QEL_Common::getParameter(CIMDateTime), paramValue = 20240131120000.000000+000\n");
    checkParameterReader<CIMObjectPath>(
        "CIMObjectPath", path, CIMObjectPath(),
        "<--QEL_Common::getParameter(CIMObjectPath), paramValue = " + str(path.toString()) + "\n");
    checkParameterReader<String>(
        "String", String("abc"), String("keep"),
        "<--QEL_Common::getParameter(String), paramValue = abc\n");
    // Its exit trace has no line end.
    checkParameterReader<Array<String>>(
        "Array<String>", Array<String>(1, "x"), Array<String>(),
        "<--QEL_Common::getParameter(Array<String>)");
}

TEST(Accessors, ObjectModelErrorsPassThroughAndBadNamesGiveEmptyAnswers)
{
    loadTestArray();
    CIMInstance inst("QEL_Test");
    inst.addProperty(CIMProperty("Code", CIMValue(Uint16(7))));
    Uint32 wide = 0;
    EXPECT_THROW(QEL_Common::getProperty(inst, "Code", wide), TypeMismatchException);
    Array<Uint16> many;
    EXPECT_THROW(QEL_Common::getProperty(inst, "Code", many), TypeMismatchException);
    CIMInstance uninitialized;
    Uint16 out = 42;
    EXPECT_THROW(QEL_Common::getProperty(uninitialized, "Code", out), UninitializedObjectException);
    EXPECT_THROW(
        QEL_Common::getParameter(
            Array<CIMParamValue>(1, CIMParamValue("Code", CIMValue(Uint32(2)))), "code", out),
        TypeMismatchException);
    TraceCapture trace;
    EXPECT_EQ(3u, QEL_Common::getProperty(inst, "Missing", out));
    EXPECT_TRUE(trace.has(4, "<--QEL_Common::getProperty(uint16), value = 42\n"));

    EXPECT_EQ(String(), QEL_Common::getStringProperty(inst, ""));
    EXPECT_EQ(String(), QEL_Common::getStringProperty(CIMInstance(), "Code"));
    EXPECT_TRUE(QEL_Common::getPropertyValue(CIMInstance(), "Code").isNull());
    EXPECT_EQ(3u, trace.count(3, "\tInvalid property name.\n"));
    EXPECT_THROW(QEL_Common::getStringProperty(inst, "Code"), TypeMismatchException);
    EXPECT_EQ(CIMValue(Uint16(7)), QEL_Common::getPropertyValue(inst, "code"));
    EXPECT_TRUE(trace.has(4, "<--QEL_Common::getStringProperty()\n"));  // getPropertyValue's exit

    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Count", "0x10", CIMKeyBinding::NUMERIC));
    keys.append(CIMKeyBinding("Tag", "first", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("TAG", "second", CIMKeyBinding::STRING));
    CIMObjectPath path(String(), CIMNamespaceName(), "QEL_SFP", keys);
    // Bindings of names equal but for case are stored in no fixed order.
    String last = path.getKeyBindings()[2].getName().getString() == "TAG" ? "second" : "first";
    EXPECT_EQ(last, QEL_Common::getStringProperty(path, "tag"));
    EXPECT_EQ(String("0x10"), QEL_Common::getStringProperty(path, "count"));
}

TEST(Accessors, WritersSetPresentPropertiesAndIgnoreAbsentOnes)
{
    loadTestArray();
    CIMClass cls = makeTestClass("QEL_Test");
    cls.addProperty(CIMProperty("Ref", CIMValue(CIMTYPE_REFERENCE, false), 0, "QEL_FCPort"));
    TraceCapture trace;
    CIMInstance inst = QEL_Common::buildInstanceSkeleton(cls);
    EXPECT_EQ(
        (Texts{
            "-->QEL_Common::_buildInstanceSkeleton()\n",
            "<--QEL_Common::_buildInstanceSkeleton()\n"}),
        trace.texts());
    const Uint32 count = inst.getPropertyCount();
    EXPECT_EQ(cls.getPropertyCount(), count);
    EXPECT_EQ(String("default"), QEL_Common::getStringProperty(inst, "Name"));

    QEL_Common::setPropertyValue(inst, "InstanceID", "literal text");  // a text, not a Boolean
    CIMObjectPath ref("QEL_FCPort.DeviceID=\"20110002AC00A001\"");
    QEL_Common::setPropertyValue(inst, "Ref", ref);
    QEL_Common::setPropertyValue(inst, "NotInClass", Uint32(1));
    QEL_Common::setPropertyValueToNull(inst, "NotInClass", CIMTYPE_UINT32);
    EXPECT_EQ(count, inst.getPropertyCount());
    EXPECT_EQ(String("literal text"), QEL_Common::getStringProperty(inst, "InstanceID"));
    CIMObjectPath readBack;
    EXPECT_EQ(0u, QEL_Common::getProperty(inst, "Ref", readBack));
    EXPECT_EQ(ref, readBack);
    EXPECT_THROW(QEL_Common::setPropertyValue(inst, "Code", Uint32(3)), TypeMismatchException);
    QEL_Common::setPropertyValue(inst, "Code", Uint16(3));
    QEL_Common::setPropertyValueToNull(inst, "Code", CIMTYPE_UINT16);
    Uint16 code = 77;
    EXPECT_EQ(4u, QEL_Common::getProperty(inst, "Code", code));

    CIMInstance embedded("QEL_Embedded");
    QEL_Common::setPropertyValue(inst, "Name", embedded);
    QEL_Common::setPropertyValue(inst, "Absent", embedded);
    EXPECT_EQ(count, inst.getPropertyCount());
    EXPECT_EQ(CIMTYPE_INSTANCE, inst.getProperty(inst.findProperty("Name")).getType());
}

// The instance readers look a property up by a CIMName made of the text, so a name that is no CIM
// name lets the object model's InvalidNameException through; the empty name keeps its own answers
// (3, or "" and null with the level-3 line), and getParameter, which compares texts, finds a
// parameter of any name.
TEST(Accessors, NamesThatAreNoCIMNamesReachTheObjectModel)
{
    loadTestArray();
    CIMInstance inst("QEL_Test");
    inst.addProperty(CIMProperty("Name", CIMValue(String("v"))));
    inst.addProperty(CIMProperty("Ref", CIMValue(CIMObjectPath("QEL_FCPort.DeviceID=\"1\""))));
    const auto outcome = [](const std::function<std::string()>& read) -> std::string
    {
        try
        {
            return read();
        }
        catch (const InvalidNameException&)
        {
            return "InvalidName";
        }
    };
    const struct
    {
        const char* name;
        Texts answers;  // getProperty uint16 and path, getStringProperty, getPropertyValue
        size_t invalidNameLines;
    } cases[] = {
        {"a b", {"InvalidName", "InvalidName", "InvalidName", "InvalidName"}, 0},
        {"9Name", {"InvalidName", "InvalidName", "InvalidName", "InvalidName"}, 0},
        {"Name-", {"InvalidName", "InvalidName", "InvalidName", "InvalidName"}, 0},
        {"", {"3", "3", "''", "null"}, 2},
        {"Missing", {"3", "3", "''", "null"}, 0},
        {"nAME", {"uint16 mismatch", "path mismatch", "'v'", "v"}, 0},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(std::string("'") + c.name + "'");
        TraceCapture trace;
        const Texts answers = {
            outcome(
                [&]
                {
                    Uint16 out = 1;
                    try
                    {
                        return std::to_string(QEL_Common::getProperty(inst, c.name, out));
                    }
                    catch (const TypeMismatchException&)
                    {
                        return std::string("uint16 mismatch");
                    }
                }),
            outcome(
                [&]
                {
                    CIMObjectPath out;
                    try
                    {
                        return std::to_string(QEL_Common::getProperty(inst, c.name, out));
                    }
                    catch (const TypeMismatchException&)
                    {
                        return std::string("path mismatch");
                    }
                }),
            outcome([&] { return "'" + str(QEL_Common::getStringProperty(inst, c.name)) + "'"; }),
            outcome(
                [&]
                {
                    const CIMValue v = QEL_Common::getPropertyValue(inst, c.name);
                    return v.isNull() ? std::string("null") : str(v.toString());
                }),
        };
        EXPECT_EQ(c.answers, answers);
        EXPECT_EQ(c.invalidNameLines, trace.count(3, "\tInvalid property name.\n"));
    }

    Array<CIMParamValue> params(1, CIMParamValue("a b", CIMValue(Uint32(5))));
    for (const char* name : {"a b", "A B"})
    {
        Uint32 out = 0;
        EXPECT_EQ(0u, QEL_Common::getParameter(params, name, out)) << name;
        EXPECT_EQ(5u, out);
    }
    Uint32 out = 0;
    EXPECT_EQ(3u, QEL_Common::getParameter(params, "", out));
}
