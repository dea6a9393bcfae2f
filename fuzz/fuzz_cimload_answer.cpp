// The load generator's reader of HTTP answers (bench/load/HttpExchange): whatever a server
// sends, it reads answers or fails with an error, never more. The input is what the server
// sent before closing the connection.
#include <HttpExchange.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // Written whole before reading: a local socket holds this much.
    if (size > 65536)
        return 0;
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0)
        return 0;
    size_t sent = 0;
    while (sent < size)
    {
        const ssize_t n = ::send(fds[0], data + sent, size - sent, 0);
        if (n <= 0)
            break;
        sent += static_cast<size_t>(n);
    }
    ::shutdown(fds[0], SHUT_WR);
    qel::load::HttpExchange connection(fds[1]);
    qel::load::HttpAnswer answer;
    try
    {
        while (connection.isOpen())
            connection.readAnswer(answer);
    }
    catch (const std::runtime_error&)
    {
    }
    ::close(fds[0]);
    return 0;
}
