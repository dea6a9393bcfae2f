#include "PeerCredentials.h"

#include <cerrno>
#include <cstring>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace qel
{
namespace auth
{

bool userNameOf(unsigned uid, std::string& user)
{
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 16384);
    struct passwd pw;
    struct passwd* found = nullptr;
    int rc;
    while ((rc = ::getpwuid_r(
                static_cast<uid_t>(uid), &pw, buffer.data(), buffer.size(), &found)) == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (rc != 0 || found == nullptr)
        return false;
    user = found->pw_name;
    return true;
}

bool peerUserName(int socketFd, std::string& user, std::string& error)
{
    struct ucred cred;
    socklen_t len = sizeof cred;
    if (::getsockopt(socketFd, SOL_SOCKET, SO_PEERCRED, &cred, &len) != 0)
    {
        error = std::string("no peer credentials: ") + std::strerror(errno);
        return false;
    }
    if (!userNameOf(cred.uid, user))
    {
        error = "peer uid " + std::to_string(cred.uid) + " has no user name";
        return false;
    }
    return true;
}

}  // namespace auth
}  // namespace qel
