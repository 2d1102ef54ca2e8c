#include "motion/core/named_type.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

// The names of these two types are part of the function text that is hashed.
namespace motion::kavo::cmd {
struct CmdSendSignalParsT {
  unsigned int signalId = 0;
};
struct CmdSendSignalPars___t;
}  // namespace motion::kavo::cmd

namespace motion::core {
namespace {

using Pars = NamedType<kavo::cmd::CmdSendSignalParsT, kavo::cmd::CmdSendSignalPars___t>;
using JobPars = job::JobNamedType<kavo::cmd::CmdSendSignalParsT, kavo::cmd::CmdSendSignalPars___t>;
struct Other___t;
using Other = NamedType<kavo::cmd::CmdSendSignalParsT, Other___t>;

constexpr std::string_view FUNCTION_TEXT =
    "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
    "motion::kavo::cmd::CmdSendSignalParsT; SEMANTIC = motion::kavo::cmd::CmdSendSignalPars___t; motion::core::DataID = "
    "long "
    "unsigned int]";

TEST(NamedTypeID, IsTheKnownNumber) {
  EXPECT_EQ(Pars::getMyID(), 0x499538bceea58feeUL);
}

TEST(NamedTypeID, IsTheHashOfTheFunctionText) {
  EXPECT_EQ(Pars::getMyID(), std::_Hash_bytes(FUNCTION_TEXT.data(), FUNCTION_TEXT.size(), 0xc70f6907UL));
}

TEST(NamedTypeID, IsTheSameForTheFormInWhichJobsKeepIt) {
  const JobPars sut;
  EXPECT_EQ(sut.getID(), Pars::getMyID());
}

TEST(NamedTypeID, DependsOnTheMeaning) {
  EXPECT_NE(Pars::getMyID(), Other::getMyID());
}

TEST(NamedType, HoldsItsPayload) {
  Pars sut;
  EXPECT_EQ(sut.get().signalId, 0U);
  sut.getRef().signalId = 7;
  EXPECT_EQ(sut.get().signalId, 7U);
  sut.set({8});
  EXPECT_EQ(sut.getRef().signalId, 8U);
  EXPECT_EQ(Pars({9}).get().signalId, 9U);
}

TEST(NamedTypeSafeCast, AcceptsItsOwnType) {
  JobPars job({4});
  IContainer* container = &job;
  ASSERT_NE(Pars::safeCast(container), nullptr);
  EXPECT_EQ(Pars::safeCast(container)->get().signalId, 4U);
  const IContainer* constant = container;
  EXPECT_EQ(Pars::safeCast(constant), constant);
}

TEST(NamedTypeSafeCast, RefusesNullAndOtherTypes) {
  Other other;
  EXPECT_EQ(Pars::safeCast(static_cast<IContainer*>(&other)), nullptr);
  EXPECT_EQ(Pars::safeCast(static_cast<IContainer*>(nullptr)), nullptr);
  EXPECT_EQ(Pars::safeCast(static_cast<const IContainer*>(nullptr)), nullptr);
}

}  // namespace
}  // namespace motion::core
