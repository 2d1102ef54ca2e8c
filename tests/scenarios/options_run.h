// What the tests of options share: runs of a scenario, and what JSON says about them in words.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {

class OptionsRun : public testing::Test {
 protected:
  using Json = nlohmann::json;
  using Texts = std::vector<std::string>;

  ToolResult kavo(const std::string& command, const std::string& scenario, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{command, m_scratch.write("scenario.yaml", scenario), "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }
  /// The report of a run that must be fine.
  Json play(const std::string& scenario) {
    const ToolResult result = kavo("run", scenario, {"--json"});
    EXPECT_EQ(result.exitCode, 0) << show(result);
    return Json::parse(result.out, nullptr, false);
  }
  /// "1: 5 set by A#1"
  static Texts signalsOf(const Json& run) {
    Texts texts;
    for (const Json& change : run.at("signals")) {
      texts.push_back(fmt::format("{}: {} {} by {}", change.at("cycle").get<int>(), change.at("signal").get<int>(),
                                  change.at("value").get<bool>() ? "set" : "reset", change.at("by").get<std::string>()));
    }
    return texts;
  }
  Texts signals(const std::string& scenario) { return signalsOf(play(scenario)); }
  /// "R#1 R#2", the commands that carried a condition
  static std::string carriersOf(const Json& trigger) {
    std::string text;
    for (const Json& carrier : trigger.at("carriers")) {
      text += (text.empty() ? "" : " ") + carrier.at("command").get<std::string>();
    }
    return text;
  }
  /// "1: fired in 12 with R#1" or "1: never reached", by signal
  static Texts outcomesOf(const Json& run) {
    Texts texts;
    for (const Json& trigger : run.at("triggers")) {
      const Json& fired = trigger.at("fired");
      texts.push_back(fmt::format("{}: {}{}", trigger.at("signal").get<int>(), trigger.at("outcome").get<std::string>(),
                                  fired.is_null() ? ""
                                                  : fmt::format(" in {} with {}", fired.at("cycle").get<int>(),
                                                                fired.at("command").get<std::string>())));
    }
    return texts;
  }

 private:
  ScratchDir m_scratch;
};

}  // namespace motion::test
