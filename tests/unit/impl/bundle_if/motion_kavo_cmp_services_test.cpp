// Services come and go, before and while the component is started.
#include "cmp_fixture.h"
#include "support/fake_journal.h"

namespace motion::kavo::bundle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class ServiceTest : public MotionKavoCmpTest, public testing::WithParamInterface<std::size_t> {
 protected:
  [[nodiscard]] static const Service& service() { return SERVICES[GetParam()]; }
  [[nodiscard]] static std::string addText() { return "Add " + service().name + " service dependency"; }
  [[nodiscard]] static std::string removeText() { return "Remove " + service().name + " service dependency"; }
};

TEST_P(ServiceTest, OnlyKeepsAServiceThatArrives) {
  for (const auto& other : SERVICES) {
    other.set(*m_sut, m_host);
  }
  forget();
  service().set(*m_sut, m_host);
  EXPECT_THAT(traces(), ElementsAre(info(service().setFunction, addText())));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_host.calls.all(), IsEmpty()) << "nothing starts by itself, even with all services there";
}

TEST_P(ServiceTest, RefusesANullServiceAndKeepsTheOldOne) {
  setServices();
  service().setNull(*m_sut);
  EXPECT_THAT(traces(),
              ElementsAre(info(service().setFunction, addText()), error(service().setFunction, service().nullText)));
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "%s");
  EXPECT_EQ(m_sut->start(), 0);
}

TEST_P(ServiceTest, ForgetsAServiceThatLeaves) {
  setServices();
  service().remove(*m_sut);
  EXPECT_THAT(traces(), ElementsAre(info(service().removeFunction, removeText())));
  forget();
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_EQ(ownTraces().at(2), error("bundleStart", service().missingText));
}

TEST_P(ServiceTest, TakesDownOnlyWhatDependsOnAServiceThatLeaves) {
  start();
  service().remove(*m_sut);
  EXPECT_EQ(traces().front(), info(service().removeFunction, removeText()));
  EXPECT_EQ(hasCommands(), !service().stopsCommands);
  EXPECT_EQ(hasSystemFunctions(), !service().stopsSystem);
  const bool isExtension = GetParam() == 0;
  EXPECT_EQ(m_host.m_extensionsAlive, isExtension ? 0 : 1);
  EXPECT_EQ(ExtDepMgr::getInstance().getMotionExtIF() == nullptr, isExtension);
}

TEST_P(ServiceTest, DoesNotRestartWhenAServiceComesBack) {
  start();
  service().remove(*m_sut);
  forget();
  service().set(*m_sut, m_host);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_EQ(hasCommands(), !service().stopsCommands);
  EXPECT_EQ(hasSystemFunctions(), !service().stopsSystem);
  m_sut->stop();
  expectNothingLeft();
  EXPECT_EQ(m_sut->start(), 0) << "only a new start brings everything back";
  EXPECT_TRUE(hasCommands());
  EXPECT_TRUE(hasSystemFunctions());
}

INSTANTIATE_TEST_SUITE_P(All, ServiceTest, testing::Range<std::size_t>(0, SERVICES.size()));

TEST_F(MotionKavoCmpTest, TerminatesCommandsBeforeSystemFunctionsWhenTheDataLayerLeaves) {
  start();
  m_sut->removeDataLayerFactory(&m_host.dataLayer);
  // The first provider is the one of the real-time memories, the second that of the nodes.
  EXPECT_THAT(m_host.calls.of({"cmdFactory.unregisterCmd(2 ResetSignal)", "provider.unregisterType", "provider.destroyed",
                               "dataLayer.closeMemory"}),
              ElementsAre("cmdFactory.unregisterCmd(2 ResetSignal)", "provider.destroyed()",
                          "provider.unregisterType(scopes/motion)", "provider.destroyed()",
                          "dataLayer.closeMemory(signals_out)", "dataLayer.closeMemory(signals_in)"));
  EXPECT_EQ(m_host.m_extensionsAlive, 1);
}

TEST_F(MotionKavoCmpTest, TakesTheExtensionsSectionsBackWhenItLeaves) {
  m_sut->setMotionExtIF(&m_host.extension);
  ExtDepMgr::getInstance().setMotionExtIF(&m_host.ext);
  m_sut->removeMotionExtIF(&m_host.extension);
  EXPECT_EQ(ExtDepMgr::getInstance().getMotionExtIF(), nullptr) << "a stop has run";
}

TEST_F(MotionKavoCmpTest, StopsNothingWhenNoExtensionWasThere) {
  ExtDepMgr::getInstance().setMotionExtIF(&m_host.ext);
  forget();
  m_sut->removeMotionExtIF(nullptr);
  EXPECT_EQ(ExtDepMgr::getInstance().getMotionExtIF(), &m_host.ext) << "no stop has run";
  EXPECT_THAT(traces(), ElementsAre(info("removeMotionExtIF", "Remove MotionExt service dependency")));
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
}

TEST_F(MotionKavoCmpTest, StopsOnceTheExtensionHasLeftAndOnlyThen) {
  start();
  m_sut->removeMotionExtIF(&m_host.extension);
  EXPECT_EQ(m_host.calls.count("ext.destroyed"), 1);
  expectNothingLeft();
  ExtDepMgr::getInstance().setMotionExtIF(&m_host.ext);
  m_sut->removeMotionExtIF(&m_host.extension);
  EXPECT_EQ(ExtDepMgr::getInstance().getMotionExtIF(), &m_host.ext) << "nothing was left that a stop could take down";
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
}

TEST_F(MotionKavoCmpTest, UsesTheNewestOfTwoServices) {
  setServices();
  test::FakeHost other;
  m_sut->setMotionSysIF(&other.sysIf);
  m_sut->setMotionCmdIF(&other.cmdIf2);
  ASSERT_EQ(m_sut->start(), 0);
  EXPECT_EQ(m_host.sysIf.setSignal, nullptr);
  EXPECT_NE(other.sysIf.setSignal, nullptr);
  EXPECT_EQ(m_host.cmdGeneral.setSignalCmd, nullptr);
  EXPECT_NE(other.cmdGeneral.setSignalCmd, nullptr);
  EXPECT_NE(m_host.sysSync.setSignal, nullptr);
  m_sut->stop();
  EXPECT_EQ(other.sysIf.setSignal, nullptr);
  EXPECT_EQ(other.cmdGeneral.setSignalCmd, nullptr);
}

TEST_F(MotionKavoCmpTest, HandsTheTraceServiceOn) {
  test::FakeTraceSink sink;
  test::FakeTraceService service(m_host.calls, sink);
  m_sut->addBundleTrace(&service);
  EXPECT_THAT(traces(), ElementsAre(info("addBundleTrace", "Add trace service dependency.")));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(sink.summaries(), ElementsAre(StartsWith("Info debug_trace addTraceBundle: Registered trace from bundle")));
  EXPECT_EQ(DebugTrace::getTrace(), &sink);
  sink.clear();

  const test::FakeJournal journal;
  m_sut->removeBundleTrace(&service);
  EXPECT_THAT(sink.summaries(), ElementsAre(info("removeBundleTrace", "Remove trace service dependency.")));
  EXPECT_THAT(journal.summaries(), ElementsAre("090A0FFC debug_trace removeTraceBundle: Removed trace from bundle."));
  EXPECT_THAT(m_host.calls.of({"trace."}), ElementsAre("trace.registerUnit(motion.kavo)", "trace.unregisterUnit()"));
}

TEST_F(MotionKavoCmpTest, LivesOnWithoutATraceService) {
  m_sut->setBundleName("a name");
  m_host.calls.fail("trace.registerUnit", 0x80000001);
  const test::FakeJournal journal;
  m_sut->addBundleTrace(&m_host.traceService);
  EXPECT_EQ(DebugTrace::getTrace(), DebugTrace::getBufferedTrace());
  EXPECT_EQ(m_sut->init(), 0);
  EXPECT_THAT(journal.summaries(),
              ElementsAre(StartsWith("090F0FFC debug_trace addTraceBundle: Calling 'registerUnit' failed"),
                          "090A0FFC motion_kavo_cmp init: Bundlename: a name",
                          "090A0FFC motion_kavo_cmp init: Init Motion.Kavo " + VERSION_TEXT));
}

}  // namespace
}  // namespace motion::kavo::bundle
