// The life of a component: order of calls, results and texts of the steps.
#include "host/framework/component_lifecycle.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <system_error>

#include "tests/host/framework/lifecycle_fixture.h"
#include "tests/host/framework/no_threads.h"

namespace motion::host::framework {
namespace {

using test::AMPLE;
using test::ComponentLifecycleTest;
using test::expectOk;
using test::Lines;
using testing::ElementsAre;

TEST_F(ComponentLifecycleTest, takesAComponentThroughItsWholeLife) {
  Owner sut = load("well_behaved");
  EXPECT_EQ(sut->state(), LifecycleState::LOADED);
  m_record.clear();
  expectOk(sut->setServices(allServices(), "/opt/bundle", "robot cell"));
  EXPECT_EQ(sut->state(), LifecycleState::SERVICES_SET);
  expectOk(sut->init());
  EXPECT_EQ(sut->state(), LifecycleState::INITIALISED);
  expectOk(sut->start(AMPLE));
  EXPECT_EQ(sut->state(), LifecycleState::STARTED);
  expectOk(sut->stop());
  EXPECT_EQ(sut->state(), LifecycleState::STOPPED);
  expectOk(sut->deinit());
  EXPECT_EQ(sut->state(), LifecycleState::DEINITIALISED);
  expectOk(sut->removeServices());
  EXPECT_EQ(sut->state(), LifecycleState::SERVICES_REMOVED);
  EXPECT_FALSE(sut->isLost());

  Lines expected = whole();
  EXPECT_EQ(m_record.lines(), expected);
  sut.reset();
  expected.emplace_back("destroy");
  EXPECT_EQ(m_record.lines(), expected);
}

TEST_F(ComponentLifecycleTest, takesTwoLivesOneAfterTheOther) {
  for (int life = 0; life < 2; ++life) {
    m_record.clear();
    Owner sut = load("well_behaved");
    expectOk(sut->setServices(allServices(), "/opt/bundle", "robot cell"));
    expectOk(sut->init());
    expectOk(sut->start());
    sut.reset();
    Lines expected = whole();
    expected.insert(expected.begin(), "create");
    expected.emplace_back("destroy");
    EXPECT_EQ(m_record.lines(), expected) << "life " << life;
  }
}

TEST_F(ComponentLifecycleTest, leavesOutServicesThatAreNull) {
  Owner sut = load("well_behaved");
  Services services;
  services.motionSysIF = &m_motionSysIF;
  m_record.clear();
  expectOk(sut->setServices(services, "", "n"));
  EXPECT_THAT(m_record.lines(),
              ElementsAre(fmt::format("setMotionSysIF {}", fmt::ptr(&m_motionSysIF)), "setBundlePath ", "setBundleName n"));
  m_record.clear();
  expectOk(sut->removeServices());
  EXPECT_THAT(m_record.lines(),
              ElementsAre("clrBundleName", "clrBundlePath", fmt::format("removeMotionSysIF {}", fmt::ptr(&m_motionSysIF))));
}

TEST_F(ComponentLifecycleTest, startsAgainAfterAStop) {
  Owner sut = loadUpTo("well_behaved", LifecycleState::STOPPED);
  expectOk(sut->start(AMPLE));
  expectOk(sut->stop());
  EXPECT_THAT(m_record.lines(), ElementsAre("start", "stop"));
}

TEST_F(ComponentLifecycleTest, takesEverythingBackWhenAServiceIsThrownOut) {
  Owner sut = load("services_throw");
  Services services;
  services.trace = &m_trace;
  services.motionDataIF = &m_motionDataIF;
  m_record.clear();
  expectThrew(sut->setServices(services, "path", "name"), "services_throw",
              "setMotionDataIF threw: data functions unwanted");
  EXPECT_EQ(sut->state(), LifecycleState::LOADED);
  EXPECT_THAT(m_record.lines(), ElementsAre(fmt::format("addBundleTrace {}", fmt::ptr(&m_trace)),
                                            fmt::format("setMotionDataIF {}", fmt::ptr(&m_motionDataIF)),
                                            fmt::format("removeMotionDataIF {}", fmt::ptr(&m_motionDataIF)),
                                            fmt::format("removeBundleTrace {}", fmt::ptr(&m_trace))));

  services.motionDataIF = nullptr;
  expectOk(sut->setServices(services, "path", "name"));
}

TEST_F(ComponentLifecycleTest, removesTheOtherServicesAfterOneThatThrows) {
  Owner sut = load("services_throw");
  Services services;
  services.trace = &m_trace;
  services.motionExtIF = &m_motionExtIF;
  services.dataLayerFactory = &m_dataLayerFactory;
  expectOk(sut->setServices(services, "path", "name"));
  m_record.clear();
  expectThrew(sut->removeServices(), "services_throw", "removeDataLayerFactory threw: data layer still needed");
  EXPECT_EQ(sut->state(), LifecycleState::SERVICES_REMOVED);
  EXPECT_THAT(m_record.lines(), ElementsAre("clrBundleName", "clrBundlePath",
                                            fmt::format("removeDataLayerFactory {}", fmt::ptr(&m_dataLayerFactory)),
                                            fmt::format("removeMotionExtIF {}", fmt::ptr(&m_motionExtIF)),
                                            fmt::format("removeBundleTrace {}", fmt::ptr(&m_trace))));
}

TEST_F(ComponentLifecycleTest, reportsAnInitThatFails) {
  Owner sut = loadUpTo("init_fails", LifecycleState::SERVICES_SET);
  expectRefused(sut->init(), "init_fails", "init", 4711);
  EXPECT_EQ(sut->state(), LifecycleState::SERVICES_SET);
  expectOk(sut->removeServices());
}

TEST_F(ComponentLifecycleTest, reportsAnInitThatThrows) {
  Owner sut = loadUpTo("init_throws", LifecycleState::SERVICES_SET);
  expectThrew(sut->init(), "init_throws", "init threw: init went wrong");
  EXPECT_EQ(sut->state(), LifecycleState::SERVICES_SET);
}

TEST_F(ComponentLifecycleTest, reportsAStartThatFailsAndMayTryAgain) {
  Owner sut = loadUpTo("start_fails", LifecycleState::INITIALISED);
  expectRefused(sut->start(AMPLE), "start_fails", "start", 70001);
  EXPECT_EQ(sut->state(), LifecycleState::INITIALISED);
  expectRefused(sut->start(AMPLE), "start_fails", "start", 70001);
  expectOk(sut->deinit());
  EXPECT_THAT(m_record.lines(), ElementsAre("start", "start", "deinit"));
}

TEST_F(ComponentLifecycleTest, reportsAStartThatThrows) {
  Owner sut = loadUpTo("start_throws", LifecycleState::INITIALISED);
  expectThrew(sut->start(AMPLE), "start_throws", "start threw: start went wrong");
  EXPECT_EQ(sut->state(), LifecycleState::INITIALISED);
}

TEST_F(ComponentLifecycleTest, reportsAStartThatThrowsANumber) {
  Owner sut = loadUpTo("start_throws_int", LifecycleState::INITIALISED);
  expectThrew(sut->start(AMPLE), "start_throws_int", "start threw: an exception of type 'int'");
  EXPECT_EQ(sut->state(), LifecycleState::INITIALISED);
}

TEST_F(ComponentLifecycleTest, countsAStopThatFailsAsTaken) {
  Owner sut = loadUpTo("stop_fails", LifecycleState::STARTED);
  expectRefused(sut->stop(), "stop_fails", "stop", -3);
  EXPECT_EQ(sut->state(), LifecycleState::STOPPED);
  expectOk(sut->deinit());
}

TEST_F(ComponentLifecycleTest, countsAStopThatThrowsAsTaken) {
  Owner sut = loadUpTo("stop_throws", LifecycleState::STARTED);
  expectThrew(sut->stop(), "stop_throws", "stop threw: stop went wrong");
  EXPECT_EQ(sut->state(), LifecycleState::STOPPED);
}

TEST_F(ComponentLifecycleTest, countsADeinitThatThrowsAsTaken) {
  Owner sut = loadUpTo("deinit_throws", LifecycleState::STOPPED);
  expectThrew(sut->deinit(), "deinit_throws", "deinit threw: deinit went wrong");
  EXPECT_EQ(sut->state(), LifecycleState::DEINITIALISED);
  expectOk(sut->removeServices());
}

TEST_F(ComponentLifecycleTest, destructorGoesOnAfterAFailureAndSaysSo) {
  Owner sut = loadUpTo("stop_throws", LifecycleState::STARTED);
  testing::internal::CaptureStderr();
  sut.reset();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            from("stop_throws",
                 "stop threw: stop went wrong; an exception must not leave a component, so the bundle needs a "
                 "repair\n"));
  EXPECT_THAT(m_record.lines(), ElementsAre("stop", "deinit", "clrBundleName", "clrBundlePath", "destroy"));
}

TEST_F(ComponentLifecycleTest, startsLaterWhenThereWasNoThread) {
  Owner sut = loadUpTo("well_behaved", LifecycleState::INITIALISED);
  {
    const test::NoThreads noThreads;
    EXPECT_THROW(static_cast<void>(sut->start(AMPLE)), std::system_error);
  }
  EXPECT_EQ(sut->state(), LifecycleState::INITIALISED);
  expectOk(sut->start(AMPLE));
  EXPECT_THAT(m_record.lines(), ElementsAre("start"));
}

}  // namespace
}  // namespace motion::host::framework
