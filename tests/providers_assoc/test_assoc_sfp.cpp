// The FC port to SFP association: which transceiver a port leads to and
// back, the association ends, key errors and failed reads of the port list.
#include "AssocTest.h"

#include <Pegasus/Common/CIMProperty.h>

PEGASUS_USING_PEGASUS;
using namespace qeltest;

const char READ_WITH_SFPS[] = "api_getFCPorts(0xFFFFFFFFFFFFFFF6, 3, 1, ptr)";

using SFPAssociation = AssocTest;

TEST_F(SFPAssociation, ExactKeysOfInstalledTransceiversLeadToTheOtherEnd)
{
    // key: the key property of the far end; related: its value, null when nothing is related
    const struct
    {
        CIMObjectPath from;
        const char* key;
        const char* related;
    } cases[] = {
        {portPath(PORT_A), "Tag", TAG_A},
        {portPath(PORT_C), "Tag", TAG_C},
        {sfpPath(TAG_A), "DeviceID", PORT_A},
        {portPath(PORT_B), "Tag", nullptr},                          // no transceiver
        {portPath("20110002ac001234"), "Tag", nullptr},              // letter case counts
        {sfpPath("20110002AC001234-SN-A   "), "DeviceID", nullptr},  // Tags lose trailing blanks
        {CIMObjectPath(
             "", CIMNamespaceName("root/qel"), "CIM_FCPort",  // neither end's class
             Array<CIMKeyBinding>(1, CIMKeyBinding("Tag", TAG_A, CIMKeyBinding::STRING))),
         "Tag", nullptr},
    };
    for (const auto& c : cases)
    {
        for (Op op : {ASSOCIATORS, ASSOCIATOR_NAMES, REFERENCES})
        {
            SCOPED_TRACE(text(c.from) + " " + OP_NAMES[op]);
            qelsim::clearCallLog();
            const Answer answer = request(SFP_ASSOC, op, c.from);
            EXPECT_EQ(
                answer.sequence, c.related ? "processing deliver complete" : "processing complete");
            // One read of every port with its SFP record, handed back.
            EXPECT_EQ(
                callsNamed({"api_getFCPorts", "api_freeFCPorts"}),
                (Texts{READ_WITH_SFPS, "api_freeFCPorts(ptr)"}));
            if (!c.related || answer.delivered() != 1)
            {
                EXPECT_EQ(answer.delivered(), c.related ? 1u : 0u);
                continue;
            }
            const CIMObjectPath far =
                op == ASSOCIATOR_NAMES ? answer.paths[0]
                : op == ASSOCIATORS    ? answer.instances[0].getPath()
                                       : referenceKey(
                                             answer.instances[0].getPath(),
                                          std::string(c.key) == "Tag" ? "Antecedent" : "Dependent");
            EXPECT_EQ(keyValue(far, c.key), c.related);
            EXPECT_EQ(far.getHost(), "qelhost.example.com");
        }
    }
}

TEST_F(SFPAssociation, BuiltEndsFollowTheRequestsPropertyList)
{
    Request parts;
    parts.propertyList = propertyList({"SerialNumber"});
    const Answer answer = request(SFP_ASSOC, ASSOCIATORS, portPath(PORT_A), parts);
    ASSERT_EQ(answer.instances.size(), 1u);
    const CIMInstance& sfp = answer.instances[0];
    EXPECT_EQ(valueOf(sfp, "SerialNumber"), CIMValue(String("SN-A   ")));
    EXPECT_EQ(sfp.findProperty("Manufacturer"), PEG_NOT_FOUND);
}

TEST_F(SFPAssociation, AssociationsPutThePortFirstAndMatchFromEitherEnd)
{
    const Answer all = request(SFP_ASSOC, ENUMERATE_INSTANCES, CIMObjectPath());
    const Answer names = request(SFP_ASSOC, ENUMERATE_INSTANCE_NAMES, CIMObjectPath());
    ASSERT_EQ(all.instances.size(), 2u);
    ASSERT_EQ(names.paths.size(), 2u);
    const char* ends[][2] = {{PORT_A, TAG_A}, {PORT_C, TAG_C}};
    for (size_t i = 0; i < 2; i++)
    {
        const CIMObjectPath& name = names.paths[i];
        EXPECT_EQ(name.getHost(), "qelhost.example.com");
        EXPECT_EQ(keyValue(referenceKey(name, "Dependent"), "DeviceID"), ends[i][0]);
        EXPECT_EQ(keyValue(referenceKey(name, "Antecedent"), "Tag"), ends[i][1]);
        const CIMInstance& instance = all.instances[i];
        EXPECT_TRUE(instance.getPath().identical(name));
        CIMObjectPath dependent;
        instance.getProperty(instance.findProperty("Dependent")).getValue().get(dependent);
        EXPECT_TRUE(dependent.identical(referenceKey(name, "Dependent")));
    }
    for (const CIMObjectPath& from : {portPath(PORT_A), sfpPath(TAG_A)})
    {
        const Answer refs = request(SFP_ASSOC, REFERENCE_NAMES, from);
        ASSERT_EQ(refs.paths.size(), 1u);
        EXPECT_TRUE(refs.paths[0].identical(names.paths[0]));
    }
}

TEST_F(SFPAssociation, MissingKeysAreRefusedBeforeTheLibraryIsRead)
{
    const struct
    {
        CIMObjectPath from;
        const char* message;
    } cases[] = {
        {portPath(""), "QEL_FCPortSFPProvider DeviceID key not found."},
        {sfpPath(""), "QEL_FCPortSFPProvider Tag key not found."},
        // Any class but the port's is read as an SFP.
        {CIMObjectPath(
             "", CIMNamespaceName("root/qel"), "CIM_FCPort",
             Array<CIMKeyBinding>(1, CIMKeyBinding("DeviceID", PORT_A, CIMKeyBinding::STRING))),
         "QEL_FCPortSFPProvider Tag key not found."},
    };
    for (const auto& c : cases)
    {
        for (Op op : {ASSOCIATORS, REFERENCE_NAMES})
        {
            qelsim::clearCallLog();
            EXPECT_EQ(
                request(SFP_ASSOC, op, c.from).failure,
                std::string("CIM_ERR_INVALID_PARAMETER: ") + c.message);
            EXPECT_TRUE(callsNamed({"api_getFCPorts"}).empty());
        }
    }
}

TEST_F(SFPAssociation, AFailedPortListReadAnswersEmpty)
{
    for (const char* call : {"api_getFCPorts", "cim_sem_wait"})
    {
        SCOPED_TRACE(call);
        ASSERT_TRUE(qelsim::injectFault(call, API_ERR_IO).ok);
        EXPECT_EQ(
            request(SFP_ASSOC, ASSOCIATORS, portPath(PORT_A)).sequence, "processing complete");
        EXPECT_EQ(request(SFP_ASSOC, REFERENCES, sfpPath(TAG_A)).sequence, "processing complete");
        const Answer all = request(SFP_ASSOC, ENUMERATE_INSTANCE_NAMES, CIMObjectPath());
        EXPECT_EQ(all.sequence, "processing deliver[] complete");
        EXPECT_EQ(all.delivered(), 0u);
        qelsim::clearFaults();
    }
}
