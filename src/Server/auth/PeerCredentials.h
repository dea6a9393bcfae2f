// Who is at the other end of a local (Unix domain) socket.
#ifndef QEL_SERVER_AUTH_PEERCREDENTIALS_H
#define QEL_SERVER_AUTH_PEERCREDENTIALS_H

#include <string>

namespace qel
{
namespace auth
{

// The login name of the peer's user (SO_PEERCRED). False, with `error` set, when the
// kernel gives no credentials or the uid has no user name.
bool peerUserName(int socketFd, std::string& user, std::string& error);

// Login name of `uid`; false when the system has none.
bool userNameOf(unsigned uid, std::string& user);

}  // namespace auth
}  // namespace qel

#endif
