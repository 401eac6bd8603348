#include "tools/stream/datagram_buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace tevra::tools {
namespace {

bool push(DatagramBuffer& buffer, const std::string& text) {
  return buffer.push(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string pop(DatagramBuffer& buffer, size_t size, int milliseconds = 0) {
  std::string text(size, '\0');
  text.resize(buffer.pop(reinterpret_cast<uint8_t*>(text.data()), size,
                         std::chrono::milliseconds(milliseconds)));
  return text;
}

TEST(DatagramBuffer, GivesWhatIsThereInOrder) {
  DatagramBuffer buffer(100);
  EXPECT_EQ("", pop(buffer, 10));
  EXPECT_TRUE(push(buffer, "one"));
  EXPECT_TRUE(push(buffer, ""));
  EXPECT_TRUE(push(buffer, "two"));
  EXPECT_EQ("onet", pop(buffer, 4));
  EXPECT_EQ("wo", pop(buffer, 4));
  EXPECT_EQ("", pop(buffer, 4));
}

TEST(DatagramBuffer, KeepsADatagramWholeOrNotAtAll) {
  DatagramBuffer buffer(10);
  EXPECT_TRUE(push(buffer, "123456"));
  EXPECT_FALSE(push(buffer, "abcde"));
  EXPECT_TRUE(push(buffer, "ABCD")) << "a shorter one behind it fits";
  EXPECT_FALSE(push(buffer, "."));
  EXPECT_EQ("123456ABCD", pop(buffer, 100));
  EXPECT_FALSE(push(buffer, "longer than all of it"));
  EXPECT_TRUE(push(buffer, "1234567890"));
}

TEST(DatagramBuffer, GoesRoundItsEnd) {
  DatagramBuffer buffer(7);
  std::string pushed;
  std::string popped;
  for (char c = 'a'; c <= 'z'; ++c) {
    const std::string datagram(1 + static_cast<size_t>(c - 'a') % 4, c);
    ASSERT_TRUE(push(buffer, datagram));
    pushed += datagram;
    popped += pop(buffer, pushed.size() - popped.size() > 3 ? 3 : 1);
  }
  for (std::string rest = pop(buffer, 7); !rest.empty(); rest = pop(buffer, 7)) {
    popped += rest;
  }
  EXPECT_EQ(pushed, popped);
}

TEST(DatagramBuffer, IsWaitedForFromAnotherThread) {
  constexpr int kDatagrams = 2000;
  constexpr int kLongest = 10'000;
  DatagramBuffer buffer(64);
  std::thread sender([&buffer] {
    for (int i = 0; i < kDatagrams; ++i) {
      while (!push(buffer, std::to_string(i))) {
        std::this_thread::yield();
      }
    }
  });
  std::string expected;
  for (int i = 0; i < kDatagrams; ++i) {
    expected += std::to_string(i);
  }
  std::string popped;
  while (popped.size() < expected.size()) {
    const std::string more = pop(buffer, 50, kLongest);
    ASSERT_NE("", more);
    popped += more;
  }
  sender.join();
  EXPECT_EQ(expected, popped);
}

}  // namespace
}  // namespace tevra::tools
