// How problems are printed.
#include "host/scenario/problem.h"

#include <gtest/gtest.h>

namespace motion::host::scenario {
namespace {

TEST(Problem, showsFileLineColumnMessageAndRemedy) {
  const Problem sut{"a.yaml", {3, 7}, "wrong", "write right", false};
  EXPECT_EQ(sut.text(), "a.yaml:3:7: wrong; write right");
}

TEST(Problem, leavesOutWhatIsUnknown) {
  EXPECT_EQ((Problem{"a.yaml", {}, "wrong", "", false}).text(), "a.yaml: wrong");
  EXPECT_EQ((Problem{"a.yaml", {3, 0}, "wrong", "", false}).text(), "a.yaml:3: wrong");
  EXPECT_EQ((Problem{"", {}, "wrong", "fix", false}).text(), "wrong; fix");
}

}  // namespace
}  // namespace motion::host::scenario
