#include "ServerCommandLine.h"

#include <boost/asio/ip/address.hpp>

#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace qel
{
namespace server
{
namespace
{

unsigned long number(const std::string& text, unsigned long lo, unsigned long hi)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long v = std::strtoul(text.c_str(), &end, 10);
    if (text.empty() || text[0] == '-' || *end != '\0' || errno != 0 || v < lo || v > hi)
        throw CommandLineError(
            "expected a number from " + std::to_string(lo) + " to " + std::to_string(hi) +
            ", got \"" + text + "\"");
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
    throw CommandLineError("expected error, warning, info or trace, got \"" + text + "\"");
}

using S = ServerCommandLine;

const std::vector<ServerOption> kOptions = {
    {"port", "N",
     "TCP port for CIM-XML over plain HTTP (default 5988; 0 = any free port;\n"
     "'none' = no HTTP listener)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.port = v == "none" ? -1 : static_cast<int>(number(v, 0, 65535)); }},
    {"bind", "ADDRESS",
     "address for plain HTTP (default 127.0.0.1; another one needs\n--http-on-network)", false,
     [](S& s, const std::string& v, bool) { s.server.http.bindAddress = v; }},
    {"http-on-network", nullptr,
     "let plain HTTP listen beyond loopback (passwords cross the network in\nclear)", false,
     [](S& s, const std::string&, bool) { s.httpOnNetwork = true; }},
    {"https-port", "N",
     "TCP port for CIM-XML over HTTPS (default 5989 when a certificate is\n"
     "given; 0 = any free port; 'none' = no HTTPS listener)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.tlsPort = v == "none" ? -1 : static_cast<int>(number(v, 0, 65535)); }},
    {"https-bind", "ADDRESS", "address for HTTPS (default 0.0.0.0: every interface)", false,
     [](S& s, const std::string& v, bool) { s.server.http.tlsBindAddress = v; }},
    {"tls-cert", "FILE", "the server's certificate chain for HTTPS (PEM)", false,
     [](S& s, const std::string& v, bool) { s.server.http.tls.certificateFile = v; }},
    {"tls-key", "FILE", "its private key (PEM, not encrypted)", false,
     [](S& s, const std::string& v, bool) { s.server.http.tls.keyFile = v; }},
    {"tls-trust", "PATH",
     "authorities whose client certificates HTTPS accepts (a PEM file or a\n"
     "folder of them); such a client logs in as the user --cert-map names",
     false, [](S& s, const std::string& v, bool) { s.server.http.tls.trustStore = v; }},
    {"cert-map", "FILE",
     "users of client certificates (see qel-certmap; default\n"
     "/etc/qel-cimserver/certmap)",
     false, [](S& s, const std::string& v, bool) { s.server.certificateMap = v; }},
    {"socket", "PATH",
     "local socket for connectLocal clients (default $QEL_CIMXML_SOCKET or\n"
     "/var/tmp/cimxml.socket; 'none' = no local socket)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.socketPath = v == "none" ? std::string() : v; }},
    {"schema", "FILE", "MOF file to compile at start (repeatable; default: the built-in schema)",
     true,
     [](S& s, const std::string& v, bool first)
     {
         if (first)
             s.server.core.mofFiles.clear();
         s.server.core.mofFiles.push_back(v);
     }},
    {"provider-dir", "DIR", "where provider libraries are looked for (repeatable)", true,
     [](S& s, const std::string& v, bool first)
     {
         if (first)
             s.server.core.providerDirectories.clear();
         s.server.core.providerDirectories.push_back(v);
     }},
    {"password-file", "FILE", "users and password hashes (see qel-passwd)", false,
     [](S& s, const std::string& v, bool) { s.server.passwordFile = v; }},
    {"array", "FILE", "simulated array description (sets QELSIM_ARRAY)", false,
     [](S& s, const std::string& v, bool) { s.arrayFile = v; }},
    {"demo", nullptr, "create a password for every user of the simulated array and print them",
     false, [](S& s, const std::string&, bool) { s.demo = true; }},
    {"workers", "N", "request threads (default 8)", false,
     [](S& s, const std::string& v, bool)
     { s.server.core.workerThreads = static_cast<unsigned>(number(v, 1, 1024)); }},
    {"max-body", "BYTES", "largest request body accepted (default 16 MiB)", false,
     [](S& s, const std::string& v, bool)
     { s.server.http.maxBodyBytes = number(v, 1024, 1ul << 31); }},
    {"header-timeout", "SECS", "time allowed for the TLS handshake and a request head (default 10)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.headerTimeout = std::chrono::seconds(number(v, 1, 3600)); }},
    {"read-timeout", "SECS",
     "time a kept-alive connection may stay silent, and allowed for a\n"
     "request body or an answer (default 30)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.readTimeout = std::chrono::seconds(number(v, 1, 86400)); }},
    {"max-connections", "N", "open connections at most (default 1024)", false,
     [](S& s, const std::string& v, bool)
     { s.server.http.maxConnections = number(v, 1, 1000000); }},
    {"max-pending-per-address", "N",
     "connections one client address may hold before each has sent a\n"
     "whole request (default 32); past it the oldest is closed",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.maxUnfinishedPerAddress = number(v, 1, 1000000); }},
    {"local-calls", "MODE",
     "in-process (default) or socket: how the server's own providers\n"
     "reach it through CIMClient::connectLocal",
     false,
     [](S& s, const std::string& v, bool)
     {
         if (v != "in-process" && v != "socket")
             throw CommandLineError("expected in-process or socket, got \"" + v + "\"");
         s.server.localCallsOverSocket = v == "socket";
     }},
    {"log-level", "LEVEL", "error, warning, info (default) or trace", false,
     [](S& s, const std::string& v, bool) { s.logLevel = logLevel(v); }},
};

}  // namespace

const std::vector<ServerOption>& serverOptions()
{
    return kOptions;
}

const ServerOption* findServerOption(const std::string& name)
{
    for (const ServerOption& o : kOptions)
        if (name == o.name)
            return &o;
    return nullptr;
}

void applyServerOption(
    ServerCommandLine& settings,
    const ServerOption& option,
    const std::string& value,
    const std::string& where)
{
    const bool first = settings.given.insert(option.name).second;
    try
    {
        option.apply(settings, value, first);
    }
    catch (const CommandLineError& e)
    {
        throw CommandLineError(where + ": " + e.what());
    }
}

void checkServerSettings(ServerCommandLine& c)
{
    auto& http = c.server.http;
    if (http.port < 0 && http.tlsPort < 0 && http.socketPath.empty())
        throw CommandLineError(
            "with --port none, --https-port none and --socket none no client could reach the "
            "server");
    if (c.server.localCallsOverSocket && http.socketPath.empty())
        throw CommandLineError("--local-calls socket needs the local socket");
    if (http.tls.certificateFile.empty() != http.tls.keyFile.empty())
        throw CommandLineError("--tls-cert and --tls-key go together");
    const bool certificate = !http.tls.certificateFile.empty() || c.demo;
    if (!certificate && http.tlsPort >= 0)
    {
        if (c.given.count("https-port") || c.given.count("tls-trust"))
            throw CommandLineError("HTTPS needs --tls-cert and --tls-key");
        http.tlsPort = -1;  // no certificate, no HTTPS: plain HTTP and the socket only
    }
    if (http.port >= 0 && !c.httpOnNetwork && !isLoopbackAddress(http.bindAddress))
    {
        boost::system::error_code ec;
        boost::asio::ip::make_address(http.bindAddress, ec);
        if (ec)
            throw CommandLineError("--bind: not an IP address: \"" + http.bindAddress + "\"");
        throw CommandLineError(
            "plain HTTP on " + http.bindAddress +
            " would carry passwords in clear across the network: serve HTTPS "
            "(--tls-cert, --tls-key) or add --http-on-network");
    }
}

bool isLoopbackAddress(const std::string& address)
{
    boost::system::error_code ec;
    const auto a = boost::asio::ip::make_address(address, ec);
    return !ec && a.is_loopback();
}

std::string usageText()
{
    const size_t column = 23;  // where the help texts start
    std::ostringstream out;
    out << "usage: qel-cimserver [options]\n";
    for (const ServerOption& o : kOptions)
    {
        std::string head = std::string("  --") + o.name;
        if (o.valueName)
            head += std::string(" ") + o.valueName;
        head +=
            head.size() + 1 > column ? std::string(" ") : std::string(column - head.size(), ' ');
        std::istringstream lines(o.help);
        std::string line;
        bool firstLine = true;
        while (std::getline(lines, line))
        {
            out << (firstLine ? head : std::string(column, ' ')) << line << "\n";
            firstLine = false;
        }
    }
    out << std::string("  -h, --help") + std::string(column - 12, ' ') << "this text\n";
    return out.str();
}

ServerCommandLine
parseCommandLine(const std::vector<std::string>& args, const ServerCommandLine& defaults)
{
    ServerCommandLine c = defaults;
    for (size_t i = 0; i < args.size(); ++i)
    {
        const std::string& a = args[i];
        if (a == "-h" || a == "--help")
        {
            c.help = true;
            continue;
        }
        const ServerOption* option =
            a.compare(0, 2, "--") == 0 ? findServerOption(a.substr(2)) : nullptr;
        if (option == nullptr)
            throw CommandLineError("unknown option \"" + a + "\"");
        std::string value;
        if (option->valueName)
        {
            if (i + 1 >= args.size())
                throw CommandLineError(a + " needs a value");
            value = args[++i];
        }
        applyServerOption(c, *option, value, a);
    }
    checkServerSettings(c);
    return c;
}

}  // namespace server
}  // namespace qel
