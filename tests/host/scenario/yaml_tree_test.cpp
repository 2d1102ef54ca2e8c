// Values, places, keys that stand twice, aliases and limits of the YAML tree.
#include "host/scenario/yaml_tree.h"

#include <gmock/gmock.h>

#include "host/scenario/value_reader.h"
#include "reading.h"

namespace motion::host::scenario {
namespace {

struct Parsed {
  std::optional<Value> root;
  Texts problems;
};

Parsed parse(const std::string& text) {
  ProblemCollector problems("f");
  auto root = parseYaml(text, problems);
  return {std::move(root), textsOf(problems.take())};
}

// The value of a text without problems.
Value valueOf(const std::string& text) {
  const Parsed parsed = parse(text);
  EXPECT_THAT(parsed.problems, testing::IsEmpty());
  EXPECT_TRUE(parsed.root.has_value());
  return parsed.root.value_or(Value());
}

std::string placeOf(const Mark& mark) {
  return std::to_string(mark.line) + ":" + std::to_string(mark.column);
}

TEST(ParseYaml, keepsKindsTextsAndTheOrderOfFields) {
  const Value sut = valueOf("b: 1\na: [x, 'y', {c: \"true\"}]\nd:\ne: {}\n");
  EXPECT_EQ(inOneLine(sut), "b: 1, a: [x, \"y\", {c: \"true\"}], d: null, e: {}");
  EXPECT_FALSE(sut.fields[0].value.quoted);
  EXPECT_TRUE(sut.fields[1].value.items[1].quoted);
  EXPECT_EQ(sut.fields[2].value.kind, Value::Kind::EMPTY);
}

TEST(ParseYaml, knowsWhereValuesAndKeysStand) {
  const Value sut = valueOf("one: 1\ntwo:\n  - {x: 5, yy: [6]}\nnone:\n");
  const Value& item = sut.fields[1].value.items[0];
  EXPECT_EQ(placeOf(sut.fields[0].value.key), "1:1");
  EXPECT_EQ(placeOf(sut.fields[0].value.mark), "1:6");
  EXPECT_EQ(placeOf(item.mark), "3:5");
  EXPECT_EQ(placeOf(item.fields[1].value.key), "3:12");
  EXPECT_EQ(placeOf(item.fields[1].value.mark), "3:16");
  EXPECT_EQ(placeOf(item.fields[1].value.items[0].mark), "3:17");
  EXPECT_EQ(placeOf(sut.fields[2].value.mark), "4:1");
}

TEST(ParseYaml, placesNothingWhereItWouldStand) {
  const Value sut = valueOf("- \n\n- ~\n-   null\n-\n\n");
  ASSERT_EQ(sut.items.size(), 4U);
  EXPECT_EQ(placeOf(sut.items[0].mark), "1:1");
  EXPECT_EQ(placeOf(sut.items[1].mark), "3:3");
  EXPECT_EQ(placeOf(sut.items[2].mark), "4:5");
  EXPECT_EQ(placeOf(sut.items[3].mark), "5:1");
}

TEST(ParseYaml, countsCharactersNotBytes) {
  const Value sut = valueOf("a: {\u00e4\u20ac: \u00b5, b: 1}\n");
  EXPECT_EQ(placeOf(sut.fields[0].value.fields[1].value.key), "1:12");
}

TEST(ParseYaml, reportsKeysThatStandTwice) {
  const Parsed sut = parse("a: 1\nb: {c: 1, c: 2}\n'a': 3\n");
  EXPECT_EQ(sut.problems, (Texts{"f:2:11: 'c' stands twice in one map; keep one; the first is in line 2, column 5",
                                 "f:3:1: 'a' stands twice in one map; keep one; the first is in line 1, column 1"}));
  EXPECT_EQ(inOneLine(*sut.root), "a: 1, b: {c: 1}");
}

TEST(ParseYaml, reportsKeysThatAreNoWords) {
  EXPECT_EQ(parse("{[a]: 1, {b: c}: 2, '': 3, ~: 4, d: 5}").problems,
            (Texts{"f:1:2: a key must be a word", "f:1:10: a key must be a word", "f:1:21: a key must be a word",
                   "f:1:28: a key must be a word"}));
}

TEST(ParseYaml, reportsSyntaxErrorsAtTheirPlace) {
  EXPECT_EQ(parse("a: [1, 2\nb: 3\n").problems, (Texts{"f:2:2: this is not YAML: end of sequence flow not found"}));
  EXPECT_EQ(parse("a: 1\n  b: 2\n").problems, (Texts{"f:2:4: this is not YAML: illegal map value"}));
  EXPECT_EQ(parse("a: *b\n").problems, (Texts{"f:1:4: this is not YAML: the referenced anchor is not defined"}));
}

TEST(ParseYaml, refusesTagsAndSecondDocuments) {
  EXPECT_EQ(parse("a: !thing 1\nb: !!int 2\nc: ! 3\n").problems,
            (Texts{"f:1:4: the tag '!thing' has no meaning here; write the value without it",
                   "f:2:4: the tag 'tag:yaml.org,2002:int' has no meaning here; write the value without it"}));
  EXPECT_EQ(parse("a: 1\n---\nb: 2\n").problems,
            (Texts{"f:2:1: a second document begins here; a file holds one scenario; remove '---' and the rest"}));
}

TEST(ParseYaml, replacesAliasesByWhatTheyName) {
  const Value sut = valueOf("a: &x {v: [1, 2]}\nb: *x\nc: &y 5\nd: [*y, *x]\n");
  EXPECT_EQ(inOneLine(sut), "a: {v: [1, 2]}, b: {v: [1, 2]}, c: 5, d: [5, {v: [1, 2]}]");
  EXPECT_EQ(placeOf(sut.fields[1].value.mark), "2:4");
  EXPECT_EQ(placeOf(sut.fields[1].value.key), "2:1");
}

TEST(ParseYaml, refusesAnAliasInsideWhatItNames) {
  EXPECT_EQ(parse("a: &x [1, *x]\n").problems, (Texts{"f:1:11: an alias stands inside the value that it names"}));
}

TEST(ParseYaml, boundsWhatAliasesMultiply) {
  std::string bomb = "a0: &a0 [x, x, x, x, x, x, x, x, x, x]\n";
  for (int i = 1; i < 20; ++i) {
    const std::string alias = "*a" + std::to_string(i - 1);
    const std::string name = "a" + std::to_string(i);
    bomb += name + ": &" + name + " [" + alias;
    for (int j = 0; j < 9; ++j) {
      bomb += ", " + alias;
    }
    bomb += "]\n";
  }
  const Parsed sut = parse(bomb);
  EXPECT_FALSE(sut.root.has_value());
  ASSERT_EQ(sut.problems.size(), 1U);
  EXPECT_THAT(
      sut.problems[0],
      testing::EndsWith("aliases make more than 1200000 values of this file; write the values out or use fewer aliases"));
}

TEST(ParseYaml, countsWhatEachAliasAdds) {
  std::string text = "- &a [";
  for (int i = 0; i < 1000; ++i) {
    text += "x,";
  }
  text += "]\n";
  for (int i = 0; i < 1300; ++i) {
    text += "- *a\n";
  }
  EXPECT_THAT(parse(text).problems, testing::ElementsAre(testing::HasSubstr("aliases make more than 1200000 values")));
}

TEST(ParseYaml, countsAnchorsWithinAnchors) {
  std::string text;
  for (int i = 0; i < 30; ++i) {
    text += "&a" + std::to_string(i) + " [";
  }
  for (int i = 0; i < 100'000; ++i) {
    text += "x,";
  }
  text += std::string(30, ']');
  EXPECT_THAT(parse(text).problems, testing::ElementsAre(testing::HasSubstr("aliases make more than 1200000 values")));
}

TEST(ParseYaml, boundsTheDepth) {
  const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_TRUE(parse(nested(32)).problems.empty());
  EXPECT_EQ(parse(nested(33)).problems, (Texts{"f:1:33: lists and maps are nested more than 32 levels deep"}));
  EXPECT_EQ(parse("a: &x " + nested(20) + "\nb: [[[[[[[[[[[[*x]]]]]]]]]]]]\n").problems,
            (Texts{"f:2:16: lists and maps are nested more than 32 levels deep"}));
}

TEST(ParseYaml, takesTheLongestTextsWithoutAliases) {
  std::string text = "[";
  while (text.size() + 2 < MAX_SCENARIO_SIZE) {
    text += "x,";
  }
  text += "]";
  EXPECT_GT(valueOf(text).items.size(), 524'000U);
}

TEST(ParseYaml, survivesHostileTexts) {
  for (const std::string piece :
       {"[", "{", "- ", "? ", "&a ", "*a ", "!a ", "'", "\"", "|\n", "a: ", "{a: ", "[a, ", "%", "\t", "#", "\r"}) {
    std::string text;
    while (text.size() < 100'000) {
      text += piece;
    }
    const Parsed sut = parse(text);
    EXPECT_TRUE(!sut.problems.empty() || !sut.root || sut.root->kind != Value::Kind::MAP) << piece;
  }
}

}  // namespace
}  // namespace motion::host::scenario
