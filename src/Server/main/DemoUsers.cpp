#include "DemoUsers.h"

#include "WireServer.h"

#include <Server/core/Dispatcher.h>

#include <Pegasus/Common/CIMResponseCollector.h>

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

std::string firstPortPath(WireServer& server, const std::string& user)
{
    using namespace Pegasus;
    Dispatcher& dispatcher = server.core().dispatcher();
    CIMOperationResponse response;
    CIMResponseCollector collector(CIMOperationType::EnumerateInstanceNames, response);
    dispatcher.execute(
        Dispatcher::requestContext(String(user.c_str()), String("127.0.0.1")),
        CIMOperationRequest::enumerateInstanceNames(
            CIMNamespaceName("root/qel"), CIMName("QEL_FCPort")),
        collector);
    const Array<CIMObjectPath>& names = response.checked().paths;
    if (names.size() == 0)
        throw std::runtime_error("the array has no FC port to show");
    CIMObjectPath path = names[0];
    path.setHost(String());
    path.setNameSpace(CIMNamespaceName());
    return std::string(path.toString().getCString());
}

std::string
wbemcliTour(const std::vector<DemoUser>& users, const TourEndpoint& at, const std::string& portPath)
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
    const std::string options = at.options.empty() ? std::string() : at.options + " ";
    // Passwords are letters and digits: safe inside single quotes and in a URL.
    auto url = [&](const DemoUser& u, const std::string& object)
    {
        return "'" + at.scheme + "://" + u.name + ":" + u.password + "@" + at.host + ":" +
               std::to_string(at.port) + "/root/qel:" + object + "'";
    };
    out << "  wbemcli ein " << options << url(*viewer, "QEL_FCPort") << "\n"
        << "  wbemcli ei -nl " << options << url(*viewer, "QEL_FCPort") << "\n"
        << "  wbemcli ei -nl " << options << url(*viewer, "QEL_SFP") << "\n"
        << "  wbemcli gi -nl " << options << url(*viewer, portPath) << "\n"
        << "  wbemcli cm " << options << url(*editor, portPath) << " SetOffline\n"
        << "  wbemcli cm " << options << url(*editor, portPath) << " Reset\n";
    return out.str();
}

}  // namespace server
}  // namespace qel
