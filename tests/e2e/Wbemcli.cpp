#include "Wbemcli.h"

#include <sstream>

namespace e2e
{
namespace
{

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        result.push_back(line);
    return result;
}

// A printed object path: host[:port]/namespace:Class.keys
PrintedObject objectFromPathLine(const std::string& line)
{
    PrintedObject o;
    const size_t slash = line.find('/');
    const size_t colon = slash == std::string::npos ? std::string::npos : line.find(':', slash);
    if (colon == std::string::npos)
    {
        o.path = line;
        return o;
    }
    o.host = line.substr(0, slash);
    o.path = line.substr(colon + 1);
    return o;
}

}  // namespace

std::string PrintedObject::operator[](const std::string& property) const
{
    const auto it = properties.find(property);
    return it == properties.end() ? "<absent>" : it->second;
}

std::vector<PrintedObject> WbemcliAnswer::objects() const
{
    std::vector<PrintedObject> found;
    for (const std::string& line : lines(result.out))
    {
        if (line.empty())
            continue;
        if (line[0] == '-' && !found.empty())
        {
            const size_t eq = line.find('=');
            if (eq != std::string::npos)
                found.back().properties[line.substr(1, eq - 1)] = line.substr(eq + 1);
            continue;
        }
        found.push_back(objectFromPathLine(line));
    }
    return found;
}

std::vector<std::string> WbemcliAnswer::paths() const
{
    std::vector<std::string> found;
    for (const PrintedObject& o : objects())
        found.push_back(o.path);
    return found;
}

std::string WbemcliAnswer::error() const
{
    // wbemcli reports as "* <its argv[0]>: <text>".
    const std::string lead = "wbemcli: ";
    for (const std::string& line : lines(result.err))
    {
        const size_t at = line.find(lead);
        if (line.compare(0, 2, "* ") != 0 || at == std::string::npos)
            continue;
        std::string text = line.substr(at + lead.size());
        // "Cim: (6) CIM_ERR_NOT_FOUND: ..." names the code twice; the name is enough.
        if (text.compare(0, 6, "Cim: (") == 0 && text.find(") ") != std::string::npos)
        {
            text = text.substr(text.find(") ") + 2);
        }
        return text;
    }
    return "";
}

std::string
Wbemcli::at(const std::string& user, const std::string& object, const std::string& nameSpace) const
{
    const std::string password = user.empty() ? "" : _server.password(user);
    return (_https ? _server.httpsUrl(user, password, nameSpace)
                   : _server.url(user, password, nameSpace)) +
           ":" + object;
}

WbemcliAnswer Wbemcli::operator()(std::vector<std::string> args) const
{
    if (!args.empty())
        args.insert(args.begin() + 1, _tlsOptions.begin(), _tlsOptions.end());
    args.insert(args.begin(), QEL_E2E_WBEMCLI);
    return WbemcliAnswer{run(args)};
}

WbemcliAnswer Wbemcli::as(
    const std::string& user, const std::string& op, const std::string& object,
    const std::vector<std::string>& options, const std::string& nameSpace) const
{
    std::vector<std::string> args{op};
    args.insert(args.end(), options.begin(), options.end());
    args.push_back("-nl");
    args.push_back(at(user, object, nameSpace));
    return (*this)(args);
}

WbemcliAnswer
Wbemcli::call(const std::string& user, const std::string& object, const std::string& method) const
{
    return (*this)({"cm", at(user, object), method});
}

std::string
portPath(const std::string& deviceId, const std::string& systemName, const std::string& className)
{
    return className + ".CreationClassName=\"" + className + "\",DeviceID=\"" + deviceId +
           "\",SystemCreationClassName=\"QEL_NodeSystem\",SystemName=\"" + systemName + "\"";
}

std::string sfpPath(const std::string& tag)
{
    return "QEL_SFP.CreationClassName=\"QEL_SFP\",Tag=\"" + tag + "\"";
}

std::string statsPath(const std::string& instanceId)
{
    return "QEL_FCPortLESBStatistics.InstanceID=\"" + instanceId + "\"";
}

std::string
sfpLinkPath(const std::string& tag, const std::string& deviceId, const std::string& systemName)
{
    return "QEL_FCPortSFP.Antecedent=" + sfpPath(tag) +
           ",Dependent=" + portPath(deviceId, systemName);
}

std::string statsLinkPath(const std::string& deviceId, const std::string& systemName)
{
    return "QEL_FCPortLESBElementStatisticalData.ManagedElement=" + portPath(deviceId, systemName) +
           ",Stats=" + statsPath("ZEPHRAN:" + deviceId + "-Stats");
}

std::string logSince(const ServerProcess& server, size_t mark)
{
    const std::string log = server.log();
    return mark < log.size() ? log.substr(mark) : std::string();
}

}  // namespace e2e
