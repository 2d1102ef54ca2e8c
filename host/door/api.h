// Answers the requests of version 1, without regard to how they arrive.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "host/door/event_stream.h"
#include "host/door/live_run.h"
#include "host/door/message.h"
#include "host/door/rate_limit.h"
#include "host/door/routes.h"
#include "host/door/signal_access.h"

namespace motion::host::door {

struct ApiConfig {
  std::string program;                     ///< name and version
  std::vector<std::string> grantedScopes;  ///< nobody gets more than these
  Clock clock = std::chrono::steady_clock::now;
};

/// Thread-safe. Data layer and run must outlive it, and it must outlive all event streams that it hands out.
class Api {
 public:
  Api(const datalayer::DataLayer& dataLayer, const LiveRun& run, ApiConfig config);

  /// Checks in this order: rate, path, method, scopes, the run still goes on, query and body, and then the data layer's own
  /// rules. Throws std::bad_alloc.
  [[nodiscard]] Response answer(const Request& request);

 private:
  struct Call {
    const Request& request;
    SignalAccess::Scopes scopes;
    std::string_view id;  ///< as it stands in the path
  };
  /// What was asked for, or why not.
  template <typename T>
  using Or = std::variant<T, Response>;

  [[nodiscard]] Response answer(Operation operation, const Call& call);
  [[nodiscard]] Or<SignalAccess::Scopes> scopesOf(const Request& request) const;
  [[nodiscard]] Response about(const Call& call) const;
  [[nodiscard]] Response listSignals(const Call& call);
  [[nodiscard]] Response getSignal(const Call& call);
  [[nodiscard]] Response putSignal(const Call& call);
  [[nodiscard]] Response watch(const Call& call);
  [[nodiscard]] Response why(const Call& call);
  [[nodiscard]] std::string named(std::uint32_t signal) const;
  /// Nothing when these scopes may read that signal.
  [[nodiscard]] std::optional<Response> refusalToRead(const SignalAccess::Scopes& scopes, std::uint32_t signal,
                                                      const std::string& what);

  const LiveRun& m_run;
  const ApiConfig m_config;
  SignalAccess m_signals;
  RateLimit m_rate;
  WatcherSeats m_seats;
};

}  // namespace motion::host::door
