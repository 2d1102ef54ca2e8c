#include "host/observe/wait_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/observe/json_report.h"
#include "record_builder.h"

namespace motion::host::observe {
namespace {

// Compared without regard to the order of names.
using Json = nlohmann::json;

Json parsed(const nlohmann::ordered_json& json) {
  return Json::parse(json.dump());
}

TEST(JoinsJson, IsAnEmptyListWithoutJoins) {
  EXPECT_EQ(parsed(joinsJson(recordOf({{"A", {}}}))), Json::array());
}

TEST(JoinsJson, HasTheOccurrencesWithTheirMembers) {
  CmdRecord next = done(works(), 22, 30);
  next.prepared = 15;
  const Json sut =
      parsed(joinsJson(recordOf({{"A", {done(joins({0, 1}, true), 11, 21), next}}, {"B", {done(joins({0, 1}), 20, 21)}}})));
  ASSERT_EQ(sut.size(), 1U);
  EXPECT_EQ(sut[0].at("group"), (Json{"A", "B"}));
  EXPECT_EQ(sut[0].at("occurrence"), 1);
  EXPECT_EQ(sut[0].at("completed"), 21);
  EXPECT_EQ(sut[0].at("last"), "B");
  ASSERT_EQ(sut[0].at("members").size(), 2U);
  const Json& member = sut[0].at("members")[0];
  EXPECT_EQ(member.at("object"), "A");
  EXPECT_EQ(member.at("command"), "A#1");
  EXPECT_EQ(member.at("active"), 11);
  EXPECT_EQ(member.at("arrived"), 15);
  EXPECT_EQ(member.at("ended"), 21);
  EXPECT_EQ(member.at("aborted"), false);
  EXPECT_DOUBLE_EQ(member.at("waitedForPreparation").get<double>(), 0.004);
  EXPECT_DOUBLE_EQ(member.at("waitedForMembers").get<double>(), 0.006);
}

TEST(JoinsJson, HasNullForWhatDidNotHappen) {
  const Json sut = parsed(joinsJson(recordOf({{"A", {aborted(joins({0, 1}), 0, 7)}}, {"B", {}}})));
  EXPECT_TRUE(sut[0].at("completed").is_null());
  EXPECT_TRUE(sut[0].at("last").is_null());
  EXPECT_TRUE(sut[0].at("members")[0].at("active").is_null());
  EXPECT_TRUE(sut[0].at("members")[0].at("arrived").is_null());
  EXPECT_EQ(sut[0].at("members")[0].at("ended"), 7);
  EXPECT_EQ(sut[0].at("members")[0].at("aborted"), true);
  EXPECT_TRUE(sut[0].at("members")[1].at("command").is_null());
  EXPECT_TRUE(sut[0].at("members")[1].at("ended").is_null());
}

TEST(WaitsJson, IsEmptyWhenNobodyWaits) {
  EXPECT_EQ(parsed(waitsJson(recordOf({{"A", {since(1, works())}}}))), (Json{{"objects", Json::array()},
                                                                             {"circle", Json::array()},
                                                                             {"circleSince", nullptr},
                                                                             {"circleClosedBy", nullptr},
                                                                             {"neededSignals", Json::array()}}));
}

TEST(WaitsJson, HasEachWaitWithItsReasons) {
  const SyncStep join = joins({0, 1, 2, 3, 4});
  const Json sut = parsed(waitsJson(recordOf({{"A", {since(9, join)}},
                                              {"B", {since(7, waitsSet(3)), ahead(join)}},
                                              {"C", {since(1, works()), ahead(sets(3))}},
                                              {"D", {aborted(join, 3, 8)}},
                                              {"E", {since(8, joins({0, 1, 2, 3, 4}, true))}}})));
  ASSERT_EQ(sut.at("objects").size(), 3U);
  const Json missing{{{"object", "B"}, {"command", "B#2"}, {"why", "on its way"}},
                     {{"object", "C"}, {"command", nullptr}, {"why", "no such join"}},
                     {{"object", "D"}, {"command", "D#1"}, {"why", "aborted"}},
                     {{"object", "E"}, {"command", "E#1"}, {"why", "no next command"}}};
  EXPECT_EQ(sut.at("objects")[0], (Json{{"object", "A"},
                                        {"command", "A#1"},
                                        {"line", 11},
                                        {"since", 9},
                                        {"waitsFor", "B, C, D, E"},
                                        {"stuck", true},
                                        {"certain", true},
                                        {"torn", false},
                                        {"releasers", Json::array()},
                                        {"arrived", {{{"object", "A"}, {"cycle", 9}}}},
                                        {"missing", missing}}));
  const Json& wait = sut.at("objects")[1];
  EXPECT_EQ(wait.at("object"), "B");
  EXPECT_EQ(wait.at("waitsFor"), "signal 3");
  EXPECT_EQ(wait.at("stuck"), false);
  EXPECT_EQ(wait.at("certain"), false);
  EXPECT_EQ(wait.at("releasers"), (Json{"C#2"}));
  EXPECT_EQ(wait.at("missing"), Json::array());
}

TEST(WaitsJson, MarksAJoinThatAnAbortToreApart) {
  const Json sut = parsed(waitsJson(recordOf({{"A", {since(9, joins({0, 1}))}}, {"B", {since(8, joins({0, 1}))}}})));
  EXPECT_EQ(sut.at("objects")[0].at("torn"), true);
  EXPECT_EQ(sut.at("objects")[0].at("certain"), true);
}

TEST(WaitsJson, HasTheCircleAndTheNeededSignals) {
  const Json sut = parsed(
      waitsJson(recordOf({{"A", {since(5, waitsSet(4)), ahead(sets(6))}}, {"B", {since(8, waitsSet(6)), ahead(sets(4))}}})));
  EXPECT_EQ(sut.at("circle"), (Json{"A", "B"}));
  EXPECT_EQ(sut.at("circleSince"), 8);
  EXPECT_EQ(sut.at("circleClosedBy"), "B");
  EXPECT_EQ(sut.at("neededSignals"), (Json{4, 6}));
}

TEST(WaitsJson, StandsInTheReportBesideTheJoins) {
  const RunRecord record = recordOf({{"A", {since(5, joins({0, 1}))}}, {"B", {}}});
  const Json sut = Json::parse(jsonReport(record));
  EXPECT_EQ(sut.at("joins"), parsed(joinsJson(record)));
  EXPECT_EQ(sut.at("waits"), parsed(waitsJson(record)));
}

}  // namespace
}  // namespace motion::host::observe
