// The project's schema as the server loads it: every property a provider
// sets exists with the type the provider gives it (the runtime refuses any
// other), keys are inherited, methods and registrations are in place.
#include <gtest/gtest.h>

#include <vector>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include "mof_test_support.h"

using namespace Pegasus;

namespace
{

const char* const qel = "root/qel";
const char* const interop = "root/PG_InterOp";
typedef std::vector<std::string> Words;

Words split(const std::string& text)
{
    std::istringstream in(text);
    Words words;
    for (std::string w; in >> w;)
        words.push_back(w);
    return words;
}

std::string text(const CIMValue& v)
{
    return static_cast<const char*>(v.toString().getCString());
}
std::string text(const CIMName& n)
{
    return static_cast<const char*>(n.getString().getCString());
}

// "<type> <name>([In(false), Out] <type> <name>, ...)": the qualifiers In
// and Out are shown when the parameter carries them.
std::string signature(const CIMConstMethod& m)
{
    std::string s = std::string(cimTypeToString(m.getType())) + " " + text(m.getName()) + "(";
    for (Uint32 i = 0; i < m.getParameterCount(); i++)
    {
        CIMConstParameter p = m.getParameter(i);
        std::string given;
        for (const char* q : {"In", "Out"})
        {
            const Uint32 at = p.findQualifier(q);
            if (at != PEG_NOT_FOUND)
                given += (given.empty() ? "[" : ", ") + std::string(q) +
                         (text(p.getQualifier(at).getValue()) == "TRUE" ? "" : "(false)");
        }
        s += (i ? ", " : "") + given + (given.empty() ? "" : "] ") + cimTypeToString(p.getType()) +
             (p.isArray() ? "[] " : " ") + text(p.getName());
    }
    return s + ")";
}

class SchemaTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        MofCompiler(*repo).compileFile(moftest::schemaDir() + "/root.mof");
    }
    static void TearDownTestSuite() { delete repo; }
    static CIMClass cls(const char* name, const char* ns = qel)
    {
        return repo->getClass(ns, name, false, true, true, CIMPropertyList());
    }
    static ClassRepository* repo;
};

ClassRepository* SchemaTest::repo = new ClassRepository;

// The properties the providers set, by class, type and arrayness.
const struct
{
    const char* classes;
    CIMType type;
    bool isArray;
    const char* names;
} typedProperties[] = {
    {"QEL_FCPort QEL_FCALPort", CIMTYPE_STRING, false,
     "SystemCreationClassName SystemName CreationClassName DeviceID ElementName Name PermanentAddress"},
    {"QEL_FCPort QEL_FCALPort", CIMTYPE_UINT16, false,
     "PortNumber PortType UsageRestriction LinkTechnology ConnectionMode HealthState OtherOperationalStatus "
     "EnabledState"},
    {"QEL_FCPort QEL_FCALPort", CIMTYPE_UINT16, true,
     "PortDiscriminator SupportedFC4Types ActiveFC4Types SupportedCOS ActiveCOS OperationalStatus"},
    {"QEL_FCPort QEL_FCALPort", CIMTYPE_UINT64, false,
     "NodeWWN Speed SupportedMaximumTransmissionUnit MaxSpeed"},
    {"QEL_FCPort", CIMTYPE_UINT16, false,
     "Topology Configuration Mode DeviceTypeConnected Class2Support VCN InterruptCoalescing ConnectionType"},
    {"QEL_FCPort", CIMTYPE_BOOLEAN, false, "ModeChangeAllowed FullDuplex AutoSense"},
    {"QEL_FCPort", CIMTYPE_STRING, false, "ConnectedTo"},
    {"QEL_FCPort", CIMTYPE_UINT64, false, "RequestedSpeed"},
    {"QEL_SFP", CIMTYPE_STRING, false,
     "Caption CreationClassName Tag ElementName Manufacturer PartNumber SerialNumber Revision SystemName "
     "TemperatureUnit VccUnit TxBiasUnit TxPowerUnit RxPowerUnit"},
    {"QEL_SFP", CIMTYPE_UINT64, false, "Speed"},
    {"QEL_SFP", CIMTYPE_UINT16, true, "OperationalStatus"},
    {"QEL_SFP", CIMTYPE_UINT16, false, "DisableTXPinPosition LossRXPinPosition FaultTXPinPosition"},
    {"QEL_SFP", CIMTYPE_BOOLEAN, false, "IsUnqualified IsRXPowerLow IsDDMAvailable"},
    // Temperature and voltage readings are signed, the other readings not: intended.
    {"QEL_SFP", CIMTYPE_SINT16, false,
     "TempHighAlarm TempLowAlarm TempHighWarn TempLowWarn Temperature "
     "VoltHighAlarm VoltLowAlarm VoltHighWarn VoltLowWarn Vcc"},
    {"QEL_SFP", CIMTYPE_UINT16, false,
     "BiasHighAlarm BiasLowAlarm BiasHighWarn BiasLowWarn TxBias "
     "TxPowerHighAlarm TxPowerLowAlarm TxPowerHighWarn TxPowerLowWarn TxPower "
     "RxPowerHighAlarm RxPowerLowAlarm RxPowerHighWarn RxPowerLowWarn RxPower"},
    {"QEL_FCPortLESBStatistics", CIMTYPE_STRING, false, "InstanceID ElementName"},
    {"QEL_FCPortLESBStatistics", CIMTYPE_DATETIME, false, "StatisticTime"},
    {"QEL_FCPortLESBStatistics", CIMTYPE_UINT64, false,
     "LinkFailures LossOfSyncCounter LossOfSignalCounter PrimitiveSeqProtocolErrCount "
     "InvalidTransmissionWords CRCErrors"},
};

TEST_F(SchemaTest, PropertiesHaveTheTypesTheProvidersSet)
{
    for (const auto& row : typedProperties)
    {
        for (const std::string& className : split(row.classes))
        {
            CIMClass c = cls(className.c_str());
            for (const std::string& name : split(row.names))
            {
                SCOPED_TRACE(className + "." + name);
                const Uint32 i = c.findProperty(name.c_str());
                ASSERT_NE(i, PEG_NOT_FOUND);
                EXPECT_EQ(
                    text(c.getProperty(i).getName()), name);  // spelled as the providers spell it
                EXPECT_EQ(c.getProperty(i).getType(), row.type);
                EXPECT_EQ(c.getProperty(i).isArray(), row.isArray);
            }
        }
    }
    // The loop view has none of the fabric port's own properties.
    CIMClass loop = cls("QEL_FCALPort");
    for (const std::string& name :
         split("Topology Configuration Mode ModeChangeAllowed DeviceTypeConnected "
               "ConnectedTo Class2Support VCN InterruptCoalescing ConnectionType"))
        EXPECT_EQ(loop.findProperty(name.c_str()), PEG_NOT_FOUND) << name;
}

// Per class: superclass, keys in order, "<role>:<class>" of its references,
// and its methods.
TEST_F(SchemaTest, HierarchyKeysReferencesAndMethods)
{
    const char* portKeys = "SystemCreationClassName SystemName CreationClassName DeviceID";
    const struct
    {
        const char* cls;
        const char* parent;
        const char* keys;
        const char* refs;
        Words methods;
    } rows[] = {
        {"QEL_FCPort",
         "CIM_FCPort",
         portKeys,
         "",
         {"sint32 SetOffline()", "sint32 Reset()", "sint32 ReloadFirmware()",
          "sint32 SyncDatabase()", "sint32 InitializeLoop([In] string CageName)"}},
        {"QEL_FCALPort", "CIM_FCPort", portKeys, "", {}},
        {"QEL_SFP", "CIM_PhysicalConnector", "Tag CreationClassName", "", {}},
        {"QEL_FCPortLESBStatistics",
         "CIM_StatisticalData",
         "InstanceID",
         "",
         {"sint32 ResetSelectedStats()"}},
        {"QEL_FCPortSFP",
         "CIM_PortActiveConnection",
         "Antecedent Dependent",
         "Antecedent:QEL_SFP Dependent:QEL_FCPort",
         {}},
        {"QEL_FCPortLESBElementStatisticalData",
         "CIM_ElementStatisticalData",
         "ManagedElement Stats",
         "ManagedElement:QEL_FCPort Stats:QEL_FCPortLESBStatistics",
         {}},
    };
    for (const auto& r : rows)
    {
        SCOPED_TRACE(r.cls);
        CIMClass c = cls(r.cls);
        EXPECT_EQ(text(c.getSuperClassName()), r.parent);
        EXPECT_FALSE(c.isAbstract());
        EXPECT_EQ(c.isAssociation(), *r.refs != 0);
        Array<CIMName> keys;
        c.getKeyNames(keys);
        Words keyNames, refs, methods;
        for (Uint32 i = 0; i < keys.size(); i++)
            keyNames.push_back(text(keys[i]));
        EXPECT_EQ(keyNames, split(r.keys));
        for (Uint32 i = 0; i < c.getPropertyCount(); i++)
        {
            if (c.getProperty(i).getType() == CIMTYPE_REFERENCE)
                refs.push_back(
                    text(c.getProperty(i).getName()) + ":" +
                    text(c.getProperty(i).getReferenceClassName()));
        }
        EXPECT_EQ(refs, split(r.refs));
        for (Uint32 i = 0; i < c.getMethodCount(); i++)
            methods.push_back(signature(c.getMethod(i)));
        EXPECT_EQ(methods, r.methods);
    }
    for (const char* port : {"QEL_FCPort", "QEL_FCALPort"})
    {
        CIMClass c = cls(port);
        CIMProperty id = c.getProperty(c.findProperty("DeviceID"));
        EXPECT_EQ(id.getClassOrigin(), CIMName("CIM_LogicalDevice")) << port;
        EXPECT_TRUE(id.getPropagated()) << port;
    }
}

// The cache answers through output parameters only, in its own namespace.
TEST_F(SchemaTest, InternalCacheMethods)
{
    CIMClass cache = cls("QEL_InternalCache", "root/PG_Internal");
    Words methods;
    for (Uint32 i = 0; i < cache.getMethodCount(); i++)
        methods.push_back(signature(cache.getMethod(i)));
    EXPECT_EQ(
        methods, (Words{
                     "uint32 GetSystemName([In(false), Out] string SystemName)",
                     "uint32 GetSystemHostName([In(false), Out] string SystemHostName)",
                     "uint32 GetSystemID([In(false), Out] uint32 SystemID)",
                     "uint32 GetSystemType([In(false), Out] sint32 SystemType)",
                     "uint32 GetSystemAddress([In(false), Out] string SystemAddress)",
                     "uint32 IsQuadPortSystem([In(false), Out] uint8 IsQuadPort)"}));
    Array<CIMName> keys;
    cache.getKeyNames(keys);
    EXPECT_EQ(text(keys[0]) + " " + std::to_string(keys.size()), "InstanceID 1");
    EXPECT_FALSE(repo->classExists(qel, "QEL_InternalCache"));
}

TEST_F(SchemaTest, ProvidersAreRegistered)
{
    for (const char* module : {"QEL_FCPortProvider", "QEL_InternalCacheProvider"})
    {
        SCOPED_TRACE(module);
        const std::string path = std::string("PG_ProviderModule.Name=\"") + module + "Module\"";
        CIMInstance m = repo->getInstance(interop, CIMObjectPath(String(path.c_str())));
        auto value = [&](const char* name)
        { return text(m.getProperty(m.findProperty(name)).getValue()); };
        EXPECT_EQ(
            value("Location") + " " + value("InterfaceType") + " " + value("InterfaceVersion"),
            std::string(module) + " C++Default 2.1.0");
    }
    EXPECT_EQ(repo->enumerateInstances(interop, "PG_ProviderModule").size(), 2u);
    EXPECT_EQ(repo->enumerateInstances(interop, "PG_Provider").size(), 6u);

    // Per capability: "<module> <provider> <namespaces> <ProviderType>" as
    // CIMValue::toString prints the arrays.
    const struct
    {
        const char* className;
        const char* registration;
    } rows[] = {
        {"QEL_FCPort", "QEL_FCPortProviderModule QEL_FCPortProvider root/qel 2 5"},
        {"QEL_FCALPort", "QEL_FCPortProviderModule QEL_FCPortProvider root/qel 2 5"},
        {"QEL_SFP", "QEL_FCPortProviderModule QEL_SFPProvider root/qel 2"},
        {"QEL_FCPortLESBStatistics",
         "QEL_FCPortProviderModule QEL_FCPortStatisticsProvider root/qel 2 5"},
        {"QEL_FCPortSFP", "QEL_FCPortProviderModule QEL_FCPortSFPProvider root/qel 2 3"},
        {"QEL_FCPortLESBElementStatisticalData",
         "QEL_FCPortProviderModule QEL_FCPortElementStatisticalDataProvider root/qel 2 3"},
        {"QEL_InternalCache",
         "QEL_InternalCacheProviderModule QEL_InternalCacheProvider root/PG_Internal 2 5"},
    };
    Array<CIMInstance> caps = repo->enumerateInstances(interop, "PG_ProviderCapabilities");
    ASSERT_EQ(caps.size(), 7u);
    for (const auto& r : rows)
    {
        SCOPED_TRACE(r.className);
        std::string found;
        for (Uint32 i = 0; i < caps.size(); i++)
        {
            CIMInstance c = caps[i];
            auto value = [&](const char* name)
            { return c.getProperty(c.findProperty(name)).getValue(); };
            if (text(value("ClassName")) != r.className)
                continue;
            found = text(value("ProviderModuleName")) + " " + text(value("ProviderName")) + " " +
                    text(value("Namespaces")) + text(value("ProviderType"));
            EXPECT_TRUE(value("SupportedProperties").isNull());
            const std::string provider = "PG_Provider.ProviderModuleName=\"" +
                                         text(value("ProviderModuleName")) + "\",Name=\"" +
                                         text(value("ProviderName")) + "\"";
            EXPECT_NO_THROW(repo->getInstance(interop, CIMObjectPath(String(provider.c_str()))));
            EXPECT_TRUE(
                repo->classExists(split(text(value("Namespaces")))[0].c_str(), r.className));
        }
        EXPECT_EQ(found, std::string(r.registration) + " ");
    }
}

}  // namespace
