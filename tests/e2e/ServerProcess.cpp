#include "ServerProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace e2e {
namespace {

std::string readFile(const std::string& path) {
  std::ifstream in(path);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

}  // namespace

CommandResult run(const std::vector<std::string>& argv, const std::string& input) {
  int out[2], in[2];
  if (pipe(out) != 0 || pipe(in) != 0) throw std::runtime_error("pipe failed");
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(in[0], 0);
    dup2(out[1], 1);
    dup2(out[1], 2);
    close(in[1]);
    close(out[0]);
    std::vector<char*> args;
    for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    execv(args[0], args.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  if (!input.empty() && write(in[1], input.data(), input.size()) < 0) {}
  close(in[1]);
  CommandResult r;
  char buf[4096];
  ssize_t n;
  while ((n = read(out[0], buf, sizeof buf)) > 0) r.output.append(buf, static_cast<size_t>(n));
  close(out[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return r;
}

ServerProcess::ServerProcess(const std::map<std::string, std::string>& users) {
  char tmpl[] = "/tmp/qel-e2e-XXXXXX";
  if (!mkdtemp(tmpl)) throw std::runtime_error("mkdtemp failed");
  dir_ = tmpl;
  const std::string passwd = dir_ + "/passwd";
  for (const auto& u : users) {
    const CommandResult r = run({QEL_E2E_PASSWD, "-f", passwd, "add", u.first, "--generate"});
    if (r.exitCode != 0) throw std::runtime_error("qel-passwd failed: " + r.output);
    passwords_[u.first] = r.output.substr(0, r.output.find('\n'));
  }
  const std::string logPath = dir_ + "/server.log";
  pid_ = fork();
  if (pid_ == 0) {
    const int fd = open(logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(fd, 1);
    dup2(fd, 2);
    setenv("QELSIM_ARRAY", QEL_E2E_ARRAY, 1);
    setenv("QELSIM_STATE", (dir_ + "/state.json").c_str(), 1);
    const std::string socket = dir_ + "/cim.socket";
    execl(QEL_E2E_SERVER, QEL_E2E_SERVER, "--port", "0", "--socket", socket.c_str(), "--password-file",
          passwd.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  // The server prints its port once it listens; sanitizer builds take a while to load.
  const std::string marker = "listening on http://127.0.0.1:";
  for (int i = 0; i < 1200 && port_ == 0; ++i) {
    const std::string text = readFile(logPath);
    const size_t at = text.find(marker);
    if (at != std::string::npos && text.find("/cimom", at) != std::string::npos) {
      port_ = static_cast<unsigned short>(std::stoi(text.substr(at + marker.size())));
      break;
    }
    int status;
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      throw std::runtime_error("qel-cimserver exited at start:\n" + text);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  if (port_ == 0) throw std::runtime_error("qel-cimserver did not start:\n" + readFile(logPath));
}

ServerProcess::~ServerProcess() {
  stop();
  run({"/bin/rm", "-rf", dir_});
}

int ServerProcess::stop() {
  if (pid_ <= 0) return -1;
  kill(pid_, SIGTERM);
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ServerProcess::url(const std::string& user, const std::string& password) const {
  std::string auth = user.empty() ? "" : user + ":" + password + "@";
  return "http://" + auth + "127.0.0.1:" + std::to_string(port_) + "/root/qel";
}

std::string ServerProcess::log() const { return readFile(dir_ + "/server.log"); }

}  // namespace e2e
