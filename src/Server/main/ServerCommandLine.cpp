#include "ServerCommandLine.h"

#include <cerrno>
#include <cstdlib>

namespace qel
{
namespace server
{
namespace
{

unsigned long
number(const std::string& option, const std::string& text, unsigned long lo, unsigned long hi)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long v = std::strtoul(text.c_str(), &end, 10);
    if (text.empty() || text[0] == '-' || *end != '\0' || errno != 0 || v < lo || v > hi)
        throw CommandLineError(
            option + ": expected a number from " + std::to_string(lo) + " to " +
            std::to_string(hi) + ", got \"" + text + "\"");
    return v;
}

Pegasus::LogLevel logLevel(const std::string& text)
{
    if (text == "error")
        return Pegasus::LogLevel::Error;
    if (text == "warning")
        return Pegasus::LogLevel::Warning;
    if (text == "info")
        return Pegasus::LogLevel::Info;
    if (text == "trace")
        return Pegasus::LogLevel::Trace;
    throw CommandLineError(
        "--log-level: expected error, warning, info or trace, got \"" + text + "\"");
}

}  // namespace

std::string usageText()
{
    return "usage: qel-cimserver [options]\n"
           "  --port N             TCP port for CIM-XML over HTTP (default 5988; 0 = any free port;\n"
           "                       'none' = no TCP listener)\n"
           "  --bind ADDRESS       address to listen on (default 127.0.0.1)\n"
           "  --socket PATH        local socket for connectLocal clients (default $QEL_CIMXML_SOCKET or\n"
           "                       /var/tmp/cimxml.socket; 'none' = no local socket)\n"
           "  --schema FILE        MOF file to compile at start (repeatable; default: the built-in schema)\n"
           "  --provider-dir DIR   where provider libraries are looked for (repeatable)\n"
           "  --password-file FILE users and password hashes (see qel-passwd)\n"
           "  --array FILE         simulated array description (sets QELSIM_ARRAY)\n"
           "  --demo               create a password for every user of the simulated array and print them\n"
           "  --workers N          request threads (default 8)\n"
           "  --max-body BYTES     largest request body accepted (default 16 MiB)\n"
           "  --read-timeout SECS  time allowed for a request to arrive (default 30)\n"
           "  --local-calls MODE   in-process (default) or socket: how the server's own providers\n"
           "                       reach it through CIMClient::connectLocal\n"
           "  --log-level LEVEL    error, warning, info (default) or trace\n"
           "  -h, --help           this text\n";
}

ServerCommandLine
parseCommandLine(const std::vector<std::string>& args, const ServerCommandLine& defaults)
{
    ServerCommandLine c = defaults;
    bool schemaGiven = false, dirGiven = false;
    for (size_t i = 0; i < args.size(); ++i)
    {
        const std::string& a = args[i];
        auto value = [&]() -> const std::string&
        {
            if (i + 1 >= args.size())
                throw CommandLineError(a + " needs a value");
            return args[++i];
        };
        if (a == "-h" || a == "--help")
        {
            c.help = true;
        }
        else if (a == "--port")
        {
            const std::string& v = value();
            c.server.http.port = v == "none" ? -1 : static_cast<int>(number(a, v, 0, 65535));
        }
        else if (a == "--bind")
        {
            c.server.http.bindAddress = value();
        }
        else if (a == "--socket")
        {
            const std::string& v = value();
            c.server.http.socketPath = v == "none" ? std::string() : v;
        }
        else if (a == "--schema")
        {
            if (!schemaGiven)
                c.server.core.mofFiles.clear();
            schemaGiven = true;
            c.server.core.mofFiles.push_back(value());
        }
        else if (a == "--provider-dir")
        {
            if (!dirGiven)
                c.server.core.providerDirectories.clear();
            dirGiven = true;
            c.server.core.providerDirectories.push_back(value());
        }
        else if (a == "--password-file")
        {
            c.server.passwordFile = value();
        }
        else if (a == "--array")
        {
            c.arrayFile = value();
        }
        else if (a == "--demo")
        {
            c.demo = true;
        }
        else if (a == "--workers")
        {
            c.server.core.workerThreads = static_cast<unsigned>(number(a, value(), 1, 1024));
        }
        else if (a == "--max-body")
        {
            c.server.http.maxBodyBytes = number(a, value(), 1024, 1ul << 31);
        }
        else if (a == "--read-timeout")
        {
            c.server.http.readTimeout = std::chrono::seconds(number(a, value(), 1, 86400));
        }
        else if (a == "--local-calls")
        {
            const std::string& v = value();
            if (v != "in-process" && v != "socket")
                throw CommandLineError(
                    "--local-calls: expected in-process or socket, got \"" + v + "\"");
            c.server.localCallsOverSocket = v == "socket";
        }
        else if (a == "--log-level")
        {
            c.logLevel = logLevel(value());
        }
        else
        {
            throw CommandLineError("unknown option \"" + a + "\"");
        }
    }
    if (c.server.http.port < 0 && c.server.http.socketPath.empty())
        throw CommandLineError(
            "with --port none and --socket none no client could reach the server");
    if (c.server.localCallsOverSocket && c.server.http.socketPath.empty())
        throw CommandLineError("--local-calls socket needs the local socket");
    return c;
}

}  // namespace server
}  // namespace qel
