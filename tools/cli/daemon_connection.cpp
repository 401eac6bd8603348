#include "tools/cli/daemon_connection.h"

#include <memory>

#include <thrift/TApplicationException.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include "im_SIControlSrv.h"
#include "records/frame_protocol.h"
#include "records/global_output.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using apache::thrift::TApplicationException;
using apache::thrift::TConfiguration;
using apache::thrift::TException;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

constexpr int kMaxMessageSize = 1 << 30;
constexpr int kMaxFrameSize = 256 * 1024 * 1024;

/** The library's own lines on standard error would only repeat what the exceptions say. */
void silenceLibrary() {
  globalOutput().setOutputFunction([](const char*) {});
}

std::shared_ptr<TFramedTransport> makeTransport(const DaemonAddress& address) {
  const auto limits = std::make_shared<TConfiguration>(kMaxMessageSize, kMaxFrameSize);
  const auto socket = std::make_shared<TSocket>(address.host, address.port, limits);
  const int milliseconds = address.timeoutSeconds * 1000;
  socket->setConnTimeout(milliseconds);
  socket->setSendTimeout(milliseconds);
  socket->setRecvTimeout(milliseconds);
  return std::make_shared<TFramedTransport>(socket, limits);
}

std::string explainUnreachable(const DaemonAddress& address, const TTransportException& error) {
  const int set = address.port - kFirstControlPort;
  const std::string start =
      set >= 0 && set <= 3 ? "start tornel --set " + std::to_string(set) : "start tornel";
  return "no daemon answers at " + nameOf(address) + " (" + error.what() + "): " + start +
         ", or say where it is with --set, --port or --host";
}

std::string explainBroken(const DaemonAddress& address, const TTransportException& error) {
  switch (error.getType()) {
    case TTransportException::TIMED_OUT:
      return "the daemon at " + nameOf(address) + " did not answer within " +
             std::to_string(address.timeoutSeconds) +
             " s: it serves one client at a time, so end the other one, or wait longer with "
             "--timeout";
    case TTransportException::END_OF_FILE:
      return "the daemon at " + nameOf(address) +
             " closed the connection in the middle of a call: it was ended, or its log says why";
    default:
      return "the connection to the daemon at " + nameOf(address) + " broke (" + error.what() +
             "): it was ended, or its log says why";
  }
}

}  // namespace

std::string nameOf(const DaemonAddress& address) {
  return address.host + ":" + std::to_string(address.port);
}

void withDaemon(const DaemonAddress& address,
                const std::function<void(thrift::in_module::im_SIControlSrvIf& daemon)>& calls) {
  silenceLibrary();
  const auto transport = makeTransport(address);
  try {
    transport->open();
  } catch (const TTransportException& error) {
    throw ToolError(explainUnreachable(address, error));
  }
  try {
    thrift::in_module::im_SIControlSrvClient daemon(std::make_shared<FrameProtocol>(transport));
    calls(daemon);
    transport->close();
  } catch (const TTransportException& error) {
    throw ToolError(explainBroken(address, error));
  } catch (const TApplicationException& error) {
    throw ToolError("the daemon at " + nameOf(address) + " refused a call: " + error.what());
  } catch (const TException& error) {
    throw ToolError("the daemon at " + nameOf(address) + " sent an answer that makes no sense (" +
                    error.what() + "): is it another program?");
  }
}

}  // namespace tevra::tools
