// Loading array descriptions: every bad input is refused with the file, the
// place and the problem, and leaves the current array as it was.
#include "sim_fixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>

using namespace qelsimtest;
using Json = nlohmann::ordered_json;

namespace
{

class Loading : public SimTest
{
protected:
    Json demo() { return Json::parse(qelsim::demoArrayText()); }
    // The error a load of doc gives; the demo array must still be in place afterwards.
    std::string errorOf(const std::string& text)
    {
        const qelsim::Result r = qelsim::loadArrayText(text);
        EXPECT_FALSE(r.ok);
        EXPECT_EQ(port(kOkPort).portWwn, kOkPort) << "a refused load replaced the array";
        return r.error;
    }
};

struct BadCase
{
    const char* name;
    std::function<void(Json&)> spoil;
    const char* where;
    const char* what;
};

TEST_F(Loading, EachBadDescriptionNamesThePlaceAndTheProblem)
{
    const BadCase cases[] = {
        {"unknown top field", [](Json& j) { j["colour"] = "blue"; }, "/colour",
         "unknown field \"colour\""},
        {"unknown port field", [](Json& j) { j["fcPorts"][1]["speedy"] = true; },
         "/fcPorts/1/speedy", "unknown field"},
        {"missing system", [](Json& j) { j.erase("system"); }, ": /: ", "missing field \"system\""},
        {"wrong type", [](Json& j) { j["fcPorts"][2]["maxRate"] = "8"; }, "/fcPorts/2/maxRate",
         "expected an integer, found a string"},
        {"fraction", [](Json& j) { j["fcPorts"][2]["maxRate"] = 8.5; }, "/fcPorts/2/maxRate",
         "found a fractional number"},
        {"int32 range", [](Json& j) { j["fcPorts"][0]["mode"] = 4294967296LL; }, "/fcPorts/0/mode",
         "out of range"},
        {"negative counter", [](Json& j) { j["fcPorts"][0]["lesb"][1]["crcErrors"] = -1; },
         "/fcPorts/0/lesb/1/crcErrors", "must not be negative"},
        {"duplicate wwn", [](Json& j) { j["fcPorts"][3]["wwn"] = "20110002ac00a001"; },
         "/fcPorts/3/wwn", "duplicate WWN 20110002AC00A001 (also at /fcPorts/0/wwn)"},
        {"selector wwn", [](Json& j) { j["fcPorts"][3]["wwn"] = "FFFFFFFFFFFFFFF6"; },
         "/fcPorts/3/wwn", "reserved"},
        {"duplicate position", [](Json& j) { j["iscsiPorts"][0]["position"] = "1:1:2"; },
         "/iscsiPorts/0/position", "duplicate position 1:1:2 (also at /fcPorts/3/position)"},
        {"bad position", [](Json& j) { j["fcPorts"][0]["position"] = "0:1:01"; },
         "/fcPorts/0/position", "not a position"},
        {"bad state", [](Json& j) { j["fcPorts"][0]["status"] = "PORT_SLEEPY"; },
         "/fcPorts/0/status", "unknown port state"},
        {"ddm count", [](Json& j) { j["fcPorts"][0]["sfp"]["ddm"].erase(0); }, "/fcPorts/0/sfp/ddm",
         "exactly 5 entries, found 4"},
        {"long text", [](Json& j) { j["fcPorts"][0]["fcSystemName"] = std::string(64, 'n'); },
         "/fcPorts/0/fcSystemName", "longer than 63"},
        {"bad ipv4", [](Json& j) { j["system"]["ipv4"] = "fd00::1"; }, "/system/ipv4",
         "not a valid IPv4 address"},
        {"bad role", [](Json& j) { j["users"][0]["role"] = "root"; }, "/users/0/role",
         "unknown role"},
        {"duplicate user", [](Json& j) { j["users"][1]["name"] = "admin"; }, "/users/1/name",
         "duplicate user"},
        {"bad fault call",
         [](Json& j) {
             j["faults"] = Json::array({{{"call", "api_fly"}, {"code", 1}}});
         },
         "/faults/0/call", "is not a call that can be made to fail"},
        {"fault times",
         [](Json& j) {
             j["faults"] = Json::array({{{"call", "api_getFCPorts"}, {"code", 1}, {"times", 0}}});
         },
         "/faults/0/times", "out of range"},
        {"ports not array", [](Json& j) { j["fcPorts"] = Json::object(); }, "/fcPorts",
         "expected an array, found an object"},
        {"escaped key", [](Json& j) { j["a/b~c"] = 1; }, "/a~1b~0c", "unknown field"},
    };
    for (const BadCase& c : cases)
    {
        SCOPED_TRACE(c.name);
        Json j = demo();
        c.spoil(j);
        const std::string err = errorOf(j.dump());
        EXPECT_EQ(err.rfind("<text>: ", 0), 0u) << err;
        EXPECT_NE(err.find(c.where), std::string::npos) << err;
        EXPECT_NE(err.find(c.what), std::string::npos) << err;
    }
}

TEST_F(Loading, SyntaxErrorsNameTheLineAndColumn)
{
    std::string twice = qelsim::demoArrayText();
    twice.insert(twice.find("\"currentRate\": 16"), "\"maxRate\": 4, ");
    const std::pair<std::string, const char*> cases[] = {
        {"{\n  \"system\": {\n    \"name\": \"x\",,\n", "<text>: line 3, column 17: syntax error"},
        {"", "the file is empty"},
        {twice, "<text>: /fcPorts/6/maxRate: field \"maxRate\" is given twice"},
        {"[]", "expected an object, found an array"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(errorOf(c.first), ::testing::HasSubstr(c.second));
}

TEST_F(Loading, FilesThatCannotBeReadAreNamed)
{
    ScratchDir dir;
    qelsim::Result r = qelsim::loadArrayFile(dir.file("missing.json"));
    EXPECT_FALSE(r.ok);
    EXPECT_NE(
        r.error.find(dir.file("missing.json") + ": cannot open: No such file or directory"),
        std::string::npos)
        << r.error;
    r = qelsim::loadArrayFile(dir.path());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("cannot read"), std::string::npos) << r.error;
    writeFile(dir.file("bad.json"), "{\"system\": 5}");
    r = qelsim::loadArrayFile(dir.file("bad.json"));
    EXPECT_EQ(r.error, dir.file("bad.json") + ": /system: expected an object, found a number");
    EXPECT_EQ(port(kOkPort).portWwn, kOkPort);
}

TEST_F(Loading, AttachingToABadArrayFileMakesCallsFailUntilAGoodOneLoads)
{
    ScratchDir dir;
    writeFile(dir.file("bad.json"), "{ not json");
    qelsim::AttachOptions o;
    o.arrayPath = dir.file("bad.json");
    o.persist = false;
    EXPECT_FALSE(qelsim::attach(o).ok);
    api_FCPortList_t list{};
    EXPECT_EQ(api_getFCPorts(API_ALL_PORTS, 3, 0, &list), API_ERR_IO);
    EXPECT_EQ(api_qelOpenForCimserver("admin"), API_ERR_IO);
    EXPECT_EQ(api_findFCPortLPID("20110002AC00A001"), API_LPID_UNKNOWN);
    load(qelsim::demoArrayText());
    EXPECT_EQ(api_qelOpenForCimserver("admin"), API_OK);
}

TEST_F(Loading, UsersAreReadFromADescriptionWithoutTouchingTheArray)
{
    ScratchDir dir;
    Json doc = demo();
    doc["users"] = Json::parse(R"([{"name": "ann", "role": "edit"},
        {"name": "bob", "role": "browse", "enabled": false},
        {"name": "cy", "role": "super", "enabled": true, "addresses": ["::1"]}])");
    writeFile(dir.file("mine.json"), doc.dump());
    std::vector<qelsim::UserInfo> users;
    ASSERT_TRUE(qelsim::readArrayUsers(dir.file("mine.json"), &users).ok);
    std::vector<std::string> seen;
    for (const auto& u : users)
        seen.push_back(u.name + " " + u.role + (u.enabled ? "" : " disabled"));
    EXPECT_EQ(seen, (std::vector<std::string>{"ann edit", "bob browse disabled", "cy super"}));
    EXPECT_EQ(api_qelOpenForCimserver("ann"), API_ERR_NOENT);  // the demo array is still served

    ASSERT_TRUE(qelsim::readArrayUsers("", &users).ok);  // the built-in demo array
    ASSERT_EQ(users.size(), 6u);
    EXPECT_EQ(users[4].name, "guest");
    EXPECT_FALSE(users[4].enabled);

    doc["users"][1]["role"] = "boss";
    writeFile(dir.file("mine.json"), doc.dump());
    const std::pair<std::string, std::string> refused[] = {
        {dir.file("mine.json"),
         dir.file("mine.json") +
             ": /users/1/role: unknown role \"boss\" (expected browse, edit or super)"},
        {dir.file("missing.json"),
         dir.file("missing.json") + ": cannot open: No such file or directory"},
    };
    for (const auto& r : refused)
    {
        const qelsim::Result result = qelsim::readArrayUsers(r.first, &users);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.error, r.second);
    }
}

TEST(Generator, MakesTheSameValidArrayOfTheRequestedSizeAndRefusesTooLargeOnes)
{
    qelsim::GenerateOptions o;
    o.fcPorts = 2000;
    o.lesbPerPort = 3;
    std::string json, again;
    ASSERT_TRUE(qelsim::generateArray(o, &json).ok);
    ASSERT_TRUE(qelsim::generateArray(o, &again).ok);
    EXPECT_EQ(json, again);  // same seed, same array
    ASSERT_TRUE(qelsim::loadArrayText(json).ok);
    api_portLESBList_t lesb{};
    ASSERT_EQ(api_getPortLESB(API_ALL_PORTS, &lesb), API_OK);
    EXPECT_EQ(lesb.count, 6000u);  // of 2000 ports
    std::free(lesb.lesb);

    o.fcPorts = 61440;  // every position of the LPID layout, plus one
    o.iscsiPorts = 1;
    const qelsim::Result tooMany = qelsim::generateArray(o, &json);
    EXPECT_FALSE(tooMany.ok);
    EXPECT_NE(tooMany.error.find("at most 61440 ports"), std::string::npos) << tooMany.error;
    ASSERT_TRUE(qelsim::loadArrayText(qelsim::demoArrayText()).ok);
}

}  // namespace
