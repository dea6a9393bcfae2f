// Builds the QEL_FCPort class definition in code, makes an instance of it the
// way the FC port provider does (buildInstance, then set every value), and
// prints the instance's object path and its properties, one name=value a line.
#include <iostream>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_USING_PEGASUS;
PEGASUS_USING_STD;

namespace
{

CIMProperty keyProperty(const char* name)
{
    CIMProperty p(name, CIMValue(CIMTYPE_STRING, false));
    p.addQualifier(CIMQualifier("Key", CIMValue(true), CIMFlavor::TOSUBCLASS));
    return p;
}

CIMClass makePortClass()
{
    CIMClass cls("QEL_FCPort", "CIM_FCPort");
    cls.addQualifier(
        CIMQualifier("Description", CIMValue(String("A Fibre Channel port of the array"))));
    cls.addProperty(keyProperty("SystemCreationClassName"));
    cls.addProperty(keyProperty("SystemName"));
    cls.addProperty(keyProperty("CreationClassName"));
    cls.addProperty(keyProperty("DeviceID"));
    cls.addProperty(CIMProperty("ElementName", CIMValue(String(""))));
    cls.addProperty(CIMProperty("PortType", CIMValue(Uint16(0))));  // Unknown
    cls.addProperty(CIMProperty("Speed", CIMValue(Uint64(0))));
    cls.addProperty(CIMProperty("MaxSpeed", CIMValue(Uint64(0))));
    cls.addProperty(CIMProperty("FullDuplex", CIMValue(false)));
    cls.addProperty(CIMProperty("EnabledState", CIMValue(Uint16(5))));
    cls.addProperty(CIMProperty("PermanentAddress", CIMValue(String(""))));
    Array<Uint16> unknownStatus(1, Uint16(0));
    cls.addProperty(CIMProperty("OperationalStatus", CIMValue(unknownStatus)));
    return cls;
}

void set(CIMInstance& inst, const char* name, const CIMValue& value)
{
    inst.getProperty(inst.findProperty(name)).setValue(value);
}

}  // namespace

int main()
{
    try
    {
        CIMClass portClass = makePortClass();
        CIMInstance port = portClass.buildInstance(true, true, CIMPropertyList());

        set(port, "SystemCreationClassName", CIMValue(String("QEL_NodeSystem")));
        set(port, "SystemName", CIMValue(String("node-a")));
        set(port, "CreationClassName", CIMValue(String("QEL_FCPort")));
        set(port, "DeviceID", CIMValue(String("2100001B329A0C4E")));
        set(port, "ElementName", CIMValue(String("0:1:2")));
        set(port, "PortType", CIMValue(Uint16(10)));  // N
        set(port, "Speed", CIMValue(Uint64(8589934592ULL)));
        set(port, "MaxSpeed", CIMValue(Uint64(17179869184ULL)));
        set(port, "FullDuplex", CIMValue(true));
        set(port, "EnabledState", CIMValue(Uint16(2)));  // Enabled
        set(port, "PermanentAddress", CIMValue(String("2100001B329A0C4E")));
        Array<Uint16> status;
        status.append(2);  // OK
        set(port, "OperationalStatus", CIMValue(status));

        CIMObjectPath path = port.buildPath(portClass);
        path.setNameSpace(CIMNamespaceName("root/qel"));
        port.setPath(path);

        cout << port.getPath().toString() << endl;
        for (Uint32 i = 0; i < port.getPropertyCount(); i++)
        {
            CIMConstProperty p = port.getProperty(i);
            cout << p.getName().getString() << "=" << p.getValue().toString() << endl;
        }
        return 0;
    }
    catch (const Exception& e)
    {
        cerr << "qel-instance-demo: " << e.getMessage() << endl;
        return 1;
    }
}
