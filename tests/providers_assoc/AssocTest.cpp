#include "AssocTest.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <fstream>
#include <sstream>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

const char PORT_A[] = "20110002AC001234", PORT_B[] = "21230002AC001235",
           PORT_C[] = "22320002AC001236";
const char TAG_A[] = "20110002AC001234-SN-A", TAG_C[] = "22320002AC001236-SN-C";
const char STATS_A[] = "ZEPHRAN:20110002AC001234-Stats",
           STATS_B[] = "ZEPHRAN:21230002AC001235-Stats";

const AssocSide SFP_ASSOC = {"QEL_FCPortSFPProvider", "QEL_FCPortSFP",
    "QEL_FCPortSFPProvider", "QEL_SFP", "Tag", TAG_A};
const AssocSide STATS_ASSOC = {"QEL_FCPortElementStatisticalDataProvider",
    "QEL_FCPortLESBElementStatisticalData", "QEL_FCPortElementStatisticalData",
    "QEL_FCPortLESBStatistics", "InstanceID", STATS_A};

const char* const OP_NAMES[] = {"associators", "associatorNames", "references",
    "referenceNames", "getInstance", "enumerateInstances", "enumerateInstanceNames"};

std::string text(const CIMObjectPath& path)
{
    return (const char*)path.toString().getCString();
}

std::string keyValue(const CIMObjectPath& path, const char* key)
{
    const Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName() == CIMName(key))
        {
            return (const char*)keys[i].getValue().getCString();
        }
    }
    return "";
}

CIMObjectPath referenceKey(const CIMObjectPath& path, const char* key)
{
    return CIMObjectPath(String(keyValue(path, key).c_str()));
}

std::string AssocTest::arrayFixture() const
{
    std::ifstream in(QEL_ASSOC_FIXTURES "/assoc_ports.json");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void AssocTest::SetUp()
{
    ProviderTest::SetUp();
    host().startProvider("QEL_FCPortProvider", {"QEL_FCPort"});
    host().startProvider(SFP_ASSOC.provider, {SFP_ASSOC.assocClass});
    host().startProvider(STATS_ASSOC.provider, {STATS_ASSOC.assocClass});
    // Only what the test's own requests do is looked at.
    qelsim::clearCallLog();
    qelsim::clearCapturedLog();
}

static CIMObjectPath qelPath(const char* cls, std::initializer_list<const char*> keyValues)
{
    Array<CIMKeyBinding> keys;
    for (auto k = keyValues.begin(); k != keyValues.end(); k += 2)
    {
        keys.append(CIMKeyBinding(k[0], k[1], CIMKeyBinding::STRING));
    }
    return CIMObjectPath("", CIMNamespaceName("root/qel"), cls, keys);
}

CIMObjectPath AssocTest::portPath(const char* deviceID)
{
    return qelPath("QEL_FCPort", {"SystemCreationClassName", "QEL_NodeSystem",
        "SystemName", "qel-node0", "CreationClassName", "QEL_FCPort", "DeviceID", deviceID});
}

CIMObjectPath AssocTest::sfpPath(const char* tag)
{
    return qelPath("QEL_SFP", {"CreationClassName", "QEL_SFP", "Tag", tag});
}

CIMObjectPath AssocTest::statsPath(const char* instanceID)
{
    return qelPath("QEL_FCPortLESBStatistics", {"InstanceID", instanceID});
}

CIMObjectPath AssocTest::otherOfA(const AssocSide& side)
{
    return &side == &SFP_ASSOC ? sfpPath(side.otherOfA) : statsPath(side.otherOfA);
}

Answer AssocTest::request(const AssocSide& side, Op op, const CIMObjectPath& objectName,
    const Request& parts, const char* user)
{
    const OperationContext context = asUser(user);
    CIMProvider* provider = host().providerFor(side.assocClass);
    CIMAssociationProvider& assoc = dynamic_cast<CIMAssociationProvider&>(*provider);
    CIMInstanceProvider& inst = dynamic_cast<CIMInstanceProvider&>(*provider);
    const CIMName assocClass(parts.associationClass ? parts.associationClass : side.assocClass);
    const CIMName resultClass = parts.resultClass ? CIMName(parts.resultClass) : CIMName();
    const CIMObjectPath classPath("", CIMNamespaceName("root/qel"), side.assocClass);
    RecordingObjectHandler objects;
    RecordingObjectPathHandler paths;
    RecordingInstanceHandler instances;
    switch (op)
    {
    case ASSOCIATORS:
        assoc.associators(context, objectName, assocClass, resultClass, parts.role,
            parts.resultRole, false, false, parts.propertyList, objects);
        break;
    case ASSOCIATOR_NAMES:
        assoc.associatorNames(context, objectName, assocClass, resultClass, parts.role,
            parts.resultRole, paths);
        break;
    case REFERENCES:
        assoc.references(context, objectName, resultClass, parts.role, false, false,
            parts.propertyList, objects);
        break;
    case REFERENCE_NAMES:
        assoc.referenceNames(context, objectName, resultClass, parts.role, paths);
        break;
    case GET_INSTANCE:
        inst.getInstance(context, objectName, false, false, parts.propertyList, instances);
        break;
    case ENUMERATE_INSTANCES:
        inst.enumerateInstances(context, classPath, false, false, parts.propertyList, instances);
        break;
    case ENUMERATE_INSTANCE_NAMES:
        inst.enumerateInstanceNames(context, classPath, paths);
        break;
    }
    // Every order violation shows in the sequence the test compares.
    Answer answer;
    for (const HandlerRecord* r : {&objects.record, &paths.record, &instances.record})
    {
        answer.sequence += r->sequence() + (r->violations().empty() ? "" : " (out of order)");
    }
    for (const CIMObject& object : objects.objects)
    {
        answer.instances.push_back(CIMInstance(object));
    }
    answer.instances.insert(answer.instances.end(), instances.instances.begin(),
        instances.instances.end());
    answer.paths = paths.paths;
    return answer;
}

} // namespace qeltest
