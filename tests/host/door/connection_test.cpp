#include "host/door/connection.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "host/door/open_connections.h"

namespace motion::host::door {
namespace {

using namespace std::chrono_literals;

constexpr ConnectionLimits GENEROUS{60s, 60s, 60s, 100, 50};

class ConnectionTest : public testing::Test {
 protected:
  ConnectionTest() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0); }
  ~ConnectionTest() override {
    close(ends[0]);
    close(ends[1]);
  }

  void arrive(const std::string& text) { EXPECT_EQ(send(ends[1], text.data(), text.size(), 0), std::ssize(text)); }

  static std::string readAll(Connection& sut, std::size_t size = 1000) {
    std::string text;
    std::array<char, 7> bytes{};
    while (text.size() < size) {
      const auto count = sut.read(bytes);
      if (count <= 0) {
        break;
      }
      text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
  }

  std::array<int, 2> ends{-1, -1};
};

TEST_F(ConnectionTest, ReadsWhatArrivesUntilTheEnd) {
  Connection sut(ends[0], GENEROUS);
  arrive("hello, world");
  shutdown(ends[1], SHUT_WR);
  ASSERT_TRUE(sut.awaitRequest());
  EXPECT_EQ(readAll(sut), "hello, world");
  EXPECT_FALSE(sut.awaitRequest());
  EXPECT_FALSE(sut.isTooLarge());
}

TEST_F(ConnectionTest, ALargeHeadEndsAtItsLimit) {
  Connection sut(ends[0], GENEROUS);
  arrive(std::string(101, 'x'));
  ASSERT_TRUE(sut.awaitRequest());
  EXPECT_EQ(readAll(sut).size(), 100U);
  EXPECT_TRUE(sut.isTooLarge());
}

TEST_F(ConnectionTest, TheBodyAndTheNextRequestHaveRoomOfTheirOwn) {
  Connection sut(ends[0], GENEROUS);
  arrive(std::string(300, 'x'));
  ASSERT_TRUE(sut.awaitRequest());
  EXPECT_EQ(readAll(sut, 100).size(), 100U);
  sut.beginBody();
  EXPECT_EQ(readAll(sut, 50).size(), 50U);
  EXPECT_FALSE(sut.isTooLarge());
  ASSERT_TRUE(sut.awaitRequest());
  EXPECT_EQ(readAll(sut, 100).size(), 100U);
}

TEST_F(ConnectionTest, NobodyTakesForEverWithARequest) {
  Connection sut(ends[0], {30ms, 60s, 60s, 100, 50});
  arrive("half a requ");
  ASSERT_TRUE(sut.awaitRequest());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(readAll(sut), "half a requ");
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
}

TEST_F(ConnectionTest, BytesThatTrickleInDoNotMoveTheLimit) {
  Connection sut(ends[0], {50ms, 60s, 60s, 100'000, 50});
  arrive("x");
  ASSERT_TRUE(sut.awaitRequest());
  std::atomic<bool> isDone{false};
  std::thread writer([&] {
    while (!isDone) {
      arrive("x");
      std::this_thread::sleep_for(1ms);
    }
  });
  readAll(sut, 100'000);  // comes back although something arrives all the time
  isDone = true;
  writer.join();
}

TEST_F(ConnectionTest, NobodyStaysForEverWithoutARequest) {
  Connection sut(ends[0], {60s, 60s, 10ms, 100, 50});
  EXPECT_FALSE(sut.awaitRequest());
}

TEST_F(ConnectionTest, WritesAllOrGivesUp) {
  Connection sut(ends[0], {60s, 30ms, 60s, 100, 50});
  EXPECT_FALSE(sut.hasAnswered());
  EXPECT_TRUE(sut.write("answer"));
  EXPECT_TRUE(sut.hasAnswered());
  EXPECT_FALSE(sut.write(std::string(10'000'000, 'x'))) << "nobody reads";
  close(std::exchange(ends[1], -1));
  EXPECT_FALSE(sut.write("gone"));
  EXPECT_FALSE(sut.isWritable());
}

TEST_F(ConnectionTest, AnotherThreadCanEndIt) {
  OpenConnections list;
  Connection sut(ends[0], GENEROUS);
  bool hasRequest = true;
  {
    const OpenConnections::Entry entry(list, dup(ends[0]));
    std::thread server([&] { hasRequest = sut.awaitRequest(); });
    list.endAll(0ms);
    server.join();
  }
  EXPECT_FALSE(hasRequest);
  const OpenConnections::Entry late(list, dup(ends[0]));
  EXPECT_FALSE(sut.write("x")) << "those that come later are ended, too";
}

TEST_F(ConnectionTest, WhoOwnsTheProcessIsWelcome) {
  EXPECT_TRUE(isPeerWelcome(ends[0]));
  EXPECT_FALSE(isPeerWelcome(-1));
  EXPECT_TRUE(isWelcome(1000, 1000));
  EXPECT_TRUE(isWelcome(0, 1000));
  EXPECT_FALSE(isWelcome(1001, 1000));
  EXPECT_FALSE(isWelcome(1000, 0));
}

}  // namespace
}  // namespace motion::host::door
