#include "atomic_file.h"

#include <cerrno>
#include <cstring>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

namespace qelsim
{

namespace
{

std::string failure(const std::string& path, const char* step, int err)
{
    return path + ": " + step + ": " + std::strerror(err);
}

bool writeAll(int fd, const char* p, size_t n)
{
    while (n > 0)
    {
        ssize_t w = ::write(fd, p, n);
        if (w < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        p += w;
        n -= static_cast<size_t>(w);
    }
    return true;
}

}  // namespace

std::string parentDirectory(const std::string& path)
{
    auto slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return ".";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

bool makeDirectories(const std::string& dir, std::string* error)
{
    if (dir.empty() || dir == "." || dir == "/")
        return true;
    struct stat st;
    if (::stat(dir.c_str(), &st) == 0)
    {
        if (S_ISDIR(st.st_mode))
            return true;
        *error = dir + ": exists and is not a folder";
        return false;
    }
    if (!makeDirectories(parentDirectory(dir), error))
        return false;
    if (::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST)
    {
        *error = failure(dir, "cannot create folder", errno);
        return false;
    }
    return true;
}

bool prepareReplacement(
    const std::string& path, const std::string& contents, Replacement* r, std::string* error)
{
    static std::atomic<unsigned> serial{0};
    // Unique per process and call, so concurrent writers never share a temporary.
    const std::string tmp =
        path + ".tmp." + std::to_string(::getpid()) + "." + std::to_string(serial++);
    int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0)
    {
        *error = failure(tmp, "cannot create", errno);
        return false;
    }
    const char* step = nullptr;
    struct stat st;
    if (!writeAll(fd, contents.data(), contents.size()))
        step = "cannot write";
    else if (::fsync(fd) != 0)
        step = "cannot fsync";
    else if (::fstat(fd, &st) != 0)
        step = "cannot stat";
    if (step)
    {
        *error = failure(tmp, step, errno);
        ::close(fd);
        ::unlink(tmp.c_str());
        return false;
    }
    if (::close(fd) != 0)
    {
        *error = failure(tmp, "cannot close", errno);
        ::unlink(tmp.c_str());
        return false;
    }
    r->temporary = tmp;
    r->dev = st.st_dev;
    r->ino = st.st_ino;
    return true;
}

bool commitReplacement(Replacement* r, const std::string& path, std::string* error)
{
    if (::rename(r->temporary.c_str(), path.c_str()) != 0)
    {
        *error = failure(path, "cannot rename the temporary file over it", errno);
        discardReplacement(r);
        return false;
    }
    r->temporary.clear();
    // The rename is durable only once the folder entry is on disk.
    int dfd = ::open(parentDirectory(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dfd >= 0)
    {
        ::fsync(dfd);
        ::close(dfd);
    }
    return true;
}

void discardReplacement(Replacement* r)
{
    if (!r->temporary.empty())
        ::unlink(r->temporary.c_str());
    r->temporary.clear();
}

bool writeFileAtomically(const std::string& path, const std::string& contents, std::string* error)
{
    Replacement r;
    return prepareReplacement(path, contents, &r, error) && commitReplacement(&r, path, error);
}

int removeStaleTemporaries(const std::string& path)
{
    const std::string dir = parentDirectory(path);
    const std::string prefix = path.substr(path.find_last_of('/') + 1) + ".tmp.";
    DIR* d = ::opendir(dir.c_str());
    if (!d)
        return 0;
    int removed = 0;
    while (struct dirent* e = ::readdir(d))
    {
        const std::string name = e->d_name;
        if (name.compare(0, prefix.size(), prefix) != 0)
            continue;
        const long pid = std::strtol(name.c_str() + prefix.size(), nullptr, 10);
        if (pid <= 0 || (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH))
            removed += ::unlink((dir + "/" + name).c_str()) == 0;
    }
    ::closedir(d);
    return removed;
}

bool readWholeFile(const std::string& path, std::string* contents, std::string* error)
{
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
    {
        *error = failure(path, "cannot open", errno);
        return false;
    }
    std::string out;
    char buf[65536];
    for (;;)
    {
        ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            *error = failure(path, "cannot read", errno);
            ::close(fd);
            return false;
        }
        if (n == 0)
            break;
        out.append(buf, static_cast<size_t>(n));
    }
    ::close(fd);
    *contents = std::move(out);
    return true;
}

}  // namespace qelsim
