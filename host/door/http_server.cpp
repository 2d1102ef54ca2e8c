#include "host/door/http_server.h"

#include <fmt/format.h>
#include <httplib.h>

#include <atomic>
#include <cctype>
#include <charconv>
#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "host/door/connection.h"
#include "host/door/door_limits.h"
#include "host/door/event_stream.h"
#include "host/door/open_connections.h"
#include "host/door/refusal.h"
#include "host/door/worker_pool.h"

namespace motion::host::door {

namespace {

/// Room for the framing of a body that travels in pieces.
constexpr ConnectionLimits LIMITS{REQUEST_LIMIT, WRITE_LIMIT, IDLE_LIMIT, MAX_HEAD, 2 * MAX_BODY};

/// The connection that this thread serves: handlers of errors learn of it in no other way.
thread_local const Connection* t_connection = nullptr;

/// Ranges are not served. httplib takes the header apart by a regular expression, which needs stack for each of its bytes,
/// so it gets to see another name. It reads heads byte by byte.
class RangeHider {
 public:
  void hide(char& byte) noexcept {
    constexpr std::string_view NAME = "range";
    if (byte == '\n') {
      m_matched = 0;
    } else if (m_matched < NAME.size() && std::tolower(static_cast<unsigned char>(byte)) == NAME[m_matched]) {
      if (++m_matched == NAME.size()) {
        byte = '_';
      }
    } else {
      m_matched = NAME.size();  // another line
    }
  }

 private:
  std::size_t m_matched = 0;  ///< of the name, in this line
};

class ConnectionStream final : public httplib::Stream {
 public:
  explicit ConnectionStream(Connection& connection) : m_connection(connection) {}

  bool is_readable() const override { return m_connection.isReadable(); }
  bool is_writable() const override { return m_connection.isWritable(); }
  ssize_t read(char* bytes, size_t size) override {
    const ssize_t count = m_connection.read({bytes, size});
    if (count == 1 && m_isInHead) {
      m_line.hide(*bytes);
    }
    return count;
  }
  void beginHead() noexcept {
    m_isInHead = true;
    m_line = {};
  }
  void endHead() noexcept { m_isInHead = false; }
  ssize_t write(const char* bytes, size_t size) override {
    return m_connection.write({bytes, size}) ? static_cast<ssize_t>(size) : -1;
  }
  void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
  socket_t socket() const override { return m_connection.descriptor(); }

 private:
  Connection& m_connection;
  bool m_isInHead = true;
  RangeHider m_line;
};

/// The workers as httplib wants them.
class Tasks final : public httplib::TaskQueue {
 public:
  explicit Tasks(WorkerPool& workers) : m_workers(workers) {}

  void enqueue(std::function<void()> work) override { m_workers.add(std::move(work)); }
  void shutdown() override { m_workers.finish(); }

 private:
  WorkerPool& m_workers;
};

/// What is known of a body before it is read.
struct BodyPlan {
  int refusal = 0;       ///< status with which it is refused unread, 0 = it may be read
  bool isThere = false;  ///< there is one to be read
  bool mustEnd = false;  ///< the end of the request is uncertain: the connection ends with the answer
};

/// httplib is to read the body. It finds out by a regular expression, which needs stack for each byte of the path; a path
/// that is longer than all that there are is answered without that.
bool isRouted(const httplib::Request& request) {
  return request.method == "PUT" && request.path.size() <= MAX_ROUTED_PATH;
}

BodyPlan planBody(const httplib::Request& request) {
  const bool isChunked = request.has_header("Transfer-Encoding");
  const std::size_t lengths = request.get_header_value_count("Content-Length");
  if (lengths > 1 || (lengths == 1 && isChunked)) {
    return {400, false, true};
  }
  std::size_t size = 0;
  if (lengths == 1) {
    const std::string text = request.get_header_value("Content-Length");
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (error == std::errc::result_out_of_range) {
      return {413, false, true};
    }
    if (error != std::errc() || end != text.data() + text.size()) {
      return {400, false, true};
    }
  }
  const bool isThere = isChunked || size > 0;
  if (request.target.size() > MAX_TARGET) {
    return {414, false, isThere};
  }
  if (!isRouted(request)) {
    return {0, false, isThere};  // nobody reads it
  }
  if (size > MAX_BODY) {
    return {413, false, true};
  }
  if (request.is_multipart_form_data()) {
    return {415, false, isThere};
  }
  return {0, isThere, isChunked};
}

Request requestFrom(const httplib::Request& from, std::string body) {
  Request request{from.method, from.path, {from.params.begin(), from.params.end()}, {}, {}, std::move(body)};
  const auto [begin, end] = from.headers.equal_range("Kavo-Scopes");
  for (auto header = begin; header != end; ++header) {
    request.scopes = request.scopes ? *request.scopes + "," + header->second : header->second;
  }
  if (from.has_header("Content-Type")) {
    request.contentType = from.get_header_value("Content-Type");
  }
  return request;
}

/// Counts the streams of events that are under way.
class OpenStreams {
 public:
  /// One of them, until it is destroyed.
  class Entry {
   public:
    explicit Entry(OpenStreams& streams) : m_streams(streams) { ++m_streams.m_count; }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { --m_streams.m_count; }

   private:
    OpenStreams& m_streams;
  };

  /// Returns when there is none, or after the limit.
  void awaitEnd(std::chrono::milliseconds limit) const noexcept {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (m_count > 0 && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

 private:
  std::atomic<int> m_count{0};
};

void fill(httplib::Response& to, const Response& from, OpenStreams& streams) {
  to.status = from.status;
  for (const auto& [name, value] : from.headers) {
    to.set_header(name, value);
  }
  if (from.events == nullptr) {
    to.set_content(from.body, from.contentType);
    return;
  }
  const auto entry = std::make_shared<OpenStreams::Entry>(streams);
  to.set_chunked_content_provider(from.contentType, [events = from.events, entry](std::size_t, httplib::DataSink& sink) {
    const std::optional<std::string> text = events->next(HEARTBEAT);
    if (!text) {
      sink.done();
      return true;
    }
    return sink.write(text->data(), text->size());
  });
}

/// Errors that httplib found by itself get a body, too.
void explainError(const httplib::Request& /*request*/, httplib::Response& response) {
  if (response.body.empty()) {
    if (response.status == 400 && t_connection != nullptr && t_connection->isTooLarge()) {
      response.status = 431;
    }
    const Response refusal = refuse(response.status, messageFor(response.status));
    response.set_content(refusal.body, refusal.contentType);
  }
}

/// For what is so large that httplib gave up before it could answer.
std::string tooLargeAnswer() {
  const Response refusal = refuse(431, messageFor(431));
  return fmt::format(
      "HTTP/1.1 431 Request Header Fields Too Large\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: "
      "close\r\n\r\n{}",
      refusal.contentType, refusal.body.size(), refusal.body);
}

}  // namespace

class HttpServer::Work final : public httplib::Server {
 public:
  explicit Work(HttpServer::Handler handler) : m_handler(std::move(handler)), m_workers(MAX_CONNECTIONS) {
    new_task_queue = [this] { return new Tasks(m_workers); };  // httplib deletes it
    set_keep_alive_max_count(MAX_REQUESTS);                    // what the headers tell
    set_keep_alive_timeout(std::chrono::duration_cast<std::chrono::seconds>(IDLE_LIMIT).count());
    set_payload_max_length(MAX_BODY);
    set_error_handler(Handler(explainError));
    set_exception_handler([this](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) {
      fill(response, refuse(500, messageFor(500)), m_streams);
    });
    set_pre_routing_handler(
        [this](const httplib::Request& request, httplib::Response& response) { return beforeBody(request, response); });
    Put(R"([\s\S]*)",
        HandlerWithContentReader([this](const httplib::Request& request, httplib::Response& response,
                                        const httplib::ContentReader& reader) { withBody(request, response, reader); }));
  }

  bool start(int listening, std::string& problem) {
    svr_sock_ = listening;
    try {
      m_acceptor.emplace([this] { accept(); });
    } catch (const std::system_error& error) {
      problem = error.what();
      close(svr_sock_.exchange(INVALID_SOCKET));
      return false;
    }
    return true;
  }

  void end() noexcept {
    if (!m_acceptor) {
      return;
    }
    m_workers.hurry();
    while (!is_running() && !m_hasStopped) {
      std::this_thread::yield();  // it has just been started, and would not hear of the end
    }
    // A server that stops asks no stream for its last event any more.
    m_streams.awaitEnd(FAREWELL_LIMIT);
    stop();
    m_connections.endAll(FAREWELL_LIMIT);
    m_acceptor.reset();
  }

 private:
  void accept() noexcept {
    listen_after_bind();
    m_hasStopped = true;
  }

  HandlerResponse beforeBody(const httplib::Request& request, httplib::Response& response) {
    const BodyPlan plan = planBody(request);
    if (plan.refusal != 0) {
      fill(response, refuse(plan.refusal, messageFor(plan.refusal)), m_streams);
    } else if (isRouted(request)) {
      return HandlerResponse::Unhandled;
    } else {
      fill(response, m_handler(requestFrom(request, "")), m_streams);
    }
    return HandlerResponse::Handled;
  }

  void withBody(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& reader) {
    std::string body;
    bool fits = true;
    const bool isComplete = !planBody(request).isThere || reader([&](const char* bytes, std::size_t size) {
      fits = size <= MAX_BODY - body.size();
      if (fits) {
        body.append(bytes, size);
      }
      return fits;
    });
    if (!isComplete || !fits) {
      const int status = fits ? 400 : 413;
      fill(response, refuse(status, messageFor(status)), m_streams);
      return;
    }
    fill(response, m_handler(requestFrom(request, std::move(body))), m_streams);
  }

  bool process_and_close_socket(socket_t descriptor) override {
    const OpenConnections::Entry entry(m_connections, descriptor);
    if (isPeerWelcome(descriptor)) {
      Connection connection(descriptor, LIMITS);
      t_connection = &connection;
      serve(connection);
      connection.drain();
      t_connection = nullptr;
    }
    return true;
  }

  void serve(Connection& connection) {
    ConnectionStream stream(connection);
    for (std::size_t left = MAX_REQUESTS; left > 0 && connection.awaitRequest(); --left) {
      stream.beginHead();
      bool mustEnd = true;  // what could not be understood has no certain end
      bool wantsEnd = false;
      const bool isFine = process_request(stream, left == 1, wantsEnd, [&](httplib::Request& request) {
        connection.beginBody();
        stream.endHead();
        mustEnd = planBody(request).mustEnd;
        if (mustEnd) {
          request.headers.erase("Connection");
          request.set_header("Connection", "close");
        }
      });
      if (!connection.hasAnswered() && connection.isTooLarge()) {
        static_cast<void>(connection.write(tooLargeAnswer()));
      }
      if (!isFine || wantsEnd || mustEnd) {
        return;
      }
    }
  }

  const HttpServer::Handler m_handler;
  OpenStreams m_streams;
  OpenConnections m_connections;
  WorkerPool m_workers;
  std::atomic<bool> m_hasStopped{false};
  std::optional<OrdinaryThread> m_acceptor;
};

HttpServer::HttpServer(Handler handler) : m_work(std::make_unique<Work>(std::move(handler))) {}

HttpServer::~HttpServer() {
  stop();
}

bool HttpServer::start(int listening, std::string& problem) {
  return m_work->start(listening, problem);
}

void HttpServer::stop() noexcept {
  m_work->end();
}

}  // namespace motion::host::door
