#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/control_client.h"
#include "tests/support/messages.h"
#include "tests/system/hostile_clients.h"
#include "tests/system/recorded_calls.h"

// What is wrong with frames and connections, whatever the message; after each test the next client
// is served and nothing has grown.

namespace tevra::test {
namespace {

constexpr uint32_t kLargestFrame = 64 * 1024 * 1024;

/** Kilobytes: more than comes and goes with any connection and than the kernel's count of pages is
 * off by. */
constexpr int64_t kSmall = 2048;

std::string noise(std::mt19937& random, size_t most) {
  std::string bytes(std::uniform_int_distribution<size_t>(1, most)(random), '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(random() & 0xFF);
  }
  return bytes;
}

TEST_F(HostileClients, ThatSendNoiseOfAThousandSeedsDoNoHarm) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    std::mt19937 random(seed);
    (void)exchange(noise(random, 3000));
  }
}

TEST_F(HostileClients, ThatSendFramedNoiseOfAThousandSeedsDoNoHarm) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    std::mt19937 random(seed);
    (void)answerTo(noise(random, 300));
  }
}

TEST_F(HostileClients, ThatSendNoiseAsTheArgumentsOfACallDoNoHarm) {
  for (unsigned seed = 0; seed < 100; ++seed) {
    std::mt19937 random(seed);
    for (const RecordedCall& call : everyCall()) {
      (void)answerTo(messageHead(call.method) + noise(random, 300));
    }
  }
}

TEST_F(HostileClients, ThatSpeakAnotherProtocolAreRefused) {
  const std::string clientHello("\x16\x03\x01\x02\x00\x01\x00\x01\xFC\x03\x03", 11);
  const std::string oldHello("\x80\x2E\x01\x00\x02\x00\x15\x00\x00\x00\x10", 11);
  for (const std::string& greeting :
       {std::string("GET / HTTP/1.1\r\nHost: headend\r\n\r\n"),
        std::string("POST /im_SIControlSrv HTTP/1.0\r\nContent-Length: 4\r\n\r\n{}\r\n"),
        std::string("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"), clientHello + std::string(501, '\x42'),
        oldHello + std::string(37, '\x42'), std::string("SSH-2.0-client\r\n"),
        std::string("{\"jsonrpc\":\"2.0\",\"method\":\"getSIData\"}\n"),
        std::string("[1,\"getSIData\",1,0,{}]")}) {
    expectRefusal(greeting);
    EXPECT_EQ(answerTo(greeting).kind, Answer::Kind::kNone) << greeting;
  }
}

TEST_F(HostileClients, ThatAnnounceAFrameBeyondTheLimitAreRefusedAtOnce) {
  for (const uint32_t size : {kLargestFrame + 1, kLargestFrame + 2, 2 * kLargestFrame, 0x40000000U,
                              0x7FFFFFFEU, 0x7FFFFFFFU}) {
    expectMemoryBelow(kSmall, mappedGrowth([&] { expectRefusal(bigEndian(size)); }),
                      std::to_string(size));
  }
}

TEST_F(HostileClients, ThatAnnounceAFrameOfNegativeSizeAreRefusedAtOnce) {
  for (const uint32_t size : {0xFFFFFFFFU, 0xFFFFFFFEU, 0x80000000U, 0x80000001U, 0x80010001U}) {
    expectMemoryBelow(kSmall, mappedGrowth([&] { expectRefusal(bigEndian(size)); }),
                      std::to_string(size));
  }
}

TEST_F(HostileClients, ThatSendEmptyFramesDoNoHarm) {
  expectRefusal(bigEndian(0));
  std::string many;
  for (int frame = 0; frame < 1000; ++frame) {
    many += bigEndian(0);
  }
  expectRefusal(many);
  expectRefusal(bigEndian(0) + framed(recordedCall("getSIData").message));
}

/** A SISetData that fills a frame of `size` bytes. */
std::string largeCall(uint32_t size) {
  const std::string beginning = messageHead("SISetData") + fieldHead(12, 1) + fieldHead(11, 1);
  constexpr size_t kEnds = 2;
  const size_t text = size - beginning.size() - 4 - kEnds;
  std::string message = beginning + bigEndian(static_cast<uint32_t>(text));
  message.append(text, 'x');
  return message.append(kEnds, '\0');
}

TEST_F(HostileClients, ThatFillTheLargestFrameAreServedAndLeaveNothingBehind) {
  expectReply("SISetData", largeCall(kLargestFrame));
  EXPECT_EQ(answerTo(largeCall(kLargestFrame + 1)).kind, Answer::Kind::kNone);
}

TEST_F(HostileClients, ThatSendLargeFramesOfManySizesLeaveNothingBehind) {
  constexpr uint32_t kMebibyte = 1024 * 1024;
  for (const uint32_t size : {1U, 4U, 8U, 12U, 20U, 30U, 31U, 20U, 8U, 3U}) {
    expectReply("SISetData", largeCall(size * kMebibyte));
  }
}

TEST_F(HostileClients, ThatPromiseTheLargestFrameAndSendLittleCostLittle) {
  const int64_t growth = peakGrowth([&] {
    for (int client = 0; client < 20; ++client) {
      EXPECT_EQ(exchange(bigEndian(kLargestFrame) + std::string(36, '\x01')), "");
    }
  });
  expectMemoryBelow(kSmall, growth);
}

TEST_F(HostileClients, ThatLeaveAtAnyByteOfACallDoNoHarm) {
  for (const RecordedCall& call : everyCall()) {
    const std::string bytes = framed(call.message);
    for (size_t size = 0; size < bytes.size(); ++size) {
      EXPECT_EQ(exchange(bytes.substr(0, size)), "") << call.method << ", " << size << " bytes";
    }
  }
}

TEST_F(HostileClients, ThatCloseAtAnyByteOfACallWithoutWaitingDoNoHarm) {
  const std::string bytes = framed(recordedCall("setPMT").message);
  for (size_t size = 0; size <= bytes.size(); ++size) {
    const RawConnection connection(kFirstControlPort);
    connection.send(bytes.substr(0, size));
  }
}

TEST_F(HostileClients, ThatCrashAtAnyByteOfACallDoNoHarm) {
  for (const char* method : {"setPMT", "getSrvOutputData"}) {
    const std::string bytes = framed(recordedCall(method).message);
    for (size_t size = 0; size <= bytes.size(); ++size) {
      RawConnection connection(kFirstControlPort);
      connection.send(bytes.substr(0, size));
      connection.reset();
    }
  }
}

TEST_F(HostileClients, WhoseFrameEndsAtAnyByteOfACallDoNoHarm) {
  for (const RecordedCall& call : everyCall()) {
    for (size_t size = 0; size < call.message.size(); ++size) {
      EXPECT_EQ(exchange(framed(call.message.substr(0, size))), "")
          << call.method << ", " << size << " bytes";
    }
  }
}

TEST_F(HostileClients, WhoseFrameEndsAtAnyByteOfACallAndBeginAnotherDoNoHarm) {
  const std::string next = framed(recordedCall("getSIData").message);
  for (const char* method : {"setPMT", "getSrvOutputData"}) {
    const std::string& message = recordedCall(method).message;
    for (size_t size = 0; size < message.size(); ++size) {
      (void)exchange(framed(message.substr(0, size)) + next);
    }
  }
}

TEST_F(HostileClients, ThatStopInTheMiddleOfACallHoldOthersUpOnlyUntilTheyLeave) {
  auto half = std::make_unique<RawConnection>(kFirstControlPort);
  const std::string call = framed(recordedCall("setPMT").message);
  half->send(call.substr(0, call.size() / 2));
  auto next = std::async(std::launch::async, [&] { expectService(); });
  EXPECT_EQ(next.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
  half.reset();
  EXPECT_EQ(next.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  next.get();
}

std::string repeated(const std::string& bytes, int times) {
  std::string all;
  for (int time = 0; time < times; ++time) {
    all += bytes;
  }
  return all;
}

TEST_F(HostileClients, ThatLeaveBeforeTheAnswerDoNoHarm) {
  const std::string calls = repeated(framed(recordedCall("getSrvOutputData").message), 3);
  for (int client = 0; client < 40; ++client) {
    RawConnection connection(kFirstControlPort);
    connection.send(calls);
    if (client % 2 == 0) {
      connection.reset();
    }
  }
}

TEST_F(HostileClients, ThatNeverReadTheirAnswersHoldOthersUpOnlyUntilTheyCrash) {
  const std::string call = framed(recordedCall("getSIData").message);
  RawConnection deaf(kFirstControlPort);
  deaf.send(call);
  // More answers than the kernel keeps: the daemon is left waiting in the middle of one.
  auto asking = std::async(std::launch::async, [&] { deaf.send(repeated(call, 1'000'000)); });
  auto next = std::async(std::launch::async, [&] { expectService(); });
  EXPECT_EQ(asking.wait_for(std::chrono::seconds(1)), std::future_status::timeout);
  EXPECT_EQ(next.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  deaf.finish();  // ends the sending, which waits as well by now
  asking.get();
  deaf.reset();
  EXPECT_EQ(next.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  next.get();
}

TEST_F(HostileClients, ThatConnectAndCloseTenThousandTimesDoNoHarm) {
  for (int client = 0; client < 10'000; ++client) {
    RawConnection connection(kFirstControlPort);
    if (client % 2 == 0) {
      connection.send("x");  // a connection without a byte may end before the daemon sees it
    }
    if (client % 4 < 2) {
      connection.reset();
    }
  }
}

TEST_F(HostileClients, ThatConnectByTheHundredAtOnceDoNoHarm) {
  constexpr int kRounds = 5;
  for (int round = 0; round < kRounds; ++round) {
    std::vector<std::unique_ptr<RawConnection>> crowd;
    for (int client = 0; client < 200; ++client) {
      crowd.push_back(std::make_unique<RawConnection>(kFirstControlPort));
      crowd.back()->send(framed(recordedCall("setPAT").message).substr(0, 60));
    }
  }
}

}  // namespace
}  // namespace tevra::test
