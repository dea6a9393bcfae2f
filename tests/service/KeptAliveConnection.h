// One kept-alive HTTP connection to 127.0.0.1: a request, then its whole answer, again and
// again on the same socket, so a test can tell that the server did not drop it.
#ifndef QEL_TESTS_SERVICE_KEPTALIVECONNECTION_H
#define QEL_TESTS_SERVICE_KEPTALIVECONNECTION_H

#include <string>

class KeptAliveConnection
{
public:
    explicit KeptAliveConnection(unsigned short port);
    ~KeptAliveConnection();
    KeptAliveConnection(const KeptAliveConnection&) = delete;
    KeptAliveConnection& operator=(const KeptAliveConnection&) = delete;

    // The status line of the answer ("" when the connection was closed instead).
    std::string exchange(const std::string& request);

private:
    bool receive(std::string& data);
    int _fd = -1;
};

#endif
