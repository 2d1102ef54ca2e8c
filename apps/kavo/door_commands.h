// The commands of kavo that act on a run in another terminal.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/door/door_client.h"

namespace motion::host::app {

/// `signals`, `get`, `set`, `reset`, `watch` and `why`: reads their arguments, and prints.
class DoorCommands {
 public:
  /// Adds the commands.
  explicit DoorCommands(CLI::App& app);

  /// Carries out the command that was given, and gives the exit code; nothing when it was none of these. After parsing.
  [[nodiscard]] std::optional<int> run() const;

 private:
  using Json = nlohmann::ordered_json;

  CLI::App* add(CLI::App& app, const char* name, const char* description);
  [[nodiscard]] int knock() const;
  [[nodiscard]] int showSignals(const door::DoorClient& client) const;
  [[nodiscard]] int getSignal(const door::DoorClient& client) const;
  [[nodiscard]] int writeSignal(const door::DoorClient& client, bool value) const;
  [[nodiscard]] int watch(const door::DoorClient& client) const;
  [[nodiscard]] int showWhy(const door::DoorClient& client) const;
  /// The numbers of the signals that were named; nothing, after saying why, when one of them is unknown.
  [[nodiscard]] std::optional<std::vector<std::uint32_t>> signalNumbers(const door::DoorClient& client, int& code) const;
  void printEvent(const std::string& name, const Json& data) const;

  CLI::App* m_signals;
  CLI::App* m_get;
  CLI::App* m_set;
  CLI::App* m_reset;
  CLI::App* m_watch;
  CLI::App* m_why;
  std::string m_socket;
  std::vector<std::string> m_scopes;
  std::vector<std::string> m_names;  ///< signals, as they were written
  bool m_json = false;
};

}  // namespace motion::host::app
