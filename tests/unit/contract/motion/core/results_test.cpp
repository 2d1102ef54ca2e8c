#include "motion/core/results.h"

#include <gtest/gtest.h>

#include "common/log/result.h"

namespace motion::core {
namespace {

TEST(Results, HaveTheirNumbers) {
  EXPECT_EQ(toCode(FctResult::Okay), 0x00100000U);
  EXPECT_EQ(toCode(FctResult::NotOkay), 0xF0100001U);
  EXPECT_EQ(toCode(FctResult::ObjectNotFound), 0xF0100004U);
  EXPECT_EQ(toCode(FctResult::InvalidParameter), 0xF010000CU);
  EXPECT_EQ(toCode(FctResult::OptionNotSupported), 0xF010000DU);
  EXPECT_EQ(toCode(FctResult::NotAvailable), 0xF010000EU);
  EXPECT_EQ(toCode(FctResult::TooManyCommands), 0xF0100013U);
  EXPECT_EQ(toCode(cmd::CmdResult::Okay), 0x00110000U);
  EXPECT_EQ(toCode(cmd::CmdResult::JobCreationFailed), 0xF0110004U);
  EXPECT_EQ(toCode(cmd::CmdResult::JobRegistrationFailed), 0xF0110007U);
  EXPECT_EQ(toCode(cmd::CmdResult::WrongContainer), 0xF011000EU);
  EXPECT_EQ(toCode(cmd::CmdResult::InvalidParameterData), 0xF011000FU);
  EXPECT_EQ(toCode(cmd::CmdResult::OptionCreationFailed), 0xF0110010U);
  EXPECT_EQ(toCode(cmd::CmdResult::NullPointer), 0xF0110011U);
  EXPECT_EQ(toCode(cmd::CmdResult::UnknownPermType), 0xF011001AU);
  EXPECT_EQ(toCode(cmd::CmdResult::Refused), 0xF011001DU);
  EXPECT_EQ(toCode(cmd::CmdResult::NoOptionData), 0xF011001FU);
  EXPECT_EQ(toCode(job::JobResult::NoEffect), 0U);
  EXPECT_EQ(toCode(job::JobResult::Busy), 0x0103U);
  EXPECT_EQ(toCode(job::JobResult::CmdFinished), 0x0A06U);
  EXPECT_EQ(toCode(job::JobResult::ExecutionFailed), 0xF0000004U);
  EXPECT_EQ(toCode(job::JobResult::InvalidObject), 0xF0000008U);
  EXPECT_EQ(toCode(job::JobResult::ListTypeNotServed), 0xF000000FU);
  EXPECT_EQ(toCode(job::JobResult::InvalidJobData), 0xF0000016U);
  EXPECT_EQ(toCode(ObjFactoryResult::AlreadyKnown), 0xF0150003U);
}

TEST(Results, FailWithTheHighBit) {
  EXPECT_FALSE(isFailure(FctResult::Okay));
  EXPECT_TRUE(isFailure(FctResult::NotOkay));
  EXPECT_FALSE(isFailure(cmd::CmdResult::Okay));
  EXPECT_TRUE(isFailure(cmd::CmdResult::Refused));
  EXPECT_FALSE(isFailure(job::JobResult::CmdFinished));
  EXPECT_TRUE(isFailure(job::JobResult::ExecutionFailed));
  EXPECT_TRUE(isFailure(ObjFactoryResult::AlreadyKnown));
  EXPECT_FALSE(isFailure(common::log::CommonResult::Disabled));
  EXPECT_TRUE(isFailure(common::log::CommonResult::Truncated));
}

}  // namespace
}  // namespace motion::core
