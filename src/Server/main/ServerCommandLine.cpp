#include "ServerCommandLine.h"

#include "ConfigFile.h"

#include <boost/asio/ip/address.hpp>

#include <cerrno>
#include <cstdlib>

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

// A switch's value in the configuration file.
bool parseYesNo(const std::string& text, bool& on)
{
    if (text == "yes" || text == "true")
        on = true;
    else if (text == "no" || text == "false")
        on = false;
    else
        return false;
    return true;
}

bool yesNo(const std::string& text)
{
    bool on = false;
    if (!parseYesNo(text, on))
        throw CommandLineError("expected yes or no, got \"" + text + "\"");
    return on;
}

using S = ServerCommandLine;
using Shown = std::vector<std::string>;

Shown one(const std::string& value)
{
    return {value};
}

Shown switchValue(bool on)
{
    return {on ? "yes" : "no"};
}

// Repeatable options that hold a list of paths.
void addTo(std::vector<std::string>& list, const std::string& value, bool first)
{
    if (first)
        list.clear();
    list.push_back(value);
}

const std::vector<ServerOption> kOptions = {
    {"config", "FILE",
     "configuration file to read (default: the installed one, if there;\n"
     "'none' = read no file); the command line wins over it",
     false, [](S& s, const std::string& v, bool) { s.configFile = v == "none" ? "" : v; }, nullptr,
     true},
    {"print-config", nullptr,
     "print the settings in effect, each with where it came from, and exit", false,
     [](S& s, const std::string&, bool) { s.printConfig = true; }, nullptr, true},
    {"port", "N",
     "TCP port for CIM-XML over plain HTTP (default 5988; 0 = any free port;\n"
     "'none' = no HTTP listener)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.port = v == "none" ? -1 : static_cast<int>(number(v, 0, 65535)); },
     [](const S& s)
     { return one(s.server.http.port < 0 ? "none" : std::to_string(s.server.http.port)); }},
    {"bind", "ADDRESS",
     "address for plain HTTP (default 127.0.0.1; another one needs\nhttp-on-network)", false,
     [](S& s, const std::string& v, bool) { s.server.http.bindAddress = v; },
     [](const S& s) { return one(s.server.http.bindAddress); }},
    {"http-on-network", nullptr,
     "let plain HTTP listen beyond loopback (passwords cross the network in\nclear)", false,
     [](S& s, const std::string&, bool) { s.httpOnNetwork = true; },
     [](const S& s) { return switchValue(s.httpOnNetwork); }},
    {"https-port", "N",
     "TCP port for CIM-XML over HTTPS (default 5989 when a certificate is\n"
     "given; 0 = any free port; 'none' = no HTTPS listener)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.tlsPort = v == "none" ? -1 : static_cast<int>(number(v, 0, 65535)); },
     [](const S& s)
     { return one(s.server.http.tlsPort < 0 ? "none" : std::to_string(s.server.http.tlsPort)); }},
    {"https-bind", "ADDRESS", "address for HTTPS (default 0.0.0.0: every interface)", false,
     [](S& s, const std::string& v, bool) { s.server.http.tlsBindAddress = v; },
     [](const S& s) { return one(s.server.http.tlsBindAddress); }},
    {"tls-cert", "FILE", "the server's certificate chain for HTTPS (PEM)", false,
     [](S& s, const std::string& v, bool) { s.server.http.tls.certificateFile = v; },
     [](const S& s) { return one(s.server.http.tls.certificateFile); }},
    {"tls-key", "FILE", "its private key (PEM, not encrypted)", false,
     [](S& s, const std::string& v, bool) { s.server.http.tls.keyFile = v; },
     [](const S& s) { return one(s.server.http.tls.keyFile); }},
    {"tls-trust", "PATH",
     "authorities whose client certificates HTTPS accepts (a PEM file or a\n"
     "folder of them); such a client logs in as the user cert-map names",
     false, [](S& s, const std::string& v, bool) { s.server.http.tls.trustStore = v; },
     [](const S& s) { return one(s.server.http.tls.trustStore); }},
    {"cert-map", "FILE",
     "users of client certificates (see qel-certmap; default\n"
     "/etc/qel-cimserver/certmap)",
     false, [](S& s, const std::string& v, bool) { s.server.certificateMap = v; },
     [](const S& s) { return one(s.server.certificateMap); }},
    {"socket", "PATH",
     "local socket for connectLocal clients (default $QEL_CIMXML_SOCKET or\n"
     "/var/tmp/cimxml.socket; 'none' = no local socket)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.socketPath = v == "none" ? std::string() : v; },
     [](const S& s)
     { return one(s.server.http.socketPath.empty() ? "none" : s.server.http.socketPath); }},
    {"schema", "FILE", "MOF file to compile at start (repeatable; default: the built-in schema)",
     true, [](S& s, const std::string& v, bool first) { addTo(s.server.core.mofFiles, v, first); },
     [](const S& s) { return s.server.core.mofFiles; }},
    {"provider-dir", "DIR",
     "where provider libraries are looked for (repeatable); every registered\n"
     "module must be in one of them",
     true,
     [](S& s, const std::string& v, bool first)
     { addTo(s.server.core.providerDirectories, v, first); },
     [](const S& s) { return s.server.core.providerDirectories; }},
    {"password-file", "FILE", "users and password hashes (see qel-passwd)", false,
     [](S& s, const std::string& v, bool) { s.server.passwordFile = v; },
     [](const S& s) { return one(s.server.passwordFile); }},
    {"array", "FILE", "simulated array description (sets QELSIM_ARRAY)", false,
     [](S& s, const std::string& v, bool) { s.arrayFile = v; },
     [](const S& s) { return one(s.arrayFile); }},
    {"array-state", "FILE",
     "the simulated array's live state (sets QELSIM_STATE; default: the\n"
     "simulator's own, under $TMPDIR; 'none' = in memory only)",
     false, [](S& s, const std::string& v, bool) { s.arrayState = v; },
     [](const S& s) { return one(s.arrayState); }},
    {"demo", nullptr, "create a password for every user of the simulated array and print them",
     false, [](S& s, const std::string&, bool) { s.demo = true; },
     [](const S& s) { return switchValue(s.demo); }},
    {"workers", "N", "request threads (default 8)", false,
     [](S& s, const std::string& v, bool)
     { s.server.core.workerThreads = static_cast<unsigned>(number(v, 1, 1024)); },
     [](const S& s) { return one(std::to_string(s.server.core.workerThreads)); }},
    {"max-body", "BYTES", "largest request body accepted (default 16 MiB)", false,
     [](S& s, const std::string& v, bool)
     { s.server.http.maxBodyBytes = number(v, 1024, 1ul << 31); },
     [](const S& s) { return one(std::to_string(s.server.http.maxBodyBytes)); }},
    {"header-timeout", "SECS", "time allowed for the TLS handshake and a request head (default 10)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.headerTimeout = std::chrono::seconds(number(v, 1, 3600)); },
     [](const S& s)
     {
         return one(std::to_string(
             std::chrono::duration_cast<std::chrono::seconds>(s.server.http.headerTimeout)
                 .count()));
     }},
    {"read-timeout", "SECS",
     "time a kept-alive connection may stay silent, and allowed for a\n"
     "request body or an answer (default 30)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.readTimeout = std::chrono::seconds(number(v, 1, 86400)); },
     [](const S& s)
     {
         return one(std::to_string(
             std::chrono::duration_cast<std::chrono::seconds>(s.server.http.readTimeout).count()));
     }},
    {"response-buffer", "BYTES",
     "encoded answer held per connection while the client reads it\n"
     "(default 4 MiB)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.responseBufferBytes = number(v, 64 * 1024, 1ul << 30); },
     [](const S& s) { return one(std::to_string(s.server.http.responseBufferBytes)); }},
    {"write-timeout", "SECS",
     "time a client may take nothing of an answer before it is closed\n(default 60)", false,
     [](S& s, const std::string& v, bool)
     { s.server.http.writeTimeout = std::chrono::seconds(number(v, 1, 86400)); },
     [](const S& s)
     {
         return one(std::to_string(
             std::chrono::duration_cast<std::chrono::seconds>(s.server.http.writeTimeout).count()));
     }},
    {"pull-timeout", "SECS",
     "how long an open enumeration waits for its next pull when the client\n"
     "names no OperationTimeout (default 30)",
     false,
     [](S& s, const std::string& v, bool) {
         s.server.core.enumerations.defaultTimeout =
             static_cast<Pegasus::Uint32>(number(v, 1, 86400));
     },
     [](const S& s) { return one(std::to_string(s.server.core.enumerations.defaultTimeout)); }},
    {"pull-max-timeout", "SECS", "the longest OperationTimeout a client may ask for (default 300)",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.core.enumerations.maxTimeout = static_cast<Pegasus::Uint32>(number(v, 1, 86400)); },
     [](const S& s) { return one(std::to_string(s.server.core.enumerations.maxTimeout)); }},
    {"pull-max-object-count", "N",
     "the most objects one open or pull may ask for (MaxObjectCount;\ndefault 10000)", false,
     [](S& s, const std::string& v, bool)
     {
         s.server.core.enumerations.maxObjectCount =
             static_cast<Pegasus::Uint32>(number(v, 1, 1000000));
     },
     [](const S& s) { return one(std::to_string(s.server.core.enumerations.maxObjectCount)); }},
    {"pull-max-contexts", "N", "enumerations open at once, all users together (default 64)", false,
     [](S& s, const std::string& v, bool)
     { s.server.core.enumerations.maxContexts = static_cast<Pegasus::Uint32>(number(v, 1, 4096)); },
     [](const S& s) { return one(std::to_string(s.server.core.enumerations.maxContexts)); }},
    {"pull-max-contexts-per-user", "N", "enumerations one user may have open at once (default 16)",
     false,
     [](S& s, const std::string& v, bool)
     {
         s.server.core.enumerations.maxContextsPerUser =
             static_cast<Pegasus::Uint32>(number(v, 1, 4096));
     },
     [](const S& s) { return one(std::to_string(s.server.core.enumerations.maxContextsPerUser)); }},
    {"max-connections", "N", "open connections at most (default 1024)", false,
     [](S& s, const std::string& v, bool) { s.server.http.maxConnections = number(v, 1, 1000000); },
     [](const S& s) { return one(std::to_string(s.server.http.maxConnections)); }},
    {"max-pending-per-address", "N",
     "connections one client address may hold before each has sent a\n"
     "whole request (default 32); past it the oldest is closed",
     false,
     [](S& s, const std::string& v, bool)
     { s.server.http.maxUnfinishedPerAddress = number(v, 1, 1000000); },
     [](const S& s) { return one(std::to_string(s.server.http.maxUnfinishedPerAddress)); }},
    {"local-calls", "MODE",
     "in-process (default) or socket: how the server's own providers\n"
     "reach it through CIMClient::connectLocal",
     false,
     [](S& s, const std::string& v, bool)
     {
         if (v != "in-process" && v != "socket")
             throw CommandLineError("expected in-process or socket, got \"" + v + "\"");
         s.server.localCallsOverSocket = v == "socket";
     },
     [](const S& s) { return one(s.server.localCallsOverSocket ? "socket" : "in-process"); }},
    {"log-level", "LEVEL", "error, warning, info (default) or trace", false,
     [](S& s, const std::string& v, bool) { s.logLevel = logLevel(v); },
     [](const S& s) { return one(Pegasus::ServerLog::levelName(s.logLevel)); }},
    {"log-target", "TARGET",
     "auto (default), stderr, journal or syslog; auto is stderr when\n"
     "started from a terminal, else the journal if it runs, else syslog",
     false,
     [](S& s, const std::string& v, bool)
     {
         if (!parseLogTarget(v, s.logTarget))
             throw CommandLineError("expected auto, stderr, journal or syslog, got \"" + v + "\"");
     },
     [](const S& s) { return one(logTargetName(s.logTarget)); }},
    {"access-log", "yes|no",
     "one info line per request: time, user, client, operation, class or\n"
     "method, status and duration (default yes)",
     false, [](S& s, const std::string& v, bool) { s.accessLog = yesNo(v); },
     [](const S& s) { return switchValue(s.accessLog); }},
};

struct Argument
{
    const ServerOption* option;
    std::string value;
};

bool isConfigOption(const ServerOption& option)
{
    return std::string(option.name) == "config";
}

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
    ServerCommandLine& settings, const ServerOption& option, const std::string& value,
    const SettingSource& source)
{
    const std::string place = source.kind == SettingSource::Kind::CommandLine
                                  ? std::string("--") + option.name
                                  : source.where + ": " + option.name;
    // A switch has no value on the command line and yes or no in the file.
    const bool onCommandLine = source.kind == SettingSource::Kind::CommandLine;
    bool on = true;
    if (option.valueName == nullptr && !(onCommandLine && value.empty()) && !parseYesNo(value, on))
        throw CommandLineError(place + ": expected yes or no, got \"" + value + "\"");
    std::vector<SettingSource>& from = settings.sources[option.name];
    const bool first = from.empty() || from.back().kind != source.kind;
    try
    {
        if (option.valueName != nullptr)
            option.apply(settings, value, first);
        else if (on)
            option.apply(settings, std::string(), first);
    }
    catch (const CommandLineError& e)
    {
        throw CommandLineError(place + ": " + e.what());
    }
    if (first || !option.repeatable)
        from.clear();
    from.push_back(source);
    settings.given.insert(option.name);
}

void checkServerSettings(ServerCommandLine& c)
{
    auto& http = c.server.http;
    if (c.server.localCallsOverSocket && http.socketPath.empty())
        throw CommandLineError("local-calls socket needs the local socket (socket is none)");
    const Pegasus::EnumerationLimits& pull = c.server.core.enumerations;
    if (pull.defaultTimeout > pull.maxTimeout)
        throw CommandLineError(
            "pull-timeout (" + std::to_string(pull.defaultTimeout) + ") must not pass " +
            "pull-max-timeout (" + std::to_string(pull.maxTimeout) + ")");
    if (pull.maxContextsPerUser > pull.maxContexts)
        throw CommandLineError(
            "pull-max-contexts-per-user (" + std::to_string(pull.maxContextsPerUser) +
            ") must not pass pull-max-contexts (" + std::to_string(pull.maxContexts) + ")");
    if (http.tls.certificateFile.empty() != http.tls.keyFile.empty())
        throw CommandLineError("--tls-cert and --tls-key go together");
    const bool certificate = !http.tls.certificateFile.empty() || c.demo;
    if (!certificate && http.tlsPort >= 0)
    {
        if (c.given.count("https-port") || c.given.count("tls-trust"))
            throw CommandLineError("HTTPS needs --tls-cert and --tls-key");
        http.tlsPort = -1;  // no certificate, no HTTPS: plain HTTP and the socket only
    }
    if (http.port < 0 && http.tlsPort < 0 && http.socketPath.empty())
        throw CommandLineError(
            certificate
                ? "with port none, https-port none and socket none no client could reach the server"
                : "with port none and socket none no client could reach the server");
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

ServerCommandLine
loadServerSettings(const std::vector<std::string>& args, const ServerCommandLine& defaults)
{
    ServerCommandLine s = defaults;
    std::vector<Argument> arguments;
    for (size_t i = 0; i < args.size(); ++i)
    {
        const std::string& a = args[i];
        if (a == "-h" || a == "--help")
        {
            s.help = true;
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
        arguments.push_back({option, value});
    }
    if (s.help)
        return s;

    auto apply = [&s](const Argument& a)
    {
        SettingSource source;
        source.kind = SettingSource::Kind::CommandLine;
        source.where = "command line";
        source.text = a.value;
        applyServerOption(s, *a.option, a.value, source);
    };
    // Which file to read is known before the file; every other option is applied after it,
    // so that the command line wins.
    for (const Argument& a : arguments)
        if (isConfigOption(*a.option))
            apply(a);
    if (!s.configFile.empty())
        readConfigFile(s.configFile, s.given.count("config") > 0, s);
    for (const Argument& a : arguments)
        if (!isConfigOption(*a.option))
            apply(a);
    checkServerSettings(s);
    return s;
}

}  // namespace server
}  // namespace qel
