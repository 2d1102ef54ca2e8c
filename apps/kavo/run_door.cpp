#include "run_door.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>

namespace motion::host::app {

namespace {

/// More cycles than any run has.
constexpr std::uint64_t NEVER = std::uint64_t{1} << 62U;

}  // namespace

RunDoor::RunDoor(CLI::App& run, std::string program) : m_program(std::move(program)) {
  CLI::Option* const realTime = run.get_option("--real-time");
  CLI::Option* const off =
      run.add_flag("--no-door", m_isOff, "in real time: let nobody act on the run from outside")->needs(realTime);
  run.add_option("--socket", m_socket, "in real time: where the door is opened instead of the default place")
      ->needs(realTime)
      ->excludes(off);
  run.add_option(
         "--grant", m_granted,
         "in real time: scope that clients may have, instead of motion.operate and motion.view; may be given several times")
      ->allow_extra_args(false)
      ->needs(realTime)
      ->excludes(off);
  run.add_flag("--keep-waiting", m_keepWaiting,
               "in real time: do not give up when all wait; somebody may let them go on from outside")
      ->needs(realTime)
      ->excludes(off)
      ->excludes("--stuck-after");
}

bool RunDoor::open(run::PlayOptions& options) {
  if (!options.realTime || m_isOff) {
    return true;
  }
  door::DoorConfig config;
  config.program = m_program;
  if (!m_granted.empty()) {
    config.grantedScopes = m_granted;
  }
  m_door = std::make_unique<door::Door>(std::move(config));
  std::string problem;
  const bool isOpen = m_socket.empty() ? m_door->openDefault(problem) : m_door->open(m_socket, problem);
  if (isOpen) {
    m_door->follow(options.watch);
  } else {
    fmt::print(stderr, "{}{}\n", m_socket.empty() ? "warning: the run has no door: " : "kavo: ", problem);
  }
  if (m_keepWaiting && isOpen) {
    options.stuckAfter = NEVER;
  }
  return isOpen || m_socket.empty();
}

}  // namespace motion::host::app
