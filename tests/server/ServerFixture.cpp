#include "ServerFixture.h"

#include <Server/core/Dispatcher.h>

using namespace Pegasus;

namespace servertest
{

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
    return std::string(static_cast<const char*>(s.getCString()));
}

CIMException cimErrorOf(const std::function<void()>& call)
{
    try
    {
        call();
        ADD_FAILURE() << "expected a CIMException, nothing was thrown";
    }
    catch (const CIMException& e)
    {
        return e;
    }
    catch (const Exception& e)
    {
        ADD_FAILURE() << "expected a CIMException, got Exception: " << text(e.getMessage());
    }
    catch (...)
    {
        ADD_FAILURE() << "expected a CIMException, got another exception";
    }
    return CIMException(CIM_ERR_SUCCESS);
}

const CIMNamespaceName ServerTest::ns("root/servertest");

CIMObjectPath item(const char* id, const char* className)
{
    return CIMObjectPath(
        String(), CIMNamespaceName(), className,
        Array<CIMKeyBinding>(1, CIMKeyBinding("Id", id, CIMKeyBinding::STRING)));
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
    options.builtInProviders = builtInProviders;
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
