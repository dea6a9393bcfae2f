// Method authorization keys: which key each request asks the library with,
// when it asks at all, and that the library's answer is passed back.
#include "QEL_Common.h"
#include "qelcommon_test_support.h"

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

typedef int (*AuthorizeFn)(const String&, const String&, const Array<CIMParamValue>&);

static CIMObjectPath volume(const char* wwn)
{
    return CIMObjectPath(
        std::string("root/qel:QEL_StorageVolume.DeviceID=\"").append(wwn).append("\"").c_str());
}

static CIMObjectPath synchronization(const char* wwn)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SyncedElement", volume(wwn).toString(), CIMKeyBinding::REFERENCE));
    return CIMObjectPath(String(), "root/qel", "QEL_Synchronized", keys);
}

static Array<CIMParamValue> params(std::initializer_list<CIMParamValue> list)
{
    Array<CIMParamValue> out;
    for (const CIMParamValue& p : list)
        out.append(p);
    return out;
}

static CIMParamValue u16(const char* name, Uint16 v)
{
    return CIMParamValue(name, CIMValue(v));
}
static CIMParamValue ref(const char* name, const CIMObjectPath& p)
{
    return CIMParamValue(name, CIMValue(p));
}

// The keys api_authorizeCIMUser was asked with since the log was cleared.
static Texts askedKeys()
{
    Texts keys;
    for (const qelsim::CallRecord& r : qelsim::callLog())
    {
        if (r.call == "api_authorizeCIMUser")
        {
            EXPECT_EQ("\"admin\"", r.args[0]);
            EXPECT_EQ("\"10.0.0.1\"", r.args[1]);
            keys.push_back(r.args[2].substr(1, r.args[2].size() - 2));
        }
    }
    return keys;
}

const std::string CFG = "qel_storageconfigurationservice.";
const std::string REP = "qel_replicationservice.";

TEST(AuthorizationKeys, EachRequestAsksWithItsKeyOrNotAtAll)
{
    loadTestArray();
    CIMValue dynamicPool(CIMObjectPath("root/qel:QEL_DynamicStoragePool.InstanceID=\"P1\""));
    Array<CIMObjectPath> twoVolumes(1, volume("60002AC00000A001")),
        twoSyncs(1, synchronization("60002AC00000A002"));
    twoVolumes.append(volume("60002AC00000A003"));
    twoSyncs.append(synchronization("60002AC00000A004"));
    const auto A = [](const char* key) { return CFG + key; };  // storage configuration keys
    const auto R = [](const char* key) { return REP + key; };  // replication keys
    const auto SYNC = authorize_ModifySynchronization,
               REPLICA = authorize_ModifyReplicaSynchronization,
               ELEMENT = authorize_CreateElementReplica,
               CREATE = authorize_CreateOrModifyElemFromStoragePool,
               POOL = authorize_DeleteStoragePool, VOLUME = authorize_DeleteStorageVolume,
               LIST = authorize_ModifyListSynchronization;
    const Array<CIMParamValue> growAndRename = params(
        {ref("TheElement", volume("60002AC00000A001")), CIMParamValue("Size", CIMValue(Uint64(1))),
         CIMParamValue("ElementName", CIMValue(String("v")))});
    const Array<CIMParamValue> deleteTwo =
        params({CIMParamValue("TheElements", CIMValue(twoVolumes))});
    const CIMParamValue deleteOp = u16("Operation", 19);
    // forced: what the library answers
    struct Case
    {
        const char* label;
        AuthorizeFn fn;
        Array<CIMParamValue> in;
        int forced;
        int result;
        Texts keys;
    };
    const std::vector<Case> cases = {
        {"sync detach",
         SYNC,
         params({u16("operation", 2)}),
         0,
         0,
         {A("modifysynchronization.detach")}},
        {"sync refused",
         SYNC,
         params({u16("Operation", 13)}),
         1,
         1,
         {A("modifysynchronization.stopcopy")}},
        {"sync no op", SYNC, params({}), 0, 3, {}},
        {"replica sync no op", REPLICA, params({}), 0, 0, {}},
        // The trailing blank is the array's own key text.
        {"replica abort",
         REPLICA,
         params({u16("Operation", 2)}),
         0,
         0,
         {R("modifyreplicasynchronization.abort ")}},
        {"replica 22", REPLICA, params({u16("Operation", 22)}), 0, 3, {}},
        {"replica delete",
         REPLICA,
         params({deleteOp, ref("Synchronization", synchronization("60002AC00000A002"))}),
         0,
         0,
         {A("returntostoragepool.physcopyvv")}},
        {"element replica, no mode", ELEMENT, params({u16("SyncType", 8)}), 1, 0, {}},
        {"element replica",
         ELEMENT,
         params({u16("Mode", 1), u16("SyncType", 8)}),
         0,
         0,
         {R("createelementreplica.createvvcopy")}},
        {"create volume",
         CREATE,
         params({CIMParamValue("ElementName", CIMValue(String("v")))}),
         0,
         0,
         {A("createormodifyelementfromstoragepool.createvolume")}},
        {"grow and rename",
         CREATE,
         growAndRename,
         0,
         0,
         {A("createormodifyelementfromstoragepool.growvolume"),
          A("createormodifyelementfromstoragepool.setvolume")}},
        {"grow refused stops",
         CREATE,
         growAndRename,
         1,
         1,
         {A("createormodifyelementfromstoragepool.growvolume")}},
        {"element only", CREATE, params({ref("TheElement", volume("60002AC00000A001"))}), 1, 0, {}},
        {"delete dynamic pool",
         POOL,
         params({CIMParamValue("pool", dynamicPool)}),
         0,
         0,
         {A("deletestoragepool.deletedynamicstoragepool")}},
        {"delete other pool",
         POOL,
         params({ref("Pool", CIMObjectPath("root/qel:QEL_Other.InstanceID=\"P\""))}),
         0,
         3,
         {}},
        {"delete two volumes",
         VOLUME,
         deleteTwo,
         0,
         0,
         {A("returntostoragepool.basevv"), A("returntostoragepool.virtcopyvv")}},
        {"first refusal ends", VOLUME, deleteTwo, 2, 2, {A("returntostoragepool.basevv")}},
        {"unknown volume keeps start key",
         VOLUME,
         params({ref("TheElement", volume("60002AC0000FFFFF"))}),
         0,
         0,
         {A("returntostoragepool")}},
        {"list delete group",
         LIST,
         params({deleteOp, CIMParamValue("TargetGroup", CIMValue(String("g")))}),
         0,
         0,
         {R("deletegroup")}},
        {"list delete volumes",
         LIST,
         params({deleteOp, CIMParamValue("Synchronization", CIMValue(twoSyncs))}),
         0,
         0,
         {A("returntostoragepool.physcopyvv"), A("returntostoragepool")}},
        {"list no op", LIST, params({}), 0, 0, {}},
        // A volume that is not found leaves the key empty: the library is asked with it.
        {"list delete unknown volume",
         LIST,
         params(
             {deleteOp, CIMParamValue(
                            "Synchronization", CIMValue(Array<CIMObjectPath>(
                                                   1, synchronization("60002AC0000FFFFF"))))}),
         0,
         0,
         {""}},
        {"list delete without synchronizations", LIST, params({deleteOp}), 0, 0, {}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.label);
        qelsim::clearFaults();
        ASSERT_TRUE(qelsim::forceAuthorization(c.forced).ok);
        qelsim::clearCallLog();
        EXPECT_EQ(c.result, c.fn("admin", "10.0.0.1", c.in));
        EXPECT_EQ(c.keys, askedKeys());
    }
    qelsim::clearFaults();
}

TEST(AuthorizationKeys, AllocatedFromStoragePoolChoosesByTheEndClasses)
{
    loadTestArray();
    struct Case
    {
        const char* antecedent;
        const char* dependent;
        int result;
        Texts keys;
    };
    const Case cases[] = {
        {"QEL_Anything",
         "QEL_DynamicStoragePool",
         0,
         {"qel_allocatedfromstoragepool.modifyinstance.setcpg"}},
        {"QEL_DynamicStoragePool",
         "QEL_StorageVolume",
         0,
         {"qel_allocatedfromstoragepool.modifyinstance.setvv"}},
        {"QEL_DynamicStoragePool",
         "QEL_DeltaReplicaStoragePool",
         0,
         {"qel_allocatedfromstoragepool.modifyinstance.setvv"}},
        {"QEL_DynamicStoragePool", "QEL_Other", 3, {}},
        {"QEL_StoragePool", "QEL_StorageVolume", 3, {}},
    };
    ASSERT_TRUE(qelsim::forceAuthorization(0).ok);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.antecedent) + "/" + c.dependent);
        Array<CIMKeyBinding> keys;
        for (const char* role : {"Antecedent", "Dependent"})
            keys.append(CIMKeyBinding(
                role,
                CIMObjectPath(
                    String(), "root/qel", role[0] == 'A' ? c.antecedent : c.dependent,
                    Array<CIMKeyBinding>(
                        1, CIMKeyBinding("InstanceID", "x", CIMKeyBinding::STRING)))
                    .toString(),
                CIMKeyBinding::REFERENCE));
        qelsim::clearCallLog();
        EXPECT_EQ(
            c.result,
            authorize_AllocatedFromStoragePoolModifyInstance(
                "admin", "10.0.0.1",
                CIMObjectPath(String(), "root/qel", "QEL_AllocatedFromStoragePool", keys)));
        EXPECT_EQ(c.keys, askedKeys());
    }
    qelsim::clearFaults();
}

TEST(DeleteVolumeKey, FetchesUnderTheSemaphoreAndTracesMisses)
{
    loadTestArray();
    qelsim::resetCounters();
    {
        TraceCapture trace;
        String key("start");
        CIMObjectPath invalid = volume("60002AC00000A005"), other = volume("60002AC00000A004");
        EXPECT_EQ(0, handleDeleteVolumeMethod(invalid, key));
        EXPECT_EQ(String("start"), key);
        EXPECT_TRUE(trace.has(2, "TheElement parameter is invalid\n"));
        EXPECT_EQ(0, handleDeleteVolumeMethod(other, key));
        EXPECT_EQ(String("qel_storageconfigurationservice.returntostoragepool"), key);
    }
    qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(
        (std::vector<uint64_t>{2, 2, 0}),
        (std::vector<uint64_t>{c.semWaits, c.semPosts, c.unbracketedCalls}));
    EXPECT_NE(1, qelsim::leakCheck());

    // Neither a failed wait, a path without a class, nor a WWN text that selects every volume fetches anything.
    ASSERT_TRUE(qelsim::failSemaphoreWait(API_ERR_BUSY, 1).ok);
    TraceCapture trace;
    String key("start");
    CIMObjectPath unfetched[] = {
        volume("60002AC00000A001"), CIMObjectPath(), volume("FFFFFFFFFFFFFFF6")};
    for (CIMObjectPath& ref : unfetched)
    {
        EXPECT_EQ(0, handleDeleteVolumeMethod(ref, key));
        EXPECT_TRUE(trace.has(
            2, "Cannot find the volume referenced to in " +
                   std::string((const char*)ref.toString().getCString()) + "\n"));
    }
    EXPECT_EQ(String("start"), key);
    c = qelsim::counters();
    EXPECT_EQ(1u, c.semFailedWaits);
    EXPECT_EQ(c.semWaits, c.semPosts);
    qelsim::clearFaults();
}
