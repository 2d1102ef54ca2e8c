// Whatever arrives gets an error or an end, and neither the door nor the run is disturbed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "host/door/door_limits.h"
#include "live_door.h"
#include "raw_client.h"

namespace motion::host::door {
namespace {

using testing::HasSubstr;
using Json = nlohmann::json;
using namespace std::string_literals;

class MalformedTrafficTest : public testing::Test {
 protected:
  /// Afterwards a good request is answered, the run has gone on, and no signal was touched.
  ~MalformedTrafficTest() override {
    const std::uint64_t before = live.cycle();
    const Reply reply = live.client().get("/v1/signals");
    EXPECT_TRUE(reply.isFine()) << reply.problem;
    for (const auto& signal : reply.body.at("signals")) {
      EXPECT_EQ(signal.at("value"), false) << signal;
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (live.cycle() == before && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
    EXPECT_GT(live.cycle(), before);
    EXPECT_TRUE(live.finish().isFine());
  }

  /// The answer to these bytes has that status, says so in JSON, and ends the connection.
  void expectError(const std::string& bytes, int status) {
    const RawAnswer answer = askRaw(live.socket(), bytes);
    EXPECT_EQ(answer.status, status) << bytes.substr(0, 100);
    const Json body = Json::parse(answer.body, nullptr, false);
    ASSERT_TRUE(body.is_object()) << answer.body;
    EXPECT_EQ(body.at("error").at("status"), status);
    EXPECT_NE(body.at("error").at("message"), "");
  }

  static std::string put(const std::string& headers, const std::string& body) {
    return "PUT /v1/signals/1 HTTP/1.1\r\nHost: x\r\n" + headers + "\r\n" + body;
  }

  LiveDoor live;
};

TEST_F(MalformedTrafficTest, Garbage) {
  expectError("garbage\r\n\r\n", 400);
  expectError("\r\n\r\n", 400);
  expectError("\0\0\0\0\r\n\r\n"s, 400);
  expectError("\x16\x03\x01\x02garbage of another protocol\r\n\r\n", 400);
  expectError("GET /v1\r\n\r\n", 400);
  expectError("GET /v1 HTTP/3.7\r\n\r\n", 400);
  expectError("FETCH /v1 HTTP/1.1\r\n\r\n", 400);
  expectError("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", 400);
}

TEST_F(MalformedTrafficTest, RandomBytes) {
  std::mt19937 random(4711);  // NOLINT: the same bytes each time
  for (int i = 0; i < 50; ++i) {
    std::string bytes(random() % 2000, ' ');
    for (char& byte : bytes) {
      byte = static_cast<char>(random());
    }
    const RawAnswer answer = askRaw(live.socket(), bytes);
    EXPECT_TRUE(answer.status == 0 || answer.status >= 400) << i << ": " << answer.status;
  }
}

TEST_F(MalformedTrafficTest, HalfARequest) {
  for (const char* const bytes : {"", "G", "GET /v1", "GET /v1 HTTP/1.1\r\n", "GET /v1 HTTP/1.1\r\nHost: x\r\n"}) {
    const RawAnswer answer = askRaw(live.socket(), bytes);
    EXPECT_TRUE(answer.status == 0 || answer.status == 400) << bytes << answer.status;
  }
  expectError(put("Content-Length: 14\r\n", "{\"value\":t"), 400);
  expectError(put("Content-Length: 4000\r\n", "{\"value\":true}"), 400);
}

TEST_F(MalformedTrafficTest, ClientsThatHangUp) {
  for (int i = 0; i < 40; ++i) {
    RawClient client(live.socket());
    client.send(i % 2 == 0 ? "GET /v1/signals HTTP/1.1\r\nHost: x\r\n\r\n" : put("Content-Length: 14\r\n", "{\"va"));
    client.hangUp();
  }
}

TEST_F(MalformedTrafficTest, LargeHeads) {
  const std::string large(MAX_HEAD, 'x');
  expectError("GET /v1 HTTP/1.1\r\nHost: " + large + "\r\n\r\n", 431);
  expectError("GET /" + large + " HTTP/1.1\r\n\r\n", 431);
  expectError(large + large, 431);
  std::string many = "GET /v1 HTTP/1.1\r\n";
  for (int i = 0; i < 2000; ++i) {
    many += "a: b\r\n";
  }
  expectError(many + "\r\n", 431);
  expectError("GET /v1/" + std::string(MAX_TARGET, 'x') + " HTTP/1.1\r\nHost: x\r\n\r\n", 414);
  expectError("PUT /v1/" + std::string(MAX_TARGET, 'x') + " HTTP/1.1\r\nHost: x\r\n\r\n", 414);
  expectError("GET /v1?" + std::string(MAX_TARGET, 'x') + " HTTP/1.1\r\nHost: x\r\n\r\n", 414);
}

TEST_F(MalformedTrafficTest, LargeBodies) {
  const std::string large(MAX_BODY + 1, ' ');
  expectError(put("Content-Length: " + std::to_string(large.size()) + "\r\n", large), 413);
  expectError(put("Content-Length: 1000000000000\r\n", "{\"value\":true}"), 413);
  expectError(put("Content-Length: 99999999999999999999999999\r\n", "{\"value\":true}"), 413);
  expectError(put("Transfer-Encoding: chunked\r\n", "1001\r\n" + large + "\r\n0\r\n\r\n"), 413);
  const std::string fits = "{\"valu\":true}" + std::string(MAX_BODY - 13, ' ');
  expectError(put("Content-Length: " + std::to_string(fits.size()) + "\r\nConnection: close\r\n", fits), 400);
}

TEST_F(MalformedTrafficTest, LengthsThatAreNone) {
  for (const char* const length : {"x", "-1", "+14", "14 14", "0x0e", "1e1"}) {
    expectError(put("Content-Length: "s + length + "\r\n", "{\"value\":true}"), 400);
  }
  expectError(put("Content-Length: 14\r\nContent-Length: 14\r\n", "{\"value\":true}"), 400);
  expectError(put("Content-Length: 14\r\nTransfer-Encoding: chunked\r\n", "{\"value\":true}"), 400);
}

TEST_F(MalformedTrafficTest, ChunkedNonsense) {
  const std::string chunked = "Transfer-Encoding: chunked\r\n";
  for (const char* const body :
       {"", "x", "zz\r\n", "e\r\n{\"value\":true}", "ffffffffffffffff\r\n{\"value\":true}\r\n0\r\n\r\n",
        "-e\r\n{\"value\":true}\r\n0\r\n\r\n", "5\r\n{\"value\":true}\r\n0\r\n\r\n"}) {
    const RawAnswer answer = askRaw(live.socket(), put(chunked, body));
    EXPECT_TRUE(answer.status == 400 || answer.status == 413) << body << ": " << answer.status;
  }
  EXPECT_EQ(askRaw(live.socket(), put(chunked, "e\r\n{\"value\":false\r\n1\r\n}\r\n0\r\n\r\n")).status, 200)
      << "not all is nonsense";
}

TEST_F(MalformedTrafficTest, BodiesOfOtherKinds) {
  expectError(put("Content-Type: multipart/form-data; boundary=x\r\nContent-Length: 14\r\n", "{\"value\":true}"), 415);
  expectError(put("Content-Type: text/plain\r\nConnection: close\r\nContent-Length: 14\r\n", "{\"value\":true}"), 415);
  expectError(put("Content-Encoding: gzip\r\nContent-Length: 14\r\n", "{\"value\":true}"), 400);
  expectError(put("Connection: close\r\nContent-Length: 14\r\n", "{\"value\":\0rue}"s), 400);
}

TEST_F(MalformedTrafficTest, WhatFollowsAnUnreadBodyIsNoRequest) {
  const std::string hidden = "PUT /v1/signals/1 HTTP/1.1\r\nContent-Length: 14\r\n\r\n{\"value\":true}";
  for (const char* const method : {"GET", "DELETE", "POST", "PATCH", "OPTIONS"}) {
    RawClient client(live.socket());
    client.send(method + " /v1/why HTTP/1.1\r\nContent-Length: "s + std::to_string(hidden.size()) + "\r\n\r\n" + hidden);
    RawAnswer answer = client.readAnswer();
    EXPECT_EQ(answer.status, method == "GET"s ? 200 : 405) << method;
    EXPECT_EQ(answer.headers["connection"], "close");
    EXPECT_EQ(client.readAll(), "") << method;
  }
  RawClient client(live.socket());
  client.send("garbage\r\n\r\n" + hidden);
  EXPECT_EQ(client.readAnswer().status, 400);
  EXPECT_EQ(client.readAll(), "");
}

TEST_F(MalformedTrafficTest, OddPathsAndHeaders) {
  EXPECT_EQ(ask(live.socket(), "GET", "/v1/signals/%00").status, 400);
  EXPECT_EQ(ask(live.socket(), "GET", "/v1/signals/1%2f2").status, 404);
  EXPECT_EQ(ask(live.socket(), "GET", "/v1/%zz").status, 404);
  EXPECT_EQ(ask(live.socket(), "PUT", "/v1/signals/%0A").status, 400);
  EXPECT_EQ(ask(live.socket(), "GET", "/v1/../../etc/passwd").status, 404);
  EXPECT_EQ(ask(live.socket(), "GET", "http://elsewhere/v1").status, 404);
  EXPECT_EQ(ask(live.socket(), "GET", "*").status, 404);
  EXPECT_EQ(ask(live.socket(), "GET", "/v1?a=1&b=2").status, 400);
  EXPECT_EQ(ask(live.socket(), "GET", "/v1", "Range: bytes=0-3\r\n").status, 200) << "the whole answer";
  EXPECT_EQ(ask(live.socket(), "GET", "/v1", "Kavo-Scopes: \xff\xfe\r\n").status, 403);
  EXPECT_EQ(ask(live.socket(), "HEAD", "/v1", "Connection: close\r\n").status, 405);
}

TEST_F(MalformedTrafficTest, LongPathsAndHeadersNeedNoStack) {
  const std::string path = "/v1/signals/";
  for (const std::size_t length : {std::size_t{64}, std::size_t{65}, std::size_t{900}, MAX_TARGET}) {
    const std::string target = path + std::string(length - path.size(), '1');
    EXPECT_GE(ask(live.socket(), "PUT", target, "Content-Length: 0\r\n").status, 400) << length;
    EXPECT_GE(ask(live.socket(), "PUT", target, "Content-Length: 14\r\nConnection: close\r\n").status, 400) << length;
    EXPECT_GE(ask(live.socket(), "GET", target).status, 400) << length;
  }
  for (const char* const name : {"Range: bytes=", "rAnGe:bytes=", "Ranges: bytes="}) {
    for (const std::size_t digits : {std::size_t{10}, std::size_t{900}, MAX_HEAD - 200}) {
      EXPECT_EQ(ask(live.socket(), "GET", "/v1", name + std::string(digits, '1') + "-\r\n").status, 200) << digits;
    }
  }
  EXPECT_EQ(ask(live.socket(), "GET", "/v1", "Range: " + std::string(1000, ',') + "\r\n").status, 200);
  RawClient client(live.socket());
  for (int i = 0; i < 3; ++i) {
    client.send("GET /v1 HTTP/1.1\r\nRange: bytes=" + std::string(3000, '1') + "-\r\n\r\n");
    EXPECT_EQ(client.readAnswer().status, 200) << "each request of a connection";
  }
}

TEST_F(MalformedTrafficTest, ASlowWriterHoldsNobodyUp) {
  std::list<RawClient> slow;
  for (std::size_t i = 0; i + 1 < MAX_CONNECTIONS; ++i) {
    slow.emplace_back(live.socket()).send("GET /v1 HT");
  }
  EXPECT_TRUE(live.client().get("/v1").isFine());
  for (RawClient& client : slow) {
    EXPECT_TRUE(client.send("TP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n"));
    EXPECT_THAT(client.readAll(), HasSubstr("200 OK"));
  }
}

TEST_F(MalformedTrafficTest, AClientThatReadsNothingIsLeftBehind) {
  RawClient client(live.socket());
  for (int i = 0; i < 100 && client.send("GET /v1/signals HTTP/1.1\r\nHost: x\r\n\r\n"); ++i) {
  }
  EXPECT_TRUE(live.client().get("/v1").isFine());
}

}  // namespace
}  // namespace motion::host::door
