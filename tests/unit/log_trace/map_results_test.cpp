// The result mapping passes known codes and refuses all others.
#include "log_trace/map_results.h"

#include <gmock/gmock.h>

#include <cstdint>

#include "interception.h"

namespace common::log::trace {
namespace {

using motion::test::OutputTap;
using testing::ElementsAre;
using testing::IsEmpty;

class KnownResultTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(KnownResultTest, IsPassedThrough) {
  OutputTap output;
  EXPECT_EQ(static_cast<std::uint32_t>(mapCommonResultToTraceResult(static_cast<CommonResult>(GetParam()))), GetParam());
  EXPECT_THAT(output.texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, KnownResultTest,
                         testing::Values(1U, 0xF0000001U, 0xF0000002U, 0xF0000003U, 0xF0000004U, 0xF0000005U, 0xF0000006U));

class UnknownResultTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(UnknownResultTest, IsReportedAsInvalidArgument) {
  OutputTap output;
  EXPECT_EQ(static_cast<std::uint32_t>(mapCommonResultToTraceResult(static_cast<CommonResult>(GetParam()))), 0xF0000009U);
  ASSERT_THAT(output.texts(), ElementsAre("Invalid Argument: commonResult"));
  EXPECT_EQ(output.messages()[0].level, "ERR");
  EXPECT_EQ(output.messages()[0].function, "mapCommonResultToTraceResult");
}

INSTANTIATE_TEST_SUITE_P(All, UnknownResultTest,
                         testing::Values(0U, 2U, 3U, 0xF0000000U, 0xF0000007U, 0xF0000008U, 0xF0000009U, 0xFFFFFFFFU));

}  // namespace
}  // namespace common::log::trace
