// Quoting and nearest match.
#include "host/scenario/words.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace motion::host::scenario {
namespace {

constexpr std::array<std::string_view, 4> WORDS{"to", "velocity", "acceleration", "by"};

TEST(InQuotes, showsControlCharactersAndCutsBetweenCharacters) {
  EXPECT_EQ(inQuotes("Feeder 1"), "'Feeder 1'");
  EXPECT_EQ(inQuotes("a\n\x7f"), "'a\\x0a\\x7f'");
  EXPECT_EQ(inQuotes(std::string(60, 'x')), "'" + std::string(60, 'x') + "'");
  EXPECT_EQ(inQuotes(std::string(61, 'x')), "'" + std::string(60, 'x') + "...'");
  EXPECT_EQ(inQuotes(std::string(59, 'x') + "\u00e4" + "yyy"), "'" + std::string(59, 'x') + "...'");
}

TEST(NearestWord, findsWordsWithFewEdits) {
  EXPECT_EQ(nearestWord("velocty", WORDS), "velocity");
  EXPECT_EQ(nearestWord("VELOCITY", WORDS), "velocity");
  EXPECT_EQ(nearestWord("velcoity", WORDS), "velocity");
  EXPECT_EQ(nearestWord("ot", WORDS), "to");
  EXPECT_EQ(nearestWord("accelerations", WORDS), "acceleration");
}

TEST(NearestWord, prefersTheOneWithFewestEdits) {
  constexpr std::array<std::string_view, 3> NAMES{"Feeder1x", "Feeder12", "Feeder1"};
  EXPECT_EQ(nearestWord("Feeder2", NAMES), "Feeder12");
}

TEST(NearestWord, findsNoneThatIsFar) {
  EXPECT_EQ(nearestWord("speed", WORDS), "");
  EXPECT_EQ(nearestWord("", WORDS), "");
  EXPECT_EQ(nearestWord("x", WORDS), "");
  EXPECT_EQ(nearestWord(std::string(100, 'v'), WORDS), "");
}

TEST(KnownWords, asksOnlyIfAWordIsNear) {
  EXPECT_EQ(knownWords("velocty", WORDS), "did you mean 'velocity'? known here: to, velocity, acceleration, by");
  EXPECT_EQ(knownWords("speed", WORDS), "known here: to, velocity, acceleration, by");
  EXPECT_EQ(knownWords("speed", {}), "nothing is known here");
}

TEST(ListOfWords, isCutAfterThirty) {
  const std::vector<std::string_view> words(32, "w");
  const std::string list = listOfWords(words);
  EXPECT_EQ(list.substr(list.size() - 15), "w, w and 2 more");
  EXPECT_EQ(std::count(list.begin(), list.end(), 'w'), 30);
}

}  // namespace
}  // namespace motion::host::scenario
