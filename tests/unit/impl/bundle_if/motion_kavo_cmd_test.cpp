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
    EXPECT_THAT(m_host.cmdOptionFactory.m_options, IsEmpty());
    EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());
  }

  [[nodiscard]] static std::string registerCall(RegisteredAs as) {
    return as == RegisteredAs::COMMAND  ? "cmdFactory.registerCmd"
           : as == RegisteredAs::OPTION ? "optionFactory.registerCmdOption"
                                        : "optionFactory.registerCmdOptionWithSlots";
  }
  [[nodiscard]] static std::string unregisterCall(RegisteredAs as) {
    return as == RegisteredAs::COMMAND ? "cmdFactory.unregisterCmd" : "optionFactory.unregisterCmdOption";
  }
  /// The calls into the factories that a walk over all rows makes.
  [[nodiscard]] static std::vector<std::string> walk(const std::string& objOperation, std::string (*call)(RegisteredAs as)) {
    std::vector<std::string> calls;
    for (const auto& row : EXPECTED_ROWS) {
      calls.push_back(fmt::format("objFactory.{}({}, 0)", objOperation, row.front().job));
      for (const auto& registration : row) {
        calls.push_back(fmt::format("{}({})", call(registration.as), test::toText(registration.id)));
      }
    }
    return calls;
  }
  [[nodiscard]] static std::vector<std::string> perRow(const std::string& before, const std::string& after,
                                                       std::size_t rows = EXPECTED_ROWS.size()) {
    std::vector<std::string> texts;
    for (std::size_t row = 0; row < rows; ++row) {
      texts.push_back(before + nameOf(EXPECTED_ROWS[row]) + after);
    }
    return texts;
  }
  /// Exactly the first rows, and of the next one so many registrations, are known to the host.
  void expectRegistered(std::size_t rows, std::size_t ofNext = 0) const {
    std::size_t commands = 0;
    std::size_t options = 0;
    for (std::size_t row = 0; row < EXPECTED_ROWS.size(); ++row) {
      const std::size_t count = row < rows ? EXPECTED_ROWS[row].size() : row == rows ? ofNext : 0;
      for (std::size_t i = 0; i < count; ++i) {
        const auto& registration = EXPECTED_ROWS[row][i];
        const bool isCommand = registration.as == RegisteredAs::COMMAND;
        ++(isCommand ? commands : options);
        EXPECT_TRUE(isCommand ? m_host.cmdFactory.m_commands.contains(registration.id)
                              : m_host.cmdOptionFactory.m_options.contains(registration.id))
            << test::toText(registration.id);
      }
    }
    EXPECT_EQ(m_host.cmdFactory.m_commands.size(), commands);
    EXPECT_EQ(m_host.cmdOptionFactory.m_options.size(), options);
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
  for (const auto& type : EXPECTED_DATA_TYPES) {
    expected.push_back("idMgr.addID(" + type.name + ")");
  }
  auto commands = walk("registerObj", &registerCall);
  commands.insert(commands.end() - 2, "objFactory.getHelper(motion::core::UnitHelperT)");
  expected.insert(expected.end(), commands.begin(), commands.end());
  EXPECT_EQ(
      m_host.calls.of({"provider.start", "ext.getJobDataIDMgr", "idMgr.", "objFactory.", "cmdFactory.", "optionFactory."}),
      expected);
  EXPECT_EQ(traces(), perRow("Info motion_kavo_cmd initialize: Registration of ", " succeeded"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Registration of %s succeeded");
}

/// What a command and an option are registered with alike.
template <typename REGISTERED>
void expectDescription(const REGISTERED& registered, const ExpectedRegistration& expected) {
  EXPECT_EQ(registered.schemaPath, SCHEMA_DIR + expected.schemaFile);
  EXPECT_EQ(registered.description, expected.description);
  EXPECT_EQ(registered.groups, expected.groups);
}

TEST_F(MotionKavoCmdTest, RegistersEveryCommandAndOptionWithItsDescription) {
  ASSERT_TRUE(initialize());
  expectRegistered(EXPECTED_ROWS.size());
  for (const auto& row : EXPECTED_ROWS) {
    for (const auto& registration : row) {
      if (registration.as == RegisteredAs::COMMAND) {
        expectDescription(m_host.cmdFactory.m_commands.at(registration.id), registration);
      } else {
        const auto& registered = m_host.cmdOptionFactory.m_options.at(registration.id);
        expectDescription(registered, registration);
        EXPECT_EQ(registered.slots.has_value(), registration.as == RegisteredAs::OPTION_WITH_SLOTS);
      }
      EXPECT_TRUE(m_host.objFactory.m_prototypes.contains(registration.job));
    }
  }
}

TEST_F(MotionKavoCmdTest, PublishesItsFunctionsInBothRecords) {
  ASSERT_TRUE(initialize());
  EXPECT_EQ(m_host.cmdIf.resetSignalCmd, &sut::resetSignalCmd);
  EXPECT_EQ(m_host.cmdIf.setSignalCmd, &sut::setSignalCmd);
  EXPECT_EQ(m_host.cmdIf.setSignalCmdOpt, &sut::setSignalCmdOpt);
  EXPECT_EQ(m_host.cmdGeneral.setSignalCmdOpt, &sut::setSignalCmdOpt);
  EXPECT_EQ(m_host.cmdKin.kinSwitchOnPathCmdOpt, &sut::kinSwitchOnPathCmdOpt);
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
  EXPECT_EQ(m_host.calls.of({"objFactory.", "cmdFactory.", "optionFactory."}), walk("unregisterObj", &unregisterCall));
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
  EXPECT_EQ(m_host.calls.count("cmdFactory.unregisterCmd"), static_cast<int>(countOf({RegisteredAs::COMMAND})));
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
  m_host.calls.fail("optionFactory.unregisterCmdOption", 0xF0110021, 1);  // the result for axes does not count
  m_host.calls.fail("optionFactory.unregisterCmdOption", 0xF0110021, 3);
  sut::terminate(&m_host.ext);
  EXPECT_EQ(m_host.calls.of({"objFactory.", "cmdFactory.", "optionFactory."}), walk("unregisterObj", &unregisterCall));
  auto expected = perRow("Info motion_kavo_cmd terminate: Unregistration of ", " succeeded");
  expected.pop_back();
  expected.erase(expected.begin() + 2, expected.begin() + 4);
  EXPECT_EQ(traces(), expected);
  EXPECT_EQ(m_host.cmdFactory.m_commands.size(), 2U) << "those that the host did not let go";
  EXPECT_EQ(m_host.cmdOptionFactory.m_options.size(), 2U);
  m_host.cmdFactory.m_commands.clear();
  m_host.cmdOptionFactory.m_options.clear();
}

TEST_F(MotionKavoCmdTest, KeepsTheCommandsWithoutAnExtensionInterface) {
  ASSERT_TRUE(initialize());
  forget();
  sut::terminate(nullptr);
  EXPECT_THAT(m_host.calls.of({"ext.", "objFactory.", "cmdFactory.", "optionFactory."}), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
  expectNothingPublished();
  EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());
  expectRegistered(EXPECTED_ROWS.size());
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
  EXPECT_THAT(m_host.calls.of({"ext.", "idMgr.", "objFactory.", "cmdFactory.", "optionFactory."}), IsEmpty());
  expectNothingPublished();
}

TEST_F(MotionKavoCmdTest, FailsWithoutTheJobDataIdManager) {
  m_host.parts.jobDataIDMgr = nullptr;
  EXPECT_FALSE(initialize());
  EXPECT_THAT(traces(),
              ElementsAre("Error motion_kavo_cmd initialize: Failed to retrieve the jobDataIdMgr from motionExtIf"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_host.calls.of({"objFactory.", "cmdFactory.", "optionFactory."}), IsEmpty());
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
  for (const auto& type : EXPECTED_DATA_TYPES) {
    expected.push_back(type.shortName + " was already registered");
  }
  EXPECT_EQ(warnings, expected);
}

class MotionKavoCmdRowTest : public MotionKavoCmdTest, public testing::WithParamInterface<std::size_t> {
 protected:
  /// From now on the host refuses the first registration of the row, or one of those after it.
  void refuse(std::size_t row, std::size_t registration = 0) {
    const auto as = EXPECTED_ROWS[row][registration].as;
    m_host.calls.fail(registerCall(as), REFUSAL, static_cast<int>(countOf({as}, row) + registration) + 1);
  }
};

TEST_P(MotionKavoCmdRowTest, FailsAtARowAndKeepsThoseBefore) {
  const auto row = GetParam();
  refuse(row);
  EXPECT_FALSE(initialize());
  auto expected = perRow("Info motion_kavo_cmd initialize: Registration of ", " succeeded", row);
  expected.push_back("Error motion_kavo_cmd initialize: Registration of " + nameOf(EXPECTED_ROWS[row]) + " failed");
  EXPECT_EQ(traces(), expected);
  EXPECT_EQ(m_host.traceSink.entries().back().format, "Registration of %s failed");
  expectRegistered(row);
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
  expected.push_back("Error motion_kavo_cmd initialize: Registration of " + nameOf(EXPECTED_ROWS[GetParam()]) + " failed");
  auto texts = traces();
  ASSERT_EQ(texts.size(), expected.size() + 1);
  EXPECT_THAT(texts[GetParam()], HasSubstr("registerObj")) << "the command says why, in its own words";
  texts.erase(texts.begin() + static_cast<std::ptrdiff_t>(GetParam()));
  EXPECT_EQ(texts, expected);
  expectRegistered(GetParam());
}

TEST_F(MotionKavoCmdRowTest, KeepsTheOptionForAxesWhenThatForKinematicsIsRefused) {
  constexpr std::size_t SET_SIGNAL_OPTION = 8;
  refuse(SET_SIGNAL_OPTION, 1);
  EXPECT_FALSE(initialize());
  EXPECT_EQ(traces().back(), "Error motion_kavo_cmd initialize: Registration of SetSignal failed");
  expectRegistered(SET_SIGNAL_OPTION, 1);
}

INSTANTIATE_TEST_SUITE_P(All, MotionKavoCmdRowTest, testing::Range<std::size_t>(0, EXPECTED_ROWS.size()));

TEST_F(MotionKavoCmdTest, LeavesNothingAfterTwoLives) {
  for (int life = 0; life < 2; ++life) {
    EXPECT_TRUE(initialize());
    expectRegistered(EXPECTED_ROWS.size());
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
  for (const char* operation : {"ext.getJobDataIDMgr", "objFactory.registerObj", "cmdFactory.registerCmd",
                                "optionFactory.registerCmdOption", "optionFactory.registerCmdOptionWithSlots"}) {
    m_host.calls.fail(operation, test::FakeCalls::THROW, 1);
    EXPECT_FALSE(initialize()) << operation;
    m_host.calls.failNothing();
    sut::terminate(&m_host.ext);
    expectNothingLeft();
  }
}

}  // namespace
}  // namespace motion::kavo
