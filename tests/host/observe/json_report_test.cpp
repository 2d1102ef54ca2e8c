#include "host/observe/json_report.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sample_record.h"
#include "trigger_builder.h"

namespace motion::host::observe {
namespace {

using Json = nlohmann::json;

Json parsed(const RunRecord& record) {
  return Json::parse(jsonReport(record));
}

TEST(JsonReport, HasTheRun) {
  const Json sut = parsed(sampleRecord());
  EXPECT_EQ(sut.at("file"), "sample.yaml");
  EXPECT_EQ(sut.at("ok"), true);
  EXPECT_EQ(sut.at("time"), "virtual");
  EXPECT_EQ(sut.at("cycleTime"), 0.001);
  EXPECT_EQ(sut.at("cycles"), 30);
  EXPECT_TRUE(sut.at("stuck").is_null());
  EXPECT_TRUE(sut.at("warning").is_null());
  EXPECT_EQ(sut.at("lostEvents"), 0);
  EXPECT_FALSE(sut.contains("punctuality"));
}

TEST(JsonReport, HasCommandsWithTheirCycles) {
  const Json sut = parsed(sampleRecord());
  const Json& a = sut.at("objects").at(0);
  EXPECT_EQ(a.at("name"), "A");
  EXPECT_EQ(a.at("type"), "axis");
  EXPECT_EQ(a.at("start"), 0.0);
  EXPECT_EQ(a.at("end"), 5.0);
  const Json& b = sut.at("objects").at(1);
  EXPECT_EQ(b.at("type"), "kinematics");
  EXPECT_EQ(b.at("start"), (Json{100.0, 0.0, -20.0}));
  EXPECT_EQ(b.at("end"), (Json{100.0, 250.0, 0.0}));
  const Json& move = a.at("commands").at(0);
  EXPECT_EQ(move.at("number"), 1);
  EXPECT_EQ(move.at("name"), "MoveAbs");
  EXPECT_EQ(move.at("parameters"), "{to: 5}");
  EXPECT_EQ(move.at("line"), 4);
  EXPECT_EQ(move.at("state"), "done");
  EXPECT_EQ(move.at("buffered"), 1);
  EXPECT_EQ(move.at("prepared"), 1);
  EXPECT_EQ(move.at("active"), 1);
  EXPECT_EQ(move.at("moves"), 1);
  EXPECT_EQ(move.at("ended"), 10);
  EXPECT_FALSE(move.contains("waited"));
  EXPECT_TRUE(a.at("commands").at(1).at("moves").is_null());
}

TEST(JsonReport, HasWaitsWithTheirRelease) {
  const Json wait = parsed(sampleRecord()).at("objects").at(1).at("commands").at(0);
  EXPECT_DOUBLE_EQ(wait.at("waited").get<double>(), 0.010);
  EXPECT_EQ(wait.at("waitedFor"), "signal 3 'part ready'");
  EXPECT_EQ(wait.at("releasedBy"), "A#2");
}

TEST(JsonReport, HasSignals) {
  const Json signals = parsed(sampleRecord()).at("signals");
  ASSERT_EQ(signals.size(), 2U);
  EXPECT_EQ(signals.at(0), (Json{{"cycle", 11}, {"signal", 3}, {"name", "part ready"}, {"value", true}, {"by", "A#2"}}));
  RunRecord record = sampleRecord();
  record.signals = {{5, 7, true, OUTSIDE, 0}};
  EXPECT_EQ(parsed(record).at("signals").at(0),
            (Json{{"cycle", 5}, {"signal", 7}, {"name", nullptr}, {"value", true}, {"by", "outside"}}));
}

TEST(JsonReport, HasExpectationsAndTroubles) {
  RunRecord record = sampleRecord();
  record.expectations.push_back({"x", 3, false, "because"});
  record.stuck = "stuck here";
  record.warning = "late";
  record.failures = {"A#1"};
  record.messages = {"m"};
  record.punctuality = Punctual{7, 1, 0.5};
  record.objects[0].commands[0].failure = "why";
  const Json sut = parsed(record);
  EXPECT_EQ(sut.at("ok"), false);
  EXPECT_TRUE(sut.at("expectations").at(0).at("reason").is_null());
  EXPECT_EQ(sut.at("expectations").at(1), (Json{{"text", "x"}, {"line", 3}, {"holds", false}, {"reason", "because"}}));
  EXPECT_EQ(sut.at("stuck"), "stuck here");
  EXPECT_EQ(sut.at("warning"), "late");
  EXPECT_EQ(sut.at("failures"), Json{"A#1"});
  EXPECT_EQ(sut.at("messages"), Json{"m"});
  EXPECT_EQ(sut.at("punctuality"), (Json{{"cycles", 7}, {"overruns", 1}, {"latestWakeUp", 0.5}}));
  EXPECT_EQ(sut.at("objects").at(0).at("commands").at(0).at("failure"), "why");
}

TEST(JsonReport, HasOptionsConditionsAndDiagnoses) {
  RunRecord record = withTrigger();
  record.objects[0].commands[0].options = {"SetSignal {permType: Once}"};
  record.diagnoses = {{1, 0x090F2030, 0x0C5701B1, 9, "too small"}};
  const Json sut = parsed(record);
  EXPECT_EQ(sut.at("objects").at(0).at("commands").at(0).at("options"), Json{"SetSignal {permType: Once}"});
  EXPECT_EQ(sut.at("objects").at(0).at("commands").at(1).at("options"), Json::array());
  EXPECT_EQ(sut.at("triggers").size(), 1U);
  EXPECT_EQ(sut.at("triggers").at(0).at("line"), 9);
  EXPECT_EQ(
      sut.at("diagnoses"),
      (Json::array(
          {{{"object", "B"}, {"line", 9}, {"mainCode", 0x090F2030}, {"detailCode", 0x0C5701B1}, {"text", "too small"}}})));
  EXPECT_EQ(parsed(sampleRecord()).at("triggers"), Json::array());
  EXPECT_EQ(parsed(sampleRecord()).at("diagnoses"), Json::array());
}

TEST(JsonReport, ReplacesWhatIsNoUtf8) {
  RunRecord record = sampleRecord();
  record.file = "bad\xFF";
  EXPECT_NO_THROW(parsed(record));
}

}  // namespace
}  // namespace motion::host::observe
