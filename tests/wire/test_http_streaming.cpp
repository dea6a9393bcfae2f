// Answers sent as they are made: small ones whole with Content-Length, large ones chunked
// and read back by CIMClient to the same objects, a failure after the first chunk in the
// trailers (or, for a client without TE: trailers, a body left without its last chunk), and
// a client that stops reading cut off while others are served.
#include "WireTestSupport.h"

#include <Server/clienttransport/InstallTransports.h>
#include <Server/http/CimHttpService.h>
#include <Server/xml/ResponseCodec.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/ClientTransport.h>
#include <Pegasus/Common/CIMResponseCollector.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <condition_variable>
#include <mutex>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Pegasus;
using namespace wiretest;

namespace
{

const CIMNamespaceName kNs("root/qel");

// EnumerateInstances of "Few" (10), "Many" (3,000) or "Huge" (200,000) instances of about
// 150 bytes each; "ManyThenFail" and "FewThenFail" fail after theirs. Notes when a delivery
// was refused (the client went away).
class StreamingExecutor : public qel::http::OperationExecutor
{
public:
    void execute(
        const qel::cimxml::CimRequest& r, const qel::http::ClientIdentity& client,
        qel::cimxml::CimResponse& out) override
    {
        CIMResponseCollector collector(r.operation, out);
        execute(r, client, collector);
    }

    void execute(
        const qel::cimxml::CimRequest& r, const qel::http::ClientIdentity&,
        CIMResponseSink& sink) override
    {
        const std::string name(r.className.getString().getCString());
        const bool fails = name.find("ThenFail") != std::string::npos;
        const Uint32 count = name.rfind("Few", 0) == 0    ? 10
                             : name.rfind("Many", 0) == 0 ? 3000
                                                          : 200000;
        try
        {
            for (Uint32 i = 0; i < count; ++i)
            {
                CIMInstance inst(r.className);
                inst.addProperty(CIMProperty(CIMName("Index"), CIMValue(i)));
                inst.addProperty(CIMProperty(
                    CIMName("Text"), CIMValue(String("a port of the simulated array <&>"))));
                inst.setPath(CIMObjectPath(
                    String(), CIMNamespaceName(), r.className,
                    Array<CIMKeyBinding>(
                        1, CIMKeyBinding(
                               "Index", std::to_string(i).c_str(), CIMKeyBinding::NUMERIC))));
                sink.deliverInstance(inst);
            }
        }
        catch (const CIMException& e)
        {
            {
                std::lock_guard<std::mutex> lock(_mutex);
                _refused = true;
            }
            _changed.notify_all();
            return sink.fail(e);
        }
        if (fails)
            return sink.fail(CIMException(CIM_ERR_FAILED, "the array went away"));
        sink.complete(CIMValue(), Array<CIMParamValue>());
    }

    void waitForRefusal()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _changed.wait(lock, [this] { return _refused; });
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _refused = false;
};

struct StreamingFrontEnd
{
    StreamingFrontEnd()
    {
        passwords.add("alice", "wonderland");
        authenticator = std::make_unique<qel::auth::BasicAuthenticator>(passwords.path());
        pool = std::make_unique<ThreadPool>(4, 16);
        ThreadPool* p = pool.get();
        auto submit = [p](std::function<void()> job) { return p->submit(std::move(job)); };
        qel::http::CimHttpServiceOptions o;
        o.hostName = "h";
        o.stream.startBytes = 32 * 1024;
        o.stream.bufferBytes = 128 * 1024;
        o.stream.writeTimeout = std::chrono::milliseconds(300);
        service = std::make_unique<qel::http::CimHttpService>(
            o, *authenticator, executor, submit, submit);
        qel::http::HttpServerOptions h;
        h.port = 0;
        h.writeTimeout = o.stream.writeTimeout;
        http = std::make_unique<qel::http::HttpServer>(h, *service);
        http->start();
    }
    ~StreamingFrontEnd()
    {
        http->stopAccepting();
        http->stop();
        pool->stop();
    }

    TempPasswordFile passwords;
    StreamingExecutor executor;
    std::unique_ptr<qel::auth::BasicAuthenticator> authenticator;
    std::unique_ptr<ThreadPool> pool;
    std::unique_ptr<qel::http::CimHttpService> service;
    std::unique_ptr<qel::http::HttpServer> http;
};

std::string enumerateBody(const char* className)
{
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" "
                       "DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
                       "<IMETHODCALL NAME=\"EnumerateInstances\"><LOCALNAMESPACEPATH><NAMESPACE "
                       "NAME=\"root\"/><NAMESPACE NAME=\"qel\"/></LOCALNAMESPACEPATH><IPARAMVALUE "
                       "NAME=\"ClassName\"><CLASSNAME NAME=\"") +
           className + "\"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>\n";
}

std::string enumeratePost(const char* className, const std::string& extraHeaders)
{
    const std::string body = enumerateBody(className);
    return "POST /cimom HTTP/1.1\r\nHost: x\r\nContent-Type: application/xml; "
           "charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\nCIMMethod: EnumerateInstances\r\n"
           "CIMObject: root%2Fqel\r\nConnection: close\r\nAuthorization: " +
           basicAuth("alice", "wonderland") + "\r\n" + extraHeaders +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

Array<CIMInstance> viaClient(StreamingFrontEnd& fe, const char* className)
{
    TcpTransportFactory previous = setTcpTransportFactory(TcpTransportFactory());
    qel::client::installTcpTransport();
    CIMClient client;
    client.setTimeout(20000);
    client.connect("127.0.0.1", fe.http->tcpPort(), "alice", "wonderland");
    try
    {
        Array<CIMInstance> result = client.enumerateInstances(
            kNs, CIMName(className), true, false, false, false, CIMPropertyList());
        setTcpTransportFactory(previous);
        return result;
    }
    catch (...)
    {
        setTcpTransportFactory(previous);
        throw;
    }
}

TEST(StreamedHttp, LargeAnswersAreChunkedAndReadBackAsTheWholeAnswerWouldBe)
{
    StreamingFrontEnd fe;
    struct Case
    {
        const char* className;
        bool chunked;
    };
    for (const Case& c : {Case{"Few", false}, Case{"Many", true}})
    {
        SCOPED_TRACE(c.className);
        const std::string raw =
            rawExchange(fe.http->tcpPort(), enumeratePost(c.className, "TE: trailers\r\n"));
        EXPECT_EQ(raw.find("Transfer-Encoding: chunked") != std::string::npos, c.chunked);
        EXPECT_EQ(raw.find("Content-Length:") != std::string::npos, !c.chunked);

        // The never-chunked path gives the reference answer.
        const qel::http::HttpRequest request = cimRequest(
            "EnumerateInstances", enumerateBody(c.className), basicAuth("alice", "wonderland"));
        qel::http::ConnectionInfo connection;
        const qel::http::HttpResponse whole = fe.service->process(request, connection);
        qel::cimxml::CimRequest asked;
        asked.messageId = "7";
        asked.operation = qel::cimxml::Operation::EnumerateInstances;
        asked.methodName = "EnumerateInstances";
        asked.nameSpace = kNs;
        const qel::cimxml::CimResponse expected =
            qel::cimxml::decodeResponse(whole.body.data(), whole.body.size(), asked);

        const Array<CIMInstance> got = viaClient(fe, c.className);
        ASSERT_EQ(got.size(), expected.instances.size());
        for (Uint32 i = 0; i < got.size(); ++i)
            ASSERT_TRUE(got[i].identical(expected.instances[i])) << i;
    }
}

TEST(StreamedHttp, AFailureAfterTheFirstChunkIsReportedAsTheClientCanTakeIt)
{
    StreamingFrontEnd fe;
    struct Case
    {
        const char* className;
        const char* te;
        const char* mustHave;
        const char* mustNotHave;
        bool wholeDocument;  // the error response is a complete document
    };
    const Case cases[] = {
        // Trailers: the last chunk carries the error.
        {"ManyThenFail", "TE: trailers\r\n", "\r\n0\r\nCIMStatusCode: 1\r\n", nullptr, false},
        // "trailers" in any case among other codings.
        {"ManyThenFail", "TE: deflate;q=0.5, Trailers\r\n", "\r\n0\r\nCIMStatusCode: 1\r\n",
         nullptr, false},
        // A coding that merely contains the word is not it.
        {"ManyThenFail", "TE: x-trailers\r\n", "Transfer-Encoding: chunked", "\r\n0\r\n", false},
        // No trailers, past the buffer: the body ends without its last chunk.
        {"ManyThenFail", "", "Transfer-Encoding: chunked", "\r\n0\r\n", false},
        // No trailers, within the buffer: an ordinary error response.
        {"FewThenFail", "",
         "<ERROR CODE=\"1\" DESCRIPTION=\"CIM_ERR_FAILED: the array went away\">",
         "Transfer-Encoding", true},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.className) + " " + c.te);
        const std::string raw = rawExchange(fe.http->tcpPort(), enumeratePost(c.className, c.te));
        EXPECT_NE(raw.find(c.mustHave), std::string::npos) << raw.substr(0, 400);
        if (c.mustNotHave)
        {
            EXPECT_EQ(raw.find(c.mustNotHave), std::string::npos);
        }
        // Only the ordinary error response is a whole document.
        EXPECT_EQ(raw.find("</CIM>") != std::string::npos, c.wholeDocument);
    }
    try
    {
        viaClient(fe, "ManyThenFail");
        FAIL() << "the failure was not reported";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_FAILED);
        EXPECT_NE(
            std::string(e.getMessage().getCString()).find("the array went away"),
            std::string::npos);
    }
}

TEST(StreamedHttp, AClientThatStopsReadingIsCutOffAndOthersAreServed)
{
    StreamingFrontEnd fe;
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    const int small = 4096;
    ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(fe.http->tcpPort());
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    const std::string post = enumeratePost("Huge", "TE: trailers\r\n");
    ASSERT_EQ(::send(fd, post.data(), post.size(), MSG_NOSIGNAL), ssize_t(post.size()));

    // While that client reads nothing, another is answered in full.
    EXPECT_EQ(viaClient(fe, "Many").size(), 3000u);
    // The stalled answer is abandoned: the provider's delivery is refused.
    fe.executor.waitForRefusal();
    // And its connection was closed: reading drains what was sent, then meets the end.
    char buffer[65536];
    ssize_t n;
    size_t total = 0;
    while ((n = ::recv(fd, buffer, sizeof buffer, 0)) > 0)
        total += static_cast<size_t>(n);
    ::close(fd);
    EXPECT_GT(total, 0u);
    EXPECT_LT(total, 10u * 1024 * 1024);  // far less than the 200,000 instances
}

}  // namespace
