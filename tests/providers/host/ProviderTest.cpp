#include "ProviderTest.h"

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include <ClassRepository.h>

#include <algorithm>
#include <fstream>
#include <sstream>

PEGASUS_USING_PEGASUS;

namespace qeltest
{

std::string fixtureText(const std::string& name)
{
    const std::string path = name[0] == '/' ? name : QEL_PROVIDER_FIXTURES "/" + name;
    std::ifstream in(path);
    if (!in)
        throw std::runtime_error("cannot read test fixture " + path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

Texts callsNamed(const Texts& names)
{
    Texts texts;
    for (const qelsim::CallRecord& record : qelsim::callLog())
    {
        if (std::find(names.begin(), names.end(), record.call) != names.end())
            texts.push_back(record.text());
    }
    return texts;
}

std::string eventOf(const char* call)
{
    for (const qelsim::CallRecord& r : qelsim::callLog())
    {
        if (r.call == call && r.hasEvent)
        {
            return std::string(r.event.method) + "|" + r.event.inst_op + "|" + r.event.inst_param +
                   "|" + r.event.user + "|" + r.event.addr;
        }
    }
    return "<none>";
}

Texts traceLines(int level, const char* holding)
{
    Texts lines;
    for (const qelsim::LogLine& line : qelsim::capturedLog())
    {
        if (line.level == level && line.text.find(holding) != std::string::npos)
            lines.push_back(line.text);
    }
    return lines;
}

CIMObjectPath
qelPath(const char* cls, std::initializer_list<const char*> keysAndValues, const char* host)
{
    Array<CIMKeyBinding> keys;
    for (auto k = keysAndValues.begin(); k != keysAndValues.end(); k += 2)
        keys.append(CIMKeyBinding(k[0], k[1], CIMKeyBinding::STRING));
    return CIMObjectPath(host, CIMNamespaceName("root/qel"), cls, keys);
}

CIMObjectPath portPath(const char* deviceID, const char* system, const char* cls, const char* host)
{
    return qelPath(
        cls,
        {"SystemCreationClassName", "QEL_NodeSystem", "SystemName", system, "CreationClassName",
         cls, "DeviceID", deviceID},
        host);
}

std::string keyValue(const CIMObjectPath& path, const char* key)
{
    const Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName() == CIMName(key))
            return str(keys[i].getValue());
    }
    return "";
}

CIMValue valueOf(const CIMInstance& instance, const char* name)
{
    const Uint32 at = instance.findProperty(name);
    return at == PEG_NOT_FOUND ? CIMValue() : instance.getProperty(at).getValue();
}

const char* const OP_NAMES[] = {"associators",           "associatorNames", "references",
                                "referenceNames",        "getInstance",     "enumerateInstances",
                                "enumerateInstanceNames"};

Answer ProviderTest::request(
    const char* routedClass, Op op, const CIMObjectPath& objectName, const Request& parts,
    const char* user)
{
    const OperationContext context = asUser(user);
    CIMProvider* provider = host().providerFor(routedClass);
    CIMAssociationProvider* assoc = dynamic_cast<CIMAssociationProvider*>(provider);
    CIMInstanceProvider* inst = dynamic_cast<CIMInstanceProvider*>(provider);
    if (op < GET_INSTANCE ? assoc == nullptr : inst == nullptr)
        throw std::runtime_error(
            std::string("no provider for ") + OP_NAMES[op] + " on " + routedClass);
    const CIMName assocClass(parts.associationClass ? parts.associationClass : routedClass);
    const CIMName resultClass = parts.resultClass ? CIMName(parts.resultClass) : CIMName();
    const CIMObjectPath classPath("", CIMNamespaceName("root/qel"), routedClass);
    RecordingObjectHandler objects;
    RecordingObjectPathHandler paths;
    RecordingInstanceHandler instances;
    Answer answer;
    answer.failure = thrown<CIMException>(
        [&]
        {
            switch (op)
            {
                case ASSOCIATORS:
                    assoc->associators(
                        context, objectName, assocClass, resultClass, parts.role, parts.resultRole,
                        false, false, parts.propertyList, objects);
                    break;
                case ASSOCIATOR_NAMES:
                    assoc->associatorNames(
                        context, objectName, assocClass, resultClass, parts.role, parts.resultRole,
                        paths);
                    break;
                case REFERENCES:
                    assoc->references(
                        context, objectName, resultClass, parts.role, false, false,
                        parts.propertyList, objects);
                    break;
                case REFERENCE_NAMES:
                    assoc->referenceNames(context, objectName, resultClass, parts.role, paths);
                    break;
                case GET_INSTANCE:
                    inst->getInstance(
                        context, objectName, false, false, parts.propertyList, instances);
                    break;
                case ENUMERATE_INSTANCES:
                    inst->enumerateInstances(
                        context, classPath, false, false, parts.propertyList, instances);
                    break;
                case ENUMERATE_INSTANCE_NAMES:
                    inst->enumerateInstanceNames(context, classPath, paths);
                    break;
            }
        });
    for (const HandlerRecord* r : {&objects.record, &paths.record, &instances.record})
        answer.sequence += r->sequence + (r->inOrder() ? "" : " (out of order)");
    for (const CIMObject& object : objects.delivered)
        answer.instances.push_back(CIMInstance(object));
    answer.instances.insert(
        answer.instances.end(), instances.delivered.begin(), instances.delivered.end());
    answer.paths = paths.delivered;
    return answer;
}

CIMClass ProviderTest::cimClass(const char* name)
{
    return host().repository().getClass("root/qel", name, false, true, true, CIMPropertyList());
}

void ProviderTest::loadArray(const std::string& jsonText)
{
    const qelsim::Result loaded = qelsim::loadArrayText(jsonText);
    ASSERT_TRUE(loaded.ok) << loaded.error;
}

void ProviderTest::SetUp()
{
    const std::string fixture = arrayFixture();
    loadArray(fixture.empty() || fixture[0] == '{' ? fixture : fixtureText(fixture));
    qelsim::clearFaults();
    cache().clear();
    host().handleRep().instanceCalls.clear();
    host().handleRep().failInstances = false;
    qelsim::captureLog(true);
    qelsim::clearCapturedLog();
    qelsim::resetCounters();
    qelsim::clearCallLog();
}

void ProviderTest::TearDown()
{
    host().stopProviders();
    qelsim::clearFaults();
    qelsim::captureLog(false);

    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(qelsim::outstandingFCLists(c), 0u) << "FC port lists not released";
    EXPECT_EQ(c.badFrees, 0u) << "FC port lists released twice or never handed out";
    EXPECT_EQ(c.semWaits, c.semPosts) << "semaphore waits and posts unbalanced";
    EXPECT_EQ(c.semUnbalancedPosts, 0u) << "semaphore posted without a wait";
    EXPECT_EQ(c.unbracketedCalls, 0u) << "library calls made outside the semaphore";
}

}  // namespace qeltest
