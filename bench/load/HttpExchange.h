// One client connection of qel-cimload: sends a prepared request and reads the whole answer
// (Content-Length, chunked with trailers, or up to the close), blocking, with a time limit.
// Not thread-safe: each client thread owns its connection.
#ifndef QEL_BENCH_LOAD_HTTPEXCHANGE_H
#define QEL_BENCH_LOAD_HTTPEXCHANGE_H

#include <string>
#include <vector>

namespace qel
{
namespace load
{

struct HttpAnswer
{
    int status = 0;
    std::string reason;
    // The CIM headers (and trailers) that tell a failed request from a good one.
    std::string cimOperation;
    std::string cimError;
    std::string cimStatusCode;
    bool closes = false;  // the server ends the connection after this answer
    std::vector<char> body;
};

class HttpExchange
{
public:
    HttpExchange(std::string host, unsigned port, double timeoutSeconds);
    // Adopts a connected socket (tests).
    explicit HttpExchange(int fd);
    ~HttpExchange();
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;

    // Sends `request` (connecting first when needed) and reads its answer into `answer`,
    // whose buffers are reused. Throws std::runtime_error saying what failed.
    void exchange(const std::string& request, HttpAnswer& answer);
    // Reads one answer from the connection (exchange's second half).
    void readAnswer(HttpAnswer& answer);
    void close();
    bool isOpen() const { return _fd >= 0; }

private:
    void _connect();
    // Reads more bytes into _in; false at the peer's orderly close.
    bool _fill();
    // The next CRLF-terminated line (without the CRLF); throws at the close.
    std::string _line(const char* where);
    // Appends exactly n body bytes.
    void _readBody(std::vector<char>& body, size_t n);

    std::string _host;
    unsigned _port = 0;
    double _timeoutSeconds = 0;
    int _fd = -1;
    std::vector<char> _in;  // received, not yet consumed: [_begin, _end)
    size_t _begin = 0;
    size_t _end = 0;
};

}  // namespace load
}  // namespace qel

#endif
