// The request frame shared by both association providers: which requests are answered and which refused
// (result classes, direction rules, roles, from both ends), the session check, the handler call order,
// the kept trace texts, and getInstance.
#include "AssocTest.h"

#include <QEL_ProviderFrame.h>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

class AssocFrame : public AssocTest
{
public:
    // Runs the request and checks it is either answered with port A's other end (or port A) or refused:
    // nothing delivered, handler untouched, no exception, the one level-2 line.
    void
    expectOutcome(const AssocSide& side, Op op, bool fromPort, const Request& parts, bool answered)
    {
        SCOPED_TRACE(
            std::string(side.provider) + " " + OP_NAMES[op] +
            (fromPort ? " from the port" : " from the end") + ", resultClass " +
            (parts.resultClass ? parts.resultClass : "null") + ", role '" + parts.role +
            "', resultRole '" + parts.resultRole + "'");
        qelsim::clearCapturedLog();
        const Answer answer =
            request(side, op, fromPort ? portPath(PORT_A) : otherOfA(side), parts);
        EXPECT_EQ(answer.failure, "");
        EXPECT_EQ(answer.sequence, answered ? "processing deliver complete" : "");
        const std::string result = parts.resultClass ? parts.resultClass : "";
        const std::string head =
            std::string(side.provider) + "::" + OP_NAMES[op] + ": invalid params: ";
        const std::string line =
            op == ASSOCIATORS ? head + "resultClass = " + result + " \n"
            : op == ASSOCIATOR_NAMES
                ? head + "associationClass=" + side.assocClass + ", resultClass=" + result + "\n"
                : head + "role = " + parts.role + ", resultClass = " + result + " \n";
        EXPECT_EQ(traceLines(QEL_TRACE_FAILURE), answered ? Texts() : Texts{line});
    }
};

// Result classes answered and refused, from one end of one association.
struct DirectionCase
{
    const AssocSide* side;
    bool fromPort;
    std::vector<const char*> accepted;
    std::vector<const char*> refused;

    void check(AssocFrame& test, std::initializer_list<Op> ops) const
    {
        for (Op op : ops)
        {
            for (bool answered : {true, false})
            {
                for (const char* resultClass : answered ? accepted : refused)
                {
                    Request parts;
                    parts.resultClass = resultClass;
                    test.expectOutcome(*side, op, fromPort, parts, answered);
                }
            }
        }
    }
};

const DirectionCase DIRECTION_CASES[] = {
    {&SFP_ASSOC,
     true,
     {nullptr, "CIM_PhysicalConnector", "qel_sfp"},
     {"CIM_FCPort", "QEL_FCPort", "CIM_ManagedElement"}},
    {&SFP_ASSOC,
     false,
     {"CIM_FCPort", "QEL_FCPort"},
     {"CIM_PhysicalConnector", "QEL_SFP", "CIM_NetworkPort"}},
    // From a port only the statistics' own classes, not even the ancestors the statistics share with the port.
    {&STATS_ASSOC,
     true,
     {nullptr, "CIM_StatisticalData", "QEL_FCPortLESBStatistics"},
     {"CIM_ManagedElement", "CIM_ManagedSystemElement", "CIM_LogicalElement",
      "CIM_EnabledLogicalElement", "CIM_LogicalDevice", "CIM_LogicalPort", "CIM_NetworkPort",
      "CIM_FCPort", "QEL_FCPort"}},
    {&STATS_ASSOC,
     false,
     {"CIM_ManagedElement", "CIM_ManagedSystemElement", "CIM_LogicalElement",
      "CIM_EnabledLogicalElement", "CIM_LogicalDevice", "CIM_LogicalPort", "cim_networkport",
      "CIM_FCPort", "QEL_FCPort"},
     {"CIM_StatisticalData", "QEL_FCPortLESBStatistics", "CIM_PhysicalConnector"}},
};

TEST_F(AssocFrame, AssociatorResultClassesFollowTheDirectionTables)
{
    for (const DirectionCase& c : DIRECTION_CASES)
        c.check(*this, {ASSOCIATORS, ASSOCIATOR_NAMES});
}

const struct
{
    const AssocSide* side;
    bool fromPort;
    const char* role;
    const char* resultRole;
    bool answered;
} ROLE_CASES[] = {
    {&SFP_ASSOC, true, "dependent", "ANTECEDENT", true},
    {&SFP_ASSOC, true, "Antecedent", "", false},
    {&SFP_ASSOC, true, "ManagedElement", "", false},
    {&SFP_ASSOC, true, "", "Dependent", false},
    {&SFP_ASSOC, false, "Antecedent", "Dependent", true},
    {&SFP_ASSOC, false, "Dependent", "", false},
    {&SFP_ASSOC, false, "", "Stats", false},
    {&STATS_ASSOC, true, "ManagedElement", "Stats", true},
    {&STATS_ASSOC, true, "Stats", "", false},
    {&STATS_ASSOC, true, "", "ManagedElement", false},
    {&STATS_ASSOC, false, "stats", "managedelement", true},
    {&STATS_ASSOC, false, "ManagedElement", "", false},
    {&STATS_ASSOC, false, "", "Antecedent", false},
};

TEST_F(AssocFrame, RolesMustNameTheEndTheRequestStartsFrom)
{
    for (const auto& c : ROLE_CASES)
    {
        for (Op op : {ASSOCIATORS, ASSOCIATOR_NAMES, REFERENCES, REFERENCE_NAMES})
        {
            if ((op == REFERENCES || op == REFERENCE_NAMES) && c.resultRole[0] != '\0')
            {
                continue;  // references have no result role
            }
            Request parts;
            parts.role = c.role;
            parts.resultRole = c.resultRole;
            expectOutcome(*c.side, op, c.fromPort, parts, c.answered);
        }
    }
    // Whatever association class the request names is answered alike.
    Request parts;
    parts.associationClass = "CIM_Dependency";
    for (const AssocSide* side : {&SFP_ASSOC, &STATS_ASSOC})
        expectOutcome(*side, ASSOCIATORS, true, parts, true);
}

TEST_F(AssocFrame, ReferencesAcceptOnlyTheAssociationAndItsParentClass)
{
    const DirectionCase cases[] = {
        {&SFP_ASSOC,
         true,
         {nullptr, "QEL_FCPortSFP", "cim_portactiveconnection"},
         {"CIM_Dependency", "QEL_FCPortLESBElementStatisticalData", "QEL_SFP"}},
        {&STATS_ASSOC,
         false,
         {"QEL_FCPortLESBElementStatisticalData", "CIM_ElementStatisticalData"},
         {"QEL_FCPortSFP", "CIM_StatisticalData"}},
    };
    for (const DirectionCase& c : cases)
        c.check(*this, {REFERENCES, REFERENCE_NAMES});
}

TEST_F(AssocFrame, RefusedSessionsEndEveryRequestWithItsLineBeforeAnyRead)
{
    const Uint32 lines[][2] = {{115, 128}, {194, 217}, {264, 290}, {351, 384},
                               {431, 468}, {507, 547}, {542, 585}};
    for (int op = ASSOCIATORS; op <= ENUMERATE_INSTANCE_NAMES; op++)
    {
        for (const AssocSide* side : {&SFP_ASSOC, &STATS_ASSOC})
        {
            SCOPED_TRACE(std::string(side->provider) + " " + OP_NAMES[op]);
            qelsim::clearCallLog();
            // A port path would be refused by getInstance later.
            const Answer answer =
                request(*side, static_cast<Op>(op), portPath(PORT_A), Request(), "retired");
            EXPECT_EQ(answer.sequence, "");
            const Uint32 line = lines[op][side == &SFP_ASSOC ? 0 : 1];
            EXPECT_EQ(
                answer.failure,
                std::string(side->provider) + "(" + std::to_string(line) +
                    "): CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user");
            EXPECT_EQ(
                callsNamed({"api_qelOpenForCimserver", "api_getFCPorts", "api_getPortLESB"}),
                Texts{"api_qelOpenForCimserver(\"retired\")"});
        }
    }
}

TEST_F(AssocFrame, EveryRequestAnswersInTheFrameOrderAndKeepsItsTraceTexts)
{
    // The texts whose spacing differs between the two providers, by the level-4 line of the request they
    // are: 0 first, 1 second, -1 last.
    const struct
    {
        const AssocSide* side;
        Op op;
        int line;
        const char* text;
    } kept[] = {
        {&SFP_ASSOC, ASSOCIATORS, 1,
         "QEL_FCPortSFPProvider::associators: objectName = %s; associationClass = QEL_FCPortSFP; resultClass =  \n"},
        {&STATS_ASSOC, ASSOCIATORS, 1,
         "QEL_FCPortElementStatisticalDataProvider::associators: objectName = %s; "
         "associationClass=QEL_FCPortLESBElementStatisticalData; resultClass= \n"},
        {&STATS_ASSOC, ASSOCIATOR_NAMES, 1,
         "QEL_FCPortElementStatisticalDataProvider::associatorNames: "
         "objectName = %s; associationClass = QEL_FCPortLESBElementStatisticalData; resultClass= \n"},
        {&SFP_ASSOC, REFERENCE_NAMES, 1,
         "QEL_FCPortSFPProvider::references: objectName = %s; resultClass = "},
        {&STATS_ASSOC, GET_INSTANCE, 0,
         "-->QEL_FCPortElementStatisticalDataProvider::getInstance() \n"},
        {&SFP_ASSOC, ENUMERATE_INSTANCES, -1, "<-- QEL_FCPortSFPProvider::enumerateInstances()\n"},
        {&STATS_ASSOC, ENUMERATE_INSTANCES, -1,
         "<-- QEL_FCPortElementStatisticalDataProvider::enumerateInstances() \n"},
    };
    for (const AssocSide* side : {&SFP_ASSOC, &STATS_ASSOC})
    {
        const CIMObjectPath association =
            request(*side, ENUMERATE_INSTANCE_NAMES, CIMObjectPath()).paths.at(0);
        for (int op = ASSOCIATORS; op <= ENUMERATE_INSTANCE_NAMES; op++)
        {
            SCOPED_TRACE(std::string(side->provider) + " " + OP_NAMES[op]);
            const CIMObjectPath objectName = op == GET_INSTANCE ? association : portPath(PORT_A);
            qelsim::clearCapturedLog();
            EXPECT_EQ(
                request(*side, static_cast<Op>(op), objectName).sequence,
                op < ENUMERATE_INSTANCES ? "processing deliver complete"
                                         : "processing deliver[] complete");
            const Texts lines = traceLines(QEL_TRACE_FLOW);
            ASSERT_GE(lines.size(), 2u);
            EXPECT_EQ(lines.front().substr(0, 3), "-->");
            EXPECT_EQ(lines.back().substr(0, 3), "<--");
            for (const auto& k : kept)
            {
                if (k.side == side && k.op == op)
                {
                    std::string expected = k.text;
                    const size_t at = expected.find("%s");
                    if (at != std::string::npos)
                        expected.replace(at, 2, text(objectName));
                    EXPECT_EQ(
                        k.line < 0 ? lines.back() : lines[static_cast<size_t>(k.line)], expected);
                }
            }
        }
    }
}

// path with its own host and those of its references replaced.
static CIMObjectPath rehosted(const CIMObjectPath& path, const char* host)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        CIMObjectPath end(keys[i].getValue());
        end.setHost(host);
        keys[i] = CIMKeyBinding(keys[i].getName(), end.toString(), CIMKeyBinding::REFERENCE);
    }
    return CIMObjectPath(host, path.getNameSpace(), path.getClassName(), keys);
}

TEST_F(AssocFrame, GetInstanceMatchesWhateverTheHostButNeedsTwoKeysAndTheNamespace)
{
    for (const AssocSide* side : {&SFP_ASSOC, &STATS_ASSOC})
    {
        SCOPED_TRACE(side->provider);
        const Answer names = request(*side, ENUMERATE_INSTANCE_NAMES, CIMObjectPath());
        ASSERT_EQ(names.paths.size(), 2u);
        for (const CIMObjectPath& name : names.paths)
        {
            const Answer found =
                request(*side, GET_INSTANCE, rehosted(name, "otherhost.example.com"));
            ASSERT_EQ(found.instances.size(), 1u);
            EXPECT_TRUE(found.instances[0].getPath().identical(name));
        }

        const CIMObjectPath good = names.paths[1];
        Array<CIMKeyBinding> three = good.getKeyBindings();
        three.append(CIMKeyBinding("Extra", "x", CIMKeyBinding::STRING));
        const std::string twoKeys =
            "CIM_ERR_INVALID_PARAMETER: " + std::string(side->prefix) + " Expect two keys.";
        const struct
        {
            CIMObjectPath reference;
            std::string failure;
            const char* trace;
        } bad[] = {
            {CIMObjectPath("", good.getNameSpace(), good.getClassName(), three), twoKeys,
             "::getInstance(): Invalid number of keys (3)\n"},
            {CIMObjectPath("", good.getNameSpace(), good.getClassName()), twoKeys,
             "::getInstance(): Invalid number of keys (0)\n"},
            {CIMObjectPath("", CIMNamespaceName(), good.getClassName(), good.getKeyBindings()),
             "CIM_ERR_NOT_FOUND: " + std::string(side->prefix) + " CIM Object not found.", nullptr},
        };
        for (const auto& b : bad)
        {
            qelsim::clearCapturedLog();
            EXPECT_EQ(request(*side, GET_INSTANCE, b.reference).failure, b.failure);
            EXPECT_EQ(
                traceLines(QEL_TRACE_FAILURE),
                b.trace ? Texts{side->provider + std::string(b.trace)} : Texts{});
        }
    }
}
