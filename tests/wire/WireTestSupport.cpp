#include "WireTestSupport.h"

#include <Server/auth/Base64.h>
#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <Pegasus/Common/CIMStatusCode.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

using namespace Pegasus;
using qel::cimxml::Operation;

namespace wiretest
{

void ScriptedExecutor::execute(
    const qel::cimxml::CimRequest& r, const qel::http::ClientIdentity& client,
    qel::cimxml::CimResponse& out)
{
    switch (r.operation)
    {
        case Operation::EnumerateInstanceNames:
            for (const char* id : {"20110002AC00A001", "20120002AC00A001"})
                out.paths.append(CIMObjectPath(
                    String(), CIMNamespaceName(), r.className,
                    Array<CIMKeyBinding>(1, CIMKeyBinding("DeviceID", id, CIMKeyBinding::STRING))));
            return;
        case Operation::GetInstance:
        {
            const Array<CIMKeyBinding>& keys = r.objectName.getKeyBindings();
            CIMInstance inst(r.objectName.getClassName());
            for (Uint32 i = 0; i < keys.size(); ++i)
            {
                if (keys[i].getValue() == "missing")
                {
                    out.setError(CIMException(CIM_ERR_NOT_FOUND, "no such port"));
                    return;
                }
                inst.addProperty(CIMProperty(keys[i].getName(), CIMValue(keys[i].getValue())));
            }
            out.instance = inst;
            return;
        }
        case Operation::InvokeMethod:
            if (r.methodName == "Echo")
            {
                out.value = CIMValue(Uint32(r.inParameters.size()));
                for (Uint32 i = 0; i < r.inParameters.size(); ++i)
                    out.outParameters.append(r.inParameters[i]);
                out.outParameters.append(
                    CIMParamValue("User", CIMValue(String(client.user.c_str()))));
                return;
            }
            if (r.methodName == "Wait")
            {
                ++_waiting;
                std::unique_lock<std::mutex> lock(_mutex);
                _released.wait(lock, [this] { return _open; });
                --_waiting;
                out.value = CIMValue(Uint32(0));
                return;
            }
            break;
        default:
            break;
    }
    out.setError(CIMException(CIM_ERR_NOT_SUPPORTED, "not scripted"));
}

void ScriptedExecutor::release()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _open = true;
    _released.notify_all();
}

TempPasswordFile::TempPasswordFile()
{
    char tmpl[] = "/tmp/qel-wire-XXXXXX";
    if (!mkdtemp(tmpl))
        throw std::runtime_error("mkdtemp failed");
    _dir = tmpl;
    _path = _dir + "/passwd";
    qel::auth::PasswordFile().save(_path);
}

TempPasswordFile::~TempPasswordFile()
{
    ::unlink(_path.c_str());
    ::unlink((_dir + "/cim.socket").c_str());
    ::rmdir(_dir.c_str());
}

void TempPasswordFile::add(const std::string& user, const std::string& password)
{
    qel::auth::PasswordFile f = qel::auth::PasswordFile::load(_path, false);
    f.add(user, qel::auth::hashPassword(password));
    f.save(_path);
}

std::string basicAuth(const std::string& user, const std::string& password)
{
    return "Basic " + qel::auth::base64Encode(user + ":" + password);
}

FrontEnd::FrontEnd(
    qel::http::HttpServerOptions options, unsigned workers,
    qel::http::CimHttpServiceOptions serviceOptions)
{
    passwords.add("alice", "wonderland");
    authenticator = std::make_unique<qel::auth::BasicAuthenticator>(passwords.path());
    pool = std::make_unique<ThreadPool>(workers, 64);
    ThreadPool* p = pool.get();
    auto submit = [p](std::function<void()> job) { return p->submit(std::move(job)); };
    service = std::make_unique<qel::http::CimHttpService>(
        std::move(serviceOptions), *authenticator, executor, submit, submit);
    options.port = 0;
    options.bindAddress = "127.0.0.1";
    if (options.tlsPort >= 0)
    {
        options.tlsPort = 0;
        options.tlsBindAddress = "127.0.0.1";
    }
    options.socketPath = socketPath();
    http = std::make_unique<qel::http::HttpServer>(options, *service);
    http->start();
}

FrontEnd::~FrontEnd()
{
    executor.release();
    http->stopAccepting();
    pool->stop();
    http->stop();
}

std::string rawExchange(unsigned short port, const std::string& bytes, int timeoutMs)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
    {
        ::close(fd);
        throw std::runtime_error("cannot connect to the test server");
    }
    size_t sent = 0;
    while (sent < bytes.size())
    {
        const ssize_t n = ::send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (n <= 0)
            break;
        sent += static_cast<size_t>(n);
    }
    std::string reply;
    pollfd p{fd, POLLIN, 0};
    char buf[4096];
    while (::poll(&p, 1, timeoutMs) > 0)
    {
        const ssize_t n = ::recv(fd, buf, sizeof buf, 0);
        if (n <= 0)
            break;
        reply.append(buf, static_cast<size_t>(n));
    }
    ::close(fd);
    return reply;
}

RawConnection::RawConnection(unsigned short port, const std::string& from)
{
    _fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in local{};
    local.sin_family = AF_INET;
    inet_pton(AF_INET, from.c_str(), &local.sin_addr);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (_fd < 0 || ::bind(_fd, reinterpret_cast<sockaddr*>(&local), sizeof local) != 0 ||
        ::connect(_fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
    {
        if (_fd >= 0)
            ::close(_fd);
        throw std::runtime_error("cannot connect to the test server from " + from);
    }
}

RawConnection::~RawConnection()
{
    ::close(_fd);
}

void RawConnection::send(const std::string& bytes)
{
    if (::send(_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("send to the test server failed");
}

bool RawConnection::closedByServer(int timeoutMs)
{
    pollfd p{_fd, POLLIN, 0};
    char buf[4096];
    while (::poll(&p, 1, timeoutMs) > 0)
    {
        const ssize_t n = ::recv(_fd, buf, sizeof buf, 0);
        if (n <= 0)
            return true;
    }
    return false;
}

std::string enumerateNamesBody()
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
           "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"EnumerateInstanceNames\"><LOCALNAMESPACEPATH>"
           "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME=\"ClassName\">"
           "<CLASSNAME NAME=\"QEL_FCPort\"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

std::string
cimPost(const std::string& body, const std::string& authorization, const std::string& extraHeaders)
{
    std::string r =
        "POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml; charset=\"utf-8\"\r\n"
        "CIMOperation: MethodCall\r\nCIMMethod: EnumerateInstanceNames\r\nCIMObject: root%2Fqel\r\n";
    if (!authorization.empty())
        r += "Authorization: " + authorization + "\r\n";
    r += extraHeaders;
    r += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    return r;
}

qel::http::HttpRequest
cimRequest(const std::string& method, std::string body, const std::string& authorization)
{
    qel::http::HttpRequest r;
    r.method = "POST";
    r.target = "/cimom";
    r.headers = {
        {"Content-Type", "application/xml; charset=\"utf-8\""},
        {"CIMProtocolVersion", "1.0"},
        {"CIMOperation", "MethodCall"},
        {"CIMMethod", method},
        {"CIMObject", "root%2Fqel"},
        {"Authorization", authorization}};
    r.body = std::move(body);
    return r;
}

}  // namespace wiretest
