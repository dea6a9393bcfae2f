#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

#include <algorithm>

using namespace Pegasus;

namespace servertest {

std::vector<std::string> providerDirectories()
{
    std::vector<std::string> dirs = {QEL_SERVER_TEST_PROVIDER_DIR};
#ifdef QEL_ARRAY_PROVIDER_DIRS
    for (const char* dir : {QEL_ARRAY_PROVIDER_DIRS})
        dirs.push_back(dir);
#endif
    return dirs;
}

std::string schemaRoot()
{
    return QEL_SCHEMA_ROOT;
}

std::string testSchema()
{
    return QEL_SERVER_TEST_MOF;
}

std::string text(const String& s)
{
    CString c = s.getCString();
    return std::string(static_cast<const char*>(c));
}

CIMException cimErrorOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CIMException& e)
    {
        return e;
    }
    catch (const Exception& e)
    {
        ADD_FAILURE() << "expected a CIMException, got Exception: " << text(e.getMessage());
        return CIMException(CIM_ERR_SUCCESS);
    }
    catch (...)
    {
        ADD_FAILURE() << "expected a CIMException, got another exception";
        return CIMException(CIM_ERR_SUCCESS);
    }
    ADD_FAILURE() << "expected a CIMException, nothing was thrown";
    return CIMException(CIM_ERR_SUCCESS);
}

LogCapture::LogCapture()
    : _mutex(std::make_shared<std::mutex>()), _lines(std::make_shared<std::vector<std::string>>())
{
    auto mutex = _mutex;
    auto lines = _lines;
    _previous = ServerLog::setSink([mutex, lines](LogLevel, const std::string& line) {
        std::lock_guard<std::mutex> lock(*mutex);
        lines->push_back(line);
    });
}

LogCapture::~LogCapture()
{
    ServerLog::setSink(_previous);
}

std::vector<std::string> LogCapture::lines() const
{
    std::lock_guard<std::mutex> lock(*_mutex);
    return *_lines;
}

bool LogCapture::contains(const std::string& fragment) const
{
    std::vector<std::string> all = lines();
    return std::any_of(all.begin(), all.end(),
                       [&](const std::string& line) { return line.find(fragment) != std::string::npos; });
}

const CIMNamespaceName ServerTest::ns("root/servertest");

CIMObjectPath ServerTest::item(const char* id, const char* className)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Id", id, CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), className, keys);
}

void ServerTest::SetUp()
{
    servertest::reset();
    log = std::make_unique<LogCapture>();
    context = Dispatcher::requestContext("alice", "192.0.2.7");
    restart();
}

void ServerTest::restart(const std::vector<std::string>& extraMof)
{
    if (_server)
        _server->stop();
    CIMServerOptions options;
    options.mofFiles = {schemaRoot(), testSchema()};
    options.mofFiles.insert(options.mofFiles.end(), extraMof.begin(), extraMof.end());
    options.providerDirectories = providerDirectories();
    options.workerThreads = 4;
    options.dispatcher.hostName = "cimhost";
    _server = std::make_unique<CIMServer>(options);
    _server->start();
}

void ServerTest::TearDown()
{
    if (_server)
        _server->stop();
    _server.reset();
    log.reset();
}

}  // namespace servertest
