// A runtime with scripted commands and a ring of events, stepped by hand.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "host/motion/events.h"
#include "host/motion/runtime.h"
#include "tests/host/motion/scripted_cmd.h"
#include "tests/host/motion/scripted_option.h"

namespace motion::host::test {

[[nodiscard]] inline std::string eventText(const Event& event) {
  static constexpr std::array<const char*, 9> names{"BUFFERED", "PREPARED",     "ACTIVE",     "DONE",        "ABORTED",
                                                    "FAILED",   "MOTION_BEGAN", "SIGNAL_SET", "SIGNAL_RESET"};
  return fmt::format("{}: object {} command {} {}", event.cycle, event.object, event.cmdID,
                     names.at(static_cast<std::size_t>(event.kind)));
}

/// Waits until another thread has brought something about; false when it did not within a long time.
template <typename CONDITION>
[[nodiscard]] bool eventually(CONDITION condition) {
  for (const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1); !condition();) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// A scripted option that goes with a command.
struct GivenOption {
  std::string name;
  core::cmd::CmdOptPermType permType = core::cmd::CmdOptPermType::ONCE;
  std::string label;
};

struct World {
  explicit World(const RuntimeConfig& config = {}) : runtime(config) {
    registerScripted(script, runtime.cmdFactory(), runtime.objFactory());
  }

  MotionObject& addAxis(const std::string& name, double start = 0.0) { return add(name, core::ObjectType::AXIS, start); }
  MotionObject& addKinematics(const std::string& name) { return add(name, core::ObjectType::KINEMATICS, 0.0); }

  core::FctResult tryIssue(MotionObject& object, const std::string& label, unsigned long& cmdID) {
    problem.clear();
    return runtime.preparation().add(object, {"Test", Label(label), source}, cmdID, problem);
  }
  /// Issues a scripted command that must be accepted.
  unsigned long issue(MotionObject& object, const std::string& label) {
    unsigned long cmdID = 0;
    EXPECT_EQ(tryIssue(object, label, cmdID), core::FctResult::Okay) << problem;
    return cmdID;
  }
  /// Issues any command that must be accepted.
  unsigned long issue(MotionObject& object, const std::string& cmdType, const core::IContainer& values) {
    unsigned long cmdID = 0;
    EXPECT_EQ(runtime.addCmd(source, object.name().c_str(), cmdType, values, 1, &cmdID), core::FctResult::Okay);
    return cmdID;
  }
  /// With options; registerOptions comes first.
  core::FctResult tryIssue(MotionObject& object, const std::string& label, const std::vector<GivenOption>& given,
                           unsigned long& cmdID) {
    return withOptions(given, [&](std::span<const OptionRequest> requests) {
      return runtime.preparation().add(object, {"Test", Label(label), source, requests}, cmdID, problem);
    });
  }
  unsigned long issue(MotionObject& object, const std::string& label, const std::vector<GivenOption>& given) {
    unsigned long cmdID = 0;
    EXPECT_EQ(tryIssue(object, label, given, cmdID), core::FctResult::Okay) << problem;
    return cmdID;
  }
  core::FctResult tryOut(MotionObject& object, const std::string& label, const std::vector<GivenOption>& given) {
    return withOptions(given, [&](std::span<const OptionRequest> requests) {
      return runtime.preparation().tryOut(object, {"Test", Label(label), source, requests}, problem);
    });
  }
  /// Gives an option without a command.
  core::FctResult giveOption(MotionObject& object, const GivenOption& given) {
    Labels values({given.label});
    return runtime.preparation().addOption(object, {given.name, given.permType, values, source}, problem);
  }
  void registerOptions() { registerScriptedOptions(options, runtime.cmdOptionFactory()); }
  void step(unsigned cycles = 1) {
    for (unsigned i = 0; i < cycles; ++i) {
      runtime.step();
    }
  }
  /// Events since the last call.
  [[nodiscard]] std::vector<std::string> takeEvents() {
    std::vector<std::string> texts;
    for (Event event; events.read(event);) {
      texts.push_back(eventText(event));
    }
    return texts;
  }

  Script script;
  OptionScript options{script};
  EventRing events{1024};
  core::dia::CmdSourceInfo source{"test", "program", 7};
  std::string problem;
  Runtime runtime;

 private:
  template <typename CALL>
  core::FctResult withOptions(const std::vector<GivenOption>& given, const CALL& call) {
    std::deque<Labels> values;
    std::vector<OptionRequest> requests;
    for (const GivenOption& option : given) {
      requests.push_back({option.name, option.permType, values.emplace_back(std::vector{option.label}), source});
    }
    return call(std::span<const OptionRequest>(requests));
  }
  MotionObject& add(const std::string& name, core::ObjectType type, double start) {
    MotionObject* object = runtime.addObject(name, type, {start, 0.0, 0.0});
    object->setEvents(&events);
    return *object;
  }
};

}  // namespace motion::host::test
