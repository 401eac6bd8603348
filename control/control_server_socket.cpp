#include "control/control_server_socket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace tevra {
namespace {

void setOption(int socket, int level, int option, int value) {
  (void)setsockopt(socket, level, option, &value, sizeof value);  // as good as the kernel can
}

/** Accepted sockets inherit this. */
void giveUpDeadClients(int listeningSocket) {
  constexpr int kIdleSeconds = 30;
  constexpr int kProbes = 3;
  constexpr int kSecondsBetweenProbes = 10;
  setOption(listeningSocket, SOL_SOCKET, SO_KEEPALIVE, 1);
  setOption(listeningSocket, IPPROTO_TCP, TCP_KEEPIDLE, kIdleSeconds);
  setOption(listeningSocket, IPPROTO_TCP, TCP_KEEPCNT, kProbes);
  setOption(listeningSocket, IPPROTO_TCP, TCP_KEEPINTVL, kSecondsBetweenProbes);
}

}  // namespace

ControlServerSocket::ControlServerSocket(int port) : TServerSocket(port) {
  setListenCallback(giveUpDeadClients);
}

void ControlServerSocket::listen() {
  if (!listens_) {
    TServerSocket::listen();
    listens_ = true;
  }
}

void ControlServerSocket::close() {
  if (!listens_) {
    TServerSocket::close();
  }
}

}  // namespace tevra
