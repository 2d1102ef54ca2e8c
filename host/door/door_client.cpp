#include "host/door/door_client.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <httplib.h>

#include <chrono>
#include <thread>

#include "host/door/event_reader.h"
#include "host/door/socket_file.h"

namespace motion::host::door {

namespace {

constexpr std::chrono::seconds LIMIT{10};
constexpr std::chrono::milliseconds NEXT_TRY{10};

/// Asks again while the queue at the door is full: nothing of the request has been sent then.
template <typename SEND>
httplib::Result sendInTurn(const std::filesystem::path& socket, const SEND& send) {
  const auto deadline = std::chrono::steady_clock::now() + LIMIT;
  for (;;) {
    httplib::Result result = send();
    if (result.error() != httplib::Error::Connection || std::chrono::steady_clock::now() > deadline || !isAlive(socket)) {
      return result;
    }
    std::this_thread::sleep_for(NEXT_TRY);
  }
}

/// A client for one exchange. The path takes the place of the host's name; the port means nothing.
class Exchange {
 public:
  Exchange(const std::filesystem::path& socket, const std::optional<std::vector<std::string>>& scopes)
      : m_socket(socket.string()), m_client(m_socket, 80) {
    m_client.set_address_family(AF_UNIX);
    m_client.set_connection_timeout(LIMIT);
    m_client.set_read_timeout(LIMIT);
    m_client.set_write_timeout(LIMIT);
    m_headers.emplace("Host", "localhost");
    if (scopes) {
      m_headers.emplace("Kavo-Scopes", fmt::format("{}", fmt::join(*scopes, ", ")));
    }
  }

  [[nodiscard]] httplib::ClientImpl& client() noexcept { return m_client; }
  [[nodiscard]] const httplib::Headers& headers() const noexcept { return m_headers; }

  [[nodiscard]] Reply replyFrom(const httplib::Result& result) const {
    return result ? replyFrom(result->status, result->body) : nobody(result.error());
  }

  [[nodiscard]] static Reply replyFrom(int status, const std::string& text) {
    Reply reply{status, DoorClient::Json::parse(text, nullptr, false), ""};
    if (reply.body.is_discarded()) {
      reply.problem = fmt::format("the run answered with status {}, and no JSON", status);
    } else if (status != 200) {
      const auto pointer = DoorClient::Json::json_pointer("/error/message");
      reply.problem = reply.body.contains(pointer) && reply.body.at(pointer).is_string()
                          ? reply.body.at(pointer).get<std::string>()
                          : fmt::format("the run answered with status {}", status);
    }
    return reply;
  }

  [[nodiscard]] Reply nobody(httplib::Error error) const {
    return {0, nullptr, fmt::format("no run answers at {} ({})", m_socket, httplib::to_string(error))};
  }

 private:
  std::string m_socket;
  httplib::ClientImpl m_client;
  httplib::Headers m_headers;
};

}  // namespace

Reply DoorClient::get(const std::string& path) const {
  Exchange exchange(m_socket, m_scopes);
  return exchange.replyFrom(sendInTurn(m_socket, [&] { return exchange.client().Get(path, exchange.headers()); }));
}

Reply DoorClient::put(const std::string& path, const Json& body) const {
  Exchange exchange(m_socket, m_scopes);
  return exchange.replyFrom(sendInTurn(
      m_socket, [&] { return exchange.client().Put(path, exchange.headers(), body.dump(), "application/json"); }));
}

Reply DoorClient::watch(const std::string& path, const EventHandler& onEvent) const {
  Exchange exchange(m_socket, m_scopes);
  int status = 0;
  bool hasEnded = false;
  std::string refusal;
  EventReader reader([&](const std::string& name, const std::string& data) {
    hasEnded = hasEnded || name == "end";
    if (const Json json = Json::parse(data, nullptr, false); !json.is_discarded()) {
      onEvent(name, json);
    }
  });
  const auto onStatus = [&status](const httplib::Response& response) {
    status = response.status;
    return true;
  };
  const auto onContent = [&](const char* bytes, std::size_t size) {
    if (status == 200) {
      reader.feed({bytes, size});
    } else {
      refusal.append(bytes, size);
    }
    return true;
  };
  const auto result =
      sendInTurn(m_socket, [&] { return exchange.client().Get(path, exchange.headers(), onStatus, onContent); });
  if (status == 0) {
    return exchange.nobody(result.error());
  }
  if (status != 200) {
    return Exchange::replyFrom(status, refusal);
  }
  return {status, nullptr, hasEnded ? "" : "the run broke off"};
}

std::vector<LivingDoor> livingDoors(const std::filesystem::path& directory, std::string& problem) {
  std::vector<LivingDoor> doors;
  std::error_code ignored;
  if (!std::filesystem::exists(directory, ignored) || !isSafe(directory, problem)) {
    return doors;
  }
  for (const std::filesystem::path& socket : livingSockets(directory)) {
    const Reply reply = DoorClient(socket).get("/v1");
    if (reply.status == 200) {
      doors.push_back({socket, reply.body.value("scenario", "")});
    }
  }
  return doors;
}

}  // namespace motion::host::door
