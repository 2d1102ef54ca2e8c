// Single values and fields of maps.
#include "host/scenario/value_reader.h"

#include <gmock/gmock.h>

#include "host/scenario/yaml_tree.h"
#include "reading.h"

namespace motion::host::scenario {
namespace {

class ValueReader : public testing::Test {
 protected:
  Value valueOf(const std::string& text) { return parseYaml(text, m_problems).value_or(Value()); }
  Texts problems() { return textsOf(m_problems.take()); }

  ProblemCollector m_problems{"f"};
};

TEST_F(ValueReader, printsValuesInOneLine) {
  EXPECT_EQ(inOneLine(valueOf("{a: [1, {b: 'c d'}], e: {}, f: [], g: }")), "a: [1, {b: \"c d\"}], e: {}, f: [], g: null");
  EXPECT_EQ(inOneLine(valueOf("\"a\\nb\"")), "\"a b\"");
}

TEST_F(ValueReader, readsTimesInEachUnit) {
  EXPECT_EQ(readTime(valueOf("1 ms"), "t", m_problems), 0.001);
  EXPECT_EQ(readTime(valueOf("1ms"), "t", m_problems), 0.001);
  EXPECT_EQ(readTime(valueOf("0.3 s"), "t", m_problems), 0.3);
  EXPECT_EQ(readTime(valueOf("250 us"), "t", m_problems), 250e-6);
  EXPECT_EQ(readTime(valueOf("250 \u00B5s"), "t", m_problems), 250e-6);
  EXPECT_EQ(readTime(valueOf("250 \u03BCs"), "t", m_problems), 250e-6);
  EXPECT_EQ(readTime(valueOf("'1e3  ms'"), "t", m_problems), 1.0);
  EXPECT_EQ(readTime(valueOf("0 s"), "t", m_problems), 0.0);
  EXPECT_TRUE(problems().empty());
}

TEST_F(ValueReader, refusesTimesThatAreNone) {
  const std::string remedy = "; write a number and one of the units s, ms, us, as in '5 ms'";
  const auto problemOf = [&](const std::string& text) {
    EXPECT_FALSE(readTime(valueOf(text), "t", m_problems).has_value()) << text;
    const Texts texts = problems();
    return texts.size() == 1 ? texts[0] : std::string();
  };
  EXPECT_EQ(problemOf("5"), "f:1:1: t: '5' has no unit" + remedy);
  EXPECT_EQ(problemOf("1 min"), "f:1:1: t: '1 min' has the unknown unit 'min'" + remedy);
  EXPECT_EQ(problemOf("1 S"), "f:1:1: t: '1 S' has the unknown unit 'S'" + remedy);
  EXPECT_EQ(problemOf("-1 ms"), "f:1:1: t: '-1 ms' is negative" + remedy);
  EXPECT_EQ(problemOf("soon"), "f:1:1: t: 'soon' is not a time" + remedy);
  EXPECT_EQ(problemOf("information"), "f:1:1: t: 'information' is not a time" + remedy);
  EXPECT_EQ(problemOf("nan s"), "f:1:1: t: 'nan s' is not a finite time" + remedy);
  EXPECT_EQ(problemOf(".inf"), "f:1:1: t: '.inf' is not a finite time" + remedy);
  EXPECT_EQ(problemOf("1e999 s"), "f:1:1: t: '1e999 s' is not a finite time" + remedy);
  EXPECT_EQ(problemOf("[1 s]"), "f:1:1: t: expected a time, found a list" + remedy);
  EXPECT_EQ(problemOf("~"), "f:1:1: t: expected a time, found nothing" + remedy);
}

TEST_F(ValueReader, readsLengthsAsMillimetres) {
  EXPECT_EQ(readLength(valueOf("250"), "x", m_problems), 0.25);
  EXPECT_EQ(readLength(valueOf("-0.5"), "x", m_problems), -0.0005);
  EXPECT_TRUE(problems().empty());
  for (const std::string text : {"far", "nan", "'5'", "[1]", "5 mm", "{}"}) {
    EXPECT_FALSE(readLength(valueOf(text), "x", m_problems).has_value());
  }
  EXPECT_EQ(problems(),
            (Texts{"f:1:1: x: expected a number [mm], found 'far'; write the number alone, as in '250' or '0.5'",
                   "f:1:1: x: expected a finite number [mm], found 'nan'",
                   "f:1:1: x: expected a number [mm], found the text '5'; write it without quotes",
                   "f:1:1: x: expected a number [mm], found a list",
                   "f:1:1: x: expected a number [mm], found '5 mm'; write the number alone, as in '250' or '0.5'",
                   "f:1:1: x: expected a number [mm], found a map"}));
}

TEST_F(ValueReader, readsBooleansOfTheseTwoWordsOnly) {
  EXPECT_EQ(readBool(valueOf("true"), "b", m_problems), true);
  EXPECT_EQ(readBool(valueOf("false"), "b", m_problems), false);
  EXPECT_TRUE(problems().empty());
  for (const std::string text : {"yes", "True", "1", "'true'", "[true]"}) {
    EXPECT_FALSE(readBool(valueOf(text), "b", m_problems).has_value());
  }
  EXPECT_EQ(problems(),
            (Texts{"f:1:1: b: expected true or false, found 'yes'", "f:1:1: b: expected true or false, found 'True'",
                   "f:1:1: b: expected true or false, found '1'", "f:1:1: b: expected true or false, found the text 'true'",
                   "f:1:1: b: expected true or false, found a list"}));
}

TEST_F(ValueReader, readsIntegersInTheirRange) {
  EXPECT_EQ(readInteger(valueOf("1"), "n", 1, 9, m_problems), 1U);
  EXPECT_EQ(readInteger(valueOf("9"), "n", 1, 9, m_problems), 9U);
  EXPECT_TRUE(problems().empty());
  for (const std::string text : {"0", "10", "1.0", "-1", "99999999999", "'5'"}) {
    EXPECT_FALSE(readInteger(valueOf(text), "n", 1, 9, m_problems).has_value());
  }
  const std::string expected = "f:1:1: n: expected a whole number from 1 to 9, found ";
  EXPECT_EQ(problems(), (Texts{expected + "'0'", expected + "'10'", expected + "'1.0'", expected + "'-1'",
                               expected + "'99999999999'", expected + "the text '5'; write it without quotes"}));
}

TEST_F(ValueReader, findsFieldsOfMaps) {
  const Value map = valueOf("{name: a, tpye: b}");
  const MapReader sut(map, "thing", {"name", "type"}, m_problems);
  EXPECT_EQ(sut.find("name")->text, "a");
  EXPECT_EQ(sut.require("name")->text, "a");
  EXPECT_EQ(sut.find("type"), nullptr);
  EXPECT_EQ(sut.require("type"), nullptr);
  EXPECT_EQ(problems(), (Texts{"f:1:1: thing: 'type' is missing",
                               "f:1:11: thing: unknown key 'tpye'; did you mean 'type'? known here: name, type"}));
}

}  // namespace
}  // namespace motion::host::scenario
