// The place that a trace names.
#include "impl/call_site.h"

#include <gtest/gtest.h>

#include <string>

namespace motion::kavo {
namespace {

TEST(CallSiteTest, NamesAUnitByItsPathWithoutTheExtension) {
  EXPECT_STREQ(unitPath<"src/impl/signals.cpp">, "src/impl/signals");
  EXPECT_STREQ(unitPath<"src/impl/signals.h">, "src/impl/signals");
  EXPECT_STREQ(unitPath<"signals.cpp">, "signals");
  EXPECT_STREQ(unitPath<"src/impl/two.dots.h">, "src/impl/two.dots");
}

TEST(CallSiteTest, TakesADotInAFolderForNoExtension) {
  EXPECT_STREQ(unitPath<"src.old/signals">, "src.old/signals");
  EXPECT_STREQ(unitPath<"signals">, "signals");
  EXPECT_STREQ(unitPath<"">, "");
}

TEST(CallSiteTest, IsThePlaceWhereItIsWritten) {
  const CallSite sut = KAVO_HERE;
  EXPECT_EQ(sut.line, static_cast<unsigned int>(__LINE__ - 1));
  EXPECT_STREQ(sut.function, "TestBody");
  EXPECT_STREQ(sut.unit, "tests/unit/impl/call_site_test") << "the same wherever the project was checked out";
}

constexpr CallSite OUTSIDE_OF_FUNCTIONS = KAVO_SITE;
constexpr auto LINE_OUTSIDE_OF_FUNCTIONS = static_cast<unsigned int>(__LINE__ - 1);

TEST(CallSiteTest, MayStandForAnOperationThatIsWrittenElsewhere) {
  const CallSite sut = OUTSIDE_OF_FUNCTIONS.as("onCreate");
  EXPECT_EQ(sut.line, LINE_OUTSIDE_OF_FUNCTIONS);
  EXPECT_STREQ(sut.function, "onCreate");
  EXPECT_STREQ(sut.unit, "tests/unit/impl/call_site_test");
  EXPECT_STREQ(OUTSIDE_OF_FUNCTIONS.function, "");
}

}  // namespace
}  // namespace motion::kavo
