#include "tests/tools/cli/listen_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <thrift/transport/TServerSocket.h>

namespace tevra::tools::test {
namespace {

using Ends = std::array<int, 2>;  // to read from, to write to

Ends makePipe() {
  Ends ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  return ends;
}

Ends makeTerminal() {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
    throw std::runtime_error("no terminal: is /dev/pts mounted?");
  }
  return {master, open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

std::string line(int file) {
  std::string text;
  char c = 0;
  while (read(file, &c, 1) == 1 && c != '\n') {
    text += c;
  }
  return text;
}

}  // namespace

ListenProcess::ListenProcess(int port, const Setup& setup) {
  const Ends out = setup.onTerminal ? makeTerminal() : makePipe();
  const Ends err = makePipe();
  const std::string portText = std::to_string(port);
  std::vector<const char*> command = {"tornelctl", "listen", "--port", portText.c_str()};
  for (const std::string& argument : setup.arguments) {
    command.push_back(argument.c_str());
  }
  command.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    for (const auto& [name, value] : setup.environment) {
      setenv(name.c_str(), value.c_str(), 1);
    }
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    execv(TORNELCTL_PATH, const_cast<char**>(command.data()));
    _exit(127);
  }
  close(out[1]);
  close(err[1]);
  out_ = out[0];
  err_ = err[0];
}

ListenProcess::~ListenProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    (void)wait();
  }
  closeOut();
  close(err_);
}

std::string ListenProcess::outLine() const {
  return line(out_);
}

std::string ListenProcess::errLine() const {
  return line(err_);
}

void ListenProcess::signal(int number) const {
  kill(pid_, number);
}

void ListenProcess::closeOut() {
  if (out_ >= 0) {
    close(out_);
    out_ = -1;
  }
}

int ListenProcess::wait() {
  int status = -1;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return status;
}

int ListenProcess::exitStatus() {
  const int status = wait();
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int freePort() {
  apache::thrift::transport::TServerSocket socket("127.0.0.1", 0);
  socket.listen();
  return socket.getPort();
}

}  // namespace tevra::tools::test
