#include "HttpExchange.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <strings.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace qel
{
namespace load
{
namespace
{

constexpr size_t kReadSize = 256 * 1024;
constexpr size_t kMaxHeadLine = 64 * 1024;

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error(what);
}

std::string trimmed(const std::string& s)
{
    size_t b = 0, e = s.size();
    while (b < e && (s[b] == ' ' || s[b] == '\t'))
        ++b;
    while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t'))
        --e;
    return s.substr(b, e - b);
}

// Header fields the generator looks at; the rest are skipped.
void takeField(const std::string& line, HttpAnswer& a, long long& length, bool& chunked)
{
    const size_t colon = line.find(':');
    if (colon == std::string::npos)
        fail("malformed header line \"" + line + "\"");
    const std::string name = line.substr(0, colon);
    const std::string value = trimmed(line.substr(colon + 1));
    if (strcasecmp(name.c_str(), "Content-Length") == 0)
    {
        char* end = nullptr;
        length = std::strtoll(value.c_str(), &end, 10);
        if (value.empty() || *end != '\0' || length < 0)
            fail("bad Content-Length \"" + value + "\"");
    }
    else if (strcasecmp(name.c_str(), "Transfer-Encoding") == 0)
        chunked = strcasecmp(value.c_str(), "chunked") == 0;
    else if (strcasecmp(name.c_str(), "Connection") == 0)
        a.closes = strcasecmp(value.c_str(), "close") == 0;
    else if (strcasecmp(name.c_str(), "CIMOperation") == 0)
        a.cimOperation = value;
    else if (strcasecmp(name.c_str(), "CIMError") == 0)
        a.cimError = value;
    else if (strcasecmp(name.c_str(), "CIMStatusCode") == 0)
        a.cimStatusCode = value;
}

}  // namespace

HttpExchange::HttpExchange(std::string host, unsigned port, double timeoutSeconds)
    : _host(std::move(host)), _port(port), _timeoutSeconds(timeoutSeconds)
{
}

HttpExchange::HttpExchange(int fd) : _fd(fd)
{
}

HttpExchange::~HttpExchange()
{
    close();
}

void HttpExchange::close()
{
    if (_fd >= 0)
        ::close(_fd);
    _fd = -1;
    _begin = _end = 0;
}

void HttpExchange::_connect()
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const std::string port = std::to_string(_port);
    const int rc = getaddrinfo(_host.c_str(), port.c_str(), &hints, &found);
    if (rc != 0)
        fail("cannot resolve " + _host + ": " + gai_strerror(rc));
    std::string error = "no address";
    for (addrinfo* a = found; a != nullptr; a = a->ai_next)
    {
        const int fd = ::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC, a->ai_protocol);
        if (fd < 0)
            continue;
        if (::connect(fd, a->ai_addr, a->ai_addrlen) == 0)
        {
            _fd = fd;
            break;
        }
        error = std::strerror(errno);
        ::close(fd);
    }
    freeaddrinfo(found);
    if (_fd < 0)
        fail("cannot connect to " + _host + ":" + port + ": " + error);
    const int one = 1;
    setsockopt(_fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    timeval tv{};
    tv.tv_sec = static_cast<time_t>(_timeoutSeconds);
    tv.tv_usec = static_cast<suseconds_t>((_timeoutSeconds - tv.tv_sec) * 1e6);
    setsockopt(_fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
    setsockopt(_fd, SOL_SOCKET, SO_SNDTIMEO, &tv, sizeof tv);
}

void HttpExchange::exchange(const std::string& request, HttpAnswer& answer)
{
    if (_fd < 0)
        _connect();
    size_t sent = 0;
    while (sent < request.size())
    {
        const ssize_t n = ::send(_fd, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
        {
            const std::string why = std::strerror(errno);
            close();
            fail("sending the request failed: " + why);
        }
        sent += static_cast<size_t>(n);
    }
    readAnswer(answer);
}

bool HttpExchange::_fill()
{
    if (_begin == _end)
        _begin = _end = 0;
    if (_in.size() - _end < kReadSize)
    {
        // Keep what is unread at the front, then make room behind it.
        if (_end > _begin)  // the buffer has no storage before the first read
            std::memmove(_in.data(), _in.data() + _begin, _end - _begin);
        _end -= _begin;
        _begin = 0;
        if (_in.size() - _end < kReadSize)
            _in.resize(_end + kReadSize);
    }
    for (;;)
    {
        const ssize_t n = ::recv(_fd, _in.data() + _end, _in.size() - _end, 0);
        if (n > 0)
        {
            _end += static_cast<size_t>(n);
            return true;
        }
        if (n == 0)
            return false;
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN || errno == EWOULDBLOCK)
            fail("no answer within the time limit");
        fail(std::string("receiving failed: ") + std::strerror(errno));
    }
}

std::string HttpExchange::_line(const char* where)
{
    size_t scanned = _begin;
    for (;;)
    {
        for (size_t i = scanned; i + 1 < _end; ++i)
        {
            if (_in[i] == '\r' && _in[i + 1] == '\n')
            {
                std::string line(_in.data() + _begin, i - _begin);
                _begin = i + 2;
                return line;
            }
        }
        if (_end - _begin > kMaxHeadLine)
            fail(std::string("line too long in the ") + where);
        scanned = _end > _begin ? _end - 1 : _begin;
        const size_t offset = scanned - _begin;
        if (!_fill())
            fail(std::string("connection closed in the ") + where);
        scanned = _begin + offset;
    }
}

void HttpExchange::_readBody(std::vector<char>& body, size_t n)
{
    while (n > 0)
    {
        if (_begin == _end && !_fill())
            fail("connection closed in the body");
        const size_t take = std::min(n, _end - _begin);
        body.insert(body.end(), _in.data() + _begin, _in.data() + _begin + take);
        _begin += take;
        n -= take;
    }
}

void HttpExchange::readAnswer(HttpAnswer& a)
{
    a.status = 0;
    a.reason.clear();
    a.cimOperation.clear();
    a.cimError.clear();
    a.cimStatusCode.clear();
    a.closes = false;
    a.body.clear();

    const std::string statusLine = _line("status line");
    // HTTP/1.1 200 OK
    if (statusLine.compare(0, 5, "HTTP/") != 0 || statusLine.size() < 12 || statusLine[8] != ' ')
        fail("not an HTTP status line: \"" + statusLine + "\"");
    a.status = std::atoi(statusLine.c_str() + 9);
    a.reason = statusLine.size() > 13 ? statusLine.substr(13) : std::string();
    if (statusLine.compare(0, 8, "HTTP/1.0") == 0)
        a.closes = true;

    long long length = -1;
    bool chunked = false;
    for (std::string line = _line("header"); !line.empty(); line = _line("header"))
        takeField(line, a, length, chunked);

    if (chunked)
    {
        for (;;)
        {
            const std::string sizeLine = _line("chunk size");
            char* end = nullptr;
            const unsigned long long size = std::strtoull(sizeLine.c_str(), &end, 16);
            if (end == sizeLine.c_str() || (*end != '\0' && *end != ';' && *end != ' '))
                fail("bad chunk size \"" + sizeLine + "\"");
            if (size == 0)
                break;
            if (size > (1ull << 32))
                fail("chunk too large");
            _readBody(a.body, static_cast<size_t>(size));
            if (!_line("chunk end").empty())
                fail("chunk not followed by CRLF");
        }
        for (std::string line = _line("trailer"); !line.empty(); line = _line("trailer"))
            takeField(line, a, length, chunked);
    }
    else if (length >= 0)
    {
        _readBody(a.body, static_cast<size_t>(length));
    }
    else
    {
        // Neither length nor chunks: the body ends with the connection.
        for (;;)
        {
            a.body.insert(a.body.end(), _in.data() + _begin, _in.data() + _end);
            _begin = _end;
            if (!_fill())
                break;
        }
        a.closes = true;
    }
    if (a.closes)
        close();
}

}  // namespace load
}  // namespace qel
