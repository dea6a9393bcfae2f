// Shared set-up of the simulator tests: a fresh copy of the demo array in
// memory, empty call log, no faults, zeroed counters; and scratch folders.
#ifndef QELAPI_TEST_SIM_FIXTURE_H
#define QELAPI_TEST_SIM_FIXTURE_H

#include "qelapi.h"
#include "qelsim_control.h"

#include <gtest/gtest.h>

#include <string>

namespace qelsimtest
{

// A folder under the test temporary area, removed with its contents at the end.
class ScratchDir
{
public:
    // base: where to create it; empty for $TMPDIR (or /tmp).
    explicit ScratchDir(const std::string& base = "");
    ~ScratchDir();
    const std::string& path() const { return _path; }
    std::string file(const std::string& name) const { return _path + "/" + name; }

private:
    std::string _path;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& text);

// An event record as a provider fills it.
api_evtparam_t event(const char* user = "operator", const char* method = "QEL_FCPort:SetOffline");

class SimTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;
    // Loads an array (in memory unless statePath is given) and fails the test when it does not load.
    void load(const std::string& json, const std::string& statePath = "");
    // The FC port with that WWN, read through the library (full detail, SFP filled).
    api_FCPort_t port(uint64_t wwn);
    uint16_t lpid(uint64_t wwn);
};

// WWNs of the demo array.
constexpr uint64_t kOkPort = 0x20110002AC00A001ull;       // 0:1:1 PORT_OK, two LESB records
constexpr uint64_t kOfflinePort = 0x20120002AC00A001ull;  // 0:1:2 offline, serial with blanks
constexpr uint64_t kSyncPort =
    0x21110002AC00A001ull;  // 1:1:1 loss of sync, SFP without DDM, no LESB
constexpr uint64_t kErrorPort = 0x21120002AC00A001ull;    // 1:1:2 error, no SFP
constexpr uint64_t kUnknownPort = 0x21210002AC00A001ull;  // 1:2:1 unknown state, counters near 2^64
constexpr uint64_t kLockedPort = 0x20220002AC00A001ull;   // 0:2:2 mode change not allowed

}  // namespace qelsimtest

#endif
