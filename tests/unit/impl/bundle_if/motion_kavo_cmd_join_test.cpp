// The component's commands and the command Join: its place among the rows, joinCmd, and the list of open occurrences.
#include <algorithm>
#include <string>
#include <vector>

#include "impl/bundle_if/motion_kavo_cmd.h"
#include "impl/join/join_cmd_global_context.h"
#include "impl/join/join_pars.h"
#include "join/join_fixture.h"

namespace motion::kavo {
namespace {

using core::FctResult;
using job::JoinCmdGlobalContext;
using sut = MotionKavoCmd;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string SCHEMA_DIR = "/a bundle/bfbs/";
constexpr unsigned long UNTOUCHED = 12345;

class MotionKavoCmdJoinTest : public job::JoinTest {
 protected:
  MotionKavoCmdJoinTest() { rt_data::RtSignals::getInstance().terminate(); }
  ~MotionKavoCmdJoinTest() override {
    m_host.calls.failNothing();
    sut::terminate(&m_host.ext);
  }

  [[nodiscard]] bool initialize() {
    forget();
    return sut::initialize(m_host.cmdIf, m_host.cmdIf2, m_host.ext, m_host.dataLayer, SCHEMA_DIR);
  }
  /// Leaves an open occurrence in the list.
  void openOccurrence() {
    m_open = std::make_shared<JoinCmdGlobalContext>(m_ab);
    JoinCmdGlobalContext::appendToLinkedList(m_open);
    ASSERT_EQ(JoinCmdGlobalContext::listSize(), 1U);
  }
  void expectEmptyList() {
    EXPECT_EQ(JoinCmdGlobalContext::listSize(), 0U);
    EXPECT_EQ(JoinCmdGlobalContext::findMostRecent(m_ab), nullptr);
    EXPECT_EQ(JoinCmdGlobalContext(m_ab).seq(), 1U);
  }
  [[nodiscard]] FctResult join(const char* name) {
    if (m_host.cmdGeneral.joinCmd == nullptr) {
      ADD_FAILURE() << "joinCmd is not published";
      return FctResult::NotAvailable;
    }
    return m_host.cmdGeneral.joinCmd(&m_host.cmdContext, m_source, name, {"B", "Z", "A"}, true, m_cmdId);
  }
  /// The position of a call among others.
  [[nodiscard]] static std::ptrdiff_t positionOf(const std::vector<std::string>& calls, const std::string& call) {
    return std::find(calls.begin(), calls.end(), call) - calls.begin();
  }

  std::shared_ptr<JoinCmdGlobalContext> m_open;
  unsigned long m_cmdId = UNTOUCHED;
};

TEST_F(MotionKavoCmdJoinTest, RegistersItsDataTypesFirst) {
  ASSERT_TRUE(initialize());
  const auto calls = m_host.calls.of({"idMgr.addID"});
  ASSERT_GT(calls.size(), 2U);
  EXPECT_EQ(calls[0], "idMgr.addID(CmdJoinPars)");
  EXPECT_EQ(calls[1], "idMgr.addID(JoinJobPars)");
}

TEST_F(MotionKavoCmdJoinTest, RegistersAndUnregistersJoinForAxesThenKinematics) {
  ASSERT_TRUE(initialize());
  for (const std::string operation : {"registerCmd", "unregisterCmd"}) {
    const auto calls = m_host.calls.of({"cmdFactory." + operation});
    const auto axis = positionOf(calls, "cmdFactory." + operation + "(1 Join)");
    ASSERT_LT(axis, static_cast<std::ptrdiff_t>(calls.size()));
    EXPECT_EQ(positionOf(calls, "cmdFactory." + operation + "(2 Join)"), axis + 1);
    EXPECT_GT(axis, positionOf(calls, "cmdFactory." + operation + "(2 ResetSignal)"));
    if (operation == "registerCmd") {
      EXPECT_THAT(traces(), testing::Contains("Info motion_kavo_cmd initialize: Registration of Join succeeded").Times(2));
      sut::terminate(&m_host.ext);
    }
  }
  EXPECT_THAT(traces(), testing::Contains("Info motion_kavo_cmd terminate: Unregistration of Join succeeded").Times(2));
  EXPECT_THAT(m_host.cmdFactory.m_commands, IsEmpty());
}

TEST_F(MotionKavoCmdJoinTest, StopsWhenJoinCannotBeRegistered) {
  ASSERT_TRUE(initialize());
  const auto calls = m_host.calls.of({"cmdFactory.registerCmd"});
  const auto axis = positionOf(calls, "cmdFactory.registerCmd(1 Join)");
  sut::terminate(&m_host.ext);
  m_host.calls.fail("cmdFactory.registerCmd", 0xF0110020, static_cast<int>(axis) + 1);
  EXPECT_FALSE(initialize());
  ASSERT_FALSE(traces().empty());
  EXPECT_EQ(traces().back(), "Error motion_kavo_cmd initialize: Registration of Join failed");
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), static_cast<std::size_t>(axis));
}

TEST_F(MotionKavoCmdJoinTest, PublishesItsFunctionInBothRecordsAndTakesItBack) {
  ASSERT_TRUE(initialize());
  ASSERT_NE(m_host.cmdIf.joinCmd, nullptr);
  EXPECT_EQ(m_host.cmdIf.joinCmd, m_host.cmdGeneral.joinCmd);
  sut::terminate(&m_host.ext);
  EXPECT_EQ(m_host.cmdIf.joinCmd, nullptr);
  EXPECT_EQ(m_host.cmdGeneral.joinCmd, nullptr);
}

TEST_F(MotionKavoCmdJoinTest, HandsTheJoinToTheContext) {
  ASSERT_TRUE(initialize());
  for (const char* name : {"A", "C"}) {
    forget();
    m_cmdId = UNTOUCHED;
    cmd::CmdJoinParsT given;
    m_host.cmdContext.m_onValues = [&given](const core::IContainer& values) {
      const auto* const record = cmd::CmdJoinPars::safeCast(&values);
      ASSERT_NE(record, nullptr);
      given = record->get();
    };
    EXPECT_EQ(join(name), FctResult::Okay);
    EXPECT_THAT(m_host.calls.of({"context."}), ElementsAre(std::string("context.addCmd(") + name + ", Join, 1)"));
    EXPECT_THAT(given.group, ElementsAre("B", "Z", "A"));
    EXPECT_TRUE(given.syncStartNextCmd);
    EXPECT_EQ(m_host.cmdContext.m_source, &m_source);
    EXPECT_EQ(m_host.cmdContext.m_cmdIdAddress, &m_cmdId);
    EXPECT_EQ(m_cmdId, m_host.cmdContext.m_nextCmdId);
    EXPECT_THAT(traces(), IsEmpty());
  }
}

TEST_F(MotionKavoCmdJoinTest, HandsAnEmptyGroupAndNoFlagOverToo) {
  ASSERT_TRUE(initialize());
  cmd::CmdJoinParsT given{{"x"}, true};
  m_host.cmdContext.m_onValues = [&given](const core::IContainer& values) {
    given = cmd::CmdJoinPars::safeCast(&values)->get();
  };
  EXPECT_EQ(m_host.cmdIf.joinCmd(&m_host.cmdContext, m_source, "A", {}, false, m_cmdId), FctResult::Okay);
  EXPECT_THAT(given.group, IsEmpty());
  EXPECT_FALSE(given.syncStartNextCmd);
}

TEST_F(MotionKavoCmdJoinTest, RefusesAJoinWithoutAContext) {
  ASSERT_TRUE(initialize());
  forget();
  EXPECT_EQ(core::toCode(m_host.cmdGeneral.joinCmd(nullptr, m_source, "A", {"B"}, false, m_cmdId)), 0xF010000EU);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(MotionKavoCmdJoinTest, RefusesAJoinOnAnUnknownObject) {
  ASSERT_TRUE(initialize());
  forget();
  EXPECT_EQ(core::toCode(join("Nobody")), 0xF0100004U);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd getObjectType: Can't find motion object Nobody",
                                    "Error motion_kavo_cmd joinCmd: getObjectType failed with requested motion object "
                                    "does not exist"));
  EXPECT_THAT(m_host.calls.of({"context."}), IsEmpty());
  EXPECT_EQ(m_cmdId, UNTOUCHED);
}

TEST_F(MotionKavoCmdJoinTest, PassesTheResultOfTheContextOn) {
  ASSERT_TRUE(initialize());
  forget();
  m_host.calls.fail("context.addCmd", 0xF0100013);
  EXPECT_EQ(core::toCode(join("A")), 0xF0100013U);
  EXPECT_EQ(m_cmdId, UNTOUCHED);
  EXPECT_THAT(traces(), IsEmpty());
  m_host.calls.fail("context.addCmd", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(join("A")));
}

TEST_F(MotionKavoCmdJoinTest, AnswersEachFailureToAllocateWithAFailure) {
  ASSERT_TRUE(initialize());
  ASSERT_EQ(join("A"), FctResult::Okay);  // the command's identity is made once
  const std::vector<std::string> group = {"a name that is too long for a small text", "B"};
  FctResult result{};
  const int failures = withEachAllocationFailing(
      [&] { result = m_host.cmdGeneral.joinCmd(&m_host.cmdContext, m_source, "A", group, true, m_cmdId); },
      [&](bool hasFailed) { EXPECT_EQ(core::isFailure(result), hasFailed); });
  EXPECT_GT(failures, 1);
}

TEST_F(MotionKavoCmdJoinTest, ForgetsOpenOccurrencesWhenItIsInitialised) {
  openOccurrence();
  EXPECT_TRUE(initialize());
  expectEmptyList();
}

TEST_F(MotionKavoCmdJoinTest, ForgetsOpenOccurrencesBeforeAnythingElse) {
  openOccurrence();
  m_host.calls.fail("provider.start", 0x80000001);
  EXPECT_FALSE(initialize());
  expectEmptyList();
}

TEST_F(MotionKavoCmdJoinTest, ForgetsOpenOccurrencesWhenItIsTerminated) {
  ASSERT_TRUE(initialize());
  openOccurrence();
  sut::terminate(nullptr);
  expectEmptyList();
}

}  // namespace
}  // namespace motion::kavo
