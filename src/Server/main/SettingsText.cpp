// What qel-cimserver prints about its settings: the manual page (--help) and the settings
// in effect (--print-config), both generated from the option table.
#include "ServerCommandLine.h"

#include <sstream>

namespace qel
{
namespace server
{
namespace
{

const size_t kHelpColumn = 25;    // where the options' texts start in --help
const size_t kOriginColumn = 40;  // where "# origin" starts in --print-config

void optionsSection(std::ostream& out)
{
    for (const ServerOption& o : serverOptions())
    {
        std::string head = std::string("  --") + o.name;
        if (o.valueName)
            head += std::string(" ") + o.valueName;
        head += head.size() + 1 > kHelpColumn ? std::string(" ")
                                              : std::string(kHelpColumn - head.size(), ' ');
        std::istringstream lines(o.help);
        std::string line;
        bool firstLine = true;
        while (std::getline(lines, line))
        {
            out << (firstLine ? head : std::string(kHelpColumn, ' ')) << line << "\n";
            firstLine = false;
        }
    }
    out << "  -h, --help" << std::string(kHelpColumn - 12, ' ') << "this text\n";
}

// One value per line, aligned under the first.
std::string listed(const std::vector<std::string>& values)
{
    std::string text;
    for (const std::string& v : values)
        text += (text.empty() ? "" : "\n" + std::string(22, ' ')) + v;
    return text.empty() ? "(none)" : text;
}

std::string origin(const SettingSource& source)
{
    return source.kind == SettingSource::Kind::Environment ? "default from " + source.where
                                                           : source.where;
}

void settingLine(
    std::ostream& out, const std::string& key, const std::string& value, const std::string& from)
{
    std::string line = key + " =" + (value.empty() ? "" : " " + value);
    line += line.size() + 2 > kOriginColumn ? std::string(2, ' ')
                                            : std::string(kOriginColumn - line.size(), ' ');
    out << line << "# " << from << "\n";
}

}  // namespace

std::string usageText(const ServerCommandLine& defaults)
{
    std::ostringstream out;
    out << "NAME\n"
           "  qel-cimserver - CIM server for the storage array's provider modules\n"
           "\n"
           "SYNOPSIS\n"
           "  qel-cimserver [--config FILE] [OPTION]...\n"
           "  qel-cimserver --print-config [--config FILE] [OPTION]...\n"
           "  qel-cimserver --help\n"
           "\n"
           "DESCRIPTION\n"
           "  Compiles the CIM schema, loads the provider modules registered in it and serves\n"
           "  CIM operations as CIM-XML over HTTP and over a local Unix socket, to clients\n"
           "  such as wbemcli. HTTP clients log in with HTTP Basic against the password file\n"
           "  (see qel-passwd); local-socket clients are identified by their Unix user.\n"
           "  The server runs in the foreground. Started by systemd (Type=notify), it tells\n"
           "  systemd when it is ready, reloading and stopping.\n"
           "\n"
           "OPTIONS\n"
           "  Every option is also a key of the configuration file, and the command line\n"
           "  wins over the file.\n";
    optionsSection(out);
    out << "\n"
           "CONFIGURATION FILE\n"
           "  One setting per line, \"key = value\", the key being an option's name without\n"
           "  its dashes (port = 5988). A repeatable option takes one line per value; the\n"
           "  first value of it on the command line replaces the file's. A switch takes yes\n"
           "  or no (demo = yes). Values are taken as written, without quotes. '#' starts a\n"
           "  comment at the start of a line or of a value, or after a blank. An unknown key,\n"
           "  a bad value or an unreadable file stops the start with \"FILE:LINE: what is\n"
           "  wrong\".\n"
           "\n"
           "SIGNALS\n"
           "  SIGTERM, SIGINT  stop: no new connections, running requests finish, providers\n"
           "                   are terminated, connections close\n"
           "  SIGHUP           re-read the password file without dropping connections; if\n"
           "                   it cannot be read, the users loaded before stay in use\n"
           "  Other settings take effect at the next start.\n"
           "\n"
           "ENVIRONMENT\n"
           "  QEL_PASSWORD_FILE   default of --password-file\n"
           "  QEL_CIMXML_SOCKET   default of --socket\n"
           "  QELSIM_ARRAY        default of --array\n"
           "  QELSIM_STATE        default of --array-state\n"
           "  NOTIFY_SOCKET       set by systemd: where readiness is reported\n"
           "\n"
           "FILES\n"
        << "  configuration file  "
        << (defaults.configFile.empty() ? "none unless --config names one" : defaults.configFile)
        << "\n"
        << "  password file       " << defaults.server.passwordFile << "\n"
        << "  schema              " << listed(defaults.server.core.mofFiles) << "\n"
        << "  provider modules    " << listed(defaults.server.core.providerDirectories) << "\n"
        << "  demo array          " << defaults.arrayFile << "\n"
        << "\n"
           "EXIT STATUS\n"
           "  0  stopped cleanly after a signal (or --help, --print-config)\n"
           "  1  could not start: schema, provider modules, password file or listeners\n"
           "  2  wrong command line or configuration file\n"
           "\n"
           "SEE ALSO\n"
           "  qel-passwd --help, qelsim --help, wbemcli(1)\n";
    return out.str();
}

std::string settingsReport(const ServerCommandLine& settings)
{
    std::ostringstream out;
    out << "# qel-cimserver settings in effect; after each, where it came from\n"
        << "# configuration file: ";
    if (settings.configFile.empty())
        out << "none\n";
    else
        out << settings.configFile << (settings.configFileFound ? "" : " (not present)") << "\n";
    for (const ServerOption& o : serverOptions())
    {
        if (o.commandLineOnly)
            continue;
        const auto found = settings.sources.find(o.name);
        const std::vector<SettingSource> none;
        const std::vector<SettingSource>& from =
            found == settings.sources.end() ? none : found->second;
        if (o.show == nullptr)
        {
            // An option without a printer: the values as they were given, if they were.
            for (const SettingSource& s : from)
                settingLine(out, o.name, s.text, origin(s));
            if (from.empty())
                out << "# " << o.name << ": built-in default\n";
            continue;
        }
        const std::vector<std::string> values = o.show(settings);
        if (values.empty())
            out << "# " << o.name << ": none\n";
        for (size_t i = 0; i < values.size(); ++i)
        {
            // Each value of a repeatable option has its own source; a switch turned on on
            // the command line has one source for its single value.
            const SettingSource* source =
                from.size() == values.size() ? &from[i] : (from.empty() ? nullptr : &from.back());
            settingLine(out, o.name, values[i], source ? origin(*source) : "default");
        }
    }
    return out.str();
}

}  // namespace server
}  // namespace qel
