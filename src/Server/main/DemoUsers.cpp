#include "DemoUsers.h"

#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <qelsim_control.h>

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
    // The simulator reads its own description, with its own checks and messages.
    std::vector<qelsim::UserInfo> described;
    const qelsim::Result read = qelsim::readArrayUsers(arrayFile, &described);
    if (!read.ok)
        throw std::runtime_error(read.error);
    std::vector<DemoUser> users;
    auth::PasswordFile file;
    for (const qelsim::UserInfo& u : described)
    {
        if (!u.enabled)
            continue;
        if (!auth::PasswordFile::validUserName(u.name))
            continue;  // cannot log in over HTTP Basic
        DemoUser d;
        d.name = u.name;
        d.role = u.role;
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
