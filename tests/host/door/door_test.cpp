// The door over a real socket, while a run goes on.
#include "host/door/door.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <list>
#include <nlohmann/json.hpp>
#include <thread>

#include "host/door/door_limits.h"
#include "live_door.h"
#include "raw_client.h"

namespace motion::host::door {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Json = nlohmann::ordered_json;

/// Asks again until the answer is as wanted; a slow machine gets its time.
template <typename CONDITION>
bool eventually(const CONDITION& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

TEST(DoorTest, ActsOnTheRun) {
  LiveDoor live;
  const DoorClient client = live.client();
  EXPECT_EQ(client.get("/v1/signals/5").body, (Json{{"id", 5}, {"name", "part in place"}, {"value", false}}));
  const Reply put = client.put("/v1/signals/5", {{"value", true}});
  ASSERT_TRUE(put.isFine()) << put.problem;
  EXPECT_TRUE(eventually([&] { return client.get("/v1/signals/6").body.at("value") == true; })) << "B went on";
  EXPECT_EQ(client.get("/v1/signals/5").body.at("value"), false) << "B has taken it";
  const observe::RunRecord& record = live.finish();
  EXPECT_TRUE(record.isFine()) << record.stuck;
}

TEST(DoorTest, TellsAboutTheRunThatGoesOn) {
  LiveDoor live;
  const auto cycle = [&] { return live.client().get("/v1").body.at("cycle").get<std::uint64_t>(); };
  EXPECT_TRUE(eventually([&] { return cycle() > 0; }));
  const std::uint64_t before = cycle();
  EXPECT_TRUE(eventually([&] { return cycle() > before; }));
  Json why;
  EXPECT_TRUE(eventually([&] {
    why = live.client().get("/v1/why").body;
    return why.at("waits").at("objects").size() == 2;
  }));
  EXPECT_GT(why.at("cycle"), before);
  EXPECT_EQ(why.at("waits").at("neededSignals"), Json({5, 99}));
  EXPECT_THAT(why.at("text").get<std::string>(),
              HasSubstr("A waits in A#1 WaitForSignal (line 4) since cycle 1 for signal 99 'end'"));
}

TEST(DoorTest, WatchersSeeEachChangeInOrderUntilTheEnd) {
  LiveDoor live;
  std::vector<std::string> seen;
  std::promise<void> hasBegun;
  std::thread watcher([&] {
    const Reply reply = live.client().watch("/v1/events?signals=5,6", [&](const std::string& name, const Json& data) {
      if (name == "signal") {
        const auto by = data.at("by");
        seen.push_back(std::to_string(data.at("id").get<int>()) + (data.at("value").get<bool>() ? " set " : " reset ") +
                       (by.is_null() ? "" : by.get<std::string>()));
      } else {
        seen.push_back(name);
      }
      if (seen.size() == 2) {
        hasBegun.set_value();
      }
    });
    EXPECT_TRUE(reply.isFine()) << reply.problem;
  });
  hasBegun.get_future().wait();
  EXPECT_TRUE(live.client().put("/v1/signals/5", {{"value", true}}).isFine());
  EXPECT_TRUE(eventually([&] { return live.client().get("/v1/signals/6").body.at("value") == true; }));
  live.finish();
  watcher.join();
  EXPECT_THAT(seen, ElementsAre("5 reset ", "6 reset ", "5 set outside", "5 reset B#1", "6 set B#2", "end"));
}

TEST(DoorTest, OnlyItsOwnerCanConnectAndNothingIsLeftOfIt) {
  LiveDoor live;
  struct stat status {};
  ASSERT_EQ(lstat(live.socket().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  live.finish();
  EXPECT_FALSE(std::filesystem::exists(live.socket()));
  EXPECT_EQ(live.client().get("/v1").status, 0);
}

TEST(DoorTest, ScopesNarrowARequestAndNeverWidenIt) {
  LiveDoor live;
  const DoorClient viewer(live.socket(), std::vector<std::string>{"motion.view"});
  EXPECT_EQ(viewer.get("/v1").body.at("scopes"), Json({"motion.view"}));
  EXPECT_EQ(viewer.get("/v1/signals").status, 200);
  EXPECT_EQ(viewer.put("/v1/signals/5", {{"value", true}}).status, 403);
  const DoorClient manager(live.socket(), std::vector<std::string>{"motion.manage"});
  EXPECT_EQ(manager.get("/v1/signals").status, 403);
  EXPECT_EQ(manager.put("/v1/signals/5", {{"value", true}}).status, 403);
  const std::string both = "Kavo-Scopes: motion.view\r\nKavo-Scopes: motion.manage\r\n";
  EXPECT_EQ(ask(live.socket(), "GET", "/v1", both).status, 403) << "both lines count";
  EXPECT_EQ(live.client().get("/v1/signals/5").body.at("value"), false);
}

TEST(DoorTest, WarnsOfScopesThatNobodyKnows) {
  LiveDoor live({"kavo test", {"motion.view", "motion.operat"}});
  EXPECT_EQ(live.client().get("/v1/signals").status, 200);
  EXPECT_EQ(live.client().put("/v1/signals/5", {{"value", true}}).status, 403);
  EXPECT_THAT(live.finish().warning, HasSubstr("the door grants motion.operat, which is no scope here; there are: motion."));
}

TEST(DoorTest, AConnectionServesManyRequests) {
  LiveDoor live;
  RawClient client(live.socket());
  for (int i = 0; i < 20; ++i) {
    client.send("GET /v1/signals/7 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(client.readAnswer().body, "{\"id\":7,\"name\":null,\"value\":false}\n") << i;
  }
  const std::string put = "PUT /v1/signals/7 HTTP/1.1\r\nHost: x\r\nContent-Length: 14\r\n\r\n{\"value\":true}";
  client.send(put + "GET /v1/signals/7 HTTP/1.1\r\nHost: x\r\n\r\n" + put);  // one behind the other, without waiting
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(client.readAnswer().body, "{\"id\":7,\"name\":null,\"value\":true}\n") << i;
  }
  client.send("GET /v1 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(client.readAnswer().headers["connection"], "close");
  EXPECT_EQ(client.readAll(), "");
}

TEST(DoorTest, MoreConnectionsThanItServesWaitForTheirTurn) {
  LiveDoor live;
  std::list<RawClient> crowd;
  for (std::size_t i = 0; i < MAX_CONNECTIONS; ++i) {
    crowd.emplace_back(live.socket()).send("GET /v1/signals/1 HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_EQ(crowd.back().readAnswer().status, 200) << i;
  }
  RawClient late(live.socket());
  late.send("GET /v1/signals/1 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  crowd.front().send("GET /v1/signals/1 HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(crowd.front().readAnswer().status, 200);
  EXPECT_EQ(late.readAnswer().status, 200) << "one has gone";
}

TEST(DoorTest, ThereAreNoMoreWatchersThanAllowed) {
  LiveDoor live;
  std::list<RawClient> watchers;
  const std::string watch = "GET /v1/events?signals=1 HTTP/1.1\r\nHost: x\r\n\r\n";
  for (std::size_t i = 0; i < MAX_WATCHERS; ++i) {
    watchers.emplace_back(live.socket()).send(watch);
    EXPECT_THAT(watchers.back().readUntil("\"by\":null}"), HasSubstr("HTTP/1.1 200 OK")) << i;
  }
  const RawAnswer refusal = ask(live.socket(), "GET", "/v1/events");
  EXPECT_EQ(refusal.status, 503);
  EXPECT_EQ(refusal.headers.at("retry-after"), "1");
  watchers.pop_front();  // which is noticed at the next heartbeat
  EXPECT_TRUE(eventually([&] {
    RawClient next(live.socket());
    next.send(watch);
    return next.readAnswer().status == 200;
  }));
  EXPECT_THAT(watchers.front().readUntil(": cycle "), HasSubstr(": cycle ")) << "a heartbeat";
}

TEST(DoorTest, ClosesWhateverItsClientsDo) {
  LiveDoor live;
  RawClient idle(live.socket());
  RawClient half(live.socket());
  half.send("GET /v1 HTT");
  RawClient watcher(live.socket());
  watcher.send("GET /v1/events HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_THAT(watcher.readUntil("\"by\":null}"), HasSubstr("200 OK"));
  std::list<RawClient> crowd;
  for (std::size_t i = 0; i < MAX_CONNECTIONS + 4; ++i) {
    crowd.emplace_back(live.socket());
  }
  EXPECT_TRUE(live.finish().isFine());
  EXPECT_THAT(watcher.readAll(), HasSubstr("event: end\n"));
  EXPECT_EQ(idle.readAll(), "");
}

TEST(DoorTest, LimitsTheRateWithTheClockThatItWasGiven) {
  DoorConfig config{"kavo test", {"motion.operate"}};
  const auto now = std::chrono::steady_clock::now();
  config.clock = [now] { return now; };
  LiveDoor live(config);
  RawClient client(live.socket());
  for (int i = 0; i < static_cast<int>(REQUEST_BURST); ++i) {
    client.send("GET /v1 HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_EQ(client.readAnswer().status, 200) << i;
  }
  client.send("GET /v1 HTTP/1.1\r\nHost: x\r\n\r\n");
  RawAnswer refusal = client.readAnswer();
  EXPECT_EQ(refusal.status, 429);
  EXPECT_EQ(refusal.headers["retry-after"], "1");
}

TEST(DoorTest, IsOpenAndSilentBeforeTheRun) {
  const ScratchDir scratch;
  std::string problem;
  Door sut({"kavo test", {}});
  ASSERT_TRUE(sut.open(scratch / "x.sock", problem)) << problem;
  EXPECT_TRUE(isAlive(scratch / "x.sock"));
  Door second({"kavo test", {}});
  EXPECT_FALSE(second.open(scratch / "x.sock", problem));
  sut.close();
  EXPECT_FALSE(std::filesystem::exists(scratch / "x.sock"));
  EXPECT_TRUE(second.open(scratch / "x.sock", problem)) << problem;
}

TEST(DoorClientTest, FindsTheDoorsThatAnswer) {
  LiveDoor live;
  std::string problem;
  auto doors = livingDoors(live.socket().parent_path(), problem);
  ASSERT_EQ(doors.size(), 1U) << problem;
  EXPECT_EQ(doors[0].socket, live.socket());
  EXPECT_EQ(doors[0].scenario, "test.yaml");
  live.finish();
  EXPECT_TRUE(livingDoors(live.socket().parent_path(), problem).empty());
  EXPECT_EQ(problem, "");
  EXPECT_TRUE(livingDoors("/missing", problem).empty());
}

TEST(DoorClientTest, DoesNotTrustADirectoryThatOthersCanChange) {
  const ScratchDir scratch;
  ASSERT_EQ(chmod(scratch.path().c_str(), 0777), 0);
  std::string problem;
  EXPECT_TRUE(livingDoors(scratch.path(), problem).empty());
  EXPECT_THAT(problem, HasSubstr("others may write"));
}

TEST(DoorClientTest, WaitsForItsTurnWhenTheQueueIsFull) {
  LiveDoor live;
  std::list<RawClient> crowd;
  constexpr std::size_t ON_THE_THRESHOLD = 1;    // accepted, and waits for a free thread
  constexpr std::size_t BEYOND_THE_BACKLOG = 1;  // the system queues one more than it was told
  for (std::size_t i = 0; i < MAX_CONNECTIONS + ON_THE_THRESHOLD + MAX_QUEUED + BEYOND_THE_BACKLOG; ++i) {
    crowd.emplace_back(live.socket());
  }
  std::thread client([&] { EXPECT_TRUE(live.client().get("/v1").isFine()); });
  std::thread another([&] { EXPECT_TRUE(live.client().put("/v1/signals/1", {{"value", false}}).isFine()); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // time to be refused, which does no harm
  crowd.clear();
  client.join();
  another.join();
}

TEST(DoorClientTest, SaysWhatTheDoorSays) {
  LiveDoor live;
  const Reply reply = live.client().get("/v1/signals/100");
  EXPECT_EQ(reply.status, 404);
  EXPECT_EQ(reply.problem, "There is no signal '100'. The signals are 0 to 99.");
  const Reply watch = live.client().watch("/v1/events?signals=x", [](const std::string&, const Json&) { FAIL(); });
  EXPECT_EQ(watch.status, 400);
  EXPECT_THAT(watch.problem, HasSubstr("'x' in the query is no signal"));
  const Reply nobody = DoorClient("/tmp/kavo-nobody.sock").get("/v1");
  EXPECT_EQ(nobody.status, 0);
  EXPECT_THAT(nobody.problem, HasSubstr("no run answers at /tmp/kavo-nobody.sock"));
  EXPECT_EQ(DoorClient("/tmp/kavo-nobody.sock").watch("/v1/events", [](const std::string&, const Json&) {}).status, 0);
}

}  // namespace
}  // namespace motion::host::door
