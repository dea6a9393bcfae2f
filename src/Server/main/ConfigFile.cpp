#include "ConfigFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qel
{
namespace server
{
namespace
{

std::string trimmed(const std::string& s)
{
    const size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return std::string();
    return s.substr(b, s.find_last_not_of(" \t") - b + 1);
}

// The line up to its comment: a '#' at the start or after a blank. A '#' inside a word
// (a path such as /srv/a#b) is part of the value.
std::string withoutComment(const std::string& line)
{
    for (size_t i = 0; i < line.size(); ++i)
        if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t'))
            return line.substr(0, i);
    return line;
}

// A control character other than a tab means the file is not text (or was damaged).
void checkCharacters(const std::string& line, const std::string& where)
{
    for (unsigned char c : line)
    {
        if ((c < 0x20 && c != '\t') || c == 0x7f)
        {
            char code[8];
            std::snprintf(code, sizeof code, "0x%02x", c);
            throw CommandLineError(where + ": control character " + code + " in the line");
        }
    }
}

void applyLine(const std::string& line, const std::string& where, ServerCommandLine& settings)
{
    checkCharacters(line, where);
    const std::string content = trimmed(withoutComment(line));
    if (content.empty())
        return;
    const size_t equals = content.find('=');
    const std::string key = trimmed(content.substr(0, equals));
    if (equals == std::string::npos || key.empty())
        throw CommandLineError(where + ": expected \"key = value\", got \"" + content + "\"");
    std::string value = trimmed(content.substr(equals + 1));
    // "key =#..." is a key with an empty value and a comment: no value starts with '#'.
    if (!value.empty() && value[0] == '#')
        value.clear();
    const ServerOption* option = findServerOption(key);
    if (option == nullptr)
        throw CommandLineError(where + ": unknown key \"" + key + "\"");
    if (option->commandLineOnly)
        throw CommandLineError(where + ": " + key + " can only be given on the command line");
    if (!option->repeatable)
    {
        const auto earlier = settings.sources.find(key);
        if (earlier != settings.sources.end() && !earlier->second.empty() &&
            earlier->second.back().kind == SettingSource::Kind::File)
            throw CommandLineError(
                where + ": " + key + " is already set at " + earlier->second.back().where);
    }
    SettingSource source;
    source.kind = SettingSource::Kind::File;
    source.where = where;
    source.text = value;
    applyServerOption(settings, *option, value, source);
}

}  // namespace

void applyConfigText(
    const std::string& text, const std::string& origin, ServerCommandLine& settings)
{
    size_t lineNumber = 0;
    size_t start = 0;
    while (start < text.size())
    {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(start, end - start);
        start = end + 1;
        ++lineNumber;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        applyLine(line, origin + ":" + std::to_string(lineNumber), settings);
    }
}

void readConfigFile(const std::string& path, bool required, ServerCommandLine& settings)
{
    settings.configFileFound = false;
    auto cannotRead = [&path](const std::string& why)
    { return CommandLineError(path + ": cannot read: " + why); };
    // O_NONBLOCK: a FIFO named by mistake is refused below instead of blocking the start.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0)
    {
        if (errno == ENOENT && !required)
            return;
        throw cannotRead(std::strerror(errno));
    }
    std::string text;
    struct stat st;
    std::string problem;
    if (::fstat(fd, &st) != 0)
        problem = std::strerror(errno);
    else if (S_ISDIR(st.st_mode))
        problem = "it is a directory";
    else if (!S_ISREG(st.st_mode))
        problem = "not a regular file";
    else if (static_cast<unsigned long long>(st.st_size) > kMaxConfigFileBytes)
        problem = "larger than " + std::to_string(kMaxConfigFileBytes) + " bytes";
    while (problem.empty())
    {
        char buffer[8192];
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            problem = std::strerror(errno);
        else if (n == 0)
            break;
        else if (text.size() + static_cast<size_t>(n) > kMaxConfigFileBytes)
            problem = "larger than " + std::to_string(kMaxConfigFileBytes) + " bytes";
        else
            text.append(buffer, static_cast<size_t>(n));
    }
    ::close(fd);
    if (!problem.empty())
        throw cannotRead(problem);
    applyConfigText(text, path, settings);
    settings.configFileFound = true;
}

}  // namespace server
}  // namespace qel
