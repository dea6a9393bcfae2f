// Demo mode: a password for every enabled user of the simulated array, written to a new
// password file, so that someone trying the server out can log in with each role.
#ifndef QEL_SERVER_MAIN_DEMOUSERS_H
#define QEL_SERVER_MAIN_DEMOUSERS_H

#include <string>
#include <vector>

namespace qel
{
namespace server
{

struct DemoUser
{
    std::string name;
    std::string role;
    std::string password;
};

// Reads the users of the array description through the simulator (name, role, enabled;
// "" is the built-in demo array), generates a password for each enabled one that can log
// in over HTTP Basic and writes them to `passwordFile` (replaced). Throws
// std::runtime_error naming the file and what was wrong with it.
std::vector<DemoUser>
createDemoUsers(const std::string& arrayFile, const std::string& passwordFile);

// Ready-to-paste wbemcli commands for these users against the server at host:port.
std::string wbemcliTour(const std::vector<DemoUser>& users, const std::string& host, unsigned port);

}  // namespace server
}  // namespace qel

#endif
