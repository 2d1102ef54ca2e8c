// Order and number of the problems that are kept.
#include "host/scenario/problem_collector.h"

#include <array>

#include "reading.h"

namespace motion::host::scenario {
namespace {

TEST(ProblemCollector, sortsByPlaceAndKeepsTheOrderOfEqualPlaces) {
  ProblemCollector sut("f");
  sut.error({2, 1}, "c");
  sut.error({1, 9}, "b");
  sut.error({2, 1}, "d");
  sut.error({1, 2}, "a");
  EXPECT_EQ(textsOf(sut.take()), (Texts{"f:1:2: a", "f:1:9: b", "f:2:1: c", "f:2:1: d"}));
}

TEST(ProblemCollector, doesNotCountWarningsAsErrors) {
  ProblemCollector sut("f");
  sut.warning({1, 1}, "hm");
  EXPECT_FALSE(sut.hasErrors());
  sut.error({1, 1}, "no");
  EXPECT_TRUE(sut.hasErrors());
}

TEST(ProblemCollector, keepsTheFirstFiftyAndSaysThatThereAreMore) {
  ProblemCollector sut("f");
  constexpr std::array<std::string_view, 1> RIGHT{"right"};
  for (std::size_t line = 1; line <= ProblemCollector::LIMIT; ++line) {
    sut.error({line, 1}, "no");
  }
  sut.unknownWord({1, 1}, "no", "righ", RIGHT);
  const Problems problems = sut.take();
  ASSERT_EQ(problems.size(), 51U);
  EXPECT_EQ(problems[49].text(), "f:50:1: no");
  EXPECT_EQ(problems[50].text(), "f: there are more problems than the 50 listed");
  EXPECT_FALSE(problems[50].warning);
}

TEST(ProblemCollector, remembersAnErrorBeyondTheLimit) {
  ProblemCollector sut("f");
  for (std::size_t i = 0; i < ProblemCollector::LIMIT; ++i) {
    sut.warning({1, 1}, "hm");
  }
  sut.error({1, 1}, "no");
  EXPECT_TRUE(sut.hasErrors());
  EXPECT_FALSE(sut.take().back().warning);
}

}  // namespace
}  // namespace motion::host::scenario
