#include "host/door/http_server.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "host/door/event_stream.h"
#include "host/door/socket_file.h"
#include "host/motion/events.h"
#include "raw_client.h"
#include "support/scratch_dir.h"

namespace motion::host::door {
namespace {

/// A server whose every answer is a stream of events of one run.
class StreamingServer {
 public:
  StreamingServer() {
    m_record.signalNames.resize(kavo::SIGNAL_COUNT);
    m_run.begin({"test.yaml", 0.001, {}});
    std::string problem;
    EXPECT_TRUE(m_socket.open(m_scratch / "server.sock", problem)) << problem;
    EXPECT_TRUE(m_sut.start(m_socket.release(), problem)) << problem;
  }

  [[nodiscard]] std::filesystem::path path() const { return m_socket.path(); }
  void change() {
    m_record.signals.push_back({1, 1, true, OUTSIDE, 0});
    m_run.look(m_record, 1);
  }
  void end() {
    m_run.end();
    m_sut.stop();
  }

 private:
  Response stream() const {
    Response response;
    response.contentType = "text/event-stream";
    response.events = std::make_shared<EventStream>(m_run, SignalSet("10"), nullptr);
    return response;
  }

  motion::test::ScratchDir m_scratch;
  observe::RunRecord m_record;
  LiveRun m_run;
  SocketFile m_socket;
  HttpServer m_sut{[this](const Request& /*request*/) { return stream(); }};
};

/// However close upon one another the last change, the end of the run and that of the server come.
TEST(HttpServerTest, TellsEachStreamItsLastEventBeforeItStops) {
  for (int delay = 0; delay < 60; ++delay) {
    StreamingServer server;
    RawClient watcher(server.path());
    watcher.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_THAT(watcher.readUntil("\"by\":null}"), testing::HasSubstr("200 OK"));
    server.change();
    std::this_thread::sleep_for(std::chrono::microseconds(5 * delay));
    server.end();
    ASSERT_THAT(watcher.readAll(), testing::HasSubstr("event: end\n")) << "after " << 5 * delay << " us";
  }
}

}  // namespace
}  // namespace motion::host::door
