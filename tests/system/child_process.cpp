#include "tests/system/child_process.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace tevra::test {
namespace {

constexpr int kCannotStart = 127;

/** Inherited variables that would make a test depend on who runs it. */
bool isInherited(std::string_view variable) {
  return variable.rfind("TEVRA_", 0) != 0 && variable.rfind("NOTIFY_SOCKET=", 0) != 0;
}

std::vector<std::string> childEnvironment(const Environment& added) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string name = std::string(*variable).substr(0, std::string(*variable).find('='));
    if (isInherited(*variable) && added.count(name) == 0) {
      variables.emplace_back(*variable);
    }
  }
  for (const auto& [name, value] : added) {
    variables.push_back(name + "=" + value);
  }
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (std::string& string : strings) {
    pointers.push_back(string.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

int openOutput(const std::string& path) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (fd < 0) {
    throw std::runtime_error("cannot make " + path);
  }
  return fd;
}

void limit(int resource, rlim_t value) {
  const rlimit both = {value, value};
  (void)setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

bool becomeUser(uid_t user) {
  return setgroups(0, nullptr) == 0 && setresgid(user, user, user) == 0 &&
         setresuid(user, user, user) == 0;
}

/** Between fork and exec, with threads in the parent: only what is safe in a signal handler. */
[[noreturn]] void becomeProgram(char** command, char** environment, int out, int err, pid_t parent,
                                const ChildProcess::Setup& setup) {
  // Opened before the user changes, who need not be able to reach it. Stays open: of a script its
  // interpreter opens the descriptor anew.
  const int program = setup.user ? open(command[0], O_PATH) : -1;
  if (setup.user && !becomeUser(*setup.user)) {
    _exit(kCannotStart);
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // which a change of user would undo
  if (getppid() != parent) {
    _exit(kCannotStart);
  }
  limit(RLIMIT_CORE, 0);
  if (setup.addressSpace) {
    limit(RLIMIT_AS, *setup.addressSpace);
  }
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  if (setup.user) {
    fexecve(program, command, environment);
  }
  execve(command[0], command, environment);
  _exit(kCannotStart);
}

ProcessEnd endOf(int status) {
  ProcessEnd end;
  if (WIFEXITED(status)) {
    end.exitStatus = WEXITSTATUS(status);
  } else {
    end.signal = WTERMSIG(status);
  }
  return end;
}

}  // namespace

ChildProcess::ChildProcess(const Setup& setup) {
  std::vector<std::string> arguments = setup.command;
  std::vector<std::string> variables = childEnvironment(setup.environment);
  const std::vector<char*> command = pointersTo(arguments);
  const std::vector<char*> environment = pointersTo(variables);
  const int out = openOutput(directory_ / "out");
  const int err = openOutput(directory_ / "err");
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    becomeProgram(const_cast<char**>(command.data()), const_cast<char**>(environment.data()), out,
                  err, parent, setup);
  }
  close(out);
  close(err);
  if (pid_ < 0) {
    throw std::runtime_error("cannot fork");
  }
}

ChildProcess::~ChildProcess() {
  kill();
}

void ChildProcess::kill() {
  if (end_) {
    return;
  }
  ::kill(pid_, SIGKILL);
  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  end_ = endOf(status);
}

bool ChildProcess::running() {
  int status = 0;
  if (!end_ && waitpid(pid_, &status, WNOHANG) == pid_) {
    end_ = endOf(status);
  }
  return !end_;
}

std::optional<ProcessEnd> ChildProcess::waitForEnd() {
  (void)eventually([this] { return !running(); });  // what it came to is in end_
  return end_;
}

std::string ChildProcess::contents(const char* file) const {
  std::ostringstream text;
  text << std::ifstream(directory_ / file, std::ios::binary).rdbuf();
  return text.str();
}

void pauseShortly() {
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace tevra::test
