#include "host/door/api.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "host/door/api_input.h"
#include "host/door/door_limits.h"
#include "host/door/openapi.h"
#include "host/door/refusal.h"
#include "host/door/signal_json.h"

namespace motion::host::door {

using Json = nlohmann::ordered_json;

namespace {

constexpr int API_VERSION = 1;
/// Whoever may read this signal may see what goes on in the run.
constexpr std::uint32_t ANY_SIGNAL = 0;

Response respond(const Json& json) {
  Response response;
  response.body = toText(json) + "\n";
  return response;
}

SignalAccess::Scopes sorted(SignalAccess::Scopes scopes) {
  std::ranges::sort(scopes);
  const auto [first, last] = std::ranges::unique(scopes);
  scopes.erase(first, last);
  return scopes;
}

}  // namespace

Api::Api(const datalayer::DataLayer& dataLayer, const LiveRun& run, ApiConfig config)
    : m_run(run),
      m_config({std::move(config.program), sorted(std::move(config.grantedScopes)), std::move(config.clock)}),
      m_signals(dataLayer),
      m_rate(REQUEST_RATE, REQUEST_BURST, m_config.clock),
      m_seats(MAX_WATCHERS) {}

Response Api::answer(const Request& request) {
  if (!m_rate.take()) {
    Response response = refuse(429, fmt::format("There are more than {} requests a second. Ask again later.", REQUEST_RATE));
    response.headers.emplace_back("Retry-After", "1");
    return response;
  }
  std::vector<std::string_view> allowed;
  for (const Route& route : ROUTES) {
    std::string_view id;
    if (!matches(route.path, request.path, id)) {
      continue;
    }
    if (route.method == request.method) {
      auto scopes = scopesOf(request);
      auto* const refusal = std::get_if<Response>(&scopes);
      return refusal != nullptr ? std::move(*refusal)
                                : answer(route.operation, {request, std::get<SignalAccess::Scopes>(std::move(scopes)), id});
    }
    allowed.push_back(route.method);
  }
  if (allowed.empty()) {
    return refuse(404, messageFor(404));
  }
  const std::string methods = fmt::format("{}", fmt::join(allowed, ", "));
  Response response = refuse(405, fmt::format("{} is not possible here. Possible: {}.", request.method, methods));
  response.headers.emplace_back("Allow", methods);
  return response;
}

auto Api::scopesOf(const Request& request) const -> Or<SignalAccess::Scopes> {
  if (!request.scopes) {
    return m_config.grantedScopes;
  }
  SignalAccess::Scopes scopes = sorted(listOf(*request.scopes));
  for (const std::string& scope : scopes) {
    if (!std::ranges::binary_search(m_config.grantedScopes, scope)) {
      return refuseAsUnauthorized(
          fmt::format("The header Kavo-Scopes names {}, which this run does not grant. It grants: {}.", quote(scope),
                      fmt::join(m_config.grantedScopes, ", ")));
    }
  }
  return scopes;
}

Response Api::answer(Operation operation, const Call& call) {
  if (operation != Operation::WATCH) {
    auto query = expectNoQuery(call.request);
    if (auto* const refusal = std::get_if<Response>(&query); refusal != nullptr) {
      return std::move(*refusal);
    }
  }
  if (operation == Operation::DESCRIBE) {
    Response response;
    response.body = openApiDocument();
    return response;
  }
  if (m_run.isOver()) {
    return refuse(503, "The run has ended.");
  }
  switch (operation) {
    case Operation::LIST_SIGNALS:
      return listSignals(call);
    case Operation::GET_SIGNAL:
      return getSignal(call);
    case Operation::PUT_SIGNAL:
      return putSignal(call);
    case Operation::WATCH:
      return watch(call);
    case Operation::WHY:
      return why(call);
    case Operation::ABOUT:
    case Operation::DESCRIBE:
      break;
  }
  return about(call);
}

Response Api::about(const Call& call) const {
  return respond({{"version", API_VERSION},
                  {"program", m_config.program},
                  {"scenario", m_run.facts().file},
                  {"cycle", m_run.cycle()},
                  {"cycleTime", m_run.facts().cycleTime},
                  {"grantedScopes", m_config.grantedScopes},
                  {"scopes", call.scopes}});
}

Response Api::listSignals(const Call& call) {
  Json signals = Json::array();
  for (std::uint32_t signal = 0; signal < kavo::SIGNAL_COUNT; ++signal) {
    const auto value = m_signals.read(call.scopes, signal);
    if (const auto* const error = std::get_if<datalayer::NodeError>(&value); error != nullptr) {
      return refuse(*error, fmt::format("{} could not be read", named(signal)));
    }
    signals.push_back(signalJson(m_run.facts(), signal, std::get<bool>(value)));
  }
  return respond({{"cycle", m_run.cycle()}, {"signals", std::move(signals)}});
}

Response Api::getSignal(const Call& call) {
  auto signal = parseSignal(call.id);
  if (auto* const refusal = std::get_if<Response>(&signal); refusal != nullptr) {
    return std::move(*refusal);
  }
  const std::uint32_t id = std::get<std::uint32_t>(signal);
  const auto value = m_signals.read(call.scopes, id);
  if (const auto* const error = std::get_if<datalayer::NodeError>(&value); error != nullptr) {
    return refuse(*error, fmt::format("{} could not be read", named(id)));
  }
  return respond(signalJson(m_run.facts(), id, std::get<bool>(value)));
}

Response Api::putSignal(const Call& call) {
  auto signal = parseSignal(call.id);
  if (auto* const refusal = std::get_if<Response>(&signal); refusal != nullptr) {
    return std::move(*refusal);
  }
  auto value = parseValue(call.request);
  if (auto* const refusal = std::get_if<Response>(&value); refusal != nullptr) {
    return std::move(*refusal);
  }
  const std::uint32_t id = std::get<std::uint32_t>(signal);
  const bool isSet = std::get<bool>(value);
  if (const auto error = m_signals.write(call.scopes, id, isSet)) {
    return refuse(*error, fmt::format("{} could not be {}", named(id), isSet ? "set" : "reset"));
  }
  return respond(signalJson(m_run.facts(), id, isSet));
}

Response Api::watch(const Call& call) {
  auto parsed = parseWatched(call.request);
  if (auto* const refusal = std::get_if<Response>(&parsed); refusal != nullptr) {
    return std::move(*refusal);
  }
  const SignalSet watched = std::get<SignalSet>(parsed);
  for (std::uint32_t signal = 0; signal < kavo::SIGNAL_COUNT; ++signal) {
    if (watched.test(signal)) {
      if (auto refusal = refusalToRead(call.scopes, signal, fmt::format("{} could not be watched", named(signal)))) {
        return std::move(*refusal);
      }
    }
  }
  auto seat = m_seats.take();
  if (seat == nullptr) {
    Response response =
        refuse(503, fmt::format("There are {} watchers already, which is all that this run takes.", MAX_WATCHERS));
    response.headers.emplace_back("Retry-After", "1");
    return response;
  }
  Response response;
  response.contentType = "text/event-stream";
  response.headers.emplace_back("Cache-Control", "no-store");
  response.events = std::make_shared<EventStream>(m_run, watched, std::move(seat));
  return response;
}

Response Api::why(const Call& call) {
  if (auto refusal = refusalToRead(call.scopes, ANY_SIGNAL, "Who waits for whom could not be told")) {
    return std::move(*refusal);
  }
  const auto explanation = m_run.explain(EXPLAIN_LIMIT);
  if (!explanation) {
    return refuse(503, m_run.isOver() ? "The run has ended." : "The run has not said in time who waits for whom.");
  }
  return respond({{"cycle", explanation->cycle},
                  {"waits", Json::parse(explanation->waits)},
                  {"text", explanation->text.empty() ? "nobody waits" : explanation->text}});
}

std::string Api::named(std::uint32_t signal) const {
  const auto& names = m_run.facts().signalNames;
  const bool isNamed = signal < names.size() && !names[signal].empty();
  return isNamed ? fmt::format("Signal {} '{}'", signal, names[signal]) : fmt::format("Signal {}", signal);
}

std::optional<Response> Api::refusalToRead(const SignalAccess::Scopes& scopes, std::uint32_t signal,
                                           const std::string& what) {
  const auto value = m_signals.read(scopes, signal);
  const auto* const error = std::get_if<datalayer::NodeError>(&value);
  return error != nullptr ? std::optional(refuse(*error, what)) : std::nullopt;
}

}  // namespace motion::host::door
