// Object-path matching (against the runtime's own parsing and text form),
// reference checks, association filters and association builders.
#include "QEL_Common.h"
#include "qelcommon_test_support.h"

#include <Pegasus/Common/CIMProperty.h>

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

const char PORT[] = "root/qel:QEL_FCPort.DeviceID=\"20110002AC00A001\"";
const char SFP[] = "root/qel:QEL_SFP.Tag=\"0:1:1-AV8000101\"";

// A path whose one key "Ref" holds `text` with the given type.
static CIMObjectPath holder(const char* text, CIMKeyBinding::Type type)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Ref", text, type));
    return CIMObjectPath(String(), "root/qel", "QEL_Holder", keys);
}

static CIMInstance association(const char* antecedent, const char* dependent)
{
    CIMInstance inst("QEL_FCPortSFP");
    inst.addProperty(
        CIMProperty("Antecedent", CIMValue(CIMObjectPath(antecedent)), 0, "QEL_FCPort"));
    inst.addProperty(CIMProperty("Dependent", CIMValue(CIMObjectPath(dependent)), 0, "QEL_SFP"));
    inst.addProperty(CIMProperty("Note", CIMValue(String("not a reference"))));
    return inst;
}

static Texts texts(const Array<CIMObjectPath>& paths)
{
    Texts out;
    for (Uint32 i = 0; i < paths.size(); i++)
        out.push_back((const char*)paths[i].toString().getCString());
    return out;
}

TEST(MatchObjectPath, HostNeverCountsNamespaceClassAndKeysDo)
{
    struct Case
    {
        const char* label;
        CIMObjectPath a;
        CIMObjectPath b;
        bool match;
    };
    const std::vector<Case> cases = {
        {"hosts differ", CIMObjectPath(std::string("//hostA/").append(PORT).c_str()),
         CIMObjectPath(std::string("//hostB/").append(PORT).c_str()), true},
        {"embedded reference hosts differ",
         holder("//h1/root/qel:QEL_FCPort.DeviceID=\"X\"", CIMKeyBinding::REFERENCE),
         holder("//h2/root/qel:QEL_FCPort.DeviceID=\"X\"", CIMKeyBinding::REFERENCE), true},
        {"key order", CIMObjectPath("root/qel:QEL_X.A=\"1\",B=2"),
         CIMObjectPath("root/qel:QEL_X.B=2,A=\"1\""), true},
        {"string holding a path vs reference",
         holder("root/qel:QEL_FCPort.DeviceID=\"X\"", CIMKeyBinding::STRING),
         holder("//h/root/qel:QEL_FCPort.DeviceID=\"X\"", CIMKeyBinding::REFERENCE), true},
        {"namespace case", CIMObjectPath("ROOT/QEL:QEL_X.A=\"1\""),
         CIMObjectPath("root/qel:QEL_X.A=\"1\""), true},
        {"namespace missing", CIMObjectPath("QEL_X.A=\"1\""),
         CIMObjectPath("root/qel:QEL_X.A=\"1\""), false},
        {"class case", CIMObjectPath("root/qel:qel_fcport.DeviceID=\"X\""), CIMObjectPath(PORT),
         false},
        {"class case, same keys",
         CIMObjectPath("root/qel:qel_fcport.DeviceID=\"20110002AC00A001\""), CIMObjectPath(PORT),
         true},
        {"subclass name", CIMObjectPath("root/qel:CIM_FCPort.DeviceID=\"20110002AC00A001\""),
         CIMObjectPath(PORT), false},
        {"WWN letter case", CIMObjectPath("root/qel:QEL_FCPort.DeviceID=\"20110002ac00a001\""),
         CIMObjectPath(PORT), false},
        {"numeric spellings", CIMObjectPath("root/qel:QEL_X.N=10"),
         CIMObjectPath("root/qel:QEL_X.N=0xA"), true},
        {"empty string keys", holder("", CIMKeyBinding::STRING), holder("", CIMKeyBinding::STRING),
         true},
        {"string vs number", CIMObjectPath("root/qel:QEL_X.N=\"10\""),
         CIMObjectPath("root/qel:QEL_X.N=10"), false},
        {"extra key", CIMObjectPath("root/qel:QEL_X.A=\"1\",B=2"),
         CIMObjectPath("root/qel:QEL_X.A=\"1\""), false},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.label);
        const String aBefore = c.a.toString();
        EXPECT_EQ(c.match, QEL_Common::matchObjectPath(c.a, c.b));
        EXPECT_EQ(c.match, QEL_Common::matchObjectPath(c.b, c.a));
        EXPECT_EQ(aBefore, c.a.toString());  // arguments unchanged
    }
}

TEST(VerifyRefMethodParam, NamespaceAndHostRules)
{
    loadTestArray();
    // trace: the level-2 line, or null for none
    struct Case
    {
        const char* ref;
        bool ok;
        const char* trace;
    };
    const std::vector<Case> cases = {
        {"QEL_FCPort.DeviceID=\"X\"", true, nullptr},
        {"//DEMO01.EXAMPLE.NET/root/qel:QEL_FCPort.DeviceID=\"X\"", true, nullptr},
        {"//192.168.10.20/root/qel:QEL_FCPort.DeviceID=\"X\"", true, nullptr},
        {"//[fd00:10:0:0:0:0:0:20]/root/qel:QEL_FCPort.DeviceID=\"X\"", true, nullptr},
        {"//[fd00:10::21]/root/qel:QEL_FCPort.DeviceID=\"X\"", false,
         "The ref host [[fd00:10::21]] does not match for this host!\n"},
        {"//other.example.net/root/qel:QEL_FCPort.DeviceID=\"X\"", false,
         "The ref host [other.example.net] does not match for this host!\n"},
        {"root/cimv2:QEL_FCPort.DeviceID=\"X\"", false,
         "The ref param root/cimv2:QEL_FCPort.DeviceID=\"X\" contains the wrong name space root/cimv2\n"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.ref);
        TraceCapture trace;
        CIMObjectPath ref(c.ref);
        EXPECT_EQ(c.ok, QEL_Common::verifyRefMethodParam(ref, "ROOT/qel", "demo01.example.net"));
        EXPECT_EQ(trace.texts(), c.trace ? Texts{c.trace} : Texts());
    }
    CIMObjectPath bare("QEL_FCPort.DeviceID=\"X\"");
    EXPECT_TRUE(QEL_Common::verifyRefMethodParam(
        bare, "root/qel", "demo01.example.net", CIMName("qel_fcport")));
    EXPECT_EQ(String("root/qel"), bare.getNameSpace().getString());
    Array<CIMName> classes;
    classes.append("QEL_SFP");
    EXPECT_FALSE(QEL_Common::verifyRefMethodParam(bare, "root/qel", "x", classes));
    classes.append("QEL_FCPORT");
    EXPECT_TRUE(QEL_Common::verifyRefMethodParam(bare, "root/qel", "x", classes));
    EXPECT_FALSE(QEL_Common::verifyRefMethodParam(bare, "root/qel", "x", CIMName("QEL_SFP")));
}

TEST(AssociationFilters, FarEndsByClassAndRoleAndReferenceChecks)
{
    CIMInstance assoc = association(PORT, SFP);
    CIMObjectPath port(std::string("//elsewhere/").append(PORT).c_str());
    Array<CIMName> none;
    Array<CIMName> sfpTwice(2, CIMName("qel_sfp"));
    Array<CIMName> other(1, CIMName("QEL_Other"));
    EXPECT_EQ(
        Texts{SFP}, texts(QEL_Common::filterAssocInstanceToTargetPaths(assoc, port, none, "")));
    EXPECT_EQ(
        (Texts{SFP, SFP}),
        texts(QEL_Common::filterAssocInstanceToTargetPaths(assoc, port, sfpTwice, "")));
    EXPECT_EQ(0u, QEL_Common::filterAssocInstanceToTargetPaths(assoc, port, other, "").size());
    EXPECT_EQ(
        1u, QEL_Common::filterAssocInstanceToTargetPaths(assoc, port, none, "dependent").size());
    EXPECT_EQ(
        0u, QEL_Common::filterAssocInstanceToTargetPaths(assoc, port, none, "Antecedent").size());

    Array<CIMInstance> candidates;
    for (const char* p : {"//h1/root/qel:QEL_SFP.Tag=\"0:1:1-AV8000101\"", PORT, SFP})
    {
        candidates.append(CIMInstance(CIMObjectPath(p).getClassName()));
        candidates[candidates.size() - 1].setPath(CIMObjectPath(p));
    }
    // Every matching instance, in list order.
    Array<CIMInstance> found =
        QEL_Common::filterAssocInstanceToTargetInstances(assoc, port, candidates, none, "");
    ASSERT_EQ(2u, found.size());
    EXPECT_EQ(String("h1"), found[0].getPath().getHost());
    EXPECT_TRUE(QEL_Common::isPartOfArray(CIMObjectPath(SFP), candidates));

    Array<CIMInstance> list(1, assoc);
    list.append(association("root/qel:QEL_FCPort.DeviceID=\"20120002AC00A001\"", SFP));
    EXPECT_EQ(1u, QEL_Common::filterReferenceNames(list, port, CIMName(), "").size());
    EXPECT_EQ(
        1u, QEL_Common::filterReferenceNames(list, port, "qel_fcportsfp", "ANTECEDENT").size());
    EXPECT_EQ(0u, QEL_Common::filterReferenceNames(list, port, CIMName(), "Dependent").size());
    // An absent role, one that is no reference, and one that is no CIM name at all.
    for (const char* badRole : {"Nope", "Note", "a b"})
    {
        try
        {
            QEL_Common::filterReferenceNames(list, port, CIMName(), badRole);
            ADD_FAILURE() << badRole;
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, e.getCode());
            EXPECT_EQ(String(), e.getMessage());
        }
    }
}

TEST(AssociationBuilders, PathsAndInstancesCarryRehostedEnds)
{
    CIMObjectPath port(PORT);
    CIMObjectPath sfp(std::string("//old/").append(SFP).c_str());
    CIMObjectPath one = QEL_Common::buildAssocPath(
        "QEL_FCPortSFP", "Antecedent", "Dependent", port, sfp, "array1", "root/qel");
    EXPECT_EQ(
        String(
            "//array1/root/qel:QEL_FCPortSFP.Antecedent=\"//array1/root/qel:QEL_FCPort.DeviceID="
            "\\\"20110002AC00A001\\\"\",Dependent=\"//array1/root/qel:QEL_SFP.Tag=\\\"0:1:1-AV8000101\\\"\""),
        one.toString());
    EXPECT_EQ(String("old"), sfp.getHost());  // the argument keeps its host
    CIMObjectPath three =
        QEL_Common::buildAssocPath("QEL_X", "B", "A", port, sfp, "h1", "h2", "local", "root/qel");
    EXPECT_EQ(String("local"), three.getHost());
    EXPECT_EQ(String("h1"), CIMObjectPath(QEL_Common::getStringProperty(three, "B")).getHost());
    EXPECT_EQ(String("h2"), CIMObjectPath(QEL_Common::getStringProperty(three, "A")).getHost());

    CIMClass cls("QEL_FCPortSFP");
    cls.addProperty(CIMProperty("Antecedent", CIMValue(CIMTYPE_REFERENCE, false), 0, "QEL_FCPort"));
    cls.addProperty(CIMProperty("Dependent", CIMValue(CIMTYPE_REFERENCE, false), 0, "QEL_SFP"));
    CIMInstance inst = QEL_Common::buildAssocInstance(
        "QEL_FCPortSFP", "Antecedent", "Dependent", port, sfp, cls, "array1", "root/qel");
    EXPECT_EQ(one, inst.getPath());
    CIMObjectPath dependent;
    ASSERT_EQ(0u, QEL_Common::getProperty(inst, "Dependent", dependent));
    EXPECT_EQ(String("array1"), dependent.getHost());
    // The dependency builder keeps the ends as given, in namespace root/qel.
    CIMInstance dep = QEL_Common::buildDepAssocInstance("sys", "QEL_FCPortSFP", port, sfp, cls);
    EXPECT_EQ(String("root/qel"), dep.getPath().getNameSpace().getString());
    EXPECT_EQ(
        String("old"),
        CIMObjectPath(QEL_Common::getStringProperty(dep.getPath(), "Dependent")).getHost());
}
