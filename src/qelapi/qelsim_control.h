// qelsim_control.h - controls of the simulated array for tests and the qelsim
// tool. Not part of the array library's interface (qelapi.h): a real array's
// library has none of this, and the provider module never includes it.
//
// Everything here acts on the one simulated array of the process. Calls are
// thread-safe.
#ifndef QELSIM_CONTROL_H
#define QELSIM_CONTROL_H

#include "qelapi.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qelsim
{

struct Result
{
    bool ok = true;
    std::string error;  // says what was wrong and where when !ok
};

// ------------------------------------------------------------------ arrays

// Replaces the simulated array by the one described in json. With a statePath
// the array is also written there (and every change after it); without one it
// lives in memory only. Counters, the call log and captured log lines are kept.
Result loadArrayText(const std::string& json, const std::string& statePath = "");
// The same from a file (relative log and audit paths in it are taken from its folder).
Result loadArrayFile(const std::string& path, const std::string& statePath = "");

struct AttachOptions
{
    std::string arrayPath;  // empty: the built-in demo array
    std::string statePath;  // empty: the default state path of the array
    bool persist = true;    // false: keep the state in memory only
};
// Attaches to an array as a server process does: an existing state file that
// was seeded from the same array contents is taken as it stands (so changes
// survive restarts); otherwise the state is seeded from the array file.
Result attach(const AttachOptions& options);
// attach() with QELSIM_ARRAY and QELSIM_STATE, as the library does on first use.
Result attachFromEnvironment();
// Seeds the attached state again from its array file, dropping all changes.
Result resetToArray();

// The state file in use ("" when in memory only) and its default for an array.
std::string statePath();
std::string defaultStatePath(const std::string& arrayPath);
// The text of the built-in demo array.
const std::string& demoArrayText();

// ------------------------------------------------------------------- users

struct UserInfo
{
    std::string name;
    std::string role;  // "browse", "edit" or "super"
    bool enabled = true;
};
// The users of an array description (path "" : the built-in demo array), in
// their order, read and checked as loadArrayFile reads them but without
// touching the process's array. A refused description gives ok false and the
// error names the file, the place and the problem.
Result readArrayUsers(const std::string& path, std::vector<UserInfo>* users);

// ------------------------------------------------------------------ faults

// Makes the named call (e.g. "api_getFCPorts", "cim_sem_wait",
// "api_qelOpenForCimserver", "api_authorizeCIMUser") return code for its next
// `times` calls, or for every call when times is -1. A failing read leaves its
// list empty; a failing change changes nothing. api_authorizeCIMUser and
// api_qelOpenForCimserver also accept code 0 (a forced grant).
Result injectFault(const std::string& call, int code, int64_t times = -1);
// Removes the faults of one call, or all of them for "" ; returns how many.
int clearFaults(const std::string& call = "");

struct FaultInfo
{
    std::string call;
    int code;
    int64_t times;  // -1: always
};
std::vector<FaultInfo> faults();

// Shorthands for the faults tests need most.
inline Result refuseSessions(int code = API_ERR_PERM, int64_t times = -1)
{
    return injectFault("api_qelOpenForCimserver", code, times);
}
inline Result forceAuthorization(int result, int64_t times = -1)
{
    return injectFault("api_authorizeCIMUser", result, times);
}
inline Result failSemaphoreWait(int code = API_ERR_BUSY, int64_t times = -1)
{
    return injectFault("cim_sem_wait", code, times);
}

// ---------------------------------------------------------------- counters

struct Counters
{
    uint64_t fcListsHandedOut = 0;      // non-empty lists of api_getFCPorts/api_getFCALPorts
    uint64_t fcListsFreed = 0;          // of those, released by api_freeFCPorts
    uint64_t iscsiArraysHandedOut = 0;  // non-empty arrays released by free()
    uint64_t lesbArraysHandedOut = 0;
    uint64_t vvArraysHandedOut = 0;
    uint64_t badFrees = 0;            // api_freeFCPorts of a list not handed out (or freed twice)
    uint64_t semWaits = 0;            // successful cim_sem_wait
    uint64_t semPosts = 0;            // successful cim_sem_post
    uint64_t semFailedWaits = 0;      // cim_sem_wait that returned non-zero
    uint64_t semUnbalancedPosts = 0;  // cim_sem_post without a wait
    uint64_t unbracketedCalls = 0;    // list reads and changes made without the semaphore
    uint64_t sessionsOpened = 0;
    uint64_t sessionsRefused = 0;
    uint64_t changesSaved = 0;  // changes that reached the state
};
Counters counters();
void resetCounters();
// FC lists handed out and not yet freed.
inline uint64_t outstandingFCLists(const Counters& c)
{
    return c.fcListsHandedOut - c.fcListsFreed;
}
// Runs LeakSanitizer now, when the process has it: 1 leaks found (reported on
// standard error), 0 none, -1 no leak checker in this build. Arrays released
// with free() are verified this way.
int leakCheck();

// ---------------------------------------------------------------- call log

// One call of the library, in the order the calls completed. args holds every
// argument as text: integers in decimal, WWNs and filters as 0x + 16 hex
// digits, strings quoted ("\"CAGE1\""), LPID arrays as [1057,1058], other
// pointers as "ptr" or "null".
struct CallRecord
{
    uint64_t seq = 0;
    std::string call;
    std::vector<std::string> args;
    bool hasEvent = false;
    api_evtparam_t event{};  // a copy of the event record, when one was passed
    int result = 0;
    // "call(arg, arg)"
    std::string text() const;
};
// The most recent calls (at most 16384 are kept).
std::vector<CallRecord> callLog();
// Just the texts, in order.
std::vector<std::string> callTexts();
void clearCallLog();

// ------------------------------------------------------------ log capture

struct LogLine
{
    int level;
    std::string text;  // as formatted, line end included
};
// While on, every log_message line is kept here whatever the threshold.
void captureLog(bool on);
std::vector<LogLine> capturedLog();
void clearCapturedLog();

// ------------------------------------------------- changes from outside
// These reach a running server's simulator through the shared state file and
// are written to the audit log with user `actor`. port is a position
// ("0:1:2") or a WWN text. Results are API_* codes.

int setPortState(const std::string& port, api_port_status_t state, const std::string& actor);
// counter: linkFailures, lossOfSync, lossOfSignal, primitiveSeqErrors,
// invalidTxWords or crcErrors; adds to the port's first LESB record (created
// when the port has none) and stamps the sample time.
int bumpLesb(
    const std::string& port, const std::string& counter, uint64_t amount, const std::string& actor);

// Port state names as the array file spells them ("PORT_OFFLINE").
const char* portStateName(api_port_status_t state);
// Accepts a state name in any letter case, with or without "PORT_" ("offline").
bool parsePortState(const std::string& text, api_port_status_t* state);

// --------------------------------------------------------------- generator

struct GenerateOptions
{
    unsigned fcPorts = 10000;  // at most 61440
    unsigned lesbPerPort = 1;
    unsigned iscsiPorts = 0;
    unsigned volumes = 0;
    uint32_t seed = 1;  // same seed, same array
};
// A valid array description of the requested size; ok false when too large.
Result generateArray(const GenerateOptions& options, std::string* json);

}  // namespace qelsim

#endif
