#include "comm/datalayer/dl_result.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

namespace comm::datalayer {
namespace {

struct Named {
  std::uint32_t code;
  const char* text;
};

constexpr Named NAMED[] = {
    {0x00000000, "DL_OK"},
    {0x00000001, "DL_OK_NO_CONTENT"},
    {0x00000002, "DL_OK_WITH_ERRORS"},
    {0x80000001, "DL_FAILED"},
    {0x80010001, "DL_INVALID_ADDRESS"},
    {0x80010002, "DL_UNSUPPORTED"},
    {0x80010003, "DL_OUT_OF_MEMORY"},
    {0x80010004, "DL_LIMIT_MIN"},
    {0x80010005, "DL_LIMIT_MAX"},
    {0x80010006, "DL_TYPE_MISMATCH"},
    {0x80010007, "DL_SIZE_MISMATCH"},
    {0x80010009, "DL_INVALID_FLOATINGPOINT"},
    {0x8001000A, "DL_INVALID_HANDLE"},
    {0x8001000B, "DL_INVALID_OPERATION_MODE"},
    {0x8001000C, "DL_INVALID_CONFIGURATION"},
    {0x8001000D, "DL_INVALID_VALUE"},
    {0x8001000E, "DL_SUBMODULE_FAILURE"},
    {0x8001000F, "DL_TIMEOUT"},
    {0x80010010, "DL_ALREADY_EXISTS"},
    {0x80010011, "DL_CREATION_FAILED"},
    {0x80010012, "DL_VERSION_MISMATCH"},
    {0x80010013, "DL_DEPRECATED"},
    {0x80010014, "DL_PERMISSION_DENIED"},
    {0x80010015, "DL_NOT_INITIALIZED"},
    {0x80010016, "DL_MISSING_ARGUMENT"},
    {0x80010017, "DL_TOO_MANY_ARGUMENTS"},
    {0x80010018, "DL_RESOURCE_UNAVAILABLE"},
    {0x80010019, "DL_COMMUNICATION_ERROR"},
    {0x8001001A, "DL_TOO_MANY_OPERATIONS"},
    {0x8001001B, "DL_WOULD_BLOCK"},
    {0x80020001, "DL_COMM_PROTOCOL_ERROR"},
    {0x80020002, "DL_COMM_INVALID_HEADER"},
    {0x80030001, "DL_CLIENT_NOT_CONNECTED"},
    {0x80040001, "DL_PROVIDER_RESET_TIMEOUT"},
    {0x80040002, "DL_PROVIDER_UPDATE_TIMEOUT"},
    {0x80040003, "DL_PROVIDER_SUB_HANDLING"},
    {0x80060001, "DL_RT_NOTOPEN"},
    {0x80060002, "DL_RT_INVALIDOBJECT"},
    {0x80060003, "DL_RT_WRONGREVISON"},
    {0x80060004, "DL_RT_NOVALIDDATA"},
    {0x80060005, "DL_RT_MEMORYLOCKED"},
    {0x80060006, "DL_RT_INVALIDMEMORYMAP"},
    {0x80060007, "DL_RT_INVALID_RETAIN"},
    {0x80060008, "DL_RT_INTERNAL_ERROR"},
    {0x80060009, "DL_RT_MALLOC_FAILED"},
    {0x8006000A, "DL_RT_WOULD_BLOCK"},
    {0x80070001, "DL_SEC_NOTOKEN"},
    {0x80070002, "DL_SEC_INVALIDSESSION"},
    {0x80070003, "DL_SEC_INVALIDTOKENCONTENT"},
    {0x80070004, "DL_SEC_UNAUTHORIZED"},
};

TEST(DlResult, HasATextForEveryNamedCode) {
  for (const Named& named : NAMED) {
    EXPECT_STREQ(DlResult(named.code).toString(), named.text);
  }
}

TEST(DlResult, IsUnknownForEveryOtherCode) {
  EXPECT_STREQ(DlResult(0x80010008).toString(), "unknown");
  std::set<std::uint32_t> named;
  for (const Named& entry : NAMED) {
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
  for (const Named& named : NAMED) {
    EXPECT_EQ(DlResult(named.code).isFailure(), named.code >= 0x80000000U) << named.text;
    EXPECT_EQ(isFailure(DlResult(named.code)), named.code >= 0x80000000U) << named.text;
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
