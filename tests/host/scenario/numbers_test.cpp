// Which texts are numbers.
#include "host/scenario/numbers.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace motion::host::scenario {
namespace {

TEST(ParseNumber, readsDecimalNumbersWhole) {
  EXPECT_EQ(parseNumber<double>("250").value, 250.0);
  EXPECT_EQ(parseNumber<double>("-0.5").value, -0.5);
  EXPECT_EQ(parseNumber<double>("+1e-3").value, 1e-3);
  EXPECT_EQ(parseNumber<double>(".5").value, 0.5);
  EXPECT_EQ(parseNumber<float>("0.1").value, 0.1F);
  EXPECT_EQ(parseNumber<std::int8_t>("-128").value, -128);
  EXPECT_EQ(parseNumber<std::uint64_t>("18446744073709551615").value, 18446744073709551615U);
  EXPECT_EQ(parseNumber<std::uint32_t>("+07").value, 7U);
}

TEST(ParseNumber, refusesEverythingElseAsMalformed) {
  for (const char* text : {"", "+", "-", "1,5", "1 ", " 1", "0x10", "1_000", "++1", "+-1", "true", "information", "nanny"}) {
    EXPECT_EQ(parseNumber<double>(text).fault, NumberFault::MALFORMED) << text;
    EXPECT_EQ(parseNumber<std::int32_t>(text).fault, NumberFault::MALFORMED) << text;
    EXPECT_EQ(parseNumber<std::uint8_t>(text).fault, NumberFault::MALFORMED) << text;
  }
  EXPECT_EQ(parseNumber<std::int32_t>("1.0").fault, NumberFault::MALFORMED);
  EXPECT_EQ(parseNumber<std::int32_t>("1e3").fault, NumberFault::MALFORMED);
}

TEST(ParseNumber, knowsTheRangeOfItsType) {
  EXPECT_EQ(parseNumber<std::int8_t>("128").fault, NumberFault::OUT_OF_RANGE);
  EXPECT_EQ(parseNumber<std::uint8_t>("-1").fault, NumberFault::OUT_OF_RANGE);
  EXPECT_EQ(parseNumber<std::uint64_t>("18446744073709551616").fault, NumberFault::OUT_OF_RANGE);
  EXPECT_EQ(parseNumber<double>("1e999").fault, NumberFault::OUT_OF_RANGE);
  EXPECT_EQ(parseNumber<float>("1e39").fault, NumberFault::OUT_OF_RANGE);
}

TEST(ParseNumber, refusesWhatIsNotFinite) {
  for (const char* text : {"nan", "inf", "-inf", "+inf", "infinity", ".nan", ".NaN", ".inf", "-.INF", "+.inf"}) {
    EXPECT_EQ(parseNumber<double>(text).fault, NumberFault::NOT_FINITE) << text;
  }
}

TEST(TakeNumber, leavesTheRest) {
  std::string_view text = "+1.5ms";
  EXPECT_EQ(takeNumber<double>(text).value, 1.5);
  EXPECT_EQ(text, "ms");
}

}  // namespace
}  // namespace motion::host::scenario
