// Which conditions the job of the option SwitchOnPath refuses, in which order and with which words.
#include <limits>

#include "impl/send_signal/send_signal_pars.h"
#include "impl/switch_on_path/job_obj_switch_on_path.h"
#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string BAD_RADIUS = "invalid 'radius': should be >= 0";
const std::string BAD_TIME = "invalid 'preTriggerTime': should be >= 0";
const std::string BAD_MODE = "invalid 'mode': only ENTER_SPHERE is currently supported";
const std::string BAD_ACTION = "invalid 'action': should be SET_SIGNAL or RESET_SIGNAL";
const std::string BAD_SIGNAL = "invalid 'signalId': should be in range [0..99]";

/// Makes conditions that are wrong in some ways.
enum Wrong : unsigned int { NOTHING = 0, RADIUS = 1, TIME = 2, MODE = 4, ACTION = 8, SIGNAL = 16 };

Condition wrongIn(unsigned int what) {
  return condition({.mode = static_cast<SwitchOnPathMode>((what & MODE) != 0 ? 1 : 0),
                    .signalId = (what & SIGNAL) != 0 ? 100U : 99U,
                    .action = static_cast<SwitchOnPathAction>((what & ACTION) != 0 ? 2 : 1),
                    .targetPos = {-1, -2, -3},
                    .radius = (what & RADIUS) != 0 ? -0.001 : 0.0,
                    .preTriggerTime = (what & TIME) != 0 ? -0.001 : 0.0});
}

class JobObjSwitchOnPathCheckTest : public CommandTest {
 protected:
  /// The text that a list of such conditions is refused with, empty when it is not.
  [[nodiscard]] std::string refusalOf(const std::vector<unsigned int>& conditions) {
    SwitchOnPathParsListT list;
    for (const unsigned int what : conditions) {
      list.push_back(wrongIn(what));
    }
    return refusalOf(SwitchOnPathParsList(list));
  }
  [[nodiscard]] std::string refusalOf(const SwitchOnPathParsList& list) {
    m_dia.m_reports.clear();
    const auto result = m_sut.checkParameter(&list, &m_dia);
    EXPECT_EQ(core::toCode(result), m_dia.m_reports.empty() ? 0U : 0xF0000016U);
    return m_dia.m_reports.empty() ? "" : m_dia.m_reports[0].text;
  }

  JobObjSwitchOnPath m_sut;
};

TEST_F(JobObjSwitchOnPathCheckTest, AcceptsGoodConditionsWithoutAChange) {
  EXPECT_EQ(refusalOf({NOTHING}), "");
  EXPECT_EQ(refusalOf({NOTHING, NOTHING, NOTHING}), "");
  const auto list = listOf({wrongIn(NOTHING)});
  EXPECT_EQ(m_sut.checkParameter(&list, nullptr), JobResult::NoEffect);
  const auto* const kept = SwitchOnPathParsList::safeCast(m_sut.getJobData());
  ASSERT_NE(kept, nullptr);
  EXPECT_THAT(kept->get(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjSwitchOnPathCheckTest, RefusesNoDataAndDataOfAnotherType) {
  const cmd::CmdSendSignalPars other(cmd::CmdSendSignalParsT{1});
  for (core::dia::IDia* dia : {static_cast<core::dia::IDia*>(&m_dia), static_cast<core::dia::IDia*>(nullptr)}) {
    forget();
    EXPECT_EQ(core::toCode(m_sut.checkParameter(nullptr, dia)), 0xF0000004U);
    EXPECT_EQ(core::toCode(m_sut.checkParameter(&other, dia)), 0xF0000004U);
    const std::string expected = "Error job_obj_switch_on_path checkParameter: jobData is invalid or nullptr";
    EXPECT_THAT(traces(), ElementsAre(expected, expected));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  }
  EXPECT_THAT(m_dia.m_reports, IsEmpty());
}

TEST_F(JobObjSwitchOnPathCheckTest, RefusesAnEmptyList) {
  const SwitchOnPathParsList list;
  EXPECT_EQ(core::toCode(m_sut.checkParameter(&list, &m_dia)), 0xF0000004U);
  EXPECT_EQ(core::toCode(m_sut.checkParameter(&list, nullptr)), 0xF0000004U);
  const std::string expected = "Error job_obj_switch_on_path checkParameter: empty parameter container";
  EXPECT_THAT(traces(), ElementsAre(expected, expected));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_dia.m_reports, IsEmpty());
}

TEST_F(JobObjSwitchOnPathCheckTest, NamesWhatIsWrong) {
  EXPECT_EQ(refusalOf({RADIUS}), BAD_RADIUS);
  EXPECT_EQ(refusalOf({TIME}), BAD_TIME);
  EXPECT_EQ(refusalOf({MODE}), BAD_MODE);
  EXPECT_EQ(refusalOf({ACTION}), BAD_ACTION);
  EXPECT_EQ(refusalOf({SIGNAL}), BAD_SIGNAL);
  EXPECT_THAT(traces(), IsEmpty()) << "a trace is for the case without a diagnosis";
}

TEST_F(JobObjSwitchOnPathCheckTest, AsksInOrderWithinACondition) {
  EXPECT_EQ(refusalOf({RADIUS | TIME | MODE | ACTION | SIGNAL}), BAD_RADIUS);
  EXPECT_EQ(refusalOf({TIME | MODE | ACTION | SIGNAL}), BAD_TIME);
  EXPECT_EQ(refusalOf({MODE | ACTION | SIGNAL}), BAD_SIGNAL) << "the signal replaces what was noted";
  EXPECT_EQ(refusalOf({ACTION | SIGNAL}), BAD_SIGNAL);
  EXPECT_EQ(refusalOf({MODE | SIGNAL}), BAD_SIGNAL);
  EXPECT_EQ(refusalOf({MODE | ACTION}), BAD_MODE) << "the action is not asked after a wrong mode";
  EXPECT_EQ(refusalOf({RADIUS | TIME}), BAD_RADIUS);
}

TEST_F(JobObjSwitchOnPathCheckTest, KeepsANotedTextUntilItIsReplaced) {
  EXPECT_EQ(refusalOf({MODE, NOTHING}), BAD_MODE) << "good conditions behind it change nothing";
  EXPECT_EQ(refusalOf({ACTION, NOTHING, NOTHING}), BAD_ACTION);
  EXPECT_EQ(refusalOf({MODE, ACTION}), BAD_ACTION);
  EXPECT_EQ(refusalOf({ACTION, MODE}), BAD_MODE);
  EXPECT_EQ(refusalOf({MODE, RADIUS}), BAD_RADIUS);
  EXPECT_EQ(refusalOf({ACTION, TIME}), BAD_TIME);
  EXPECT_EQ(refusalOf({MODE, SIGNAL}), BAD_SIGNAL);
}

TEST_F(JobObjSwitchOnPathCheckTest, StopsAtAWrongNumber) {
  for (const auto& [what, text] :
       {std::pair<unsigned int, std::string>(RADIUS, BAD_RADIUS), std::pair<unsigned int, std::string>(TIME, BAD_TIME),
        std::pair<unsigned int, std::string>(SIGNAL, BAD_SIGNAL)}) {
    for (const unsigned int behind : {RADIUS, TIME, MODE, ACTION, SIGNAL}) {
      EXPECT_EQ(refusalOf({NOTHING, what, behind}), text) << behind;
    }
  }
}

TEST_F(JobObjSwitchOnPathCheckTest, ReportsToTheDiagnosis) {
  EXPECT_EQ(refusalOf({MODE}), BAD_MODE);
  ASSERT_EQ(m_dia.m_reports.size(), 1U);
  const auto& report = m_dia.m_reports[0];
  EXPECT_EQ(report.mainCode, 0x090F2030U);
  EXPECT_EQ(report.detailCode, 0x0C5701B1U);
  EXPECT_EQ(report.source.client, "");
  EXPECT_EQ(report.source.file, "");
  EXPECT_EQ(report.source.line, 0U);
  EXPECT_THAT(report.file, testing::HasSubstr("src/impl/switch_on_path/job_obj_switch_on_path"));
  EXPECT_EQ(report.function, "checkParameter");
  EXPECT_GT(report.line, 0U);
  EXPECT_EQ(report.format, "%s");
  EXPECT_TRUE(report.isClosed);
  EXPECT_EQ(m_host.calls.count("dia.close"), 1);
}

TEST_F(JobObjSwitchOnPathCheckTest, TracesWithoutADiagnosis) {
  for (const auto& [what, text] : {std::pair<unsigned int, std::string>(RADIUS, BAD_RADIUS),
                                   std::pair<unsigned int, std::string>(ACTION, BAD_ACTION)}) {
    forget();
    const auto list = listOf({wrongIn(what)});
    EXPECT_EQ(core::toCode(m_sut.checkParameter(&list, nullptr)), 0xF0000016U);
    EXPECT_THAT(traces(), ElementsAre("Error job_obj_switch_on_path checkParameter: " + text));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  }
}

TEST_F(JobObjSwitchOnPathCheckTest, HasItsLimitsExactly) {
  constexpr double SMALLEST = std::numeric_limits<double>::denorm_min();
  const auto check = [this](const SwitchOnPathPars& pars) { return refusalOf(listOf({condition(pars)})); };
  EXPECT_EQ(check({.radius = -SMALLEST}), BAD_RADIUS);
  EXPECT_EQ(check({.preTriggerTime = -SMALLEST}), BAD_TIME);
  EXPECT_EQ(check({.radius = -0.0, .preTriggerTime = -0.0}), "") << "a negative zero is not below zero";
  EXPECT_EQ(check({.signalId = 99}), "");
  EXPECT_EQ(check({.signalId = 100}), BAD_SIGNAL);
  EXPECT_EQ(check({.signalId = 0xFFFFFFFF}), BAD_SIGNAL);
  EXPECT_EQ(check({.action = SwitchOnPathAction::RESET_SIGNAL}), "");
  EXPECT_EQ(check({.action = static_cast<SwitchOnPathAction>(255)}), BAD_ACTION);
  EXPECT_EQ(check({.mode = static_cast<SwitchOnPathMode>(255)}), BAD_MODE);
}

TEST_F(JobObjSwitchOnPathCheckTest, RefusesWhateverBecomesOfTheDiagnosis) {
  const auto list = listOf({wrongIn(RADIUS)});
  for (const char* operation : {"dia.report", "dia.close"}) {
    m_host.calls.failNothing();
    m_host.calls.fail(operation, test::FakeCalls::THROW);
    EXPECT_EQ(core::toCode(m_sut.checkParameter(&list, &m_dia)), 0xF0000016U) << operation;
  }
}

TEST_F(JobObjSwitchOnPathCheckTest, AnswersEachFailureToAllocateWithAFailure) {
  const auto list = listOf({wrongIn(NOTHING)});
  JobResult result{};
  const int failures = withEachAllocationFailing([&] { result = m_sut.checkParameter(&list, &m_dia); },
                                                 [&](bool hasFailed) { EXPECT_EQ(core::isFailure(result), hasFailed); });
  EXPECT_GT(failures, 0);
  EXPECT_THAT(m_dia.m_reports, IsEmpty());
}

}  // namespace
}  // namespace motion::kavo::job
