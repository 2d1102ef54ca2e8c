// Timing, signals and objects of scenario files.
#include "reading.h"

namespace motion::host::scenario {
namespace {

const std::string OBJECT = "objects: [{name: A, type: axis}]\n";
const std::string TIME_REMEDY = "; write a number and one of the units s, ms, us, as in '5 ms'";

TEST(Timing, hasDefaults) {
  const Scenario sut = scenarioOf(OBJECT);
  EXPECT_EQ(sut.cycleTime, 0.001);
  EXPECT_EQ(sut.limit, 60.0);
  EXPECT_EQ(sut.bufferSize, 64U);
}

TEST(Timing, isRead) {
  const Scenario sut = scenarioOf(OBJECT + "cycle: 50 us\nlimit: 1500 ms\nbuffer: 1000\n");
  EXPECT_EQ(sut.cycleTime, 50e-6);
  EXPECT_EQ(sut.limit, 1.5);
  EXPECT_EQ(sut.bufferSize, 1000U);
  EXPECT_EQ(scenarioOf(OBJECT + "cycle: 1 s\nlimit: 1 s\nbuffer: 1").cycleTime, 1.0);
  EXPECT_EQ(scenarioOf(OBJECT + "limit: 1000000 s").limit, 1e6);
}

TEST(Timing, refusesCyclesOutOfRange) {
  const std::string remedy = "; a cycle takes at least 50 us and at most 1 s";
  EXPECT_EQ(problemsOf(OBJECT + "cycle: 0 s"), (Texts{"f:2:8: cycle: '0 s' is out of range" + remedy}));
  EXPECT_EQ(problemsOf(OBJECT + "cycle: 49 us"), (Texts{"f:2:8: cycle: '49 us' is out of range" + remedy}));
  EXPECT_EQ(problemsOf(OBJECT + "cycle: 1.001 s"), (Texts{"f:2:8: cycle: '1.001 s' is out of range" + remedy}));
  EXPECT_EQ(problemsOf(OBJECT + "cycle: -1 ms"), (Texts{"f:2:8: cycle: '-1 ms' is negative" + TIME_REMEDY}));
  EXPECT_EQ(problemsOf(OBJECT + "cycle: 1"), (Texts{"f:2:8: cycle: '1' has no unit" + TIME_REMEDY}));
  EXPECT_EQ(problemsOf(OBJECT + "cycle:"), (Texts{"f:2:1: cycle: expected a time, found nothing" + TIME_REMEDY}));
}

TEST(Timing, refusesLimitsOutOfRange) {
  EXPECT_EQ(problemsOf(OBJECT + "limit: 0.9 ms"), (Texts{"f:2:8: limit: '0.9 ms' is shorter than one cycle"}));
  EXPECT_EQ(problemsOf(OBJECT + "limit: 1000001 s"),
            (Texts{"f:2:8: limit: '1000001 s' is out of range; a run takes at most 1000000 s"}));
  EXPECT_EQ(problemsOf(OBJECT + "limit: inf s"), (Texts{"f:2:8: limit: 'inf s' is not a finite time" + TIME_REMEDY}));
}

TEST(Timing, refusesBuffersOutOfRange) {
  const std::string expected = "buffer: expected a whole number from 1 to 1000, found ";
  EXPECT_EQ(problemsOf(OBJECT + "buffer: 0"), (Texts{"f:2:9: " + expected + "'0'"}));
  EXPECT_EQ(problemsOf(OBJECT + "buffer: 1001"), (Texts{"f:2:9: " + expected + "'1001'"}));
  EXPECT_EQ(problemsOf(OBJECT + "buffer: many"), (Texts{"f:2:9: " + expected + "'many'"}));
  EXPECT_EQ(problemsOf(OBJECT + "buffer: {}"), (Texts{"f:2:9: " + expected + "a map"}));
}

TEST(Signals, haveNames) {
  const Scenario sut = scenarioOf(OBJECT + "signals: {5: part in place, 99: 'glue', 0: valve}");
  ASSERT_EQ(sut.signals.size(), 3U);
  EXPECT_EQ(sut.signals[0].id, 5U);
  EXPECT_EQ(sut.signals[0].name, "part in place");
  EXPECT_EQ(sut.signals[1].id, 99U);
  EXPECT_EQ(sut.signals[2].id, 0U);
  EXPECT_TRUE(scenarioOf(OBJECT + "signals:\n").signals.empty());
}

TEST(Signals, refuseNumbersThatAreNone) {
  const std::string remedy = "; write number: name, as in '5: part in place'";
  EXPECT_EQ(problemsOf(OBJECT + "signals: {100: a, glue: 3, -1: b}"),
            (Texts{"f:2:11: signals: expected a whole number from 0 to 99, found '100'" + remedy,
                   "f:2:19: signals: expected a whole number from 0 to 99, found 'glue'" + remedy,
                   "f:2:28: signals: expected a whole number from 0 to 99, found '-1'" + remedy}));
}

TEST(Signals, refuseNamesThatAreNone) {
  EXPECT_EQ(
      problemsOf(OBJECT + "signals: {1: , 2: [a], 3: '', 4: 12}"),
      (Texts{"f:2:11: signals: name of 1: expected a word, found nothing",
             "f:2:19: signals: name of 2: expected a word, found a list",
             "f:2:27: signals: name of 3: expected a word, found the text ''",
             "f:2:34: signals: name of 4: expected a word, found '12'; a number as a name would be taken for the number "
             "of a signal"}));
  EXPECT_EQ(problemsOf(OBJECT + "signals: [a]"), (Texts{"f:2:10: signals: expected a map, found a list"}));
}

TEST(Signals, refuseTheSameNumberTwice) {
  EXPECT_EQ(problemsOf(OBJECT + "signals: {5: a, 05: b}"), (Texts{"f:2:17: signals: 5 stands twice"}));
  EXPECT_EQ(problemsOf(OBJECT + "signals: {5: a, 5: b}"),
            (Texts{"f:2:17: '5' stands twice in one map; keep one; the first is in line 2, column 11"}));
}

TEST(Objects, areRead) {
  const Scenario sut = scenarioOf(
      "objects:\n - {name: Feeder 1, type: axis, at: -5}\n - {name: R, type: kinematics, at: [1, 2.5, 100]}\n - {name: B, "
      "type: axis}\n");
  ASSERT_EQ(sut.objects.size(), 3U);
  EXPECT_EQ(sut.objects[0].name, "Feeder 1");
  EXPECT_EQ(sut.objects[0].type, core::ObjectType::AXIS);
  EXPECT_EQ(sut.objects[0].start[0], -0.005);
  EXPECT_EQ(sut.objects[0].mark.line, 2U);
  EXPECT_EQ(sut.objects[0].mark.column, 4U);
  EXPECT_EQ(sut.objects[1].type, core::ObjectType::KINEMATICS);
  EXPECT_EQ(sut.objects[1].start, (std::array<double, 3>{0.001, 0.0025, 0.1}));
  EXPECT_EQ(sut.objects[2].start, (std::array<double, 3>{}));
}

TEST(Objects, mustExist) {
  EXPECT_EQ(problemsOf("cycle: 1 ms"), (Texts{"f:1:1: scenario: 'objects' is missing"}));
  EXPECT_EQ(problemsOf("objects: []"), (Texts{"f:1:10: objects: there are none; as in '- {name: Feeder, type: axis}'"}));
  EXPECT_EQ(problemsOf("objects:"), (Texts{"f:1:1: objects: there are none; as in '- {name: Feeder, type: axis}'"}));
  EXPECT_EQ(problemsOf("objects: {A: axis}"), (Texts{"f:1:10: objects: expected a list, found a map"}));
  EXPECT_EQ(problemsOf("objects: [A]"), (Texts{"f:1:11: object: expected a map, found 'A'"}));
}

TEST(Objects, needKnownTypes) {
  EXPECT_EQ(
      problemsOf("objects: [{name: A, type: axes}, {name: B, type: robot, at: far}, {name: C}, {name: D, type: [axis]}]"),
      (Texts{"f:1:27: object: unknown type 'axes'; did you mean 'axis'? known here: axis, kinematics",
             "f:1:50: object: unknown type 'robot'; known here: axis, kinematics", "f:1:67: object: 'type' is missing",
             "f:1:94: object: type: expected a word, found a list"}));
}

TEST(Objects, needUsableNames) {
  const std::string remedy = "; names hold no '#', no ',', no control characters and no space at either end";
  const auto problem = [](const std::string& name) { return problemsOf("objects: [{type: axis, name: " + name + "}]"); };
  EXPECT_EQ(problem("''"), (Texts{"f:1:30: object: name: expected a word, found the text ''"}));
  EXPECT_EQ(problem(""), (Texts{"f:1:24: object: name: expected a word, found nothing"}));
  EXPECT_EQ(problem("a#b"), (Texts{"f:1:30: object: the name 'a#b' holds the character '#'" + remedy}));
  EXPECT_EQ(problem("'a,b'"), (Texts{"f:1:30: object: the name 'a,b' holds the character ','" + remedy}));
  EXPECT_EQ(problem("' a'"), (Texts{"f:1:30: object: the name ' a' begins or ends with a space" + remedy}));
  EXPECT_EQ(problem("'a '"), (Texts{"f:1:30: object: the name 'a ' begins or ends with a space" + remedy}));
  EXPECT_EQ(problem("\"a\\tb\""), (Texts{"f:1:30: object: the name 'a\\x09b' holds a control character" + remedy}));
  EXPECT_EQ(problemsOf("objects: [{type: axis}]"), (Texts{"f:1:11: object: 'name' is missing"}));
}

TEST(Objects, needDifferentNames) {
  EXPECT_EQ(problemsOf("objects:\n- {name: A, type: axis}\n- {name: A, type: kinematics}\n"),
            (Texts{"f:3:10: object: the name 'A' stands twice"}));
}

TEST(Objects, startWhereTheirTypeCanBe) {
  const auto problem = [](const std::string& rest) { return problemsOf("objects: [{name: A, type: " + rest + "}]"); };
  EXPECT_EQ(problem("axis, at: [1]"), (Texts{"f:1:37: object: at: expected a number [mm], found a list"}));
  EXPECT_EQ(problem("axis, at: nan"), (Texts{"f:1:37: object: at: expected a finite number [mm], found 'nan'"}));
  const std::string remedy = "; as in '[0, 0, 100]'";
  EXPECT_EQ(problem("kinematics, at: 5"),
            (Texts{"f:1:43: object: at: expected a list of three numbers [mm], found '5'" + remedy}));
  EXPECT_EQ(problem("kinematics, at: [1, 2]"),
            (Texts{"f:1:43: object: at: expected a list of three numbers [mm], found a list" + remedy}));
  EXPECT_EQ(problem("kinematics, at: [1, 2, {}]"), (Texts{"f:1:50: object: at: expected a number [mm], found a map"}));
}

TEST(Objects, refuseUnknownKeys) {
  EXPECT_EQ(problemsOf("objects: [{name: A, typ: axis, type: axis}]"),
            (Texts{"f:1:21: object: unknown key 'typ'; did you mean 'type'? known here: name, type, at, units"}));
}

TEST(Objects, haveUnits) {
  const auto unitsOf = [](const std::string& units) {
    const ObjectDef object = scenarioOf("objects: [{name: A, type: axis" + units + "}]").objects.at(0);
    return std::pair(object.lengthUnit, object.timeUnit);
  };
  EXPECT_EQ(unitsOf(""), std::pair(LengthUnit::MILLIMETRE, TimeUnit::SECOND));
  EXPECT_EQ(unitsOf(", units: {}"), std::pair(LengthUnit::MILLIMETRE, TimeUnit::SECOND));
  EXPECT_EQ(unitsOf(", units: {length: m}"), std::pair(LengthUnit::METRE, TimeUnit::SECOND));
  EXPECT_EQ(unitsOf(", units: {length: mm, time: ms}"), std::pair(LengthUnit::MILLIMETRE, TimeUnit::MILLISECOND));
  EXPECT_EQ(unitsOf(", units: {time: s, length: in}"), std::pair(LengthUnit::INCH, TimeUnit::SECOND));
}

TEST(Objects, standInMillimetresWhateverTheirUnits) {
  EXPECT_EQ(scenarioOf("objects: [{name: A, type: axis, units: {length: in}, at: 5}]").objects.at(0).start[0], 0.005);
}

TEST(Objects, refuseOtherUnits) {
  const auto problem = [](const std::string& units) {
    return problemsOf("objects: [{name: A, type: axis, units: " + units + "}]");
  };
  EXPECT_EQ(problem("{length: km}"),
            (Texts{"f:1:49: units: unknown unit of length 'km'; did you mean 'mm'? known here: mm, m, in"}));
  EXPECT_EQ(problem("{length: feet, time: h}"), (Texts{"f:1:49: units: unknown unit of length 'feet'; known here: mm, m, in",
                                                       "f:1:61: units: unknown unit of time 'h'; known here: s, ms"}));
  EXPECT_EQ(problem("{len: mm}"), (Texts{"f:1:41: units: unknown key 'len'; known here: length, time"}));
  EXPECT_EQ(problem("mm"), (Texts{"f:1:40: units: expected a map, found 'mm'"}));
  EXPECT_EQ(problem("{length: [mm]}"), (Texts{"f:1:49: units: length: expected a word, found a list"}));
}

}  // namespace
}  // namespace motion::host::scenario
