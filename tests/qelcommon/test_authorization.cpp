// Method authorization keys: which key each request asks the library with,
// when it asks at all, and that the library's answer is passed back.
#include "QEL_Common.h"
#include "qelcommon_test_support.h"

#include <gtest/gtest.h>

using namespace Pegasus;
using namespace qelcommontest;

namespace
{

typedef int (*AuthorizeFn)(const String&, const String&, const Array<CIMParamValue>&);

CIMObjectPath volume(const char* wwn)
{
    return CIMObjectPath(std::string("root/qel:QEL_StorageVolume.DeviceID=\"").append(wwn).append("\"").c_str());
}

CIMObjectPath synchronization(const char* wwn)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SyncedElement", volume(wwn).toString(), CIMKeyBinding::REFERENCE));
    return CIMObjectPath(String(), "root/qel", "QEL_Synchronized", keys);
}

Array<CIMParamValue> params(std::initializer_list<CIMParamValue> list)
{
    Array<CIMParamValue> out;
    for (const CIMParamValue& p : list)
    {
        out.append(p);
    }
    return out;
}

CIMParamValue u16(const char* name, Uint16 v)
{
    return CIMParamValue(name, CIMValue(v));
}

CIMParamValue ref(const char* name, const CIMObjectPath& p)
{
    return CIMParamValue(name, CIMValue(p));
}

// The keys api_authorizeCIMUser was asked with since the log was cleared.
std::vector<std::string> askedKeys()
{
    std::vector<std::string> keys;
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

} // namespace

TEST(AuthorizationKeys, EachRequestAsksWithItsKeyOrNotAtAll)
{
    loadTestArray();
    CIMValue dynamicPool(CIMObjectPath("root/qel:QEL_DynamicStoragePool.InstanceID=\"P1\""));
    Array<CIMObjectPath> twoVolumes;
    twoVolumes.append(volume("60002AC00000A001"));
    twoVolumes.append(volume("60002AC00000A003"));
    Array<CIMObjectPath> twoSyncs;
    twoSyncs.append(synchronization("60002AC00000A002"));
    twoSyncs.append(synchronization("60002AC00000A004"));

    struct Case
    {
        const char* label;
        AuthorizeFn fn;
        Array<CIMParamValue> in;
        int forced;  // what the library answers
        int result;
        std::vector<std::string> keys;
    };
    const std::vector<Case> cases = {
        {"sync detach", authorize_ModifySynchronization, params({u16("operation", 2)}), 0, 0,
            {CFG + "modifysynchronization.detach"}},
        {"sync refused", authorize_ModifySynchronization, params({u16("Operation", 13)}), 1, 1,
            {CFG + "modifysynchronization.stopcopy"}},
        {"sync no op", authorize_ModifySynchronization, params({}), 0, 3, {}},
        {"replica sync no op", authorize_ModifyReplicaSynchronization, params({}), 0, 0, {}},
        {"replica abort", authorize_ModifyReplicaSynchronization, params({u16("Operation", 2)}), 0, 0,
            {REP + "modifyreplicasynchronization.abort "}},
        {"replica 22", authorize_ModifyReplicaSynchronization, params({u16("Operation", 22)}), 0, 3, {}},
        {"replica delete", authorize_ModifyReplicaSynchronization,
            params({u16("Operation", 19), ref("Synchronization", synchronization("60002AC00000A002"))}), 0, 0,
            {CFG + "returntostoragepool.physcopyvv"}},
        {"element replica, no mode", authorize_CreateElementReplica, params({u16("SyncType", 8)}), 1, 0, {}},
        {"element replica", authorize_CreateElementReplica, params({u16("Mode", 1), u16("SyncType", 8)}), 0, 0,
            {REP + "createelementreplica.createvvcopy"}},
        {"create volume", authorize_CreateOrModifyElemFromStoragePool,
            params({CIMParamValue("ElementName", CIMValue(String("v")))}), 0, 0,
            {CFG + "createormodifyelementfromstoragepool.createvolume"}},
        {"grow and rename", authorize_CreateOrModifyElemFromStoragePool,
            params({ref("TheElement", volume("60002AC00000A001")), CIMParamValue("Size", CIMValue(Uint64(1))),
                CIMParamValue("ElementName", CIMValue(String("v")))}),
            0, 0,
            {CFG + "createormodifyelementfromstoragepool.growvolume",
                CFG + "createormodifyelementfromstoragepool.setvolume"}},
        {"grow refused stops", authorize_CreateOrModifyElemFromStoragePool,
            params({ref("TheElement", volume("60002AC00000A001")), CIMParamValue("Size", CIMValue(Uint64(1))),
                CIMParamValue("ElementName", CIMValue(String("v")))}),
            1, 1, {CFG + "createormodifyelementfromstoragepool.growvolume"}},
        {"element only", authorize_CreateOrModifyElemFromStoragePool,
            params({ref("TheElement", volume("60002AC00000A001"))}), 1, 0, {}},
        {"delete dynamic pool", authorize_DeleteStoragePool, params({CIMParamValue("pool", dynamicPool)}), 0, 0,
            {CFG + "deletestoragepool.deletedynamicstoragepool"}},
        {"delete other pool", authorize_DeleteStoragePool,
            params({ref("Pool", CIMObjectPath("root/qel:QEL_Other.InstanceID=\"P\""))}), 0, 3, {}},
        {"delete two volumes", authorize_DeleteStorageVolume,
            params({CIMParamValue("TheElements", CIMValue(twoVolumes))}), 0, 0,
            {CFG + "returntostoragepool.basevv", CFG + "returntostoragepool.virtcopyvv"}},
        {"first refusal ends", authorize_DeleteStorageVolume,
            params({CIMParamValue("TheElements", CIMValue(twoVolumes))}), 2, 2, {CFG + "returntostoragepool.basevv"}},
        {"unknown volume keeps start key", authorize_DeleteStorageVolume,
            params({ref("TheElement", volume("60002AC0000FFFFF"))}), 0, 0, {CFG + "returntostoragepool"}},
        {"list delete group", authorize_ModifyListSynchronization,
            params({u16("Operation", 19), CIMParamValue("TargetGroup", CIMValue(String("g")))}), 0, 0,
            {REP + "deletegroup"}},
        {"list delete volumes", authorize_ModifyListSynchronization,
            params({u16("Operation", 19), CIMParamValue("Synchronization", CIMValue(twoSyncs))}), 0, 0,
            {CFG + "returntostoragepool.physcopyvv", CFG + "returntostoragepool"}},
        {"list no op", authorize_ModifyListSynchronization, params({}), 0, 0, {}},
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
        std::vector<std::string> keys;
    };
    const Case cases[] = {
        {"QEL_Anything", "QEL_DynamicStoragePool", 0, {"qel_allocatedfromstoragepool.modifyinstance.setcpg"}},
        {"QEL_DynamicStoragePool", "QEL_StorageVolume", 0, {"qel_allocatedfromstoragepool.modifyinstance.setvv"}},
        {"QEL_DynamicStoragePool", "QEL_DeltaReplicaStoragePool", 0,
            {"qel_allocatedfromstoragepool.modifyinstance.setvv"}},
        {"QEL_DynamicStoragePool", "QEL_Other", 3, {}},
        {"QEL_StoragePool", "QEL_StorageVolume", 3, {}},
    };
    ASSERT_TRUE(qelsim::forceAuthorization(0).ok);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.antecedent) + "/" + c.dependent);
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("Antecedent", std::string("root/qel:").append(c.antecedent).append(".InstanceID=\"a\"").c_str(),
            CIMKeyBinding::REFERENCE));
        keys.append(CIMKeyBinding("Dependent", std::string("root/qel:").append(c.dependent).append(".InstanceID=\"d\"").c_str(),
            CIMKeyBinding::REFERENCE));
        qelsim::clearCallLog();
        EXPECT_EQ(c.result, authorize_AllocatedFromStoragePoolModifyInstance("admin", "10.0.0.1",
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
        CIMObjectPath invalid = volume("60002AC00000A005");
        EXPECT_EQ(0, handleDeleteVolumeMethod(invalid, key));
        EXPECT_EQ(String("start"), key);
        EXPECT_TRUE(trace.has(2, "TheElement parameter is invalid\n"));
        CIMObjectPath other = volume("60002AC00000A004");
        EXPECT_EQ(0, handleDeleteVolumeMethod(other, key));
        EXPECT_EQ(String("qel_storageconfigurationservice.returntostoragepool"), key);
    }
    qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(2u, c.semWaits);
    EXPECT_EQ(2u, c.semPosts);
    EXPECT_EQ(0u, c.unbracketedCalls);
    EXPECT_NE(1, qelsim::leakCheck());

    // Neither a failed wait, a path without a class, nor a WWN text that
    // selects every volume fetches anything.
    ASSERT_TRUE(qelsim::failSemaphoreWait(API_ERR_BUSY, 1).ok);
    TraceCapture trace;
    String key("start");
    CIMObjectPath unfetched[] = {volume("60002AC00000A001"), CIMObjectPath(), volume("FFFFFFFFFFFFFFF6")};
    for (CIMObjectPath& ref : unfetched)
    {
        EXPECT_EQ(0, handleDeleteVolumeMethod(ref, key));
        EXPECT_TRUE(trace.has(2, "Cannot find the volume referenced to in " +
                                     std::string((const char*)ref.toString().getCString()) + "\n"));
    }
    EXPECT_EQ(String("start"), key);
    c = qelsim::counters();
    EXPECT_EQ(1u, c.semFailedWaits);
    EXPECT_EQ(c.semWaits, c.semPosts);
    qelsim::clearFaults();
}
