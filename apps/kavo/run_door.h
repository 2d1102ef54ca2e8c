// The options of `kavo run` that concern the door, and the door itself.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "host/door/door.h"
#include "host/run/play.h"

namespace motion::host::app {

class RunDoor {
 public:
  /// Adds the options to `run`.
  RunDoor(CLI::App& run, std::string program);

  /// Opens the door if the run is to have one, which `options` tells, and lets it follow the run. False, after saying why,
  /// when the door that was asked for cannot be opened. After parsing; this must outlive the run.
  [[nodiscard]] bool open(run::PlayOptions& options);

 private:
  std::string m_program;
  std::string m_socket;
  std::vector<std::string> m_granted;
  bool m_isOff = false;
  bool m_keepWaiting = false;
  std::unique_ptr<door::Door> m_door;
};

}  // namespace motion::host::app
