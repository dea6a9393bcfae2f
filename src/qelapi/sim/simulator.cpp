#include "simulator.h"

#include "atomic_file.h"
#include "json_codec.h"
#include "logger.h"
#include "stats.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <unistd.h>

namespace qelsim
{

namespace
{

std::string absoluteDir(const std::string& path)
{
    char buf[PATH_MAX];
    std::string dir = parentDirectory(path);
    if (::realpath(dir.c_str(), buf))
        return buf;
    return dir;
}

std::string baseName(const std::string& path)
{
    auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string defaultStatePath(const std::string& arrayPath)
{
    std::string stem = arrayPath.empty() ? "demo-array" : baseName(arrayPath);
    if (stem.size() > 5 && stem.compare(stem.size() - 5, 5, ".json") == 0)
        stem.resize(stem.size() - 5);
    const char* tmp = std::getenv("TMPDIR");
    std::string dir = (tmp && *tmp) ? tmp : "/tmp";
    return dir + "/qelsim-" + std::to_string(::getuid()) + "/" + stem + ".state.json";
}

Simulator& Simulator::instance()
{
    // Never destroyed: providers may call the library from static destructors.
    static Simulator* sim = new Simulator();
    return *sim;
}

// Failures of an explicit load or attach go back to the caller, who reports them.
Result Simulator::failLocked(const std::string& message)
{
    return Result{false, message};
}

void Simulator::adoptLocked(Model m)
{
    Logger::instance().configure(m.log);
    _model = std::make_shared<const Model>(std::move(m));
    _valid = true;
}

Result
Simulator::seedLocked(const Model& fresh, const std::string& originPath, const std::string& hash)
{
    Model m = fresh;
    m.origin = Origin{originPath, hash};
    std::string err;
    if (!_store.write(encodeModel(m), &err))
        return failLocked(err);
    _stamp = _store.stamp();
    adoptLocked(std::move(m));
    return Result{};
}

Result Simulator::attach(const AttachOptions& options, bool forceSeed)
{
    std::lock_guard<std::mutex> g(_mu);
    _attempted = true;
    const std::string origin = options.arrayPath.empty() ? kBuiltInOrigin : options.arrayPath;
    std::string text, err;
    if (options.arrayPath.empty())
    {
        text = embeddedDemoArray();
    }
    else if (!readWholeFile(options.arrayPath, &text, &err))
    {
        _valid = false;
        return failLocked(err);
    }
    const std::string baseDir = options.arrayPath.empty() ? "" : absoluteDir(options.arrayPath);
    DecodeResult r = decodeModel(text, baseDir);
    if (!r.ok)
    {
        _valid = false;
        return failLocked(r.message(origin));
    }
    _arrayPath = options.arrayPath;
    _arrayBaseDir = baseDir;
    _store.close();
    _stamp = {};
    _badStamp = {};
    if (!options.persist)
    {
        adoptLocked(std::move(r.model));
        return Result{};
    }
    const std::string path =
        options.statePath.empty() ? defaultStatePath(options.arrayPath) : options.statePath;
    if (!_store.open(path, &err))
    {
        _valid = false;
        return failLocked(err);
    }
    StateStore::Lock lock(_store, StateStore::Mode::Exclusive);
    if (!lock.held())
    {
        _valid = false;
        return failLocked(path + ": cannot lock the state file");
    }
    finishPendingAuditLocked();
    const std::string hash = contentHash(text);
    if (!forceSeed && _store.exists())
    {
        std::string saved;
        if (!_store.read(&saved, &err))
        {
            _valid = false;
            return failLocked(err);
        }
        DecodeResult s = decodeModel(saved, "");
        if (!s.ok)
        {
            _valid = false;
            return failLocked(
                s.message(path) +
                " (the saved state is damaged; \"qelsim reset\" starts again from the array file)");
        }
        if (s.model.origin.hash == hash)
        {
            _stamp = _store.stamp();
            adoptLocked(std::move(s.model));
            return Result{};
        }
    }
    Result seeded = seedLocked(r.model, origin, hash);
    if (!seeded.ok)
        _valid = false;
    return seeded;
}

Result Simulator::attachFromEnvironment()
{
    AttachOptions o;
    if (const char* a = std::getenv("QELSIM_ARRAY"))
        o.arrayPath = a;
    if (const char* s = std::getenv("QELSIM_STATE"))
    {
        if (*s == '\0' || std::strcmp(s, "none") == 0)
            o.persist = false;
        else
            o.statePath = s;
    }
    return attach(o, false);
}

Result Simulator::reseed()
{
    AttachOptions o;
    {
        std::lock_guard<std::mutex> g(_mu);
        if (!_store.enabled())
            return Result{false, "the simulated array has no state file to reset"};
        o.arrayPath = _arrayPath;
        o.statePath = _store.path();
    }
    return attach(o, true);
}

Result Simulator::load(
    const std::string& text, const std::string& origin, const std::string& baseDir,
    const std::string& statePath)
{
    DecodeResult r = decodeModel(text, baseDir);
    std::lock_guard<std::mutex> g(_mu);
    _attempted = true;
    // A bad description is refused before anything is touched: the current array stays.
    if (!r.ok)
        return failLocked(r.message(origin));
    _store.close();
    _stamp = {};
    _badStamp = {};
    _arrayPath.clear();
    _arrayBaseDir = baseDir;
    if (statePath.empty())
    {
        adoptLocked(std::move(r.model));
        return Result{};
    }
    std::string err;
    if (!_store.open(statePath, &err))
    {
        _valid = false;
        return failLocked(err);
    }
    StateStore::Lock lock(_store, StateStore::Mode::Exclusive);
    if (!lock.held())
    {
        _valid = false;
        return failLocked(statePath + ": cannot lock the state file");
    }
    finishPendingAuditLocked();
    Result seeded = seedLocked(r.model, origin, contentHash(text));
    if (!seeded.ok)
        _valid = false;
    return seeded;
}

void Simulator::ensureAttached()
{
    if (_environmentDone.load(std::memory_order_acquire))
        return;
    // The first call of the process attaches as the environment says, unless a
    // test or the tool loaded an array before; other first callers wait for it.
    std::call_once(
        _environmentOnce,
        [this]
        {
            bool needed;
            {
                std::lock_guard<std::mutex> g(_mu);
                needed = !_attempted;
            }
            if (!needed)
                return;
            // Nobody asked for this attach, so its failure goes to the log (standard error by default).
            Result r = attachFromEnvironment();
            if (!r.ok)
                Logger::instance().write(API_LOG_ERROR, "qelsim: " + r.error + "\n");
        });
    _environmentDone.store(true, std::memory_order_release);
}

int Simulator::refreshLocked(bool haveExclusiveLock)
{
    if (!_store.enabled())
        return API_OK;
    StateStore::Stamp now;
    std::optional<StateStore::Lock> lock;
    if (haveExclusiveLock)
    {
        // A writer also compares the file's identity, so a state file replaced
        // by other means than this library is picked up before it is changed.
        now = _store.stamp();
        if (now == _stamp)
            return API_OK;
    }
    else
    {
        if (!_store.movedSince(_stamp))
            return API_OK;
        // A writer holds the exclusive lock from before it counts the generation
        // up until its new state is in place: waiting for the lock, then reading, gets that state.
        lock.emplace(_store, StateStore::Mode::Shared);
        now = _store.stamp();
    }
    if (now == _badStamp)
        return API_ERR_IO;  // this version was read before, and reported
    std::string text, err;
    if (!_store.read(&text, &err))
    {
        Logger::instance().write(API_LOG_ERROR, "qelsim: " + err + "\n");
        _badStamp = now;
        return API_ERR_IO;
    }
    DecodeResult r = decodeModel(text, "");
    if (!r.ok)
    {
        Logger::instance().write(API_LOG_ERROR, "qelsim: " + r.message(_store.path()) + "\n");
        _badStamp = now;
        return API_ERR_IO;
    }
    _stamp = now;
    adoptLocked(std::move(r.model));
    return API_OK;
}

void Simulator::finishPendingAuditLocked()
{
    std::string err;
    if (!_store.finishPendingAudit(&err))
        Logger::instance().write(API_LOG_ERROR, "qelsim: " + err + "\n");
}

std::shared_ptr<const Model> Simulator::current()
{
    ensureAttached();
    std::lock_guard<std::mutex> g(_mu);
    if (!_valid)
        return nullptr;
    // A state another process damaged is reported once; reads go on with the last good one.
    refreshLocked(false);
    return _model;
}

int Simulator::change(const std::function<int(Model&)>& f, AuditEntry* audit)
{
    ensureAttached();
    std::lock_guard<std::mutex> g(_mu);
    if (!_valid)
        return API_ERR_IO;
    std::optional<StateStore::Lock> lock;
    if (_store.enabled())
    {
        lock.emplace(_store, StateStore::Mode::Exclusive);
        if (!lock->held())
        {
            Logger::instance().write(
                API_LOG_ERROR, "qelsim: " + _store.path() + ": cannot lock the state file\n");
            return API_ERR_IO;
        }
        finishPendingAuditLocked();
        if (int rc = refreshLocked(true))
            return rc;
    }
    Model next = *_model;
    if (int rc = f(next))
        return rc;
    // The line of a change that is made is written with it; refused changes are
    // audited by the caller.
    const std::string auditPath = audit ? auditPathLocked() : "";
    std::string line;
    if (!auditPath.empty())
    {
        audit->result = API_OK;
        line = auditLine(*audit);
    }
    std::string err;
    if (_store.enabled())
    {
        std::string auditErr;
        if (!_store.write(encodeModel(next), auditPath, line, &err, &auditErr))
        {
            Logger::instance().write(API_LOG_ERROR, "qelsim: change not saved: " + err + "\n");
            return API_ERR_IO;
        }
        if (!auditErr.empty())
            Logger::instance().write(API_LOG_ERROR, "qelsim: " + auditErr + "\n");
        _stamp = _store.stamp();
    }
    else if (!line.empty() && !appendAuditLine(auditPath, line, false, &err))
    {
        Logger::instance().write(API_LOG_ERROR, "qelsim: " + err + "\n");
    }
    if (audit)
        audit->written = true;
    adoptLocked(std::move(next));
    stats().changesSaved++;
    return API_OK;
}

bool Simulator::takeFault(const char* call, int* code)
{
    bool counted = false;
    int found = read(
        [&](const Model& m)
        {
            for (const Fault& f : m.faults)
            {
                if (f.call != call)
                    continue;
                *code = f.code;
                counted = f.times >= 0;
                return 1;
            }
            return 0;
        });
    if (found != 1)
        return false;
    if (!counted)
        return true;
    // A counted fault is used up through a change, so every process sharing the
    // state sees the count go down exactly once per failed call.
    bool hit = false;
    change(
        [&](Model& m)
        {
            for (size_t i = 0; i < m.faults.size(); ++i)
            {
                Fault& f = m.faults[i];
                if (f.call != call)
                    continue;
                hit = true;
                *code = f.code;
                if (f.times >= 0 && --f.times == 0)
                    m.faults.erase(m.faults.begin() + static_cast<long>(i));
                return API_OK;
            }
            return API_ERR_NOENT;  // used up meanwhile by another caller
        });
    return hit;
}

std::string Simulator::auditPathLocked() const
{
    if (!_model->auditFile.empty())
        return _model->auditFile;
    if (!_store.enabled())
        return "";
    std::string p = _store.path();
    const std::string suffix = ".state.json";
    if (p.size() > suffix.size() && p.compare(p.size() - suffix.size(), suffix.size(), suffix) == 0)
        p.resize(p.size() - suffix.size());
    return p + ".audit.jsonl";
}

void Simulator::audit(AuditEntry& e, int result)
{
    if (e.written)
        return;
    e.result = result;
    std::string path;
    {
        std::lock_guard<std::mutex> g(_mu);
        path = auditPathLocked();
    }
    if (path.empty())
        return;
    std::string err;
    if (!appendAuditLine(path, auditLine(e), false, &err))
        Logger::instance().write(API_LOG_ERROR, "qelsim: " + err + "\n");
    e.written = true;
}

std::string Simulator::statePath()
{
    std::lock_guard<std::mutex> g(_mu);
    return _store.path();
}

}  // namespace qelsim
