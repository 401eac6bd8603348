#pragma once

#include <memory>
#include <string>

#include <thrift/transport/TBufferTransports.h>

namespace tevra {

/** Largest control call taken. A full EIT schedule of a multiplex is about half of it. */
inline constexpr int kMaxFrameSize = 64 * 1024 * 1024;

/**
 * Framed transport for a control connection that may last for years.
 *
 * The library counts all bytes of a connection against one message limit and then closes it; here
 * every frame starts anew. A buffer that grew beyond 1 MiB is given back after its call, and before
 * the next frame so is whatever else that call has freed.
 */
class ControlTransport : public apache::thrift::transport::TFramedTransport {
 public:
  /** Over `transport`, a connected socket; frames of kMaxFrameSize at most. */
  explicit ControlTransport(std::shared_ptr<apache::thrift::transport::TTransport> transport);

  /** The end of a call: gives back a large buffer. Returns the bytes of its frame. */
  uint32_t readEnd() override;

  /** The client's numeric address and port, such as "192.0.2.7:40112" or "[2001:db8::7]:40112";
   * "unknown" where that cannot be told. Asks no name server. */
  const std::string getOrigin() const override;

 protected:
  /**
   * Reads the next frame, with the message limit counted anew; false at the connection's end.
   * Raises a TTransportException, which is Refused for a frame of more than kMaxFrameSize.
   */
  bool readFrame() override;

 private:
  bool readSize(int32_t& size);
  void startFromNothing();

  uint8_t nothing_ = 0;  ///< where the read buffer begins while there is none
  bool lastWasLarge_ = false;
};

/** Makes a ControlTransport for every connection. */
class ControlTransportFactory : public apache::thrift::transport::TTransportFactory {
 public:
  /** A new one over `transport`. Never null. */
  std::shared_ptr<apache::thrift::transport::TTransport> getTransport(
      std::shared_ptr<apache::thrift::transport::TTransport> transport) override;
};

}  // namespace tevra
