// The one simulated array of the process: its model, where it came from, and
// the shared state file that keeps it. Every library call goes through read()
// or change(), which first pick up changes other processes saved.
#ifndef QELSIM_SIMULATOR_H
#define QELSIM_SIMULATOR_H

#include "audit.h"
#include "model.h"
#include "qelsim_control.h"
#include "state_store.h"

#include <functional>
#include <mutex>
#include <string>

namespace qelsim
{

class Simulator
{
public:
    static Simulator& instance();

    // See qelsim::attach; forceSeed drops an existing state (qelsim reset).
    Result attach(const AttachOptions& options, bool forceSeed);
    Result attachFromEnvironment();
    Result reseed();
    // Attaches from the environment unless an array was attached or loaded before.
    void ensureAttached();
    // See qelsim::loadArrayText/loadArrayFile.
    Result load(
        const std::string& text,
        const std::string& origin,
        const std::string& baseDir,
        const std::string& statePath);

    // Runs f on the current array. API_ERR_IO when there is no valid array.
    int read(const std::function<int(const Model&)>& f);
    // Runs f on a copy of the array; when f returns 0 the copy is saved and
    // becomes the array. Nothing changes when f fails or the save fails.
    int change(const std::function<int(Model&)>& f);
    // Whether an injected fault makes call fail now (*code: its result). A fault
    // with a count is used up by this.
    bool takeFault(const char* call, int* code);

    // Appends to the array's audit log, if it has one.
    void audit(const AuditEntry& e);

    std::string statePath();

private:
    Simulator() = default;
    int refreshLocked(bool haveExclusiveLock);
    void adoptLocked(Model m);
    Result failLocked(const std::string& message);
    Result seedLocked(const Model& fresh, const std::string& originPath, const std::string& hash);
    std::string auditPathLocked() const;

    std::mutex _mu;
    std::once_flag _environmentOnce;
    bool _attempted = false;  // an attach was tried (lazily or on request)
    bool _valid = false;      // _model holds a valid array
    Model _model;
    StateStore _store;
    StateStore::Stamp _stamp;     // the state file version _model reflects
    StateStore::Stamp _badStamp;  // a state version that failed to load (reported once)
    std::string _arrayPath;       // "" for the built-in demo array
    std::string _arrayBaseDir;
};

// The built-in demo array (examples/demo-array.json, compiled in).
const char* embeddedDemoArray();

}  // namespace qelsim

#endif
