// What patterns grant: checked by hand, and against another way to match them.
#include "host/datalayer/access_rights.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "host/datalayer/address.h"

namespace motion::host::datalayer {
namespace {

constexpr Rights READ = static_cast<Rights>(Right::READ);
constexpr Rights READ_AND_WRITE = Right::READ | Right::WRITE;

AccessRights reading(const std::string& pattern) {
  AccessRights rights;
  rights.grant(pattern, READ);
  return rights;
}

TEST(AccessRightsTest, NothingIsGrantedByItself) {
  const AccessRights sut;
  for (const Right right : {Right::READ, Right::WRITE, Right::CREATE_AND_REMOVE, Right::USE}) {
    EXPECT_FALSE(sut.allows(right, "a"));
    EXPECT_FALSE(sut.allows(right, ""));
  }
}

TEST(AccessRightsTest, OnlyTheGrantedRightsAreGiven) {
  AccessRights sut;
  sut.grant("a/*", READ_AND_WRITE);
  EXPECT_TRUE(sut.allows(Right::READ, "a/b"));
  EXPECT_TRUE(sut.allows(Right::WRITE, "a/b"));
  EXPECT_FALSE(sut.allows(Right::CREATE_AND_REMOVE, "a/b"));
  EXPECT_FALSE(sut.allows(Right::USE, "a/b"));
}

TEST(AccessRightsTest, GrantsAddUpOverPatterns) {
  AccessRights sut;
  sut.grant("a/**", READ);
  sut.grant("a/b", static_cast<Rights>(Right::WRITE));
  sut.grant("*/b", static_cast<Rights>(Right::USE));
  sut.grant("a/b", NO_RIGHTS);
  for (const Right right : {Right::READ, Right::WRITE, Right::USE}) {
    EXPECT_TRUE(sut.allows(right, "a/b"));
  }
  EXPECT_FALSE(sut.allows(Right::CREATE_AND_REMOVE, "a/b"));
  EXPECT_FALSE(sut.allows(Right::WRITE, "a/c"));
}

TEST(AccessRightsTest, PatternIsAnchoredAtBothEnds) {
  const AccessRights sut = reading("motion/state/x");
  EXPECT_TRUE(sut.allows(Right::READ, "motion/state/x"));
  for (const char* const address :
       {"motion", "motion/state", "motion/state/", "motion/state/x/", "motion/state/x/y", "motion/state/xy", "motion/state/",
        "otion/state/x", "a/motion/state/x", "/motion/state/x", "state/x", "x"}) {
    EXPECT_FALSE(sut.allows(Right::READ, address)) << address;
  }
}

TEST(AccessRightsTest, OneLevelIsExactlyOne) {
  const AccessRights sut = reading("a/*/c");
  EXPECT_TRUE(sut.allows(Right::READ, "a/b/c"));
  for (const char* const address : {"a/c", "a//c", "a/b/b/c", "a/b", "a/b/c/d", "a/b/cc", "a/*/c", "a/../c", "a/./c"}) {
    EXPECT_FALSE(sut.allows(Right::READ, address)) << address;
  }
}

TEST(AccessRightsTest, AllLevelsAreAnyNumberOfThem) {
  const AccessRights sut = reading("a/**");
  for (const char* const address : {"a", "a/b", "a/b/c/d/e"}) {
    EXPECT_TRUE(sut.allows(Right::READ, address)) << address;
  }
  for (const char* const address : {"", "ab", "ab/c", "b/a", "A/b", "a/", "a//b", "a/../b", "a/b/..", "a/*", "a/**",
                                    "a\xC0\xAF"
                                    "b"}) {
    EXPECT_FALSE(sut.allows(Right::READ, address)) << address;
  }
}

TEST(AccessRightsTest, CasesAndCompositionsOfLettersDiffer) {
  const AccessRights sut = reading("motion/\xC3\xA4/*");
  EXPECT_TRUE(sut.allows(Right::READ, "motion/\xC3\xA4/b"));
  EXPECT_FALSE(sut.allows(Right::READ, "Motion/\xC3\xA4/b"));
  EXPECT_FALSE(sut.allows(Right::READ, "MOTION/\xC3\xA4/b"));
  EXPECT_FALSE(sut.allows(Right::READ, "motion/\xC3\x84/b"));
  EXPECT_FALSE(sut.allows(Right::READ, "motion/a\xCC\x88/b"));
}

TEST(AccessRightsTest, WhatIsNoPatternGrantsNothing) {
  for (const char* const pattern : {"", "/", "a/", "/a", "a//b", "**/a", "a*", "../**", "a/../**", "\xFF/**"}) {
    AccessRights sut;
    sut.grant(pattern, READ);
    for (const char* const address : {"a", "b", "a/b", "x/a", "ab"}) {
      EXPECT_FALSE(sut.allows(Right::READ, address)) << pattern << " " << address;
    }
  }
}

TEST(AccessRightsTest, WhatIsNoAddressIsRefusedEvenWhenAllIsGranted) {
  const AccessRights sut = reading("**");
  EXPECT_TRUE(sut.allows(Right::READ, "a"));
  EXPECT_TRUE(sut.allows(Right::READ, "a/b/c"));
  EXPECT_TRUE(sut.allows(Right::READ, std::string(MAX_ADDRESS_LENGTH, 'a')));
  EXPECT_FALSE(sut.allows(Right::READ, std::string(MAX_ADDRESS_LENGTH + 1, 'a')));
  for (const std::string& address :
       {std::string(), std::string("/"), std::string("a//b"), std::string(".."), std::string("*"), std::string("**"),
        std::string("a\0b", 3), std::string("\xC3"), std::string("a\n")}) {
    EXPECT_FALSE(sut.allows(Right::READ, address)) << address;
  }
}

TEST(AccessRightsTest, LongestPatternIsLookedUp) {
  std::string pattern = "*";
  std::string address = "a";
  while (pattern.size() + 2 < MAX_ADDRESS_LENGTH) {
    pattern += "/*";
    address += "/a";
  }
  const AccessRights sut = reading(pattern);
  EXPECT_TRUE(sut.allows(Right::READ, address));
  EXPECT_FALSE(sut.allows(Right::READ, parentOf(address)));
}

/// Whether a pattern describes an address, by a regular expression that is made of it.
bool matches(const std::string& pattern, const std::string& address) {
  std::string expression;
  for (std::size_t i = 0; i < pattern.size();) {
    if (pattern.compare(i, std::string::npos, "/**") == 0) {
      expression += "(/.+)?";
      break;
    }
    if (pattern.compare(i, std::string::npos, "**") == 0) {
      expression += ".+";
      break;
    }
    if (pattern[i] == '*') {
      expression += "[^/]+";
    } else if (pattern[i] == '.') {
      expression += "\\.";
    } else {
      expression += pattern[i];
    }
    ++i;
  }
  return std::regex_match(address, std::regex(expression));
}

/// Levels that are not empty and lead nowhere else, without wildcards.
bool isHarmless(const std::string& address) {
  const std::string framed = "/" + address + "/";
  return std::ranges::none_of(std::vector<std::string>{"//", "/./", "/../", "*"},
                              [&](const std::string& bad) { return framed.find(bad) != std::string::npos; });
}

rc::Gen<std::string> levelsOf(const std::vector<std::string>& kinds) {
  return rc::gen::map(rc::gen::resize(5, rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(kinds))),
                      [](const std::vector<std::string>& levels) {
                        std::string text;
                        for (const std::string& level : levels) {
                          text += text.empty() && &level == &levels.front() ? level : "/" + level;
                        }
                        return text;
                      });
}

TEST(AccessRightsTest, AgreesWithAnotherWayToMatch) {
  const std::vector<std::string> plain = {"a", "b", "A", "ab", "a."};
  std::vector<std::string> ofPatterns = plain;
  ofPatterns.insert(ofPatterns.end(), {"*", "*", "*", "*"});
  std::vector<std::string> ofAddresses = plain;
  ofAddresses.insert(ofAddresses.end(), {"a", "b", "a", "b", "a", "b", "", "..", "*"});
  int allowed = 0;
  int refused = 0;
  const bool holds = rc::check("each right is given when one of its patterns matches", [&] {
    struct Grant {
      std::string pattern;
      Rights rights;
    };
    std::vector<Grant> grants;
    AccessRights sut;
    for (int number = *rc::gen::inRange(0, 6); number > 0; --number) {
      std::string pattern = *levelsOf(ofPatterns);
      if (*rc::gen::inRange(0, 4) == 0) {
        pattern += pattern.empty() ? "**" : "/**";
      }
      const auto rights = *rc::gen::inRange<int>(0, 16);
      grants.push_back({pattern, static_cast<Rights>(rights)});
      sut.grant(pattern, static_cast<Rights>(rights));
    }
    const std::string address = *levelsOf(ofAddresses);
    for (const Right right : {Right::READ, Right::WRITE, Right::CREATE_AND_REMOVE, Right::USE}) {
      const bool expected = isHarmless(address) && std::ranges::any_of(grants, [&](const Grant& grant) {
                              return (grant.rights & static_cast<Rights>(right)) != 0 && matches(grant.pattern, address);
                            });
      RC_ASSERT(sut.allows(right, address) == expected);
      (expected ? allowed : refused) += 1;
    }
  });
  EXPECT_TRUE(holds);
  EXPECT_GT(allowed, 0) << "the cases show something";
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace motion::host::datalayer
