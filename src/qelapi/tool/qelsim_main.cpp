// qelsim: inspect and change the simulated array. Changes go through the
// array's shared state file, so a running CIM server sees them on its next call.
#include "qelapi.h"
#include "qelsim_control.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <unistd.h>
#include <pwd.h>
#include <vector>

namespace
{

// Printed after a usage error; --help prints the whole text below.
const char* kSynopsis =
    "usage: qelsim [--array FILE] [--state FILE] COMMAND [ARGS]   (qelsim --help)\n";

const char* kHelp =
    "NAME\n"
    "  qelsim - inspect and change the simulated storage array\n"
    "\n"
    "SYNOPSIS\n"
    "  qelsim [--array FILE] [--state FILE] COMMAND [ARGS]\n"
    "  qelsim --help\n"
    "\n"
    "DESCRIPTION\n"
    "  The simulated array stands in for a real array's library behind the provider\n"
    "  modules. Its description (ports, transceivers, LESB counters, users) is read from\n"
    "  a JSON array file; its changes live in a shared state file. qelsim changes that\n"
    "  state file, so a running CIM server on the same array sees each change at its next\n"
    "  call, and every change is written to the array's audit log as a server's would be.\n"
    "\n"
    "OPTIONS\n"
    "  --array FILE   the array description (default $QELSIM_ARRAY, else the built-in\n"
    "                 demo array)\n"
    "  --state FILE   the shared state file (default $QELSIM_STATE, else\n"
    "                 $TMPDIR/qelsim-UID/NAME.state.json, NAME being the array file's\n"
    "                 name without .json); give the server's --array-state here\n"
    "  --help         this text\n"
    "\n"
    "COMMANDS\n"
    "  list                          FC and iSCSI ports: state, speeds, transceiver, LESB\n"
    "                                counters\n"
    "  set-state PORT STATE          PORT is a position (0:1:2) or a WWN; STATE e.g. offline,\n"
    "                                PORT_OK\n"
    "  bump-lesb PORT COUNTER [N]    add N (default 1) to linkFailures, lossOfSync,\n"
    "                                lossOfSignal, primitiveSeqErrors, invalidTxWords or\n"
    "                                crcErrors\n"
    "  fault list                    the faults in force\n"
    "  fault inject CALL CODE [TIMES]\n"
    "                                make CALL return CODE (TIMES calls, default always)\n"
    "  fault clear [CALL]            remove the fault of CALL, or all faults\n"
    "  reset                         drop all changes: start again from the array file\n"
    "  where                         print the array and state files in use\n"
    "  validate FILE                 check an array description (needs no state file)\n"
    "  generate [--ports N] [--lesb K] [--iscsi N] [--volumes N] [--seed S] [--out FILE]\n"
    "                                write a large array description (standard output by\n"
    "                                default; needs no state file)\n"
    "\n"
    "ENVIRONMENT\n"
    "  QELSIM_ARRAY   default of --array, read by the server too\n"
    "  QELSIM_STATE   default of --state, read by the server too; \"none\" keeps changes in\n"
    "                 memory, which qelsim refuses (they could not reach a server)\n"
    "  TMPDIR         folder of the default state file (default /tmp)\n"
    "\n"
    "EXIT STATUS\n"
    "  0  done\n"
    "  1  the array refused or failed the change, or a file could not be read or written\n"
    "  2  wrong command line\n"
    "\n"
    "SEE ALSO\n"
    "  qel-cimserver --help\n";

int usage(const std::string& problem)
{
    if (!problem.empty())
        std::fprintf(stderr, "qelsim: %s\n", problem.c_str());
    std::fputs(kSynopsis, stderr);
    return 2;
}

int failed(const std::string& what)
{
    std::fprintf(stderr, "qelsim: %s\n", what.c_str());
    return 1;
}

const char* codeText(int rc)
{
    switch (rc)
    {
        case API_OK:
            return "done";
        case API_ERR_PERM:
            return "refused";
        case API_ERR_NOENT:
            return "no such port";
        case API_ERR_IO:
            return "the array state could not be read or saved";
        case API_ERR_INVAL:
            return "invalid value";
        default:
            return "failed";
    }
}

std::string actor()
{
    struct passwd* pw = ::getpwuid(::getuid());
    return pw && pw->pw_name ? pw->pw_name : "uid" + std::to_string(::getuid());
}

bool parseNumber(const std::string& s, long long lo, long long hi, long long* out)
{
    if (s.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(s.c_str(), &end, 0);
    if (errno || *end || v < lo || v > hi)
        return false;
    *out = v;
    return true;
}

std::string fixed(const char* p, size_t n)
{
    return std::string(p, strnlen(p, n));
}

int list()
{
    api_FCPortList_t fc{};
    int rc = api_getFCPorts(API_ALL_PORTS, 3, 1, &fc);
    if (rc)
        return failed(std::string("cannot read the FC ports: ") + codeText(rc));
    api_portLESBList_t lesb{};
    api_getPortLESB(API_ALL_PORTS, &lesb);
    std::printf(
        "%-8s %-16s %-5s %-20s %-9s %-16s %s\n", "POSITION", "WWN", "LPID", "STATE", "CUR/MAX/CFG",
        "SFP SERIAL", "LESB linkFail/sync/signal/primSeq/invTx/crc");
    for (uint32_t i = 0; i < fc.count; ++i)
    {
        const api_FCPort_t& p = fc.ports[i];
        char rates[32];
        std::snprintf(
            rates, sizeof rates, "%d/%d/%s", p.currentRate, p.maxRate,
            p.configuredRate == 3 ? "auto" : std::to_string(p.configuredRate).c_str());
        std::string serial = (p.sfp.presentFlags & API_SFP_PRESENT)
                                 ? "'" + fixed(p.sfp.serialNumber, 32) + "'"
                                 : "-";
        std::string counters = "-";
        for (uint32_t k = 0; k < lesb.count; ++k)
        {
            const api_portLESB_t& l = lesb.lesb[k];
            if (std::strcmp(l.portText, p.wwnText) != 0)
                continue;
            counters = std::to_string(l.linkFailures) + "/" + std::to_string(l.lossOfSync) + "/" +
                       std::to_string(l.lossOfSignal) + "/" + std::to_string(l.primitiveSeqErrors) +
                       "/" + std::to_string(l.invalidTxWords) + "/" + std::to_string(l.crcErrors);
            break;  // the first record is the one published
        }
        std::printf(
            "%-8s %-16s %-5u %-20s %-11s %-16s %s\n", p.position, p.wwnText, p.portId,
            qelsim::portStateName(p.portStatus), rates, serial.c_str(), counters.c_str());
    }
    api_freeFCPorts(&fc);
    std::free(lesb.lesb);
    api_iSCSIPortList_t is{};
    if (api_getISCSIPorts(&is) == API_OK && is.count)
    {
        std::printf(
            "\n%-8s %-44s %-20s %-16s %s\n", "POSITION", "ISCSI NAME", "STATE", "SFP SERIAL",
            "ADDRESS");
        for (uint32_t i = 0; i < is.count; ++i)
        {
            const api_iSCSIPort_t& p = is.ports[i];
            std::string serial = (p.sfp.presentFlags & API_SFP_PRESENT)
                                     ? "'" + fixed(p.sfp.serialNumber, 32) + "'"
                                     : "-";
            std::printf(
                "%-8s %-44s %-20s %-16s %s\n", p.position, p.iscsiName,
                qelsim::portStateName(p.portStatus), serial.c_str(), p.ipAddr);
        }
    }
    std::free(is.ports);
    return 0;
}

int fault(const std::vector<std::string>& a)
{
    if (a.empty())
        return usage("fault needs list, inject or clear");
    if (a[0] == "list")
    {
        auto fs = qelsim::faults();
        if (fs.empty())
            std::puts("no faults");
        for (const auto& f : fs)
            std::printf(
                "%-28s code %d, %s\n", f.call.c_str(), f.code,
                f.times < 0 ? "always" : ("next " + std::to_string(f.times) + " calls").c_str());
        return 0;
    }
    if (a[0] == "inject")
    {
        long long code, times = -1;
        if (a.size() < 3 || a.size() > 4)
            return usage("fault inject CALL CODE [TIMES]");
        if (!parseNumber(a[2], INT32_MIN, INT32_MAX, &code))
            return usage("CODE must be an integer: " + a[2]);
        if (a.size() == 4 && !parseNumber(a[3], 1, INT64_MAX, &times))
            return usage("TIMES must be a positive integer: " + a[3]);
        auto r = qelsim::injectFault(a[1], static_cast<int>(code), times);
        if (!r.ok)
            return failed(r.error);
        return 0;
    }
    if (a[0] == "clear")
    {
        if (a.size() > 2)
            return usage("fault clear [CALL]");
        int n = qelsim::clearFaults(a.size() == 2 ? a[1] : "");
        std::printf("%d fault%s cleared\n", n, n == 1 ? "" : "s");
        return 0;
    }
    return usage("unknown fault command: " + a[0]);
}

int generate(const std::vector<std::string>& a)
{
    qelsim::GenerateOptions o;
    std::string out;
    for (size_t i = 0; i < a.size(); i += 2)
    {
        if (i + 1 >= a.size())
            return usage(a[i] + " needs a value");
        long long v;
        if (a[i] == "--out")
        {
            out = a[i + 1];
            continue;
        }
        if (!parseNumber(a[i + 1], 0, UINT32_MAX, &v))
            return usage("not a number: " + a[i + 1]);
        if (a[i] == "--ports")
            o.fcPorts = static_cast<unsigned>(v);
        else if (a[i] == "--lesb")
            o.lesbPerPort = static_cast<unsigned>(v);
        else if (a[i] == "--iscsi")
            o.iscsiPorts = static_cast<unsigned>(v);
        else if (a[i] == "--volumes")
            o.volumes = static_cast<unsigned>(v);
        else if (a[i] == "--seed")
            o.seed = static_cast<uint32_t>(v);
        else
            return usage("unknown option: " + a[i]);
    }
    std::string json;
    auto r = qelsim::generateArray(o, &json);
    if (!r.ok)
        return failed(r.error);
    if (out.empty())
    {
        std::fwrite(json.data(), 1, json.size(), stdout);
        return 0;
    }
    std::ofstream f(out, std::ios::binary);
    f << json;
    if (!f.flush())
        return failed(out + ": cannot write");
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    qelsim::AttachOptions opts;
    if (const char* a = std::getenv("QELSIM_ARRAY"))
        opts.arrayPath = a;
    if (const char* s = std::getenv("QELSIM_STATE"))
        opts.statePath = *s ? s : "none";  // as the library reads it
    size_t i = 0;
    for (; i < args.size() && args[i].compare(0, 2, "--") == 0; i += 2)
    {
        if (args[i] == "--help")
        {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (args[i] != "--array" && args[i] != "--state")
            return usage("unknown option: " + args[i]);
        if (i + 1 >= args.size())
            return usage(args[i] + " needs a value");
        (args[i] == "--array" ? opts.arrayPath : opts.statePath) = args[i + 1];
    }
    if (i >= args.size())
        return usage("no command given");
    const std::string cmd = args[i];
    const std::vector<std::string> rest(args.begin() + static_cast<long>(i) + 1, args.end());

    // Commands that need no attached array.
    if (cmd == "generate")
        return generate(rest);
    if (cmd == "validate")
    {
        if (rest.size() != 1)
            return usage("validate FILE");
        auto r = qelsim::loadArrayFile(rest[0]);
        if (!r.ok)
            return failed(r.error);
        std::printf("%s: valid\n", rest[0].c_str());
        return 0;
    }

    if (opts.statePath == "none")
        return failed(
            "QELSIM_STATE is \"none\": without a state file changes cannot reach a server");
    auto attached = qelsim::attach(opts);
    if (!attached.ok)
        return failed(attached.error);

    if (cmd == "list")
        return list();
    if (cmd == "where")
    {
        std::printf(
            "array: %s\nstate: %s\n",
            opts.arrayPath.empty() ? "(built-in demo array)" : opts.arrayPath.c_str(),
            qelsim::statePath().c_str());
        return 0;
    }
    if (cmd == "reset")
    {
        auto r = qelsim::resetToArray();
        return r.ok ? 0 : failed(r.error);
    }
    if (cmd == "set-state")
    {
        if (rest.size() != 2)
            return usage("set-state PORT STATE");
        api_port_status_t st;
        if (!qelsim::parsePortState(rest[1], &st))
            return usage("unknown port state: " + rest[1]);
        int rc = qelsim::setPortState(rest[0], st, actor());
        if (rc)
            return failed(rest[0] + ": " + codeText(rc));
        return 0;
    }
    if (cmd == "bump-lesb")
    {
        if (rest.size() < 2 || rest.size() > 3)
            return usage("bump-lesb PORT COUNTER [N]");
        long long n = 1;
        if (rest.size() == 3 && !parseNumber(rest[2], 0, INT64_MAX, &n))
            return usage("N must be a number: " + rest[2]);
        int rc = qelsim::bumpLesb(rest[0], rest[1], static_cast<uint64_t>(n), actor());
        if (rc == API_ERR_INVAL)
            return usage("unknown counter: " + rest[1]);
        if (rc)
            return failed(rest[0] + ": " + codeText(rc));
        return 0;
    }
    if (cmd == "fault")
        return fault(rest);
    return usage("unknown command: " + cmd);
}
