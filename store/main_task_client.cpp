#include "store/main_task_client.h"

#include <algorithm>
#include <chrono>
#include <memory>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include "im_SINotifySrv.h"
#include "platform/module_utils.h"

namespace tevra {
namespace {

using apache::thrift::protocol::TBinaryProtocolT;
using apache::thrift::transport::TBufferBase;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

/** Framed transport and binary protocol name the same buffer class: Thrift's fast path. */
using Protocol = TBinaryProtocolT<TBufferBase>;
using Client = thrift::in_module::im_SINotifySrvClientT<Protocol>;

constexpr const char* kHost = "127.0.0.1";

/** Of every notification after one that has timed out: enough for a MainTask that takes calls. */
constexpr std::chrono::milliseconds kPatienceAfterTimeOut(50);

/** The kernel counts in ticks, of 10 ms at the longest, and may wake a sender a tick early. */
constexpr std::chrono::milliseconds kTick(10);

/**
 * Gives up when its patience is at an end, counted from construction. The library's own sockets
 * give each connection attempt and each send a time-out of its own and go on as long as every send
 * passes a part, so that a peer that reads little or nothing holds them up several times as long.
 */
class NotificationSocket : public TSocket {
 public:
  NotificationSocket(uint16_t port, std::chrono::milliseconds patience)
      : TSocket(kHost, port), end_(Clock::now() + patience) {
    // It bounds connecting too. A connection time-out would, but would also change the text of the
    // exception.
    setSendTimeout(static_cast<int>(patience.count()));
    // The library's default resets the connection on close and so cuts off a large call that is
    // still under way.
    setLinger(false, 0);
  }

  /** The last tick counts as the end: nothing can be told from a wait that ended in it. */
  [[nodiscard]] bool timedOut() const { return remaining() <= kTick; }

  uint32_t write_partial(const uint8_t* bytes, uint32_t size) override {
    setSendTimeout(static_cast<int>(std::max(remaining(), kTick).count()));
    const uint32_t sent = TSocket::write_partial(bytes, size);
    // A part sent before the end is an error or a signal: the next send tells which.
    if (sent < size && timedOut()) {
      throw TTransportException(TTransportException::TIMED_OUT, "send timeout expired");
    }
    return sent;
  }

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] std::chrono::milliseconds remaining() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now());
  }

  const Clock::time_point end_;
};

/**
 * One notification: `call` makes it on the client, `successLine` is logged when it has been made.
 */
template <class Call>
bool send(uint16_t port, int successLevel, const char* successLine, Call call, Patience& patience) {
  if (port == 0) {
    log_function(kLogWarning, kNoTag, "Notification Port not set.");
    return false;
  }
  const auto socket = std::make_shared<NotificationSocket>(port, patience.perNotification);
  try {
    auto transport = std::make_shared<TFramedTransport>(socket);
    Client client(std::make_shared<Protocol>(transport));
    transport->open();
    call(client);
    log_function(successLevel, kNoTag, "%s", successLine);
    return true;
  } catch (const apache::thrift::TException& exception) {
    // Only the clock tells a connection that timed out from one that was refused.
    if (socket->timedOut()) {
      patience.perNotification = kPatienceAfterTimeOut;
    }
    log_function(kLogError, kNoTag, "Can't access to Notify server. EXCEPTION: %s",
                 exception.what());
    return false;
  }
}

/** The only notification of its control call. */
template <class Call>
bool send(uint16_t port, int successLevel, const char* successLine, Call call) {
  Patience patience;
  return send(port, successLevel, successLine, call, patience);
}

}  // namespace

bool setNotificationPort(uint16_t& storedPort, uint16_t port) {
  if (port == 0) {
    log_function(kLogWarning, kNoTag, "Zero notification port!");
    return false;
  }
  storedPort = port;
  return true;
}

bool setNotificationPort(NotificationTarget& target, uint16_t port) {
  return setNotificationPort(target.port, port);
}

// The successes of NIM and PAT are of level 4, all others of 7: docs/contract.md, "Messages".

bool notifyNIM(NotificationTarget& target, int32_t value) {
  target.value = value;
  (void)send(target.port, kLogWarning, "MainTask notified from NIM!!!",
             [&](Client& client) { client.notifyNIM(target.value); });
  return true;  // the value is stored, whatever became of the call
}

bool notifyPAT(uint16_t port, const PAT& pat) {
  return send(port, kLogWarning, "MainTask notified from SI (new cf PAT)!!!",
              [&](Client& client) { client.notifyPAT(pat); });
}

bool notifySDT(uint16_t port, const SDT& sdt) {
  return send(port, kLogDebug, "MainTask notified from SI (new SDT)!!!",
              [&](Client& client) { client.notifySDT(sdt); });
}

bool notifyPMT(uint16_t port, const PMT& pmt) {
  return send(port, kLogDebug, "MainTask notified from SI (new PMT)!!!",
              [&](Client& client) { client.notifyPMT(pmt); });
}

bool notifyNIT(uint16_t port, const NIT& nit) {
  return send(port, kLogDebug, "MainTask notified from SI (new NIT)!!!",
              [&](Client& client) { client.notifyNIT(nit); });
}

bool notifyTOT(uint16_t port, const TOT& tot, Patience& patience) {
  return send(
      port, kLogDebug, "MainTask notified from SI (new TOT)!!!",
      [&](Client& client) { client.notifyTOT(tot); }, patience);
}

bool notifyBAT(uint16_t port, const BAT& bat) {
  return send(port, kLogDebug, "MainTask notified from SI (new BAT)!!!",
              [&](Client& client) { client.notifyBAT(bat); });
}

bool notifyCAT(uint16_t port, const CAT& cat) {
  return send(port, kLogDebug, "MainTask notified from SI (new CAT)!!!",
              [&](Client& client) { client.notifyCAT(cat); });
}

bool notifyEITPresentFollowing(uint16_t port, const EIT& eit, Patience& patience) {
  return send(
      port, kLogDebug, "MainTask notified from SI (new EIT pf)!!!",
      [&](Client& client) { client.notifyEITPresentFollowing(eit); }, patience);
}

bool notifyEITSchedule(uint16_t port, const EIT& eit, Patience& patience) {
  return send(
      port, kLogDebug, "MainTask notified from SI (new EITsch)!!!",
      [&](Client& client) { client.notifyEITSchedule(eit); }, patience);
}

bool requestConfiguration(const NotificationTarget& target) {
  return send(target.port, kLogDebug, "I need Configuration!!!",
              [](Client& client) { client.requestConfiguration(); });
}

}  // namespace tevra
