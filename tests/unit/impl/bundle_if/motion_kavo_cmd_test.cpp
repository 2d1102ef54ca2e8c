// How the commands come to the host and leave it.
#include "impl/bundle_if/motion_kavo_cmd.h"

#include <cstddef>

#include "expected_commands.h"
#include "impl/join/join_cmd_global_context.h"
#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using core::FctResult;
using core::MotionCmdGeneralFctT;
using core::MotionCmdIfT;
using rt_data::RtSignals;
using sut = MotionKavoCmd;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string SCHEMA_DIR = "/a bundle/bfbs/";
constexpr std::uint32_t REFUSAL = 0xF0110020;

FctResult abortNothing(core::cmd::ICmdContext* /*context*/, const core::dia::CmdSourceInfo& /*source*/,
                       const char* /*objName*/) {
  return FctResult::Okay;
}

class MotionKavoCmdTest : public ImplTest {
 protected:
  MotionKavoCmdTest() {
    m_host.cmdIf.abortCmd = &abortNothing;
    m_host.cmdGeneral.abortCmd = &abortNothing;
    m_host.cmdKin.abortCmd = &abortNothing;
  }
  ~MotionKavoCmdTest() override {
    sut::terminate(&m_host.ext);
    expectNothingLeft();
  }

  [[nodiscard]] bool initialize() {
    return sut::initialize(m_host.cmdIf, m_host.cmdIf2, m_host.ext, m_host.dataLayer, SCHEMA_DIR);
  }

  void expectNothingPublished() const {
    EXPECT_EQ(m_host.cmdIf.resetSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdIf.setSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdIf.setSignalCmdOpt, nullptr);
    EXPECT_EQ(m_host.cmdIf.waitForSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdIf.joinCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.resetSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.setSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.setSignalCmdOpt, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.waitForSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.joinCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.waitForSignalResetCmd, nullptr);
    EXPECT_EQ(m_host.cmdKin.kinSwitchOnPathCmdOpt, nullptr);
    EXPECT_EQ(sut::g_motionCmdIf, nullptr);
    EXPECT_EQ(sut::g_motionCmdIf2, nullptr);
  }
  void expectNeighboursUntouched() const {
    EXPECT_EQ(m_host.cmdIf.abortCmd, &abortNothing);
    EXPECT_EQ(m_host.cmdIf.dwellCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.abortCmd, &abortNothing);
    EXPECT_EQ(m_host.cmdGeneral.dwellCmd, nullptr);
    EXPECT_EQ(m_host.cmdKin.abortCmd, &abortNothing);
    EXPECT_EQ(m_host.cmdIf2.version, 2U);
    EXPECT_EQ(m_host.cmdIf2.general, &m_host.cmdGeneral);
    EXPECT_EQ(m_host.cmdIf2.kin, &m_host.cmdKin);
  }
  void expectNothingLeft() const {
    expectNothingPublished();
    EXPECT_THAT(m_host.objFactory.m_prototypes, IsEmpty());
    EXPECT_THAT(m_host.cmdFactory.m_commands, IsEmpty());
    EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());
  }

  /// The calls into the factories that a walk over all rows makes.
  [[nodiscard]] static std::vector<std::string> walk(const std::string& objOperation, const std::string& cmdOperation) {
    std::vector<std::string> calls;
    for (const auto& command : EXPECTED_COMMANDS) {
      calls.push_back(fmt::format("objFactory.{}({}, 0)", objOperation, command.job));
      calls.push_back(fmt::format("cmdFactory.{}({})", cmdOperation, test::toText(command.id)));
    }
    return calls;
  }
  [[nodiscard]] static std::vector<std::string> perRow(const std::string& before, const std::string& after,
                                                       std::size_t rows = EXPECTED_COMMANDS.size()) {
    std::vector<std::string> texts;
    for (std::size_t row = 0; row < rows; ++row) {
      texts.push_back(before + EXPECTED_COMMANDS[row].id.name + after);
    }
    return texts;
  }
};

TEST(MotionCmdRecordTest, HasTheFunctionsInTheirOrder) {
  constexpr auto STEP = sizeof(void*);
  EXPECT_EQ(offsetof(MotionCmdIfT, setSignalCmd), offsetof(MotionCmdIfT, resetSignalCmd) + STEP);
  EXPECT_EQ(offsetof(MotionCmdIfT, setSignalCmdOpt), offsetof(MotionCmdIfT, resetSignalCmd) + 2 * STEP);
  EXPECT_EQ(offsetof(MotionCmdIfT, waitForSignalCmd), offsetof(MotionCmdIfT, resetSignalCmd) + 3 * STEP);
  EXPECT_EQ(offsetof(MotionCmdIfT, joinCmd), offsetof(MotionCmdIfT, resetSignalCmd) + 4 * STEP);
  const auto first = offsetof(MotionCmdGeneralFctT, resetSignalCmd);
  EXPECT_EQ(offsetof(MotionCmdGeneralFctT, setSignalCmd), first + STEP);
  EXPECT_EQ(offsetof(MotionCmdGeneralFctT, setSignalCmdOpt), first + 2 * STEP);
  EXPECT_EQ(offsetof(MotionCmdGeneralFctT, waitForSignalCmd), first + 3 * STEP);
  EXPECT_EQ(offsetof(MotionCmdGeneralFctT, joinCmd), first + 4 * STEP);
  EXPECT_EQ(offsetof(MotionCmdGeneralFctT, waitForSignalResetCmd), first + 5 * STEP);
}

TEST_F(MotionKavoCmdTest, BringsUpMemoriesThenDataTypesThenCommandsInOrder) {
  EXPECT_TRUE(initialize());
  const auto calls = m_host.calls.all();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.front(), "dataLayer.createProvider(inproc:///tmp/datalayer/backend)");
  std::vector<std::string> expected = {"provider.start()", "ext.getJobDataIDMgr()"};
  for (const auto& name : EXPECTED_DATA_TYPES) {
    expected.push_back("idMgr.addID(" + name + ")");
  }
  const auto commands = walk("registerObj", "registerCmd");
  expected.insert(expected.end(), commands.begin(), commands.end());
  EXPECT_EQ(m_host.calls.of({"provider.start", "ext.getJobDataIDMgr", "idMgr.", "objFactory.", "cmdFactory."}), expected);
  EXPECT_EQ(traces(), perRow("Info motion_kavo_cmd initialize: Registration of ", " succeeded"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Registration of %s succeeded");
}

TEST_F(MotionKavoCmdTest, RegistersEveryCommandWithItsDescription) {
  ASSERT_TRUE(initialize());
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), EXPECTED_COMMANDS.size());
  for (const auto& command : EXPECTED_COMMANDS) {
    ASSERT_TRUE(m_host.cmdFactory.m_commands.contains(command.id)) << test::toText(command.id);
    const auto& registered = m_host.cmdFactory.m_commands.at(command.id);
    EXPECT_EQ(registered.schemaPath, SCHEMA_DIR + command.schemaFile);
    EXPECT_EQ(registered.description, command.description);
    EXPECT_EQ(registered.groups, command.groups);
    EXPECT_TRUE(m_host.objFactory.m_prototypes.contains(command.job));
  }
}

TEST_F(MotionKavoCmdTest, PublishesItsFunctionsInBothRecords) {
  ASSERT_TRUE(initialize());
  EXPECT_EQ(m_host.cmdIf.resetSignalCmd, &sut::resetSignalCmd);
  EXPECT_EQ(m_host.cmdIf.setSignalCmd, &sut::setSignalCmd);
  EXPECT_EQ(m_host.cmdIf.waitForSignalCmd, &sut::waitForSignalCmd);
  EXPECT_EQ(m_host.cmdIf.joinCmd, &sut::joinCmd);
  EXPECT_EQ(m_host.cmdGeneral.joinCmd, &sut::joinCmd);
  EXPECT_EQ(m_host.cmdGeneral.resetSignalCmd, &sut::resetSignalCmd);
  EXPECT_EQ(m_host.cmdGeneral.setSignalCmd, &sut::setSignalCmd);
  EXPECT_EQ(m_host.cmdGeneral.waitForSignalCmd, &sut::waitForSignalCmd);
  EXPECT_EQ(m_host.cmdGeneral.waitForSignalResetCmd, &sut::waitForSignalResetCmd);
  EXPECT_EQ(sut::g_motionCmdIf, &m_host.cmdIf);
  EXPECT_EQ(sut::g_motionCmdIf2, &m_host.cmdIf2);
  expectNeighboursUntouched();
}

TEST_F(MotionKavoCmdTest, TakesEverythingBackInTheSameOrder) {
  ASSERT_TRUE(initialize());
  forget();
  sut::terminate(&m_host.ext);
  EXPECT_EQ(m_host.calls.of({"objFactory.", "cmdFactory."}), walk("unregisterObj", "unregisterCmd"));
  EXPECT_EQ(m_host.calls.all().back(), "provider.destroyed()") << "the real-time signals go last";
  EXPECT_EQ(traces(), perRow("Info motion_kavo_cmd terminate: Unregistration of ", " succeeded"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Unregistration of %s succeeded");
  expectNothingLeft();
  expectNeighboursUntouched();
}

TEST_F(MotionKavoCmdTest, TakesItsFunctionsBackBetweenTheCommandsAndTheMemories) {
  ASSERT_TRUE(initialize());
  const auto unregistering = m_host.calls.onCall("cmdFactory.unregisterCmd", [this] {
    EXPECT_NE(m_host.cmdIf.setSignalCmd, nullptr);
    EXPECT_NE(m_host.cmdGeneral.waitForSignalResetCmd, nullptr);
    EXPECT_EQ(sut::g_motionCmdIf, &m_host.cmdIf);
    EXPECT_EQ(sut::g_motionCmdIf2, &m_host.cmdIf2);
  });
  const auto deleting = m_host.calls.onCall("dataLayer.deleteMemorySync", [this] { expectNothingPublished(); });
  sut::terminate(&m_host.ext);
  EXPECT_EQ(m_host.calls.count("cmdFactory.unregisterCmd"), static_cast<int>(EXPECTED_COMMANDS.size()));
  EXPECT_EQ(m_host.calls.count("dataLayer.deleteMemorySync"), 2);
}

TEST_F(MotionKavoCmdTest, ClearsEachOfItsFieldsWhateverStandsInIt) {
  ASSERT_TRUE(initialize());
  const auto option = [](core::cmd::ICmdContext*, const core::dia::CmdSourceInfo&, const char*, unsigned int) {
    return FctResult::Okay;
  };
  m_host.cmdIf.setSignalCmdOpt = option;
  m_host.cmdGeneral.setSignalCmdOpt = option;
  m_host.cmdKin.kinSwitchOnPathCmdOpt = [](core::cmd::ICmdContext*, const core::dia::CmdSourceInfo&,
                                           core::cmd::CmdOptPermType, const char*, SwitchOnPathMode, unsigned int,
                                           SwitchOnPathAction, const double*, double, double) { return FctResult::Okay; };
  sut::terminate(&m_host.ext);
  expectNothingPublished();
  expectNeighboursUntouched();
}

TEST_F(MotionKavoCmdTest, ForgetsOpenJoinsAtBothEndsOfItsLife) {
  using job::JoinCmdGlobalContext;
  for (const bool atStart : {true, false}) {
    if (!atStart) {
      ASSERT_TRUE(initialize());
    }
    const auto open = std::make_shared<JoinCmdGlobalContext>(job::JoinGroup{});
    JoinCmdGlobalContext::appendToLinkedList(open);
    if (atStart) {
      ASSERT_TRUE(initialize());
    } else {
      sut::terminate(&m_host.ext);
    }
    EXPECT_EQ(JoinCmdGlobalContext::listSize(), 0U);
    EXPECT_EQ(JoinCmdGlobalContext(job::JoinGroup{}).seq(), 1U) << "sequence numbers begin anew";
    sut::terminate(&m_host.ext);
  }
}

TEST_F(MotionKavoCmdTest, GoesOnSilentlyWhereUnregisteringFails) {
  ASSERT_TRUE(initialize());
  forget();
  m_host.calls.fail("cmdFactory.unregisterCmd", 0xF0110021, 3);
  m_host.calls.fail("cmdFactory.unregisterCmd", 0xF0110021, 4);
  sut::terminate(&m_host.ext);
  EXPECT_EQ(m_host.calls.of({"objFactory.", "cmdFactory."}), walk("unregisterObj", "unregisterCmd"));
  auto expected = perRow("Info motion_kavo_cmd terminate: Unregistration of ", " succeeded");
  expected.erase(expected.begin() + 2, expected.begin() + 4);
  EXPECT_EQ(traces(), expected);
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), 2U) << "those that the host did not let go";
  m_host.cmdFactory.m_commands.clear();
}

TEST_F(MotionKavoCmdTest, KeepsTheCommandsWithoutAnExtensionInterface) {
  ASSERT_TRUE(initialize());
  forget();
  sut::terminate(nullptr);
  EXPECT_THAT(m_host.calls.of({"ext.", "objFactory.", "cmdFactory."}), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
  expectNothingPublished();
  EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), EXPECTED_COMMANDS.size());
}

TEST_F(MotionKavoCmdTest, IsHarmlessToTerminateBeforeItIsInitialised) {
  m_host.cmdIf.setSignalCmd = &sut::setSignalCmd;
  sut::terminate(nullptr);
  EXPECT_EQ(m_host.cmdIf.setSignalCmd, &sut::setSignalCmd) << "a record that it does not know stays as it is";
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  m_host.cmdIf.setSignalCmd = nullptr;
}

TEST_F(MotionKavoCmdTest, FailsWithoutTheRealTimeSignals) {
  m_host.calls.fail("provider.start", 0x80000001);
  EXPECT_FALSE(initialize());
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals initialize: Starting provider failed with: DL_FAILED",
                                    "Error rt_signals terminate: Stopping provider failed with: DL_FAILED",
                                    "Error motion_kavo_cmd initialize: RtSignals::initialize() failed"));
  EXPECT_EQ(m_host.traceSink.entries()[2].format, "%s");
  EXPECT_THAT(m_host.calls.of({"ext.", "idMgr.", "objFactory.", "cmdFactory."}), IsEmpty());
  expectNothingPublished();
}

TEST_F(MotionKavoCmdTest, FailsWithoutTheJobDataIdManager) {
  m_host.parts.jobDataIDMgr = nullptr;
  EXPECT_FALSE(initialize());
  EXPECT_THAT(traces(),
              ElementsAre("Error motion_kavo_cmd initialize: Failed to retrieve the jobDataIdMgr from motionExtIf"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_host.calls.of({"objFactory.", "cmdFactory."}), IsEmpty());
  expectNothingPublished();
  EXPECT_EQ(m_host.dataLayer.m_memories.size(), 2U) << "the real-time signals are left to the caller";
  sut::terminate(&m_host.ext);
  EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());
}

TEST_F(MotionKavoCmdTest, GoesOnWhenADataTypeIsKnown) {
  m_host.calls.fail("idMgr.addID", 0);
  EXPECT_TRUE(initialize());
  std::vector<std::string> warnings;
  for (const auto& entry : m_host.traceSink.entries()) {
    if (entry.level() == "Warning") {
      warnings.push_back(entry.text);
    }
  }
  std::vector<std::string> expected;
  for (const auto& name : EXPECTED_DATA_TYPES) {
    expected.push_back(name + " was already registered");
  }
  EXPECT_EQ(warnings, expected);
}

class MotionKavoCmdRowTest : public MotionKavoCmdTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(MotionKavoCmdRowTest, FailsAtARowAndKeepsThoseBefore) {
  const auto row = GetParam();
  m_host.calls.fail("cmdFactory.registerCmd", REFUSAL, static_cast<int>(row) + 1);
  EXPECT_FALSE(initialize());
  auto expected = perRow("Info motion_kavo_cmd initialize: Registration of ", " succeeded", row);
  expected.push_back("Error motion_kavo_cmd initialize: Registration of " + EXPECTED_COMMANDS[row].id.name + " failed");
  EXPECT_EQ(traces(), expected);
  EXPECT_EQ(m_host.traceSink.entries().back().format, "Registration of %s failed");
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), row);
  for (std::size_t before = 0; before < row; ++before) {
    EXPECT_TRUE(m_host.cmdFactory.m_commands.contains(EXPECTED_COMMANDS[before].id));
  }
  EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty()) << "the real-time signals are taken back at once";
  expectNothingPublished();

  forget();
  sut::terminate(&m_host.ext);
  expectNothingLeft();
  EXPECT_EQ(traces(), perRow("Info motion_kavo_cmd terminate: Unregistration of ", " succeeded", row));
}

TEST_P(MotionKavoCmdRowTest, FailsAtTheJobOfARow) {
  m_host.calls.fail("objFactory.registerObj", 0xF0150002, static_cast<int>(GetParam()) + 1);
  EXPECT_FALSE(initialize());
  auto expected = perRow("Info motion_kavo_cmd initialize: Registration of ", " succeeded", GetParam());
  expected.push_back("Error motion_kavo_cmd initialize: Registration of " + EXPECTED_COMMANDS[GetParam()].id.name +
                     " failed");
  auto texts = traces();
  ASSERT_EQ(texts.size(), expected.size() + 1);
  EXPECT_THAT(texts[GetParam()], HasSubstr("registerObj")) << "the command says why, in its own words";
  texts.erase(texts.begin() + static_cast<std::ptrdiff_t>(GetParam()));
  EXPECT_EQ(texts, expected);
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, MotionKavoCmdRowTest, testing::Range<std::size_t>(0, EXPECTED_COMMANDS.size()));

TEST_F(MotionKavoCmdTest, LeavesNothingAfterTwoLives) {
  for (int life = 0; life < 2; ++life) {
    EXPECT_TRUE(initialize());
    EXPECT_EQ(m_host.cmdFactory.m_commands.size(), EXPECTED_COMMANDS.size());
    sut::terminate(&m_host.ext);
    expectNothingLeft();
    m_host.jobDataIDMgr.m_names.clear();
  }
}

TEST_F(MotionKavoCmdTest, LeavesNothingAfterAFailureToAllocate) {
  bool isDone = false;
  const int failures = withEachAllocationFailing([&] { isDone = initialize(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_TRUE(isDone || hasFailed);
                                                   if (!isDone) {
                                                     expectNothingPublished();
                                                   }
                                                   sut::terminate(&m_host.ext);
                                                   expectNothingLeft();
                                                 });
  EXPECT_GT(failures, 10);
}

TEST_F(MotionKavoCmdTest, LeavesNothingAfterAnExceptionOfTheHost) {
  for (const char* operation : {"ext.getJobDataIDMgr", "objFactory.registerObj", "cmdFactory.registerCmd"}) {
    m_host.calls.fail(operation, test::FakeCalls::THROW, 1);
    EXPECT_FALSE(initialize()) << operation;
    m_host.calls.failNothing();
    sut::terminate(&m_host.ext);
    expectNothingLeft();
  }
}

}  // namespace
}  // namespace motion::kavo
