#include "host/run/outside_writes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/run/session.h"

namespace motion::host::run {
namespace {

using scenario::OutsideEvent;
using testing::ElementsAre;
using testing::IsEmpty;

OutsideEvent writing(bool value, std::vector<scenario::ScopeName> scopes, bool refused) {
  OutsideEvent event;
  event.signal = 7;
  event.value = value;
  event.scopes = std::move(scopes);
  event.refused = refused;
  event.mark = {12, 5};
  return event;
}

/// Writes into a started host.
class OutsideWritesTest : public testing::Test {
 protected:
  OutsideWritesTest() {
    std::string problem;
    EXPECT_TRUE(m_session.open(problem)) << problem;
    m_record.signalNames.resize(100);
    m_record.signalNames[7] = "release";
  }

  [[nodiscard]] bool isSet() {
    bool value = false;
    EXPECT_EQ(m_session.runtime().records().sysSync.getSignal(nullptr, 7, value), core::FctResult::Okay);
    return value;
  }
  [[nodiscard]] std::vector<std::string> findings(const OutsideEvent& event) {
    scenario::Scenario scenario;
    scenario.file = "f";
    scenario.outside = {event};
    std::vector<std::string> texts;
    for (const auto& problem : checkOutsideWrites(scenario, m_session.dataLayer().scopes())) {
      texts.push_back((problem.warning ? "warning " : "") + problem.text());
    }
    return texts;
  }

  Session m_session{{KAVO_BUNDLE, {}, std::chrono::seconds(30), false}};
  observe::RunRecord m_record;
  OutsideWrites m_sut{m_session.dataLayer()};
};

const scenario::ScopeName VIEW{"motion.view", {12, 40}};
const scenario::ScopeName OPERATE{"motion.operate", {12, 40}};
const scenario::ScopeName MANAGE{"motion.manage", {12, 40}};

TEST_F(OutsideWritesTest, WritesWithTheRightsOfItsScopes) {
  EXPECT_EQ(m_sut.carryOut(writing(true, {OPERATE}, false), m_record), "");
  EXPECT_TRUE(isSet());
  EXPECT_EQ(m_sut.carryOut(writing(false, {VIEW, MANAGE}, false), m_record), "");
  EXPECT_FALSE(isSet());
}

TEST_F(OutsideWritesTest, IsContentWithARefusalThatIsExpected) {
  EXPECT_EQ(m_sut.carryOut(writing(true, {VIEW}, true), m_record), "");
  EXPECT_EQ(m_sut.carryOut(writing(true, {}, true), m_record), "");
  EXPECT_FALSE(isSet());
}

TEST_F(OutsideWritesTest, TellsOfARefusalThatNobodyExpects) {
  EXPECT_EQ(m_sut.carryOut(writing(true, {VIEW}, false), m_record),
            "line 12: signal 7 'release' could not be set by a client with the scope motion.view: DL_SEC_UNAUTHORIZED");
  EXPECT_EQ(m_sut.carryOut(writing(false, {}, false), m_record),
            "line 12: signal 7 'release' could not be reset by a client without scopes: DL_SEC_UNAUTHORIZED");
  EXPECT_FALSE(isSet());
}

TEST_F(OutsideWritesTest, TellsOfAWriteThatShouldHaveBeenRefused) {
  EXPECT_EQ(
      m_sut.carryOut(writing(true, {VIEW, OPERATE}, true), m_record),
      "line 12: signal 7 'release' was set by a client with the scopes motion.view, motion.operate, though a refusal was "
      "expected");
  EXPECT_TRUE(isSet());
}

TEST_F(OutsideWritesTest, DoesNotTakeAnotherFailureForARefusal) {
  m_session.dataLayer().closeClients();
  EXPECT_EQ(
      m_sut.carryOut(writing(true, {VIEW}, true), m_record),
      "line 12: signal 7 'release' could not be set by a client with the scope motion.view: DL_CLIENT_NOT_CONNECTED; a "
      "refusal was expected");
}

TEST_F(OutsideWritesTest, GivesTheReasonOfTheComponent) {
  OutsideEvent event = writing(true, {OPERATE}, false);
  event.signal = 99;
  m_session.runtime().records().sys.setSignal = [](void*, unsigned int) { return core::FctResult::NotOkay; };
  EXPECT_EQ(m_sut.carryOut(event, m_record),
            "line 12: signal 99 could not be set by a client with the scope motion.operate: Can not set signalId: "
            "motion/state/functions/kavo/signals/99 ,DLResult: DL_INVALID_HANDLE (0x090F2040, 0x0C560270)");
}

TEST_F(OutsideWritesTest, FindsScopesThatNobodyRegistered) {
  EXPECT_THAT(findings(writing(true, {{"motion.veiw", {12, 40}}}, true)),
              ElementsAre("f:12:40: scopes: unknown scope 'motion.veiw'; did you mean 'motion.view'? known here: "
                          "motion.manage, motion.operate, motion.view"));
}

TEST_F(OutsideWritesTest, PointsAtTheWriteWhenNoScopeIsNamed) {
  scenario::Scenario scenario;
  scenario.file = "f";
  OutsideEvent event;
  event.mark = {12, 5};
  scenario.outside = {event};
  const auto problems = checkOutsideWrites(scenario, datalayer::ScopeRegister());
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems[0].text(), "f:12:5: scopes: unknown scope 'motion.operate'; nothing is known here");
}

TEST_F(OutsideWritesTest, FindsWritesThatWillBeRefused) {
  EXPECT_THAT(findings(writing(true, {VIEW}, false)),
              ElementsAre("warning f:12:5: signal 7 cannot be set by a client with the scope motion.view; name a scope that "
                          "grants writing, as in 'scopes: [motion.operate]', or expect it with 'refused: true'"));
  EXPECT_THAT(findings(writing(true, {VIEW}, true)), IsEmpty());
  EXPECT_THAT(findings(writing(true, {OPERATE}, false)), IsEmpty());
}

TEST_F(OutsideWritesTest, FindsRefusalsThatWillNotCome) {
  EXPECT_THAT(
      findings(writing(false, {OPERATE}, true)),
      ElementsAre("warning f:12:5: signal 7 will be reset by a client with the scope motion.operate, no matter that a "
                  "refusal is expected; leave 'refused' out, or name scopes that grant no writing, as in 'scopes: "
                  "[motion.view]'"));
}

TEST_F(OutsideWritesTest, FindsNothingInAborts) {
  OutsideEvent event;
  event.kind = OutsideEvent::Kind::ABORT;
  event.scopes = {{"unknown", {}}};
  EXPECT_THAT(findings(event), IsEmpty());
}

}  // namespace
}  // namespace motion::host::run
