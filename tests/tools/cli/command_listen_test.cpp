#include "tests/tools/cli/listen_process.h"

#include <csignal>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>
#include <nlohmann/json.hpp>

#include "im_SINotifySrv.h"
#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;
using test::freePort;
using test::ListenProcess;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using Client = thrift::in_module::im_SINotifySrvClient;

constexpr const char* kStamp = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}\\.[0-9]{3}  ";

/** `calls` in a connection of their own, as the daemon makes one for every notification. */
void notify(int port, const std::function<void(Client& client)>& calls) {
  const auto socket = std::make_shared<TSocket>("127.0.0.1", port);
  socket->setLinger(false, 0);
  const auto transport = std::make_shared<TFramedTransport>(socket);
  Client client(std::make_shared<TBinaryProtocol>(transport));
  transport->open();
  calls(client);
  transport->close();
}

void notifyNim(int port, int32_t value) {
  notify(port, [value](Client& client) { client.notifyNIM(value); });
}

/** Sends bytes that are no notification; what the process does not take is lost. */
void sendRaw(int port, const std::string& bytes) {
  TSocket socket("127.0.0.1", port);
  socket.open();
  try {
    socket.write(reinterpret_cast<const uint8_t*>(bytes.data()),
                 static_cast<uint32_t>(bytes.size()));
  } catch (const TTransportException&) {
    // It has closed the connection: its right.
  }
}

/** Behind its length, as the framed transport has it. */
std::string framed(const std::string& message) {
  std::string frame;
  for (int shift = 24; shift >= 0; shift -= 8) {
    frame += static_cast<char>(message.size() >> shift & 0xFF);
  }
  return frame + message;
}

TEST(ListenProcess, PrintsEachNotificationAtOnceAndEndsCleanlyWhenInterrupted) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const int port = freePort();
    ListenProcess process(port);
    EXPECT_EQ("listening on 127.0.0.1:" + std::to_string(port) + " in MainTask's place",
              process.errLine());
    notify(port, [](Client& client) { client.requestConfiguration(); });
    EXPECT_THAT(process.outLine(), MatchesRegex(std::string(kStamp) + "configuration requested"))
        << "while it still runs";
    process.signal(signal);
    EXPECT_EQ(0, process.exitStatus());
    EXPECT_EQ("", process.errLine());
  }
}

TEST(ListenProcess, EndsWhenInterruptedWithAClientConnected) {
  const int port = freePort();
  ListenProcess process(port);
  (void)process.errLine();
  TSocket idle("127.0.0.1", port);
  idle.open();
  process.signal(SIGTERM);
  EXPECT_EQ(0, process.exitStatus());
}

TEST(ListenProcess, EndsAfterAsManyNotificationsAsAskedFor) {
  const int port = freePort();
  ListenProcess process(port, {{"--count", "2"}});
  (void)process.errLine();
  notify(port, [](Client& client) {
    client.notifyNIM(1);
    client.notifyNIM(2);
    client.notifyNIM(3);
  });
  EXPECT_THAT(process.outLine(), EndsWith("value 1"));
  EXPECT_THAT(process.outLine(), EndsWith("value 2"));
  EXPECT_EQ("", process.outLine());
  EXPECT_EQ(0, process.exitStatus());
}

TEST(ListenProcess, EndsAfterTheTimeAskedFor) {
  ListenProcess process(freePort(), {{"--seconds", "1"}});
  (void)process.errLine();
  EXPECT_EQ(0, process.exitStatus());
  EXPECT_EQ("", process.errLine());
}

TEST(ListenProcess, FailsWhenNothingIsNotifiedForTooLong) {
  const int port = freePort();
  ListenProcess process(port, {{"--timeout", "1"}});
  (void)process.errLine();
  notifyNim(port, 1);
  EXPECT_THAT(process.outLine(), EndsWith("value 1"));
  EXPECT_EQ(1, process.exitStatus());
  EXPECT_EQ("tornelctl: no notification for 1 s: is the daemon of this set running, and is it fed?",
            process.errLine());
  EXPECT_EQ("", process.errLine());
}

TEST(ListenProcess, FailsWithOneLineWhenThePortIsTaken) {
  const int port = freePort();
  ListenProcess first(port);
  (void)first.errLine();
  ListenProcess second(port);
  EXPECT_THAT(second.errLine(),
              AllOf(HasSubstr("tornelctl: cannot listen on 127.0.0.1:"), HasSubstr("MainTask")));
  EXPECT_EQ("", second.errLine());
  EXPECT_EQ(1, second.exitStatus());
}

TEST(ListenProcess, EndsQuietlyWhenNobodyReadsItsOutput) {
  const int port = freePort();
  ListenProcess process(port, {{"--json"}});
  (void)process.errLine();
  notifyNim(port, 1);
  (void)process.outLine();
  process.closeOut();
  EXPECT_EQ(0, process.exitStatus()) << "without waiting for a notification";
  EXPECT_EQ("", process.errLine());
}

TEST(ListenProcess, WritesJsonLineByLine) {
  const int port = freePort();
  ListenProcess process(port, {{"--json", "--utc"}});
  (void)process.errLine();
  notify(port, [](Client& client) { client.notifyPAT(test::patRecord({})); });
  notify(port, [](Client& client) { client.notifyPAT(test::patRecord({{1, 256}})); });
  const auto first = nlohmann::json::parse(process.outLine());
  const auto second = nlohmann::json::parse(process.outLine());
  EXPECT_EQ("first", first.at("state"));
  EXPECT_THAT(first.at("time").get<std::string>(), EndsWith("Z"));
  EXPECT_EQ("programme", second.at("changes").at(0).at("what"));
}

TEST(ListenProcess, GoesOnAfterConnectionsThatBringGarbage) {
  const int port = freePort();
  ListenProcess process(port);
  (void)process.errLine();
  const std::string head = std::string("\x80\x01\x00\x04\x00\x00\x00\x09", 8) + "notifyPAT" +
                           std::string("\x00\x00\x00\x00", 4);
  sendRaw(port, "GET / HTTP/1.1\r\n\r\n");
  sendRaw(port, "");
  sendRaw(port, std::string(100, '\xFF'));
  sendRaw(port, std::string("\x00\x10\x00\x00", 4) + "cut short");
  sendRaw(port, framed(head));
  // A PAT with a list of 2^31 - 1 programmes.
  sendRaw(port, framed(head + std::string("\x0C\x00\x01\x0F\x00\x04\x0C\x7F\xFF\xFF\xFF", 11)));
  // Structures in structures without an end.
  std::string nested = head;
  for (int i = 0; i < 100000; ++i) {
    nested += std::string("\x0C\x00\x63", 3);
  }
  sendRaw(port, framed(nested));
  for (unsigned seed = 0; seed < 300; ++seed) {
    std::mt19937 random(seed);
    std::string noise;
    for (int i = 0; i < 200; ++i) {
      noise += static_cast<char>(random() & 0xFF);
    }
    sendRaw(port, seed % 2 == 0 ? noise.replace(0, 4, std::string("\0\0\0\x64", 4))
                                : framed(head + std::string("\x0C\x00\x01", 3) + noise));
  }
  notifyNim(port, 5);
  std::string line;
  do {  // noise may happen to be a PAT
    line = process.outLine();
  } while (line.find("PAT") != std::string::npos);
  EXPECT_THAT(line, EndsWith("value 5"));
  process.signal(SIGTERM);
  EXPECT_EQ(0, process.exitStatus());
}

TEST(ListenProcess, IgnoresATableThatNoStreamCanCarry) {
  const int port = freePort();
  ListenProcess process(port);
  (void)process.errLine();
  EIT eit;
  eit.events.resize(10);
  for (EITEvent& event : eit.events) {
    event.descriptors.resize(100000);
  }
  notify(port, [&](Client& client) { client.notifyEITSchedule(eit); });
  notifyNim(port, 5);
  EXPECT_EQ("EIT schedule ignored: larger than any transport stream can carry", process.errLine());
  EXPECT_THAT(process.outLine(), EndsWith("value 5"));
}

TEST(ListenProcess, PrintsTheExtremesOfEveryValue) {
  const int port = freePort();
  ListenProcess process(port, {{"--all"}});
  (void)process.errLine();
  for (const int32_t extreme : {INT32_MIN, INT32_MAX, -1}) {
    EIT eit = test::eitRecord({EITEvent()});
    eit.version = eit.tableId = eit.lastTableId = eit.events[0].eventId = extreme;
    eit.events[0].duration = eit.events[0].runningStatus = extreme;
    eit.events[0].startTime = extreme == -1 ? INT64_MIN : INT64_MAX;
    eit.events[0].descriptors = {test::descriptorRecord(extreme, "")};
    notify(port, [&](Client& client) { client.notifyEITSchedule(eit); });
    EXPECT_THAT(process.outLine(), HasSubstr("EIT schedule"));
  }
  process.signal(SIGTERM);
  EXPECT_EQ(0, process.exitStatus());
}

/** What is printed of a PAT with these options, this environment, and a terminal or none. */
std::string printedPat(const ListenProcess::Setup& setup) {
  const int port = freePort();
  ListenProcess process(port, setup);
  (void)process.errLine();
  notify(port, [](Client& client) { client.notifyPAT(PAT()); });
  return process.outLine();
}

TEST(ListenProcess, ColoursOnATerminalUnlessToldOtherwise) {
  const std::map<std::string, std::string> xterm = {{"TERM", "xterm"}, {"NO_COLOR", ""}};
  EXPECT_THAT(printedPat({{}, xterm, true}), HasSubstr("\x1b[1mPAT"));
  EXPECT_THAT(printedPat({{}, xterm, false}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(printedPat({{}, {{"TERM", "xterm"}, {"NO_COLOR", "1"}}, true}),
              Not(HasSubstr("\x1b")));
  EXPECT_THAT(printedPat({{}, {{"TERM", "dumb"}, {"NO_COLOR", ""}}, true}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(printedPat({{"--color", "never"}, xterm, true}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(printedPat({{"--color", "always"}, {{"NO_COLOR", "1"}}, false}),
              HasSubstr("\x1b[1mPAT"));
}

}  // namespace
}  // namespace tevra::tools
