// A file the server reads at start and re-reads when it changes on disk (another inode,
// size or modification time), so that qel-passwd and qel-certmap take effect without a
// restart. A version that fails to load is reported once and the previous one stays in
// use. Not locked: the owner serializes calls.
#ifndef QEL_SERVER_AUTH_WATCHEDFILE_H
#define QEL_SERVER_AUTH_WATCHEDFILE_H

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <sys/types.h>

namespace qel
{
namespace auth
{

struct FileSignature
{
    ino_t inode = 0;
    off_t size = -1;
    int64_t mtimeNs = 0;

    // False, with `error` set to the system's reason, when the file cannot be examined.
    static bool of(const std::string& path, FileSignature& out, std::string& error);

    bool operator==(const FileSignature& o) const
    {
        return inode == o.inode && size == o.size && mtimeNs == o.mtimeNs;
    }
};

template <class Data>
class WatchedFile
{
public:
    // Reads `path` (a file of the kind `what` names, for messages) with `load`, which
    // throws an exception derived from std::runtime_error saying what is wrong. The first
    // load's failure is thrown as that exception, or as Error when the file cannot be read.
    template <class Error>
    static WatchedFile
    open(std::string path, std::string what, std::function<Data(const std::string&)> load)
    {
        WatchedFile f(std::move(path), std::move(what), std::move(load));
        std::string why;
        if (!FileSignature::of(f._path, f._loaded, why))
            throw Error("cannot read " + f._what + " " + f._path + ": " + why);
        f._data = f._load(f._path);
        f._generation = 1;
        return f;
    }

    // Loads the file again if it changed; true when a new version is now in use.
    bool refresh()
    {
        FileSignature now;
        std::string why;
        if (!FileSignature::of(_path, now, why))
        {
            _lastError = "cannot read " + _what + " " + _path + ": " + why;
            return false;
        }
        if (now == _loaded)
            return false;
        _loaded = now;  // a broken version is reported once, not on every request
        try
        {
            _data = _load(_path);
        }
        catch (const std::runtime_error& e)
        {
            _lastError = e.what();
            return false;
        }
        _lastError.clear();
        ++_generation;
        return true;
    }

    const Data& data() const { return _data; }
    // Grows with every version loaded.
    uint64_t generation() const { return _generation; }
    const std::string& lastError() const { return _lastError; }

private:
    WatchedFile(std::string path, std::string what, std::function<Data(const std::string&)> load)
        : _path(std::move(path)), _what(std::move(what)), _load(std::move(load))
    {
    }

    std::string _path;
    std::string _what;
    std::function<Data(const std::string&)> _load;
    Data _data{};
    FileSignature _loaded;
    uint64_t _generation = 0;
    std::string _lastError;
};

}  // namespace auth
}  // namespace qel

#endif
