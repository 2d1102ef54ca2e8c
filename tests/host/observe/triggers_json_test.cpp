#include "host/observe/triggers_json.h"

#include <gtest/gtest.h>

#include "trigger_builder.h"

namespace motion::host::observe {
namespace {

using Json = nlohmann::ordered_json;

Json numbers(double x, double y, double z) {
  return Json::array({x, y, z});
}

TEST(TriggersJson, IsEmptyWithoutConditions) {
  EXPECT_EQ(triggersJson(sampleRecord()), Json::array());
}

TEST(TriggersJson, HasEverythingOfACondition) {
  RunRecord record = withTrigger(0.008);
  TriggerRecord& trigger = record.triggers[0];
  trigger.carriers = {{1, 1}, {2, 0}};
  trigger.fired = lookIn(12, 0.0005, 0.0025);
  trigger.entered = lookIn(20, 0.002, 0.0005);
  trigger.nearest = lookIn(12, 0.0005, 0.0025);
  trigger.nearestPass = TriggerRecord::Pass{12, 0.00025, 0.5, true};
  const Json sut = triggersJson(record);
  ASSERT_EQ(sut.size(), 1U);
  const Json& json = sut.at(0);
  EXPECT_EQ(json.at("object"), "B");
  EXPECT_EQ(json.at("line"), 9);
  EXPECT_EQ(json.at("signal"), 3);
  EXPECT_EQ(json.at("action"), "set");
  EXPECT_EQ(json.at("target"), numbers(100, 20, 0));
  EXPECT_EQ(json.at("radius"), 1.0);
  EXPECT_EQ(json.at("preTriggerTime"), 0.008);
  EXPECT_EQ(json.at("outcome"), "fired");
  EXPECT_EQ(json.at("carriers"),
            (Json::array({{{"command", "B#1"}, {"cycle", 1}}, {{"command", "B#2"}, {"cycle", nullptr}}})));
  EXPECT_EQ(
      json.at("fired"),
      (Json{{"cycle", 12}, {"command", "B#1"}, {"position", numbers(99, 20, 0)}, {"distance", 0.5}, {"toolDistance", 2.5}}));
  EXPECT_EQ(json.at("entered").at("cycle"), 20);
  EXPECT_EQ(json.at("nearest").at("cycle"), 12);
  EXPECT_EQ(json.at("nearestBetweenCycles"),
            (Json{{"cycle", 12}, {"distance", 0.25}, {"speed", 500.0}, {"leapsAhead", true}}));
}

TEST(TriggersJson, HasNullForWhatDidNotHappen) {
  RunRecord record = withTrigger();
  record.triggers[0].sets = false;
  const Json json = triggersJson(record).at(0);
  EXPECT_EQ(json.at("action"), "reset");
  for (const char* key : {"fired", "entered", "nearest", "nearestBetweenCycles"}) {
    EXPECT_TRUE(json.at(key).is_null()) << key;
  }
}

TEST(TriggersJson, KnowsFourOutcomes) {
  RunRecord record = withTrigger();
  TriggerRecord& trigger = record.triggers[0];
  EXPECT_EQ(triggersJson(record).at(0).at("outcome"), "never reached");
  trigger.isSpent = true;
  EXPECT_EQ(triggersJson(record).at(0).at("outcome"), "failed");
  trigger.isSpent = false;
  trigger.carriers.clear();
  EXPECT_EQ(triggersJson(record).at(0).at("outcome"), "never armed");
  trigger.fired = lookIn(12, 0, 0);
  EXPECT_EQ(triggersJson(record).at(0).at("outcome"), "fired");
}

}  // namespace
}  // namespace motion::host::observe
