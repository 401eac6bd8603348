#include <array>
#include <csignal>
#include <string>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>
#include <thrift/transport/TSocket.h>
#include <unistd.h>

#include "im_SINotifySrv.h"

namespace tevra::tools {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TSocket;

/** tornelctl listen as a process of its own; killed if it is still there at the end. */
class ListenProcess {
 public:
  explicit ListenProcess(int port) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (pipe(out.data()) != 0 || pipe(err.data()) != 0) {
      throw std::runtime_error("no pipe");
    }
    const std::string portText = std::to_string(port);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], STDOUT_FILENO);
      dup2(err[1], STDERR_FILENO);
      execl(TORNELCTL_PATH, "tornelctl", "listen", "--port", portText.c_str(), nullptr);
      _exit(127);
    }
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }

  ~ListenProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      (void)wait();
    }
    close(out_);
    close(err_);
  }
  ListenProcess(const ListenProcess&) = delete;
  ListenProcess& operator=(const ListenProcess&) = delete;

  std::string outLine() const { return line(out_); }
  std::string errLine() const { return line(err_); }
  void signal(int number) const { kill(pid_, number); }

  /** The status that waitpid gives. */
  int wait() {
    int status = -1;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return status;
  }

 private:
  static std::string line(int file) {
    std::string text;
    char c = 0;
    while (read(file, &c, 1) == 1 && c != '\n') {
      text += c;
    }
    return text;
  }

  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
};

int freePort() {
  TServerSocket socket("127.0.0.1", 0);
  socket.listen();
  return socket.getPort();
}

TEST(ListenProcess, PrintsEachNotificationAtOnceAndEndsCleanlyWhenInterrupted) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const int port = freePort();
    ListenProcess process(port);
    EXPECT_EQ("listening on 127.0.0.1:" + std::to_string(port) + " in MainTask's place",
              process.errLine());
    const auto socket = std::make_shared<TSocket>("127.0.0.1", port);
    socket->setLinger(false, 0);
    const auto transport = std::make_shared<TFramedTransport>(socket);
    thrift::in_module::im_SINotifySrvClient client(std::make_shared<TBinaryProtocol>(transport));
    transport->open();
    client.requestConfiguration();
    EXPECT_EQ("configuration requested", process.outLine()) << "while it still runs";
    transport->close();
    process.signal(signal);
    const int status = process.wait();
    EXPECT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(0, WEXITSTATUS(status));
  }
}

TEST(ListenProcess, EndsWhenInterruptedWithAClientConnected) {
  const int port = freePort();
  ListenProcess process(port);
  (void)process.errLine();
  TSocket idle("127.0.0.1", port);
  idle.open();
  process.signal(SIGTERM);
  const int status = process.wait();
  EXPECT_TRUE(WIFEXITED(status)) << status;
  EXPECT_EQ(0, WEXITSTATUS(status));
}

}  // namespace
}  // namespace tevra::tools
