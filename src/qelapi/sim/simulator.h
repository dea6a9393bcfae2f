// The one simulated array of the process: its model, where it came from, and
// the shared state file that keeps it. Every library call goes through read()
// or change(), which first pick up changes other processes saved.
//
// The model is held as an immutable snapshot: a read takes the current one
// under _mu and works on it without the lock, so long reads (a list of 10,000
// ports) never hold up other threads; a change builds the next snapshot and
// swaps it in.
#ifndef QELSIM_SIMULATOR_H
#define QELSIM_SIMULATOR_H

#include "audit.h"
#include "model.h"
#include "qelsim_control.h"
#include "state_store.h"

#include <atomic>
#include <functional>
#include <memory>
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
        const std::string& text, const std::string& origin, const std::string& baseDir,
        const std::string& statePath);

    // The current array, with what other processes saved picked up; null when
    // there is no valid array.
    std::shared_ptr<const Model> current();
    // Runs f on the current array. API_ERR_IO when there is no valid array.
    template <class F>
    int read(F&& f)
    {
        const std::shared_ptr<const Model> m = current();
        return m ? f(*m) : static_cast<int>(API_ERR_IO);
    }
    // Runs f on a copy of the array; when f returns 0 the copy is saved and
    // becomes the array. Nothing changes when f fails or the save fails. With
    // an audit entry, a change that is made writes its audit line (result 0)
    // durably before the new state replaces the old, and marks it written.
    int change(const std::function<int(Model&)>& f, AuditEntry* audit = nullptr);
    // Whether an injected fault makes call fail now (*code: its result). A fault
    // with a count is used up by this.
    bool takeFault(const char* call, int* code);

    // Appends the entry's line with this result to the array's audit log, if it
    // has one, unless the change already wrote it.
    void audit(AuditEntry& e, int result);

    std::string statePath();

private:
    Simulator() = default;
    int refreshLocked(bool haveExclusiveLock);
    void finishPendingAuditLocked();
    void adoptLocked(Model m);
    Result failLocked(const std::string& message);
    Result seedLocked(const Model& fresh, const std::string& originPath, const std::string& hash);
    std::string auditPathLocked() const;

    std::mutex _mu;
    std::once_flag _environmentOnce;
    std::atomic<bool> _environmentDone{false};  // spares later calls the once_flag's cost
    bool _attempted = false;                    // an attach was tried (lazily or on request)
    bool _valid = false;                        // _model holds a valid array
    // REQUIRES: _mu held to read or replace the pointer; the Model it points to never changes.
    std::shared_ptr<const Model> _model = std::make_shared<const Model>();
    StateStore _store;
    StateStore::Stamp _stamp;     // the state file version _model reflects
    StateStore::Stamp _badStamp;  // a state version that failed to load (reported once)
    std::string _arrayPath;       // "" for the built-in demo array
    std::string _arrayBaseDir;
};

// The built-in demo array (examples/demo-array.json, compiled in), and how
// messages name it.
const char* embeddedDemoArray();
constexpr const char* kBuiltInOrigin = "<built-in demo array>";

}  // namespace qelsim

#endif
