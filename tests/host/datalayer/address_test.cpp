// What is an address, what a provider may register under, and what is a pattern.
#include "host/datalayer/address.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace motion::host::datalayer {
namespace {

using testing::ElementsAre;

/// A character in so many bytes, whether it needs them or not.
std::string encoded(std::uint32_t character, int bytes) {
  if (bytes == 1) {
    return {static_cast<char>(character)};
  }
  const std::uint32_t marks[] = {0, 0, 0xC0, 0xE0, 0xF0};
  std::string result(1, static_cast<char>(marks[bytes] | (character >> (6 * (bytes - 1)))));
  for (int rest = bytes - 2; rest >= 0; --rest) {
    result += static_cast<char>(0x80U | ((character >> (6 * rest)) & 0x3FU));
  }
  return result;
}

TEST(AddressTest, LevelsAreSeparatedBySlashes) {
  for (const std::string sut :
       {"a", "a/b", "motion/state/functions/kavo/signals/05", "...", ".a", "a.", "..a/b..", "a b", "~"}) {
    EXPECT_TRUE(isAddress(sut)) << sut;
    EXPECT_TRUE(isNodeAddress(sut)) << sut;
    EXPECT_TRUE(isPattern(sut)) << sut;
  }
}

TEST(AddressTest, EmptyLevelsAndThoseThatLeadElsewhereAreRefused) {
  for (const std::string sut :
       {"", "/", "//", "/a", "a/", "a//b", "a/b//", ".", "..", "a/.", "a/..", "./a", "../a", "a/./b", "a/../b"}) {
    EXPECT_FALSE(isAddress(sut)) << sut;
    EXPECT_FALSE(isNodeAddress(sut)) << sut;
    EXPECT_FALSE(isPattern(sut)) << sut;
  }
}

TEST(AddressTest, ControlCharactersAreRefused) {
  for (int byte = 0; byte < 0x20; ++byte) {
    EXPECT_FALSE(isAddress(std::string("a") + static_cast<char>(byte))) << byte;
  }
  EXPECT_FALSE(isAddress("a\x7F/b"));
  EXPECT_FALSE(isAddress(std::string("a\0/b", 4)));
  EXPECT_TRUE(isAddress(" ")) << "no control character";
}

TEST(AddressTest, AddressHoldsNoWildcard) {
  for (const std::string sut : {"*", "**", "a/*", "a/**", "*/a", "a*", "*a", "a/b*c/d"}) {
    EXPECT_FALSE(isAddress(sut)) << sut;
  }
}

TEST(AddressTest, NodeAddressMayEndInOneWildcardLevel) {
  EXPECT_TRUE(isNodeAddress("*"));
  EXPECT_TRUE(isNodeAddress("a/b/*"));
  for (const std::string sut : {"**", "a/**", "*/a", "*/*", "a/*/b", "a*", "a/*b", "*/"}) {
    EXPECT_FALSE(isNodeAddress(sut)) << sut;
  }
}

TEST(AddressTest, PatternMayStandForAnyLevelsAndAtItsEndForAllFurtherOnes) {
  for (const std::string sut : {"*", "**", "*/*", "*/a/*", "a/*/**", "a/**"}) {
    EXPECT_TRUE(isPattern(sut)) << sut;
  }
  for (const std::string sut : {"**/a", "a/**/b", "**/**", "***", "a/***", "a**", "a/b*", "**/", "/**"}) {
    EXPECT_FALSE(isPattern(sut)) << sut;
  }
}

TEST(AddressTest, LengthIsLimited) {
  const std::string longest(MAX_ADDRESS_LENGTH, 'a');
  EXPECT_TRUE(isAddress(longest));
  EXPECT_TRUE(isNodeAddress(longest));
  EXPECT_TRUE(isPattern(longest));
  EXPECT_FALSE(isAddress(longest + "a"));
  EXPECT_FALSE(isNodeAddress(longest + "a"));
  EXPECT_FALSE(isPattern(longest + "a"));
  EXPECT_FALSE(isPattern(longest + "/*"));
}

TEST(AddressTest, CharactersAreTakenInTheirShortestFormOnly) {
  struct Range {
    int bytes;
    std::uint32_t first;
    std::uint32_t last;
  };
  for (const auto& [bytes, first, last] :
       {Range{2, 0x80, 0x7FF}, {3, 0x800, 0xD7FF}, {3, 0xE000, 0xFFFF}, {4, 0x10000, 0x10FFFF}}) {
    EXPECT_TRUE(isAddress(encoded(first, bytes))) << first;
    EXPECT_TRUE(isAddress(encoded(last, bytes))) << last;
  }
  for (const auto& [bytes, first, last] : {Range{2, 0, 0x7F}, {3, 0, 0x7FF}, {4, 0, 0xFFFF}}) {
    EXPECT_FALSE(isAddress(encoded(first, bytes))) << bytes;
    EXPECT_FALSE(isAddress(encoded(last, bytes))) << bytes;
    EXPECT_FALSE(isAddress("a" + encoded('/', bytes) + "b")) << "a slash in disguise";
    EXPECT_FALSE(isAddress(encoded('*', bytes))) << "a wildcard in disguise";
  }
}

TEST(AddressTest, WhatIsNoCharacterIsRefused) {
  for (const std::uint32_t character : {0xD800U, 0xDBFFU, 0xDC00U, 0xDFFFU}) {
    EXPECT_FALSE(isAddress(encoded(character, 3))) << character;
  }
  EXPECT_FALSE(isAddress(encoded(0x110000, 4)));
  for (const std::string sut : {"\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF", "\x80", "\xBF"}) {
    EXPECT_FALSE(isAddress(sut));
  }
}

TEST(AddressTest, CharactersThatBreakOffAreRefused) {
  for (const int bytes : {2, 3, 4}) {
    const std::string whole = encoded(bytes == 2 ? 0xE4 : bytes == 3 ? 0x20AC : 0x1F600, bytes);
    ASSERT_TRUE(isAddress("a" + whole + "/b"));
    for (int length = 1; length < bytes; ++length) {
      const std::string part = whole.substr(0, static_cast<std::size_t>(length));
      EXPECT_FALSE(isAddress("a" + part)) << "at the end";
      EXPECT_FALSE(isAddress(part + "/b"));
      EXPECT_FALSE(isAddress(part + whole)) << "the next one begins";
    }
  }
}

TEST(AddressTest, PairsOfBytesAreEitherTwoCharactersOrOne) {
  const auto isPlain = [](int byte) { return byte >= 0x20 && byte < 0x7F && byte != '/' && byte != '*'; };
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const std::string sut{static_cast<char>(first), static_cast<char>(second)};
      const bool isTwo = isPlain(first) && isPlain(second) && !(first == '.' && second == '.');
      const bool isOne = first >= 0xC2 && first <= 0xDF && second >= 0x80 && second <= 0xBF;
      ASSERT_EQ(isAddress(sut), isTwo || isOne) << first << " " << second;
    }
  }
}

TEST(AddressTest, LevelsAreTakenOneByOne) {
  std::string_view rest = "a/bc//d";
  std::vector<std::string_view> levels;
  std::string_view level;
  while (takeLevel(rest, level)) {
    levels.push_back(level);
  }
  EXPECT_THAT(levels, ElementsAre("a", "bc", "", "d"));
  EXPECT_EQ(level, "d") << "left as it was";
  EXPECT_TRUE(rest.empty());
}

TEST(AddressTest, ParentIsAllButTheLastLevel) {
  EXPECT_EQ(parentOf("a/b/c"), "a/b");
  EXPECT_EQ(parentOf("a/b"), "a");
  EXPECT_EQ(parentOf("a"), "");
  EXPECT_EQ(parentOf(""), "");
}

}  // namespace
}  // namespace motion::host::datalayer
