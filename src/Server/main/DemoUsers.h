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

class WireServer;

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

// The name of the first FC port the running server reports to `user`, as wbemcli takes
// it (class and keys). Throws what the request threw.
std::string firstPortPath(WireServer& server, const std::string& user);

// Where the tour's commands go.
struct TourEndpoint
{
    std::string scheme;  // "http" or "https"
    std::string host;
    unsigned port = 0;
    std::string options;  // wbemcli options for the connection, e.g. "-cacert FILE"
};

// Ready-to-paste wbemcli commands for these users against the server at `at`: the ports
// and SFPs, then one port (`portPath`, a real instance name in wbemcli's form) read, set
// offline by an editor and reset.
std::string wbemcliTour(
    const std::vector<DemoUser>& users, const TourEndpoint& at, const std::string& portPath);

}  // namespace server
}  // namespace qel

#endif
