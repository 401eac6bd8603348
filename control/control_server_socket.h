#pragma once

#include <thrift/transport/TServerSocket.h>

namespace tevra {

/**
 * The port of a control server. Once it listens it does so until it is destroyed: clients that wait
 * to be accepted outlast a server that fails and serves again. Used by the server's thread alone.
 *
 * A client whose machine died without a word is given up within a minute: it would hold the port
 * for ever, since clients are served one after the other.
 */
class ControlServerSocket : public apache::thrift::transport::TServerSocket {
 public:
  /** On TCP `port` of all interfaces; 0 for one that is free. */
  explicit ControlServerSocket(int port);

  /** Raises a TTransportException when the port is taken. Does nothing when it listens already. */
  void listen() override;

  /** Does nothing once it listens. */
  void close() override;

 private:
  bool listens_ = false;
};

}  // namespace tevra
