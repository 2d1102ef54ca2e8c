#include "door_commands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>

#include "host/door/socket_file.h"

namespace motion::host::app {

using door::DoorClient;
using door::Reply;

namespace {

enum ExitCode { FINE = 0, REFUSED = 1, BAD_INPUT = 2 };

constexpr const char* FOOTER =
    "Exit codes: 0 fine; 1 the run refused, or broke off; 2 bad input, or no run is going on.\n"
    "Signals are given by their numbers, or by their names in the scenario.";

int complain(const Reply& reply) {
  fmt::print(stderr, "kavo: {}\n", reply.problem);
  return reply.status == 0 || reply.status == 400 || reply.status == 404 ? BAD_INPUT : REFUSED;
}

int complain(const std::string& text) {
  fmt::print(stderr, "kavo: {}\n", text);
  return BAD_INPUT;
}

std::string signalText(const nlohmann::ordered_json& signal) {
  const auto& name = signal.at("name");
  return fmt::format("signal {}{}", signal.at("id").get<std::uint32_t>(),
                     name.is_null() ? "" : fmt::format(" '{}'", name.get<std::string>()));
}

/// The only run that is going on, or the one that was named; nothing, after saying why, when that is not clear.
std::optional<std::string> findSocket(const std::string& named) {
  if (!named.empty()) {
    return named;
  }
  std::string problem;
  const auto directory = door::defaultDirectory();
  const auto doors = door::livingDoors(directory, problem);
  if (doors.size() == 1) {
    return doors.front().socket.string();
  }
  if (doors.empty()) {
    complain(
        fmt::format("no run is going on{}: there is no door in {}. Start one with 'kavo run FILE --real-time', or name its "
                    "door with --socket.",
                    problem.empty() ? "" : fmt::format(" ({})", problem), directory.string()));
    return std::nullopt;
  }
  std::string text = "several runs are going on; choose one of them with --socket:";
  for (const door::LivingDoor& living : doors) {
    text += fmt::format("\n  {}  {}", living.socket.string(), living.scenario);
  }
  complain(text);
  return std::nullopt;
}

/// Ten in a row, and below them in words those that are set or have a name.
void printTable(const nlohmann::ordered_json& body) {
  constexpr std::size_t COLUMNS = 10;
  const auto& signals = body.at("signals");
  fmt::print("cycle {}\n     ", body.at("cycle").get<std::uint64_t>());
  for (std::size_t i = 0; i < COLUMNS; ++i) {
    fmt::print(" {}", i);
  }
  for (std::size_t i = 0; i < signals.size(); ++i) {
    fmt::print("{} {}", i % COLUMNS == 0 ? fmt::format("\n  {:2} ", i) : "", signals[i].at("value").get<bool>() ? '#' : '.');
  }
  fmt::print("\n");
  for (const bool value : {true, false}) {
    for (const auto& signal : signals) {
      if (signal.at("value").get<bool>() == value && (value || !signal.at("name").is_null())) {
        fmt::print("{}  {}\n", value ? "set  " : "reset", signalText(signal));
      }
    }
  }
}

}  // namespace

DoorCommands::DoorCommands(CLI::App& app)
    : m_signals(add(app, "signals", "show all signals of the real-time run that is going on")),
      m_get(add(app, "get", "show one signal of that run")),
      m_set(add(app, "set", "set a signal of that run")),
      m_reset(add(app, "reset", "reset a signal of that run")),
      m_watch(add(app, "watch", "print each change of signals in that run, until it ends")),
      m_why(add(app, "why", "print who waits for whom in that run")) {
  for (CLI::App* const command : {m_get, m_set, m_reset}) {
    command->add_option("SIGNAL", m_names, "number or name of the signal")->required()->expected(1);
  }
  m_watch->add_option("SIGNAL", m_names, "numbers or names of the signals; all if there are none");
}

CLI::App* DoorCommands::add(CLI::App& app, const char* name, const char* description) {
  CLI::App* const command = app.add_subcommand(name, description);
  command->add_option("--socket", m_socket, "door of the run; without it the only one there is");
  command->add_option("--scope", m_scopes, "ask for no more than this scope grants; may be given several times")
      ->allow_extra_args(false);
  command->add_flag("--json", m_json, "print what the run answers");
  command->footer(FOOTER);
  return command;
}

std::optional<int> DoorCommands::run() const {
  const auto commands = {m_signals, m_get, m_set, m_reset, m_watch, m_why};
  if (std::ranges::none_of(commands, [](const CLI::App* command) { return command->parsed(); })) {
    return std::nullopt;
  }
  try {
    return knock();
  } catch (const nlohmann::json::exception& error) {
    fmt::print(stderr, "kavo: the run's answer is not understood ({})\n", error.what());
    return REFUSED;
  }
}

int DoorCommands::knock() const {
  const auto socket = findSocket(m_socket);
  if (!socket) {
    return BAD_INPUT;
  }
  const DoorClient client(*socket, m_scopes.empty() ? std::nullopt : std::optional(m_scopes));
  if (m_signals->parsed()) {
    return showSignals(client);
  }
  if (m_get->parsed()) {
    return getSignal(client);
  }
  if (m_watch->parsed()) {
    return watch(client);
  }
  return m_why->parsed() ? showWhy(client) : writeSignal(client, m_set->parsed());
}

int DoorCommands::showSignals(const DoorClient& client) const {
  const Reply reply = client.get("/v1/signals");
  if (!reply.isFine()) {
    return complain(reply);
  }
  if (m_json) {
    fmt::print("{}\n", reply.body.dump());
  } else {
    printTable(reply.body);
  }
  return FINE;
}

int DoorCommands::getSignal(const DoorClient& client) const {
  int code = FINE;
  const auto numbers = signalNumbers(client, code);
  if (!numbers) {
    return code;
  }
  const Reply reply = client.get(fmt::format("/v1/signals/{}", numbers->front()));
  if (!reply.isFine()) {
    return complain(reply);
  }
  fmt::print("{}\n",
             m_json ? reply.body.dump()
                    : fmt::format("{} is {}", signalText(reply.body), reply.body.at("value").get<bool>() ? "set" : "reset"));
  return FINE;
}

int DoorCommands::writeSignal(const DoorClient& client, bool value) const {
  int code = FINE;
  const auto numbers = signalNumbers(client, code);
  if (!numbers) {
    return code;
  }
  const Reply reply = client.put(fmt::format("/v1/signals/{}", numbers->front()), {{"value", value}});
  if (!reply.isFine()) {
    return complain(reply);
  }
  fmt::print("{}\n",
             m_json ? reply.body.dump() : fmt::format("{} has been {}", signalText(reply.body), value ? "set" : "reset"));
  return FINE;
}

int DoorCommands::watch(const DoorClient& client) const {
  int code = FINE;
  const auto numbers = signalNumbers(client, code);
  if (!numbers) {
    return code;
  }
  // Every line is on its way before the next event is taken, so nothing is lost.
  static_cast<void>(std::signal(SIGINT, [](int /*signal*/) { _exit(FINE); }));
  const Reply reply =
      client.watch(numbers->empty() ? "/v1/events" : fmt::format("/v1/events?signals={}", fmt::join(*numbers, ",")),
                   [this](const std::string& name, const Json& data) { printEvent(name, data); });
  return reply.isFine() ? FINE : complain(reply);
}

void DoorCommands::printEvent(const std::string& name, const Json& data) const {
  if (m_json) {
    Json line{{"event", name}};
    line.update(data);
    fmt::print("{}\n", line.dump());
  } else if (name == "signal") {
    const bool value = data.at("value").get<bool>();
    const bool isNews = !data.at("by").is_null();
    if (!isNews && !value && m_names.empty()) {
      return;  // most signals are reset at the beginning
    }
    const std::string by = isNews ? data.at("by").get<std::string>() : "";
    fmt::print("cycle {}  {:.3f} s  {} {}{}{}\n", data.at("cycle").get<std::uint64_t>(), data.at("time").get<double>(),
               signalText(data), isNews ? "" : "is ", value ? "set" : "reset",
               !isNews           ? ""
               : by == "outside" ? " from outside"
                                 : " by " + by);
  } else if (name == "lost") {
    fmt::print("{} changes were lost: this watcher was too slow\n", data.at("count").get<std::uint64_t>());
  } else if (name == "end") {
    fmt::print("cycle {}  the run has ended\n", data.at("cycle").get<std::uint64_t>());
  }
  std::fflush(stdout);
}

int DoorCommands::showWhy(const DoorClient& client) const {
  const Reply reply = client.get("/v1/why");
  if (!reply.isFine()) {
    return complain(reply);
  }
  fmt::print("{}\n", m_json ? reply.body.dump()
                            : fmt::format("cycle {}:\n{}", reply.body.at("cycle").get<std::uint64_t>(),
                                          reply.body.at("text").get<std::string>()));
  return FINE;
}

std::optional<std::vector<std::uint32_t>> DoorCommands::signalNumbers(const DoorClient& client, int& code) const {
  std::vector<std::uint32_t> numbers;
  Reply all;  // asked for when the first name turns up
  for (const std::string& name : m_names) {
    std::uint32_t number = 0;
    if (const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
        error == std::errc() && end == name.data() + name.size()) {
      numbers.push_back(number);
      continue;
    }
    if (all.status == 0) {
      all = client.get("/v1/signals");
      if (!all.isFine()) {
        code = complain(all);
        return std::nullopt;
      }
    }
    const auto& signals = all.body.at("signals");
    const auto found = std::ranges::find_if(signals, [&name](const Json& signal) { return signal.at("name") == name; });
    if (found == signals.end()) {
      code = complain(fmt::format("'{}' is neither the number of a signal nor the name of one in that run", name));
      return std::nullopt;
    }
    numbers.push_back(found->at("id").get<std::uint32_t>());
  }
  return numbers;
}

}  // namespace motion::host::app
