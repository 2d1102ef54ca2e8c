// How conditions of the option SwitchOnPath are converted into internal units and carried over to the next command.
#include <cstdlib>
#include <stdexcept>

#include "impl/send_signal/send_signal_pars.h"
#include "impl/switch_on_path/cmd_option_switch_on_path.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

/// Answers as the test says, with what the active option keeps.
class FakeOptHandler : public core::cmd::ICmdOptHandler {
 public:
  CmdResult getDataOfOption(const core::cmd::CmdId& option, const core::IContainer*& data) const override {
    const test::AllocationPause pause;
    m_asked.push_back(option);
    if (m_onAsked) {
      m_onAsked();
    }
    data = m_data;
    return m_result;
  }

  CmdResult m_result = CmdResult::Okay;
  const core::IContainer* m_data = nullptr;
  std::function<void()> m_onAsked;
  mutable std::vector<core::cmd::CmdId> m_asked;
};

class CmdOptionSwitchOnPathStackingTest : public ImplTest {
 protected:
  CmdOptionSwitchOnPathStackingTest() {
    EXPECT_EQ(CmdOptionSwitchOnPath::registerCmdOption(m_host.ext, "/a bundle/bfbs/"), CmdResult::Okay);
    m_obj.m_isKinematics = true;
    m_obj.m_unitSettings.entries = {
        core::Unit{"mm", 0.001}, {"deg", 7}, {"a", 11}, {"b", 13}, {"c", 17}, {"d", 19}, {"ms", 0.25}};
    forget();
  }

  [[nodiscard]] CmdResult prepare(core::IContainer* values) {
    return m_sut.prepareStackableCmdOption(m_obj, m_handler, values, m_permType, m_source);
  }
  /// The list of a command to which an option with these conditions is attached.
  [[nodiscard]] SwitchOnPathParsListT stack(SwitchOnPathParsListT given) {
    auto values = listOf(std::move(given));
    EXPECT_EQ(core::toCode(prepare(&values)), 0x00110000U);
    return values.get();
  }
  void activate(SwitchOnPathParsListT conditions) {
    m_active.set(std::move(conditions));
    m_handler.m_data = &m_active;
  }
  void expectReport(std::uint32_t detailCode, const std::string& text, const std::string& format) {
    EXPECT_THAT(traces(), IsEmpty());
    ASSERT_EQ(m_obj.m_dia.m_reports.size(), 1U);
    const auto& report = m_obj.m_dia.m_reports[0];
    EXPECT_EQ(report.mainCode, 0x090F2030U);
    EXPECT_EQ(report.detailCode, detailCode);
    EXPECT_EQ(report.text, text);
    EXPECT_EQ(report.format, format);
    EXPECT_EQ(report.source.client, "a client");
    EXPECT_EQ(report.source.line, 12U);
    EXPECT_THAT(report.file, testing::HasSubstr("src/impl/switch_on_path/cmd_option_switch_on_path"));
    EXPECT_EQ(report.function, "prepareStackableCmdOption");
    EXPECT_GT(report.line, 0U);
    EXPECT_TRUE(report.isClosed);
    EXPECT_EQ(m_host.calls.count("dia.close"), 1);
    m_obj.m_dia.m_reports.clear();
  }
  void expectInvalidData() {
    forget();
    const auto given = sphere(2, {1000, 0, 0}, 1000);
    auto values = listOf({given});
    EXPECT_EQ(core::toCode(prepare(&values)), 0xF0110004U);
    EXPECT_THAT(values.get(), ElementsAre(given));
    EXPECT_EQ(given->radius, 1.0) << "it is converted before the handler is asked";
    expectReport(0x0C5701B0,
                 "failed to prepare stackable settings for cmd option SwitchOnPath. getDataOfOption returned invalid data",
                 "failed to prepare stackable settings for cmd option %s. getDataOfOption returned invalid data");
  }

  test::FakeObj m_obj{m_host.calls};
  FakeOptHandler m_handler;
  SwitchOnPathParsList m_active;
  CmdOptPermType m_permType = CmdOptPermType::ONCE;
  core::dia::CmdSourceInfo m_source{"a client", "a program", 12};
  CmdOptionSwitchOnPath m_sut;
};

constexpr auto EACH_PERM_TYPE = {CmdOptPermType::ONCE, CmdOptPermType::PERM_ON, CmdOptPermType::PERM_OFF};

TEST_F(CmdOptionSwitchOnPathStackingTest, RefusesNoListAndOtherRecords) {
  CmdSendSignalPars other(CmdSendSignalParsT{1});
  for (core::IContainer* values : {static_cast<core::IContainer*>(&other), static_cast<core::IContainer*>(nullptr)}) {
    forget();
    EXPECT_EQ(core::toCode(prepare(values)), 0xF011001DU);
    EXPECT_THAT(traces(), ElementsAre("Error cmd_option_switch_on_path prepareStackableCmdOption: Invalid cmdOptValues"));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  }
  EXPECT_THAT(m_handler.m_asked, IsEmpty());
  EXPECT_THAT(m_obj.m_dia.m_reports, IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathStackingTest, AsksForItsOwnOptionOfKinematics) {
  activate({});
  (void)stack({sphere(1, {0, 0, 0}, 1)});
  EXPECT_THAT(m_handler.m_asked, ElementsAre(core::cmd::CmdId{core::ObjectType::KINEMATICS, "SwitchOnPath"}));
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ConvertsTheNewConditionIntoInternalUnits) {
  m_handler.m_result = CmdResult::NoOptionData;
  for (const auto permType : EACH_PERM_TYPE) {
    forget();
    m_permType = permType;
    const auto given = sphere(7, {1000, -2000, 4000}, 500, 8);
    EXPECT_THAT(stack({given}), ElementsAre(given));
    EXPECT_THAT(given->targetPos, ElementsAre(1.0, -2.0, 4.0));
    EXPECT_EQ(given->radius, 0.5);
    EXPECT_EQ(given->preTriggerTime, 2.0);
    EXPECT_EQ(given->signalId, 7U);
    EXPECT_FALSE(given->reached);
    EXPECT_THAT(m_host.calls.of({"unitHelper."}),
                testing::UnorderedElementsAre("unitHelper.toInternal(0, 500)", "unitHelper.toInternal(0, 1000)",
                                              "unitHelper.toInternal(0, -2000)", "unitHelper.toInternal(0, 4000)",
                                              "unitHelper.toInternal(6, 8)"));
    EXPECT_THAT(traces(), IsEmpty());
  }
}

TEST_F(CmdOptionSwitchOnPathStackingTest, TakesTheUnitsOfTheObject) {
  m_handler.m_result = CmdResult::NoOptionData;
  m_obj.m_unitSettings.entries[0].factor = 3;
  m_obj.m_unitSettings.entries[6].factor = 5;
  const auto given = sphere(7, {1, 2, 4}, 8, 16);
  (void)stack({given});
  EXPECT_THAT(given->targetPos, ElementsAre(3.0, 6.0, 12.0));
  EXPECT_EQ(given->radius, 24.0);
  EXPECT_EQ(given->preTriggerTime, 80.0);
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ConvertsBeforeItAsksForActiveConditions) {
  activate({});
  const auto given = sphere(7, {1000, 0, 0}, 500, 8);
  double radius = 0;
  m_handler.m_onAsked = [&] { radius = given->radius; };
  (void)stack({given});
  EXPECT_EQ(radius, 0.5);
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ConvertsTheFirstConditionOnly) {
  m_handler.m_result = CmdResult::NoOptionData;
  const auto given = sphere(1, {1000, 0, 0}, 1000, 4);
  const auto second = sphere(2, {1000, 0, 0}, 1000, 4);
  (void)stack({given, second});
  EXPECT_EQ(given->radius, 1.0);
  EXPECT_EQ(second->radius, 1000.0);
  EXPECT_EQ(second->preTriggerTime, 4.0);
  EXPECT_THAT(second->targetPos, ElementsAre(1000.0, 0.0, 0.0));
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ConvertsNothingOfAnEmptyListButStillStacks) {
  const auto carried = sphere(1, {1000, 0, 0}, 1000, 4);
  activate({carried});
  EXPECT_THAT(stack({}), ElementsAre(carried));
  EXPECT_EQ(carried->radius, 1000.0);
  EXPECT_EQ(m_host.calls.count("unitHelper.toInternal"), 0);
}

TEST_F(CmdOptionSwitchOnPathStackingTest, IsDoneWhereNoneIsActive) {
  m_handler.m_result = static_cast<CmdResult>(0xF011001F);
  const auto carried = sphere(1, {0, 0, 0}, 1);
  activate({carried});
  const auto given = sphere(2, {0, 0, 0}, 1);
  EXPECT_THAT(stack({given}), ElementsAre(given)) << "what comes with that result is not looked at";
  EXPECT_THAT(m_obj.m_dia.m_reports, IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ReportsOtherFailuresAndReturnsThem) {
  activate({sphere(1, {0, 0, 0}, 1)});
  for (const auto permType : EACH_PERM_TYPE) {
    for (const std::uint32_t code : {0xF0110021U, 0xF0110004U}) {
      forget();
      m_permType = permType;
      m_handler.m_result = static_cast<CmdResult>(code);
      const auto given = sphere(2, {0, 0, 0}, 1000);
      auto values = listOf({given});
      EXPECT_EQ(core::toCode(prepare(&values)), code);
      EXPECT_THAT(values.get(), ElementsAre(given));
      EXPECT_EQ(given->radius, 1.0);
      const std::string format = "failed to prepare stackable settings for cmd option %s. getDataOfOption returned %d";
      expectReport(0x0C5701B2,
                   "failed to prepare stackable settings for cmd option SwitchOnPath. getDataOfOption returned " +
                       std::to_string(static_cast<std::int32_t>(code)),
                   format);
    }
  }
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ReportsMissingAndWrongDataEvenWhenSwitchedOff) {
  const CmdSendSignalPars other(CmdSendSignalParsT{1});
  for (const auto permType : EACH_PERM_TYPE) {
    m_permType = permType;
    m_handler.m_data = nullptr;
    expectInvalidData();
    m_handler.m_data = &other;
    expectInvalidData();
  }
}

TEST_F(CmdOptionSwitchOnPathStackingTest, CarriesWhatHasNotFiredBehindTheNewCondition) {
  for (const auto permType : {CmdOptPermType::ONCE, CmdOptPermType::PERM_ON}) {
    m_permType = permType;
    const auto a = sphere(1, {1, 0, 0}, 1);
    const auto b = sphere(2, {2, 0, 0}, 1);
    activate({a});
    EXPECT_THAT(stack({b}), ElementsAre(b, a));
    EXPECT_EQ(m_permType, permType);
    EXPECT_THAT(m_active.get(), ElementsAre(a)) << "the active list stays as it is";
  }
}

TEST_F(CmdOptionSwitchOnPathStackingTest, TouchesNothingOfWhatItCarries) {
  const auto a = sphere(1, {1000, 2000, 3000}, 500, 8);
  activate({a});
  (void)stack({sphere(2, {2, 0, 0}, 1)});
  EXPECT_EQ(a->radius, 500.0);
  EXPECT_EQ(a->preTriggerTime, 8.0);
  EXPECT_THAT(a->targetPos, ElementsAre(1000.0, 2000.0, 3000.0));
}

TEST_F(CmdOptionSwitchOnPathStackingTest, DropsWhatHasFiredAndKeepsTheOrderOfTheRest) {
  const auto a = sphere(1, {1, 0, 0}, 1);
  const auto b = sphere(2, {2, 0, 0}, 1);
  const auto c = sphere(3, {3, 0, 0}, 1);
  const auto d = sphere(4, {4, 0, 0}, 1);
  activate({a, b, c});
  b->reached = true;
  EXPECT_THAT(stack({d}), ElementsAre(d, a, c));
  a->reached = true;
  c->reached = true;
  EXPECT_THAT(stack({d}), ElementsAre(d));
}

TEST_F(CmdOptionSwitchOnPathStackingTest, CarriesNothingWhenSwitchedOff) {
  const auto a = sphere(1, {1, 0, 0}, 1);
  const auto b = sphere(2, {2, 0, 0}, 1000);
  activate({a});
  for (const std::uint32_t permType : {2U, 3U, 77U}) {
    m_permType = static_cast<CmdOptPermType>(permType);
    EXPECT_THAT(stack({b}), ElementsAre(b));
  }
  EXPECT_FALSE(a->reached);
}

TEST_F(CmdOptionSwitchOnPathStackingTest, StacksOverSeveralCommands) {
  const auto a = sphere(1, {1, 0, 0}, 1);
  const auto b = sphere(2, {2, 0, 0}, 1);
  const auto c = sphere(3, {3, 0, 0}, 1);
  activate({a});
  activate(stack({b}));
  EXPECT_THAT(stack({c}), ElementsAre(c, b, a));
}

TEST_F(CmdOptionSwitchOnPathStackingTest, SharesTheFlagOfWhatItCarries) {
  const auto a = sphere(1, {1, 0, 0}, 1);
  activate({a});
  const auto list = stack({sphere(2, {2, 0, 0}, 1)});
  ASSERT_EQ(list.size(), 2U);
  a->setReached();
  EXPECT_TRUE(list[1]->isReached());
}

TEST_F(CmdOptionSwitchOnPathStackingTest, ReportsAndReturnsWhateverBecomesOfTheDiagnosis) {
  m_host.calls.fail("dia.report", test::FakeCalls::THROW);
  auto values = listOf({sphere(2, {0, 0, 0}, 1)});
  m_handler.m_result = static_cast<CmdResult>(0xF0110021);
  EXPECT_EQ(core::toCode(prepare(&values)), 0xF0110021U);
  m_handler.m_result = CmdResult::Okay;
  EXPECT_EQ(core::toCode(prepare(&values)), 0xF0110004U);
}

TEST_F(CmdOptionSwitchOnPathStackingTest, AnswersExceptionsOfTheHostWithFailures) {
  auto values = listOf({sphere(2, {0, 0, 0}, 1)});
  m_handler.m_onAsked = [] { throw std::runtime_error("no answer now"); };
  EXPECT_TRUE(core::isFailure(prepare(&values)));
  m_handler.m_onAsked = nullptr;
  m_host.calls.fail("unitHelper.toInternal", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(prepare(&values)));
}

TEST_F(CmdOptionSwitchOnPathStackingTest, CarriesAllOrNothingWhenAnAllocationFails) {
  const auto a = sphere(1, {1, 0, 0}, 1);
  const auto b = sphere(2, {2, 0, 0}, 1);
  activate({a, b});
  const auto given = sphere(3, {3, 0, 0}, 1);
  CmdResult result{};
  auto values = listOf({given});
  const int failures = withEachAllocationFailing([&] { result = prepare(&values); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(core::isFailure(result), hasFailed);
                                                   EXPECT_EQ(values.get().size(), hasFailed ? 1U : 3U);
                                                 });
  EXPECT_GT(failures, 0);
}

/// Leaves the process with 0 when a new condition is refused because nobody can convert it.
[[noreturn]] void prepareUnregistered() {
  test::FakeCalls calls;
  test::FakeObj obj(calls);
  const FakeOptHandler handler;
  auto values = listOf({sphere(2, {0, 0, 0}, 1)});
  auto permType = CmdOptPermType::ONCE;
  const auto result = CmdOptionSwitchOnPath().prepareStackableCmdOption(obj, handler, &values, permType, {});
  std::exit(result == CmdResult::NullPointer && handler.m_asked.empty() && values.get().front()->radius == 1.0 ? 0 : 1);
}

TEST(CmdOptionSwitchOnPathUnregisteredDeathTest, RefusesConditionsBeforeItIsRegistered) {
  // In a process of its own, where no other test has registered the option.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(prepareUnregistered(), testing::ExitedWithCode(0), "");
}

TEST_F(CmdOptionSwitchOnPathStackingTest, IsReachedThroughItsSlot) {
  const auto a = sphere(1, {1, 0, 0}, 1);
  const auto b = sphere(2, {2, 0, 0}, 1);
  activate({a});
  auto values = listOf({b});
  EXPECT_EQ((callSlot<CmdResult, core::IObj&, const core::cmd::ICmdOptHandler&, core::IContainer*, CmdOptPermType&,
                      const core::dia::CmdSourceInfo&>(&m_sut, 3, m_obj, m_handler, &values, m_permType, m_source)),
            CmdResult::Okay);
  EXPECT_THAT(values.get(), ElementsAre(b, a));
}

}  // namespace
}  // namespace motion::kavo::cmd
