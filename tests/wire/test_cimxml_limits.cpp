// The decoder's limits: every list is accepted at its bound and refused one past it with
// CIM_ERR_INVALID_PARAMETER naming the element and the bound; nesting likewise; and the
// duplicate checks find a repeated name anywhere in a list at its bound.
#include <Server/xml/DecodeLimits.h>
#include <Server/xml/ProtocolError.h>
#include <Server/xml/RequestCodec.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/XmlText.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

const std::string kNs =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH>";
const std::string kPort =
    "<INSTANCENAME CLASSNAME=\"QEL_FCPort\"><KEYBINDING NAME=\"DeviceID\"><KEYVALUE>"
    "20110002AC00A001</KEYVALUE></KEYBINDING></INSTANCENAME>";

std::string message(const std::string& call)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
           "<MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
           call + "</SIMPLEREQ></MESSAGE></CIM>";
}

std::string intrinsic(const std::string& name, const std::string& params)
{
    return "<IMETHODCALL NAME=\"" + name + "\">" + kNs + params + "</IMETHODCALL>";
}

std::string param(const std::string& name, const std::string& value)
{
    return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
}

std::string reset(const std::string& params)
{
    return "<METHODCALL NAME=\"Reset\"><LOCALINSTANCEPATH>" + kNs + kPort + "</LOCALINSTANCEPATH>" +
           params + "</METHODCALL>";
}

std::string repeat(size_t n, const std::function<std::string(size_t)>& item)
{
    std::string out;
    for (size_t i = 0; i < n; ++i)
        out += item(i);
    return out;
}

std::string qualifiers(size_t n)
{
    return repeat(
        n, [](size_t i)
        { return "<QUALIFIER NAME=\"Q" + std::to_string(i) + "\" TYPE=\"boolean\"/>"; });
}

std::string properties(size_t n)
{
    return repeat(
        n,
        [](size_t i) { return "<PROPERTY NAME=\"P" + std::to_string(i) + "\" TYPE=\"uint8\"/>"; });
}

std::string newInstance(const std::string& content)
{
    return intrinsic(
        "CreateInstance",
        param("NewInstance", "<INSTANCE CLASSNAME=\"QEL_FCPort\">" + content + "</INSTANCE>"));
}

std::string newClass(const std::string& content)
{
    return intrinsic(
        "CreateClass", param("NewClass", "<CLASS NAME=\"QEL_Wide\">" + content + "</CLASS>"));
}

DecodedRequest decode(const std::string& body)
{
    return decodeRequest(body.data(), body.size());
}

// Where pugixml says an element starts (its name, just past the '<'), as errors give it.
std::string byteOf(const std::string& body, const std::string& tag, size_t skip = 0)
{
    size_t at = body.find("<" + tag);
    while (skip-- > 0)
        at = body.find("<" + tag, at + 1);
    return std::to_string(at + 1);
}

struct LimitCase
{
    const char* list;
    size_t limit;
    // The request with n elements in the list.
    std::function<std::string(size_t n)> call;
    // The refusal of limit + 1, given the whole document.
    std::function<std::string(const std::string& body)> refusal;
};

std::string tooMany(size_t limit, const std::string& element, const std::string& owner)
{
    const std::string bound = std::to_string(limit);
    return "more than " + bound + " " + element + " elements in " + owner + " (limit " + bound +
           ")";
}

class DecodeLimitsAtTheBound : public ::testing::TestWithParam<LimitCase>
{
};

TEST_P(DecodeLimitsAtTheBound, AcceptsTheLimitAndRefusesOneMore)
{
    const LimitCase& c = GetParam();
    const DecodedRequest atLimit = decode(message(c.call(c.limit)));
    EXPECT_FALSE(atLimit.failed) << c.list << ": " << atLimit.error.getMessage();

    const std::string body = message(c.call(c.limit + 1));
    const DecodedRequest past = decode(body);
    ASSERT_TRUE(past.failed) << c.list;
    EXPECT_EQ(past.error.getCode(), CIM_ERR_INVALID_PARAMETER) << c.list;
    EXPECT_EQ(toUtf8(past.error.getMessage()), c.refusal(body)) << c.list;
}

using namespace qel::cimxml::limits;
auto fixed(const std::string& text)
{
    return [text](const std::string&) { return text; };
}

INSTANTIATE_TEST_SUITE_P(
    EveryList, DecodeLimitsAtTheBound,
    ::testing::Values(
        LimitCase{
            "PARAMVALUE", kMaxMethodParameters,
            [](size_t n)
            {
                return reset(repeat(
                    n,
                    [](size_t i) { return "<PARAMVALUE NAME=\"P" + std::to_string(i) + "\"/>"; }));
            },
            fixed(tooMany(kMaxMethodParameters, "PARAMVALUE", "METHODCALL Reset"))},
        LimitCase{
            "IPARAMVALUE", entryOf(Operation::GetInstance).paramCount,
            [](size_t n)
            {
                // Every parameter of GetInstance once, then one given twice.
                std::string params = param("InstanceName", kPort) +
                                     param("LocalOnly", "<VALUE>TRUE</VALUE>") +
                                     param("IncludeQualifiers", "<VALUE>TRUE</VALUE>") +
                                     param("IncludeClassOrigin", "<VALUE>TRUE</VALUE>") +
                                     param("PropertyList", "<VALUE.ARRAY/>");
                if (n > 5)
                    params += param("LocalOnly", "<VALUE>FALSE</VALUE>");
                return intrinsic("GetInstance", params);
            },
            fixed(tooMany(5, "IPARAMVALUE", "IMETHODCALL GetInstance"))},
        LimitCase{
            "KEYBINDING", kMaxKeyBindings,
            [](size_t n)
            {
                return intrinsic(
                    "GetInstance",
                    param(
                        "InstanceName", "<INSTANCENAME CLASSNAME=\"QEL_FCPort\">" +
                                            repeat(
                                                n,
                                                [](size_t i) {
                                                    return "<KEYBINDING NAME=\"K" +
                                                           std::to_string(i) +
                                                           "\"><KEYVALUE>v</KEYVALUE></KEYBINDING>";
                                                }) +
                                            "</INSTANCENAME>"));
            },
            fixed(tooMany(kMaxKeyBindings, "KEYBINDING", "INSTANCENAME QEL_FCPort"))},
        LimitCase{
            "NAMESPACE", kMaxNamespaceSegments,
            [](size_t n)
            {
                return "<IMETHODCALL NAME=\"EnumerateClassNames\"><LOCALNAMESPACEPATH>" +
                       repeat(n, [](size_t) { return "<NAMESPACE NAME=\"a\"/>"; }) +
                       "</LOCALNAMESPACEPATH></IMETHODCALL>";
            },
            [](const std::string& body)
            {
                return tooMany(
                    kMaxNamespaceSegments, "NAMESPACE",
                    "LOCALNAMESPACEPATH at byte " + byteOf(body, "LOCALNAMESPACEPATH"));
            }},
        LimitCase{
            "PropertyList", kMaxPropertyListNames,
            [](size_t n)
            {
                return intrinsic(
                    "GetInstance",
                    param("InstanceName", kPort) +
                        param(
                            "PropertyList",
                            "<VALUE.ARRAY>" +
                                repeat(
                                    n, [](size_t i)
                                    { return "<VALUE>P" + std::to_string(i) + "</VALUE>"; }) +
                                "</VALUE.ARRAY>"));
            },
            fixed(tooMany(kMaxPropertyListNames, "VALUE", "IPARAMVALUE PropertyList"))},
        LimitCase{
            "instance properties", kMaxProperties,
            [](size_t n) { return newInstance(properties(n)); },
            fixed(tooMany(kMaxProperties, "PROPERTY", "INSTANCE QEL_FCPort"))},
        LimitCase{
            "instance qualifiers", kMaxQualifiers,
            [](size_t n) { return newInstance(qualifiers(n)); },
            fixed(tooMany(kMaxQualifiers, "QUALIFIER", "INSTANCE QEL_FCPort"))},
        LimitCase{
            "property qualifiers", kMaxQualifiers,
            [](size_t n)
            {
                return newInstance(
                    "<PROPERTY NAME=\"Speed\" TYPE=\"uint64\">" + qualifiers(n) + "</PROPERTY>");
            },
            fixed(tooMany(kMaxQualifiers, "QUALIFIER", "PROPERTY Speed"))},
        LimitCase{
            "class properties", kMaxProperties, [](size_t n) { return newClass(properties(n)); },
            fixed(tooMany(kMaxProperties, "PROPERTY", "CLASS QEL_Wide"))},
        LimitCase{
            "class qualifiers", kMaxQualifiers, [](size_t n) { return newClass(qualifiers(n)); },
            fixed(tooMany(kMaxQualifiers, "QUALIFIER", "CLASS QEL_Wide"))},
        LimitCase{
            "methods", kMaxMethods,
            [](size_t n)
            {
                return newClass(repeat(
                    n, [](size_t i)
                    { return "<METHOD NAME=\"M" + std::to_string(i) + "\" TYPE=\"uint32\"/>"; }));
            },
            fixed(tooMany(kMaxMethods, "METHOD", "CLASS QEL_Wide"))},
        LimitCase{
            "method parameters", kMaxMethodParameters,
            [](size_t n)
            {
                return newClass(
                    "<METHOD NAME=\"Wide\" TYPE=\"uint32\">" +
                    repeat(
                        n,
                        [](size_t i) {
                            return "<PARAMETER NAME=\"A" + std::to_string(i) +
                                   "\" TYPE=\"uint8\"/>";
                        }) +
                    "</METHOD>");
            },
            fixed(tooMany(kMaxMethodParameters, "PARAMETER", "METHOD Wide"))},
        LimitCase{
            "parameter qualifiers", kMaxQualifiers,
            [](size_t n)
            {
                return newClass(
                    "<METHOD NAME=\"Wide\" TYPE=\"uint32\"><PARAMETER NAME=\"A\" TYPE=\"uint8\">" +
                    qualifiers(n) + "</PARAMETER></METHOD>");
            },
            fixed(tooMany(kMaxQualifiers, "QUALIFIER", "PARAMETER A"))},
        LimitCase{
            "VALUE.ARRAY", kMaxArrayElements,
            [](size_t n)
            {
                return reset(
                    "<PARAMVALUE NAME=\"Elements\" PARAMTYPE=\"uint8\"><VALUE.ARRAY>" +
                    repeat(n, [](size_t) { return "<VALUE>1</VALUE>"; }) +
                    "</VALUE.ARRAY></PARAMVALUE>");
            },
            [](const std::string& body)
            {
                return tooMany(
                    kMaxArrayElements, "VALUE",
                    "VALUE.ARRAY at byte " + byteOf(body, "VALUE.ARRAY"));
            }},
        LimitCase{
            "VALUE.REFARRAY", kMaxArrayElements,
            [](size_t n)
            {
                return reset(
                    "<PARAMVALUE NAME=\"Ports\" PARAMTYPE=\"reference\"><VALUE.REFARRAY>" +
                    repeat(
                        n, [](size_t)
                        { return "<VALUE.REFERENCE><CLASSNAME NAME=\"A\"/></VALUE.REFERENCE>"; }) +
                    "</VALUE.REFARRAY></PARAMVALUE>");
            },
            [](const std::string& body)
            {
                return tooMany(
                    kMaxArrayElements, "VALUE.REFERENCE",
                    "VALUE.REFARRAY at byte " + byteOf(body, "VALUE.REFARRAY"));
            }}),
    [](const ::testing::TestParamInfo<LimitCase>& info)
    {
        std::string name;
        for (const char* p = info.param.list; *p; ++p)
            if (std::isalnum(static_cast<unsigned char>(*p)))
                name += *p;
        return name;
    });

TEST(DecodeLimits, ErrorInstancesOfAnAnswerAreBoundedToo)
{
    CimRequest request;
    request.messageId = "7";
    request.operation = Operation::GetInstance;
    request.methodName = "GetInstance";
    auto answer = [](size_t n)
    {
        return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" "
               "PROTOCOLVERSION=\"1.0\"><SIMPLERSP><IMETHODRESPONSE NAME=\"GetInstance\"><ERROR "
               "CODE=\"1\">" +
               repeat(n, [](size_t) { return "<INSTANCE CLASSNAME=\"CIM_Error\"/>"; }) +
               "</ERROR></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
    };
    const std::string atLimit = answer(kMaxErrorInstances);
    const CimResponse accepted = decodeResponse(atLimit.data(), atLimit.size(), request);
    ASSERT_TRUE(accepted.failed);
    EXPECT_EQ(accepted.error.getCode(), CIM_ERR_FAILED);
    EXPECT_EQ(accepted.error.getErrorCount(), kMaxErrorInstances);

    const std::string past = answer(kMaxErrorInstances + 1);
    try
    {
        decodeResponse(past.data(), past.size(), request);
        FAIL() << "accepted";
    }
    catch (const ResponseError& e)
    {
        EXPECT_EQ(
            std::string(e.what()),
            "malformed CIM-XML response: " +
                tooMany(kMaxErrorInstances, "INSTANCE", "ERROR at byte " + byteOf(past, "ERROR")));
    }
}

// References nested in references: the reader counts each VALUE.REFERENCE and each
// INSTANCENAME inside one.
std::string nestedReferences(size_t levels)
{
    std::string ref = "<CLASSNAME NAME=\"Z\"/>";
    for (size_t i = 0; i < levels; ++i)
        ref = "<INSTANCENAME CLASSNAME=\"X\"><KEYBINDING NAME=\"r\"><VALUE.REFERENCE>" + ref +
              "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
    return intrinsic("GetInstance", param("InstanceName", ref));
}

TEST(DecodeLimits, ReferencesNestAsDeepAsTheBoundAndNoDeeper)
{
    // n levels reach 2n: the bound itself is accepted, the next INSTANCENAME refused.
    const DecodedRequest atLimit = decode(message(nestedReferences(kMaxNestedObjects / 2)));
    EXPECT_FALSE(atLimit.failed) << atLimit.error.getMessage();

    const std::string body = message(nestedReferences(kMaxNestedObjects / 2 + 1));
    const DecodedRequest past = decode(body);
    ASSERT_TRUE(past.failed);
    EXPECT_EQ(past.error.getCode(), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(
        toUtf8(past.error.getMessage()),
        "INSTANCENAME element at byte " + byteOf(body, "INSTANCENAME", kMaxNestedObjects / 2) +
            ": references or embedded objects nested too deeply (limit 16)");
}

TEST(DecodeLimits, DocumentsNestAsDeepAsTheBoundAndNoDeeper)
{
    // A request whose CIM element also holds a chain of elements the decoder ignores,
    // reaching `depth` levels in all (CIM is at 1).
    auto request = [](size_t depth)
    {
        std::string chain;
        for (size_t i = 1; i < depth; ++i)
            chain = "<x>" + chain + "</x>";
        std::string body = message(intrinsic("GetInstance", param("InstanceName", kPort)));
        return body.insert(body.rfind("</CIM>"), chain);
    };
    const DecodedRequest atLimit = decode(request(kMaxElementDepth));
    EXPECT_FALSE(atLimit.failed) << atLimit.error.getMessage();

    const std::string body = request(kMaxElementDepth + 1);
    try
    {
        decode(body);
        FAIL() << "accepted";
    }
    catch (const ProtocolError& e)
    {
        EXPECT_EQ(e.httpStatus(), 400);
        EXPECT_EQ(e.cimError(), "request-not-valid");
        EXPECT_EQ(
            std::string(e.what()), "elements nested more than 256 deep: x element at byte " +
                                       byteOf(body, "x", kMaxElementDepth - 1) + " (limit 256)");
    }
}

TEST(DecodeLimits, DocumentsHoldAsManyTagsAsTheBoundAndNoMore)
{
    // A request padded with empty elements the decoder ignores, up to `tags` '<' in all.
    auto request = [](size_t tags)
    {
        std::string body = message(intrinsic("GetInstance", param("InstanceName", kPort)));
        const size_t have = static_cast<size_t>(std::count(body.begin(), body.end(), '<'));
        std::string padding;
        for (size_t i = have; i < tags; ++i)
            padding += "<x/>";
        return body.insert(body.rfind("</CIM>"), padding);
    };
    const DecodedRequest atLimit = decode(request(kMaxTags));
    EXPECT_FALSE(atLimit.failed) << atLimit.error.getMessage();
    try
    {
        decode(request(kMaxTags + 1));
        FAIL() << "accepted";
    }
    catch (const ProtocolError& e)
    {
        EXPECT_EQ(e.httpStatus(), 400);
        EXPECT_EQ(e.cimError(), "request-not-valid");
        EXPECT_EQ(std::string(e.what()), "more than 524288 tags in the document (limit 524288)");
    }
}

// A repeated name is found wherever it sits in a list as long as the bound.
struct DuplicateCase
{
    const char* list;
    std::string call;
    const char* mentions;
};

class DuplicatesInLongLists : public ::testing::TestWithParam<DuplicateCase>
{
};

TEST_P(DuplicatesInLongLists, AreRefusedNamingTheName)
{
    const DuplicateCase& c = GetParam();
    const DecodedRequest d = decode(message(c.call));
    ASSERT_TRUE(d.failed) << c.list;
    EXPECT_EQ(d.error.getCode(), CIM_ERR_INVALID_PARAMETER) << c.list;
    EXPECT_NE(toUtf8(d.error.getMessage()).find(c.mentions), std::string::npos)
        << c.list << ": " << d.error.getMessage();
}

// n distinct names, then the first again in another case.
std::string
namesThenFirstAgain(size_t n, const std::function<std::string(const std::string&)>& item)
{
    return repeat(n - 1, [&](size_t i) { return item("Name" + std::to_string(i)); }) +
           item("NAME0");
}

INSTANTIATE_TEST_SUITE_P(
    AtTheBound, DuplicatesInLongLists,
    ::testing::Values(
        DuplicateCase{
            "PARAMVALUE",
            reset(namesThenFirstAgain(
                kMaxMethodParameters,
                [](const std::string& n) { return "<PARAMVALUE NAME=\"" + n + "\"/>"; })),
            "parameter NAME0 given twice"},
        DuplicateCase{
            "instance properties",
            newInstance(namesThenFirstAgain(
                kMaxProperties, [](const std::string& n)
                { return "<PROPERTY NAME=\"" + n + "\" TYPE=\"uint8\"/>"; })),
            "already exists: property \"NAME0\""},
        DuplicateCase{
            "class methods",
            newClass(namesThenFirstAgain(
                kMaxMethods, [](const std::string& n)
                { return "<METHOD NAME=\"" + n + "\" TYPE=\"uint8\"/>"; })),
            "already exists: method \"NAME0\""}),
    [](const ::testing::TestParamInfo<DuplicateCase>& info)
    {
        std::string name;
        for (const char* p = info.param.list; *p; ++p)
            if (std::isalnum(static_cast<unsigned char>(*p)))
                name += *p;
        return name;
    });

}  // namespace
