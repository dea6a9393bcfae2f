#include "sim_fixture.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <ftw.h>
#include <sstream>
#include <unistd.h>

namespace qelsimtest
{

ScratchDir::ScratchDir(const std::string& base)
{
    const char* tmp = std::getenv("TMPDIR");
    std::string root = !base.empty() ? base : (tmp && *tmp ? tmp : "/tmp");
    std::string tmpl = root + "/qelapi-test-XXXXXX";
    std::string buf = tmpl;
    if (!::mkdtemp(&buf[0]))
        throw std::runtime_error("cannot create a scratch folder from " + tmpl);
    _path = buf;
}

ScratchDir::~ScratchDir()
{
    ::nftw(
        _path.c_str(),
        [](const char* p, const struct stat*, int, struct FTW*) { return ::remove(p); }, 16,
        FTW_DEPTH | FTW_PHYS);
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void writeFile(const std::string& path, const std::string& text)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

api_evtparam_t event(const char* user, const char* method)
{
    api_evtparam_t ev{};
    std::strncpy(ev.user, user, sizeof ev.user - 1);
    std::strncpy(ev.addr, "192.0.2.10", sizeof ev.addr - 1);
    std::strncpy(ev.method, method, sizeof ev.method - 1);
    return ev;
}

void SimTest::SetUp()
{
    load(qelsim::demoArrayText());
    qelsim::resetCounters();
    qelsim::clearCallLog();
}

void SimTest::TearDown()
{
    const qelsim::Counters c = qelsim::counters();
    EXPECT_EQ(qelsim::outstandingFCLists(c), 0u) << "a test leaked an FC port list";
    qelsim::captureLog(false);
    qelsim::clearCapturedLog();
}

void SimTest::load(const std::string& json, const std::string& statePath)
{
    const qelsim::Result r = qelsim::loadArrayText(json, statePath);
    ASSERT_TRUE(r.ok) << r.error;
}

api_FCPort_t SimTest::port(uint64_t wwn)
{
    api_FCPortList_t list{};
    EXPECT_EQ(api_getFCPorts(wwn, 3, 1, &list), API_OK);
    api_FCPort_t copy{};
    if (list.count == 1)
        copy = list.ports[0];
    copy.connectedTo = nullptr;  // points into the list, which is gone after this
    api_freeFCPorts(&list);
    return copy;
}

uint16_t SimTest::lpid(uint64_t wwn)
{
    uint16_t id = 0;
    EXPECT_EQ(api_getFCPortLPID(wwn, &id), API_OK);
    return id;
}

}  // namespace qelsimtest
