// The system functions: published into the host's records, and taken back.
#include "impl/bundle_if/motion_kavo_sys.h"

#include <cstddef>

#include "impl_fixture.h"
#include "signals_mutex.h"

namespace motion::kavo {
namespace {

using core::FctResult;
using core::MotionSysIfT;
using core::MotionSysSyncFctT;
using sut = MotionKavoSys;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::uint32_t countNothing(void* /*context*/) {
  return 0;
}
FctResult abortNothing(void* /*context*/, const char* /*objName*/) {
  return FctResult::Okay;
}

class MotionKavoSysTest : public SignalTest {
 protected:
  MotionKavoSysTest() {
    m_host.listNodes();
    m_host.sysIf.context = &m_host;
    m_host.sysIf.getObjCount = &countNothing;
    m_host.sysIf.abortCmds = &abortNothing;
    m_host.sysIf2.context = &m_host;
  }
  ~MotionKavoSysTest() override {
    sut::terminate();
    EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
    EXPECT_EQ(openAccesses(), 0);
  }

  inline static const std::string SCOPES_PUBLISHED =
      "Info provider_mgr registerScopes: Creation of scopes at datalayer/security/scopes succeeded";
  inline static const std::string SCOPES_WITHDRAWN = "Info provider_mgr unregisterScopes: Deletion of scopes succeeded";

  [[nodiscard]] bool initialize() { return sut::initialize(m_host.sysIf, m_host.sysIf2, m_host.dataLayer); }

  void expectPublished() const {
    EXPECT_EQ(m_host.sysIf.resetSignal, &sut::resetSignal);
    EXPECT_EQ(m_host.sysIf.setSignal, &sut::setSignal);
    EXPECT_EQ(m_host.sysIf.getSignal, &sut::getSignal);
    EXPECT_EQ(m_host.sysSync.resetSignal, &sut::resetSignal);
    EXPECT_EQ(m_host.sysSync.setSignal, &sut::setSignal);
    EXPECT_EQ(m_host.sysSync.getSignal, &sut::getSignal);
    EXPECT_EQ(sut::g_motionSysIf, &m_host.sysIf);
    EXPECT_EQ(sut::g_motionSysIf2, &m_host.sysIf2);
  }
  void expectNothingPublished() const {
    EXPECT_EQ(m_host.sysIf.resetSignal, nullptr);
    EXPECT_EQ(m_host.sysIf.setSignal, nullptr);
    EXPECT_EQ(m_host.sysIf.getSignal, nullptr);
    EXPECT_EQ(m_host.sysSync.resetSignal, nullptr);
    EXPECT_EQ(m_host.sysSync.setSignal, nullptr);
    EXPECT_EQ(m_host.sysSync.getSignal, nullptr);
    EXPECT_EQ(sut::g_signals, nullptr);
    EXPECT_EQ(sut::g_providerMgr, nullptr);
    EXPECT_EQ(sut::g_motionSysIf, nullptr);
    EXPECT_EQ(sut::g_motionSysIf2, nullptr);
  }
  void expectNeighboursUntouched() const {
    EXPECT_EQ(m_host.sysIf.context, &m_host);
    EXPECT_EQ(m_host.sysIf.getObjCount, &countNothing);
    EXPECT_EQ(m_host.sysIf.getCycleTime, nullptr);
    EXPECT_EQ(m_host.sysIf.abortCmds, &abortNothing);
    EXPECT_EQ(m_host.sysIf2.context, &m_host);
    EXPECT_EQ(m_host.sysIf2.general, &m_host.sysGeneral);
    EXPECT_EQ(m_host.sysIf2.sync, &m_host.sysSync);
  }
};

TEST(MotionSysRecordTest, HasTheFunctionsInTheOrderResetSetGet) {
  EXPECT_EQ(offsetof(MotionSysIfT, setSignal), offsetof(MotionSysIfT, resetSignal) + sizeof(void*));
  EXPECT_EQ(offsetof(MotionSysIfT, getSignal), offsetof(MotionSysIfT, setSignal) + sizeof(void*));
  EXPECT_EQ(offsetof(MotionSysSyncFctT, resetSignal), 0U);
  EXPECT_EQ(offsetof(MotionSysSyncFctT, setSignal), sizeof(void*));
  EXPECT_EQ(offsetof(MotionSysSyncFctT, getSignal), 2 * sizeof(void*));
}

TEST_F(MotionKavoSysTest, PublishesItsFunctionsInBothRecords) {
  EXPECT_TRUE(initialize());
  expectPublished();
  EXPECT_NE(sut::g_signals, nullptr);
  EXPECT_NE(sut::g_providerMgr, nullptr);
  expectNeighboursUntouched();
  EXPECT_THAT(traces(), ElementsAre(SCOPES_PUBLISHED));
}

TEST_F(MotionKavoSysTest, TakesEverythingBack) {
  ASSERT_TRUE(initialize());
  sut::terminate();
  expectNothingPublished();
  expectNeighboursUntouched();
  EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
  sut::terminate();
  expectNothingPublished();
  EXPECT_THAT(traces(), ElementsAre(SCOPES_PUBLISHED, SCOPES_WITHDRAWN));
}

TEST_F(MotionKavoSysTest, TakesTheFunctionsBackBeforeItDeletesTheStore) {
  ASSERT_TRUE(initialize());
  const auto closing = m_host.calls.onCall("dataLayer.closeMemory", [this] { expectNothingPublished(); });
  sut::terminate();
  EXPECT_EQ(m_host.calls.count("dataLayer.closeMemory"), 2);
}

TEST_F(MotionKavoSysTest, StartsTheProviderWhenTheFunctionsCanBeCalled) {
  const auto starting = m_host.calls.onCall("provider.start", [this] {
    expectPublished();
    EXPECT_NE(sut::g_signals, nullptr);
  });
  ASSERT_TRUE(initialize());
  EXPECT_EQ(m_host.calls.count("provider.start"), 1);
  EXPECT_EQ(&sut::g_providerMgr->getMotionSysIF(), &m_host.sysIf);
}

TEST_F(MotionKavoSysTest, DeletesTheProviderBeforeAnythingElse) {
  ASSERT_TRUE(initialize());
  const auto deleting = m_host.calls.onCall("provider.destroyed", [this] {
    expectPublished();
    EXPECT_NE(sut::g_signals, nullptr);
    EXPECT_EQ(sut::g_providerMgr, nullptr) << "it is forgotten first";
  });
  sut::terminate();
  EXPECT_EQ(m_host.calls.count("provider.destroyed"), 1);
}

TEST_F(MotionKavoSysTest, LeavesNothingWhenTheProviderDoesNotRun) {
  m_host.calls.fail("provider.start", 0x80000001);
  EXPECT_FALSE(initialize());
  expectNothingPublished();
  expectNeighboursUntouched();
  EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
  EXPECT_EQ(m_host.calls.count("provider.destroyed"), 1);
  EXPECT_THAT(traces(), ElementsAre(SCOPES_PUBLISHED, SCOPES_WITHDRAWN)) << "its failure is for others to trace";
}

TEST_F(MotionKavoSysTest, LeavesNothingOfBeforeWhenTheProviderDoesNotRunAgain) {
  ASSERT_TRUE(initialize());
  m_host.calls.fail("provider.start", 0x80000001);
  EXPECT_FALSE(initialize());
  expectNothingPublished();
  EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
  EXPECT_EQ(m_host.calls.count("provider.destroyed"), 2);
}

TEST_F(MotionKavoSysTest, ReplacesTheProviderBeforeTheNewOneRuns) {
  ASSERT_TRUE(initialize());
  forget();
  EXPECT_TRUE(initialize());
  EXPECT_THAT(
      m_host.calls.of({"dataLayer.createProvider", "provider.destroyed", "provider.start"}),
      ElementsAre("provider.destroyed()", "dataLayer.createProvider(inproc:///tmp/datalayer/backend)", "provider.start()"));
}

TEST_F(MotionKavoSysTest, IsHarmlessToTerminateBeforeItIsInitialised) {
  m_host.sysIf.setSignal = &sut::setSignal;
  sut::terminate();
  EXPECT_EQ(m_host.sysIf.setSignal, &sut::setSignal) << "a record that it does not know stays as it is";
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(MotionKavoSysTest, ReachesTheSignalsThroughThePublishedFunctions) {
  ASSERT_TRUE(initialize());
  bool value = false;
  EXPECT_EQ(m_host.sysIf.setSignal(nullptr, 7), FctResult::Okay);
  EXPECT_EQ(out(7), 1);
  EXPECT_EQ(m_host.sysSync.getSignal(&m_host, 7, value), FctResult::Okay);
  EXPECT_TRUE(value);
  EXPECT_EQ(m_host.sysSync.resetSignal(nullptr, 7), FctResult::Okay);
  EXPECT_EQ(m_host.sysIf.getSignal(nullptr, 7, value), FctResult::Okay);
  EXPECT_FALSE(value);
}

TEST_F(MotionKavoSysTest, PassesTheResultOfTheStoreOn) {
  ASSERT_TRUE(initialize());
  bool value = true;
  EXPECT_EQ(sut::setSignal(nullptr, 100), FctResult::InvalidParameter);
  EXPECT_EQ(sut::resetSignal(nullptr, 100), FctResult::InvalidParameter);
  EXPECT_EQ(sut::getSignal(nullptr, 100, value), FctResult::InvalidParameter);
  m_host.calls.fail("memory.beginAccess signals_out", 0x80000001);
  EXPECT_EQ(sut::setSignal(nullptr, 1), FctResult::NotOkay);
  EXPECT_EQ(sut::resetSignal(nullptr, 1), FctResult::NotOkay);
  EXPECT_EQ(sut::getSignal(nullptr, 1, value), FctResult::NotOkay);
  EXPECT_TRUE(value);
}

TEST_F(MotionKavoSysTest, RefusesEveryFunctionWhileNotInitialised) {
  bool value = true;
  EXPECT_EQ(core::toCode(sut::getSignal(nullptr, 1, value)), 0xF010000EU);
  EXPECT_TRUE(value);
  EXPECT_EQ(core::toCode(sut::setSignal(nullptr, 1)), 0xF010000EU);
  EXPECT_EQ(core::toCode(sut::resetSignal(nullptr, 100)), 0xF010000EU);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_sys getSignal: g_signals is null! MotionKavoSys not initialized?",
                                    "Error motion_kavo_sys setSignal: g_signals is null! MotionKavoSys not initialized?",
                                    "Error motion_kavo_sys resetSignal: g_signals is null! MotionKavoSys not initialized?"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(MotionKavoSysTest, RefusesACallThroughAnOldPointer) {
  ASSERT_TRUE(initialize());
  const auto set = m_host.sysIf.setSignal;
  sut::terminate();
  forget();
  EXPECT_EQ(core::toCode(set(nullptr, 1)), 0xF010000EU);
  EXPECT_EQ(traces().size(), 1U);
}

TEST_F(MotionKavoSysTest, ReplacesTheStoreWhenInitialisedAgain) {
  ASSERT_TRUE(initialize());
  forget();
  EXPECT_TRUE(initialize());
  EXPECT_EQ(m_host.dataLayer.m_openUsers, 2) << "the old store has given its handles back";
  EXPECT_EQ(m_host.calls.count("dataLayer.closeMemory"), 2);
  EXPECT_EQ(sut::setSignal(nullptr, 7), FctResult::Okay);
}

TEST_F(MotionKavoSysTest, PublishesItsFunctionsAgainWhenInitialisedAgain) {
  ASSERT_TRUE(initialize());
  m_host.sysIf.resetSignal = nullptr;
  m_host.sysIf.setSignal = nullptr;
  m_host.sysIf.getSignal = nullptr;
  m_host.sysSync = {};
  EXPECT_TRUE(initialize());
  expectPublished();
}

TEST_F(MotionKavoSysTest, AnswersAnExceptionOfTheStoreWithAFailure) {
  ASSERT_TRUE(initialize());
  bool value = true;
  {
    const UnlockableMutex mutex(*sut::g_signals);
    EXPECT_EQ(m_host.sysIf.setSignal(nullptr, 1), FctResult::NotOkay);
    EXPECT_EQ(m_host.sysIf.resetSignal(nullptr, 1), FctResult::NotOkay);
    EXPECT_EQ(m_host.sysIf.getSignal(nullptr, 1, value), FctResult::NotOkay);
  }
  EXPECT_TRUE(value);
  EXPECT_EQ(m_host.calls.count("memory.beginAccess signals_out"), 0);
  EXPECT_EQ(sut::setSignal(nullptr, 1), FctResult::Okay) << "the store goes on";
}

TEST_F(MotionKavoSysTest, StartsWithoutTheMemoriesAndRefusesEachCall) {
  m_host.calls.fail("dataLayer.openMemory", 0x80010001);
  EXPECT_TRUE(initialize());
  EXPECT_EQ(sut::setSignal(nullptr, 7), FctResult::NotOkay);
  EXPECT_THAT(traces(),
              ElementsAre(StartsWith("Error signals Signals:"), SCOPES_PUBLISHED, StartsWith("Error signals beginAccess:")));
}

TEST_F(MotionKavoSysTest, LeavesNothingAfterAFailureToAllocate) {
  bool isDone = false;
  const int failures = withEachAllocationFailing([&] { isDone = initialize(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_TRUE(isDone || hasFailed);
                                                   if (!isDone) {
                                                     expectNothingPublished();
                                                   }
                                                   sut::terminate();
                                                   EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
                                                 });
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace motion::kavo
