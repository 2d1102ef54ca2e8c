// Fuzz target: what clients write to the door of a real-time run, down to the bytes of the socket.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/targets.h"
#include "host/datalayer/data_layer.h"
#include "host/door/api.h"
#include "host/door/http_server.h"
#include "host/door/live_run.h"

namespace motion::fuzz {
namespace {

namespace door = host::door;
using comm::datalayer::DL_OK;
using comm::datalayer::Variant;

/// How long the door may take with the next bytes of an answer; streams of events never end by themselves.
constexpr int PATIENCE = 20;  // [ms]

/// All signals in one: always reset, and writable.
class Signals : public comm::datalayer::IProviderNode {
 public:
  void onCreate(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& answer) override {
    answer(comm::datalayer::DL_UNSUPPORTED, nullptr);
  }
  void onRemove(const std::string& /*address*/, const ResponseCallback& answer) override {
    answer(comm::datalayer::DL_UNSUPPORTED, nullptr);
  }
  void onBrowse(const std::string& /*address*/, const ResponseCallback& answer) override { answer(DL_OK, nullptr); }
  void onRead(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& answer) override {
    const Variant value(false);
    answer(DL_OK, &value);
  }
  void onWrite(const std::string& /*address*/, const Variant* data, const ResponseCallback& answer) override {
    answer(DL_OK, data);
  }
  void onMetadata(const std::string& /*address*/, const ResponseCallback& answer) override { answer(DL_OK, nullptr); }
};

/// A door without a run behind it. Never deleted: a fuzzer's end has no order.
class OpenDoor {
 public:
  OpenDoor()
      : m_provider(m_dataLayer.createProvider(std::string(host::datalayer::DataLayer::PROVIDER_ENDPOINT))),
        m_api(m_dataLayer, m_run,
              {"fuzz", {"motion.operate", "motion.view"}, [this] { return m_now += std::chrono::hours(1); }}),
        m_server([this](const door::Request& request) { return m_api.answer(request); }) {
    require(m_provider->start() == DL_OK, "the provider starts");
    require(m_provider->registerNode("motion/state/functions/kavo/signals/*", &m_signals) == DL_OK, "the nodes are there");
    m_run.begin({"fuzz.yaml", 0.001, {"first"}});
    m_address.sun_family = AF_UNIX;
    const std::string name = "kavo-fuzz-" + std::to_string(getpid());  // abstract: no file is left behind
    std::memcpy(m_address.sun_path + 1, name.data(), name.size());
    m_length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(listening >= 0 && bind(listening, address(), m_length) == 0 && listen(listening, 64) == 0, "a socket listens");
    std::string problem;
    require(m_server.start(listening, problem), "the server starts");
  }

  [[nodiscard]] int connect() const {
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(descriptor >= 0 && ::connect(descriptor, address(), m_length) == 0, "the door takes connections");
    return descriptor;
  }

 private:
  [[nodiscard]] const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&m_address); }

  host::datalayer::DataLayer m_dataLayer;
  std::unique_ptr<comm::datalayer::IProvider> m_provider;
  Signals m_signals;
  door::LiveRun m_run;
  std::chrono::steady_clock::time_point m_now{};
  door::Api m_api;
  door::HttpServer m_server;
  sockaddr_un m_address{};
  socklen_t m_length = 0;
};

std::string readAnswer(int descriptor) {
  std::string text;
  std::array<char, 4096> chunk{};
  while (true) {
    pollfd waiting{descriptor, POLLIN, 0};
    if (poll(&waiting, 1, PATIENCE) <= 0) {
      return text;
    }
    const auto count = ::recv(descriptor, chunk.data(), chunk.size(), 0);
    if (count <= 0) {
      return text;
    }
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
}

std::string exchange(const OpenDoor& open, const char* bytes, std::size_t size) {
  const int descriptor = open.connect();
  static_cast<void>(::send(descriptor, bytes, size, MSG_NOSIGNAL));
  shutdown(descriptor, SHUT_WR);
  auto answer = readAnswer(descriptor);
  close(descriptor);
  return answer;
}

}  // namespace

void fuzzDoor(Bytes bytes) {
  static const auto* const open = new OpenDoor();
  const auto answer = exchange(*open, reinterpret_cast<const char*>(bytes.data()), bytes.size());
  require(answer.empty() || answer.starts_with("HTTP/1."), "what comes back is HTTP");
}

}  // namespace motion::fuzz
