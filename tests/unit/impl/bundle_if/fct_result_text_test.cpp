// Texts of the host's function results.
#include "impl/bundle_if/fct_result_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

namespace motion::kavo {
namespace {

const std::map<std::uint32_t, std::string> TEXTS = {
    {0xF0100001, "not okay"},
    {0xF0100002, "error in execution"},
    {0xF0100003, "error in preparation"},
    {0xF0100004, "requested motion object does not exist"},
    {0xF0100006, "out of memory"},
    {0xF0100007, "division by zero"},
    {0xF0100008, "invalid number"},
    {0xF0100009, "overflow"},
    {0xF010000A, "unknown FPU error"},
    {0xF010000B, "action not possible in actual motion state"},
    {0xF010000C, "invalid parameter for function call"},
    {0xF0100011, "not supported by the requested motion object"},
    {0xF0100013, "maximal commands exceeded"},
    {0xF0100014, "function not possible with active command"},
    {0xF0100015, "no active transformation available"},
    {0xF0100016, "this transformation function is not implemented"},
    {0xF0100017, "given position is unreachable"},
    {0xF0100018, "memory size parameter is not correct"},
    {0xF0100019, "incorrect kinematic configuration"},
};

TEST(FctResultTextTest, NamesTheResultsOfItsTableAndNoOthers) {
  for (std::uint32_t code = 0xF00FFFF0; code < 0xF0100040; ++code) {
    const auto found = TEXTS.find(code);
    const std::string expected = found != TEXTS.end() ? found->second : "unknown error";
    EXPECT_EQ(getResultText(static_cast<core::FctResult>(code)), expected) << std::hex << code;
  }
}

TEST(FctResultTextTest, DoesNotKnowResultsFarFromItsTable) {
  for (const std::uint32_t code : {0xFFFFFFFFU, 0x80000000U, 0xF0110001U, 0xF0000004U, 0x00100000U, 0U}) {
    EXPECT_STREQ(getResultText(static_cast<core::FctResult>(code)), "unknown error") << std::hex << code;
  }
}

}  // namespace
}  // namespace motion::kavo
