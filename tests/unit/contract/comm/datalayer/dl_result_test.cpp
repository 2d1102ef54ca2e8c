#include "comm/datalayer/dl_result.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "support/named_results.h"

namespace comm::datalayer {
namespace {

TEST(DlResult, HasATextForEveryNamedCode) {
  for (const motion::test::NamedResult& named : motion::test::NAMED_RESULTS) {
    EXPECT_STREQ(DlResult(named.code).toString(), named.name);
  }
}

TEST(DlResult, IsUnknownForEveryOtherCode) {
  EXPECT_STREQ(DlResult(0x80010008).toString(), "unknown");
  std::set<std::uint32_t> named;
  for (const motion::test::NamedResult& entry : motion::test::NAMED_RESULTS) {
    named.insert(entry.code);
  }
  for (const std::uint32_t family : {0x00000000U, 0x80000000U, 0x80010000U, 0x80020000U, 0x80030000U, 0x80040000U,
                                     0x80050000U, 0x80060000U, 0x80070000U, 0x80080000U, 0xFFFFFF00U}) {
    for (std::uint32_t code = family; code < family + 0x40; ++code) {
      if (!named.contains(code)) {
        EXPECT_STREQ(DlResult(code).toString(), "unknown") << std::hex << code;
      }
    }
  }
}

TEST(DlResult, FailsWithTheHighBitOnly) {
  for (const motion::test::NamedResult& named : motion::test::NAMED_RESULTS) {
    EXPECT_EQ(DlResult(named.code).isFailure(), named.code >= 0x80000000U) << named.name;
    EXPECT_EQ(isFailure(DlResult(named.code)), named.code >= 0x80000000U) << named.name;
  }
}

TEST(DlResult, ConstantsHaveTheirCodes) {
  EXPECT_EQ(DlResult(), DL_OK);
  EXPECT_EQ(DL_INVALID_ADDRESS.code(), 0x80010001U);
  EXPECT_EQ(DL_UNSUPPORTED.code(), 0x80010002U);
  EXPECT_EQ(DL_TYPE_MISMATCH.code(), 0x80010006U);
  EXPECT_EQ(DL_INVALID_HANDLE.code(), 0x8001000AU);
}

}  // namespace
}  // namespace comm::datalayer
