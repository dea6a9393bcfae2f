// The project's schema as the server loads it: every property a provider
// sets exists with the type the provider gives it (the runtime refuses any
// other), keys are inherited, methods and registrations are in place.
#include <gtest/gtest.h>

#include <string>
#include <vector>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include "ClassRepository.h"
#include "MofCompiler.h"
#include "mof_test_support.h"

using namespace Pegasus;

namespace
{

const char* const qel = "root/qel";
const char* const interop = "root/PG_InterOp";

class SchemaTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        repo = new ClassRepository;
        MofCompiler compiler(*repo);
        compiler.compileFile(moftest::schemaDir() + "/root.mof");
    }

    static void TearDownTestSuite()
    {
        delete repo;
        repo = 0;
    }

    static CIMClass cls(const char* ns, const char* name)
    {
        return repo->getClass(ns, name, false, true, true, CIMPropertyList());
    }

    static std::string text(const CIMValue& v) { return static_cast<const char*>(v.toString().getCString()); }

    static ClassRepository* repo;
};

ClassRepository* SchemaTest::repo = 0;

struct Prop
{
    const char* name;
    CIMType type;
    bool isArray;
};

void expectProperties(const CIMClass& c, const std::vector<Prop>& props)
{
    const std::string className = static_cast<const char*>(c.getClassName().getString().getCString());
    for (const Prop& p : props)
    {
        const Uint32 i = c.findProperty(p.name);
        if (i == PEG_NOT_FOUND)
        {
            ADD_FAILURE() << className << " has no property " << p.name;
            continue;
        }
        CIMConstProperty cp = c.getProperty(i);
        EXPECT_EQ(cp.getType(), p.type) << className << "." << p.name;
        EXPECT_EQ(cp.isArray(), p.isArray) << className << "." << p.name;
        EXPECT_EQ(cp.getName(), CIMName(p.name)) << className << "." << p.name;
    }
}

// Set on both port views by the FC port provider.
const std::vector<Prop> portProperties = {
    {"SystemCreationClassName", CIMTYPE_STRING, false},
    {"SystemName", CIMTYPE_STRING, false},
    {"CreationClassName", CIMTYPE_STRING, false},
    {"DeviceID", CIMTYPE_STRING, false},
    {"ElementName", CIMTYPE_STRING, false},
    {"Name", CIMTYPE_STRING, false},
    {"PortNumber", CIMTYPE_UINT16, false},
    {"PortType", CIMTYPE_UINT16, false},
    {"PermanentAddress", CIMTYPE_STRING, false},
    {"NodeWWN", CIMTYPE_UINT64, false},
    {"Speed", CIMTYPE_UINT64, false},
    {"UsageRestriction", CIMTYPE_UINT16, false},
    {"PortDiscriminator", CIMTYPE_UINT16, true},
    {"LinkTechnology", CIMTYPE_UINT16, false},
    {"SupportedMaximumTransmissionUnit", CIMTYPE_UINT64, false},
    {"SupportedFC4Types", CIMTYPE_UINT16, true},
    {"ActiveFC4Types", CIMTYPE_UINT16, true},
    {"SupportedCOS", CIMTYPE_UINT16, true},
    {"ActiveCOS", CIMTYPE_UINT16, true},
    {"MaxSpeed", CIMTYPE_UINT64, false},
    {"ConnectionMode", CIMTYPE_UINT16, false},
    {"HealthState", CIMTYPE_UINT16, false},
    {"OperationalStatus", CIMTYPE_UINT16, true},
    {"OtherOperationalStatus", CIMTYPE_UINT16, false},
    {"EnabledState", CIMTYPE_UINT16, false},
};

// Set on QEL_FCPort only.
const std::vector<Prop> fcOnlyProperties = {
    {"Topology", CIMTYPE_UINT16, false},
    {"Configuration", CIMTYPE_UINT16, false},
    {"Mode", CIMTYPE_UINT16, false},
    {"ModeChangeAllowed", CIMTYPE_BOOLEAN, false},
    {"DeviceTypeConnected", CIMTYPE_UINT16, false},
    {"ConnectedTo", CIMTYPE_STRING, false},
    {"Class2Support", CIMTYPE_UINT16, false},
    {"VCN", CIMTYPE_UINT16, false},
    {"InterruptCoalescing", CIMTYPE_UINT16, false},
    {"ConnectionType", CIMTYPE_UINT16, false},
};

TEST_F(SchemaTest, PortClassesCarryWhatTheProviderSets)
{
    CIMClass fc = cls(qel, "QEL_FCPort");
    expectProperties(fc, portProperties);
    expectProperties(fc, fcOnlyProperties);
    expectProperties(fc, {{"FullDuplex", CIMTYPE_BOOLEAN, false},
        {"RequestedSpeed", CIMTYPE_UINT64, false}, {"AutoSense", CIMTYPE_BOOLEAN, false}});

    CIMClass loop = cls(qel, "QEL_FCALPort");
    expectProperties(loop, portProperties);
    for (const Prop& p : fcOnlyProperties)
        EXPECT_EQ(loop.findProperty(p.name), PEG_NOT_FOUND) << "QEL_FCALPort." << p.name;

    for (const char* name : {"QEL_FCPort", "QEL_FCALPort"})
    {
        CIMClass c = cls(qel, name);
        Array<CIMName> keys;
        c.getKeyNames(keys);
        ASSERT_EQ(keys.size(), 4u) << name;
        EXPECT_EQ(keys[0], CIMName("SystemCreationClassName"));
        EXPECT_EQ(keys[3], CIMName("DeviceID"));
        CIMProperty id = c.getProperty(c.findProperty("DeviceID"));
        EXPECT_EQ(id.getClassOrigin(), CIMName("CIM_LogicalDevice")) << name;
        EXPECT_TRUE(id.getPropagated()) << name;
        EXPECT_FALSE(c.isAbstract()) << name;
        EXPECT_TRUE(repo->isSubclassOf(qel, name, "CIM_FCPort")) << name;
    }
}

TEST_F(SchemaTest, PortMethodsReturnSint32)
{
    CIMClass fc = cls(qel, "QEL_FCPort");
    for (const char* m : {"SetOffline", "Reset", "ReloadFirmware", "SyncDatabase", "InitializeLoop"})
    {
        const Uint32 i = fc.findMethod(m);
        ASSERT_NE(i, PEG_NOT_FOUND) << m;
        EXPECT_EQ(fc.getMethod(i).getType(), CIMTYPE_SINT32) << m;
        EXPECT_EQ(fc.getMethod(i).getParameterCount(), std::string(m) == "InitializeLoop" ? 1u : 0u) << m;
    }
    CIMMethod init = fc.getMethod(fc.findMethod("InitializeLoop"));
    CIMParameter cage = init.getParameter(0);
    EXPECT_EQ(cage.getName(), CIMName("CageName"));
    EXPECT_EQ(cage.getType(), CIMTYPE_STRING);
    EXPECT_FALSE(cage.isArray());
    EXPECT_NE(cage.findQualifier("In"), PEG_NOT_FOUND);
    EXPECT_EQ(cls(qel, "QEL_FCALPort").getMethodCount(), 0u);
}

TEST_F(SchemaTest, SFPCarriesItsReadingsWithSignedTemperatureAndVoltage)
{
    CIMClass sfp = cls(qel, "QEL_SFP");
    std::vector<Prop> props = {
        {"Caption", CIMTYPE_STRING, false}, {"CreationClassName", CIMTYPE_STRING, false},
        {"Tag", CIMTYPE_STRING, false}, {"ElementName", CIMTYPE_STRING, false},
        {"Manufacturer", CIMTYPE_STRING, false}, {"PartNumber", CIMTYPE_STRING, false},
        {"SerialNumber", CIMTYPE_STRING, false}, {"Revision", CIMTYPE_STRING, false},
        {"Speed", CIMTYPE_UINT64, false}, {"DisableTXPinPosition", CIMTYPE_UINT16, false},
        {"LossRXPinPosition", CIMTYPE_UINT16, false}, {"FaultTXPinPosition", CIMTYPE_UINT16, false},
        {"IsUnqualified", CIMTYPE_BOOLEAN, false}, {"IsRXPowerLow", CIMTYPE_BOOLEAN, false},
        {"IsDDMAvailable", CIMTYPE_BOOLEAN, false}, {"SystemName", CIMTYPE_STRING, false},
        {"OperationalStatus", CIMTYPE_UINT16, true},
    };
    const struct
    {
        const char* prefix;
        const char* value;
        const char* unit;
        CIMType type;
    } ddm[] = {
        {"Temp", "Temperature", "TemperatureUnit", CIMTYPE_SINT16},
        {"Volt", "Vcc", "VccUnit", CIMTYPE_SINT16},
        {"Bias", "TxBias", "TxBiasUnit", CIMTYPE_UINT16},
        {"TxPower", "TxPower", "TxPowerUnit", CIMTYPE_UINT16},
        {"RxPower", "RxPower", "RxPowerUnit", CIMTYPE_UINT16},
    };
    std::vector<std::string> names;
    for (const auto& d : ddm)
    {
        for (const char* suffix : {"HighAlarm", "LowAlarm", "HighWarn", "LowWarn"})
            names.push_back(std::string(d.prefix) + suffix);
    }
    size_t n = 0;
    for (const auto& d : ddm)
    {
        for (int k = 0; k < 4; k++)
            props.push_back({names[n++].c_str(), d.type, false});
        props.push_back({d.value, d.type, false});
        props.push_back({d.unit, CIMTYPE_STRING, false});
    }
    expectProperties(sfp, props);

    Array<CIMName> keys;
    sfp.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0], CIMName("Tag"));
    EXPECT_EQ(keys[1], CIMName("CreationClassName"));
}

TEST_F(SchemaTest, StatisticsClassKeysOnInstanceID)
{
    CIMClass stats = cls(qel, "QEL_FCPortLESBStatistics");
    expectProperties(stats, {{"InstanceID", CIMTYPE_STRING, false},
        {"ElementName", CIMTYPE_STRING, false}, {"StatisticTime", CIMTYPE_DATETIME, false},
        {"LinkFailures", CIMTYPE_UINT64, false}, {"LossOfSyncCounter", CIMTYPE_UINT64, false},
        {"LossOfSignalCounter", CIMTYPE_UINT64, false},
        {"PrimitiveSeqProtocolErrCount", CIMTYPE_UINT64, false},
        {"InvalidTransmissionWords", CIMTYPE_UINT64, false}, {"CRCErrors", CIMTYPE_UINT64, false}});
    Array<CIMName> keys;
    stats.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0], CIMName("InstanceID"));
    CIMMethod reset = stats.getMethod(stats.findMethod("ResetSelectedStats"));
    EXPECT_EQ(reset.getType(), CIMTYPE_SINT32);
    EXPECT_EQ(reset.getParameterCount(), 0u);
}

TEST_F(SchemaTest, AssociationsReferTheirEnds)
{
    const struct
    {
        const char* association;
        const char* parent;
        const char* role;
        const char* end;
    } rows[] = {
        {"QEL_FCPortSFP", "CIM_PortActiveConnection", "Antecedent", "QEL_SFP"},
        {"QEL_FCPortSFP", "CIM_PortActiveConnection", "Dependent", "QEL_FCPort"},
        {"QEL_FCPortLESBElementStatisticalData", "CIM_ElementStatisticalData", "ManagedElement", "QEL_FCPort"},
        {"QEL_FCPortLESBElementStatisticalData", "CIM_ElementStatisticalData", "Stats",
            "QEL_FCPortLESBStatistics"},
    };
    for (const auto& r : rows)
    {
        CIMClass a = cls(qel, r.association);
        EXPECT_TRUE(a.isAssociation()) << r.association;
        EXPECT_EQ(a.getSuperClassName(), CIMName(r.parent));
        const Uint32 i = a.findProperty(r.role);
        ASSERT_NE(i, PEG_NOT_FOUND) << r.association << "." << r.role;
        CIMProperty p = a.getProperty(i);
        EXPECT_EQ(p.getType(), CIMTYPE_REFERENCE);
        EXPECT_EQ(p.getReferenceClassName(), CIMName(r.end)) << r.association << "." << r.role;
        EXPECT_NE(p.findQualifier("Key"), PEG_NOT_FOUND) << r.association << "." << r.role;
        Array<CIMName> keys;
        a.getKeyNames(keys);
        EXPECT_EQ(keys.size(), 2u) << r.association;
    }
}

TEST_F(SchemaTest, InternalCacheAnswersThroughOutputParameters)
{
    CIMClass cache = cls("root/PG_Internal", "QEL_InternalCache");
    Array<CIMName> keys;
    cache.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0], CIMName("InstanceID"));
    const struct
    {
        const char* method;
        const char* out;
        CIMType type;
    } rows[] = {
        {"GetSystemName", "SystemName", CIMTYPE_STRING},
        {"GetSystemHostName", "SystemHostName", CIMTYPE_STRING},
        {"GetSystemID", "SystemID", CIMTYPE_UINT32},
        {"GetSystemType", "SystemType", CIMTYPE_SINT32},
        {"GetSystemAddress", "SystemAddress", CIMTYPE_STRING},
        {"IsQuadPortSystem", "IsQuadPort", CIMTYPE_UINT8},
    };
    EXPECT_EQ(cache.getMethodCount(), 6u);
    for (const auto& r : rows)
    {
        const Uint32 i = cache.findMethod(r.method);
        ASSERT_NE(i, PEG_NOT_FOUND) << r.method;
        CIMMethod m = cache.getMethod(i);
        EXPECT_EQ(m.getType(), CIMTYPE_UINT32) << r.method;
        ASSERT_EQ(m.getParameterCount(), 1u) << r.method;
        CIMParameter p = m.getParameter(0);
        EXPECT_EQ(p.getName(), CIMName(r.out));
        EXPECT_EQ(p.getType(), r.type) << r.method;
        EXPECT_TRUE(p.getQualifier(p.findQualifier("Out")).getValue().equal(CIMValue(Boolean(true))));
        EXPECT_TRUE(p.getQualifier(p.findQualifier("In")).getValue().equal(CIMValue(Boolean(false))));
    }
    EXPECT_FALSE(repo->classExists(qel, "QEL_InternalCache"));
}

TEST_F(SchemaTest, ProvidersAreRegistered)
{
    Array<CIMInstance> modules = repo->enumerateInstances(interop, "PG_ProviderModule");
    ASSERT_EQ(modules.size(), 2u);
    const struct
    {
        const char* module;
        const char* location;
    } moduleRows[] = {
        {"QEL_FCPortProviderModule", "QEL_FCPortProvider"},
        {"QEL_InternalCacheProviderModule", "QEL_InternalCacheProvider"},
    };
    for (const auto& r : moduleRows)
    {
        const std::string path = std::string("PG_ProviderModule.Name=\"") + r.module + "\"";
        CIMInstance m = repo->getInstance(interop, CIMObjectPath(String(path.c_str())));
        EXPECT_EQ(text(m.getProperty(m.findProperty("Location")).getValue()), r.location);
        EXPECT_EQ(text(m.getProperty(m.findProperty("InterfaceType")).getValue()), "C++Default");
        EXPECT_EQ(text(m.getProperty(m.findProperty("InterfaceVersion")).getValue()), "2.1.0");
    }

    const struct
    {
        const char* module;
        const char* provider;
        const char* className;
        const char* types;        // ProviderType as CIMValue::toString gives it
        const char* ns;
    } rows[] = {
        {"QEL_FCPortProviderModule", "QEL_FCPortProvider", "QEL_FCPort", "2 5 ", "root/qel "},
        {"QEL_FCPortProviderModule", "QEL_FCPortProvider", "QEL_FCALPort", "2 5 ", "root/qel "},
        {"QEL_FCPortProviderModule", "QEL_SFPProvider", "QEL_SFP", "2 ", "root/qel "},
        {"QEL_FCPortProviderModule", "QEL_FCPortStatisticsProvider", "QEL_FCPortLESBStatistics",
            "2 5 ", "root/qel "},
        {"QEL_FCPortProviderModule", "QEL_FCPortSFPProvider", "QEL_FCPortSFP", "2 3 ", "root/qel "},
        {"QEL_FCPortProviderModule", "QEL_FCPortElementStatisticalDataProvider",
            "QEL_FCPortLESBElementStatisticalData", "2 3 ", "root/qel "},
        {"QEL_InternalCacheProviderModule", "QEL_InternalCacheProvider", "QEL_InternalCache",
            "2 5 ", "root/PG_Internal "},
    };
    Array<CIMInstance> caps = repo->enumerateInstances(interop, "PG_ProviderCapabilities");
    EXPECT_EQ(caps.size(), 7u);
    EXPECT_EQ(repo->enumerateInstances(interop, "PG_Provider").size(), 6u);
    for (const auto& r : rows)
    {
        const std::string path = std::string("PG_Provider.ProviderModuleName=\"") + r.module +
            "\",Name=\"" + r.provider + "\"";
        CIMInstance provider = repo->getInstance(interop, CIMObjectPath(String(path.c_str())));
        EXPECT_FALSE(provider.isUninitialized());
        bool found = false;
        for (Uint32 i = 0; i < caps.size(); i++)
        {
            CIMInstance c = caps[i];
            if (text(c.getProperty(c.findProperty("ClassName")).getValue()) != r.className)
                continue;
            found = true;
            EXPECT_EQ(text(c.getProperty(c.findProperty("ProviderName")).getValue()), r.provider);
            EXPECT_EQ(text(c.getProperty(c.findProperty("ProviderModuleName")).getValue()), r.module);
            EXPECT_EQ(text(c.getProperty(c.findProperty("ProviderType")).getValue()), r.types)
                << r.className;
            EXPECT_EQ(text(c.getProperty(c.findProperty("Namespaces")).getValue()), r.ns)
                << r.className;
            EXPECT_TRUE(c.getProperty(c.findProperty("SupportedProperties")).getValue().isNull());
        }
        EXPECT_TRUE(found) << r.className;
        EXPECT_TRUE(repo->classExists(std::string(r.ns).substr(0, std::string(r.ns).size() - 1).c_str(),
            r.className)) << r.className;
    }
}

}
