#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tevra::test {

/** A TCP connection to a port of 127.0.0.1 that sends what it is told, sense or none. */
class RawConnection {
 public:
  /** Raises std::runtime_error when nobody listens. */
  explicit RawConnection(int port);
  /** Has its file descriptor, and needs no other one to connect. */
  RawConnection();
  ~RawConnection();
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  /** Once, of one that is not connected; raises std::runtime_error when nobody listens. */
  void connect(int port) const;

  /** Sends all of it; what the peer no longer takes is lost. */
  void send(const std::string& bytes) const;

  /** Waits until the peer closes the connection; false when it does not within kPatience, or sends
   * something. */
  [[nodiscard]] bool closedByPeer() const;

  /** The next `length` bytes of the peer; fewer when it sends no more of them within kPatience. */
  [[nodiscard]] std::string receive(size_t length) const;

  /** Tells the peer that nothing more comes. */
  void finish() const;

  /** All that the peer sends until it closes the connection; nothing when it does not within
   * kPatience of its last byte. */
  [[nodiscard]] std::optional<std::string> readToEnd() const;

  /** Ends the connection as the kernel does for a process that crashes: at once, dropping what is
   * under way. The object is good for nothing more. */
  void reset();

 private:
  int socket_;
};

/** True when a connection to the port of 127.0.0.1 is taken. */
[[nodiscard]] bool isListening(int port);

/** A socket that listens on a port of 127.0.0.1 and lets connections wait. */
class RawListener {
 public:
  /** `backlog` as for listen(2): one more connection may wait. */
  explicit RawListener(int port, int backlog = 16);
  ~RawListener();
  RawListener(const RawListener&) = delete;
  RawListener& operator=(const RawListener&) = delete;

  /** Takes the connection that has waited longest and reads until its end: all that was sent,
   * unless it was reset. Empty when none comes within kPatience. */
  [[nodiscard]] std::string takeConnection() const;

 private:
  int socket_;
};

/** Connections that wait on a port of 127.0.0.1 in such numbers that no other is taken. */
class FullBacklog {
 public:
  /** `connections`: more than the listener lets wait. */
  FullBacklog(int port, int connections);
  ~FullBacklog();
  FullBacklog(const FullBacklog&) = delete;
  FullBacklog& operator=(const FullBacklog&) = delete;

 private:
  std::vector<int> sockets_;
};

}  // namespace tevra::test
