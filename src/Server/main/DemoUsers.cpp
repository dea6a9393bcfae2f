#include "DemoUsers.h"

#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace qel
{
namespace server
{
namespace
{

const DemoUser* firstWithRole(const std::vector<DemoUser>& users, const std::string& role)
{
    for (const DemoUser& u : users)
        if (u.role == role)
            return &u;
    return nullptr;
}

}  // namespace

std::vector<DemoUser> createDemoUsers(const std::string& arrayFile, const std::string& passwordFile)
{
    std::ifstream in(arrayFile);
    if (!in)
        throw std::runtime_error("cannot read the array description " + arrayFile);
    nlohmann::json doc;
    try
    {
        in >> doc;
    }
    catch (const nlohmann::json::exception& e)
    {
        throw std::runtime_error(arrayFile + ": not valid JSON: " + e.what());
    }
    if (!doc.contains("users") || !doc["users"].is_array())
        throw std::runtime_error(arrayFile + ": no \"users\" list");
    std::vector<DemoUser> users;
    auth::PasswordFile file;
    for (const auto& u : doc["users"])
    {
        if (!u.is_object() || !u.contains("name") || !u["name"].is_string())
            throw std::runtime_error(arrayFile + ": every user needs a \"name\"");
        if (u.contains("enabled") && u["enabled"].is_boolean() && !u["enabled"].get<bool>())
            continue;
        DemoUser d;
        d.name = u["name"].get<std::string>();
        d.role = u.contains("role") && u["role"].is_string() ? u["role"].get<std::string>() : "";
        if (!auth::PasswordFile::validUserName(d.name))
            continue;  // cannot log in over HTTP Basic
        d.password = auth::generatePassword();
        file.add(d.name, auth::hashPassword(d.password));
        users.push_back(d);
    }
    if (users.empty())
        throw std::runtime_error(arrayFile + ": no enabled user to log in with");
    file.save(passwordFile);
    return users;
}

std::string wbemcliTour(const std::vector<DemoUser>& users, const std::string& host, unsigned port)
{
    std::ostringstream out;
    const DemoUser* editor = firstWithRole(users, "edit");
    const DemoUser* viewer = firstWithRole(users, "browse");
    if (!editor)
        editor = firstWithRole(users, "super");
    if (!editor)
        editor = &users.front();
    if (!viewer)
        viewer = editor;
    auto url = [&](const DemoUser& u)
    {
        return "http://" + u.name + ":" + u.password + "@" + host + ":" + std::to_string(port) +
               "/root/qel";
    };
    auto login = [](const DemoUser& u) { return "http://" + u.name + ":" + u.password + "@"; };
    out << "  wbemcli ein '" << url(*viewer) << ":QEL_FCPort'\n"
        << "  wbemcli ei -nl '" << url(*viewer) << ":QEL_FCPort'\n"
        << "  wbemcli ei -nl '" << url(*viewer) << ":QEL_SFP'\n"
        << "  wbemcli gi -nl '" << login(*viewer) << "<a name printed by ein>'\n"
        << "  wbemcli cm '" << login(*editor) << "<a QEL_FCPort name printed by ein>' SetOffline\n";
    return out.str();
}

}  // namespace server
}  // namespace qel
