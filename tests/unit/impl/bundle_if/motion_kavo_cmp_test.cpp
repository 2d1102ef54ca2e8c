// The life of the component: init, start, stop, deinit.
#include "impl/bundle_if/motion_kavo_cmp.h"

#include <stdexcept>

#include "cmp_fixture.h"

namespace motion::kavo::bundle {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(MotionKavoCmpTest, TellsNameAndVersionAtInit) {
  auto& sut = *m_sut;
  sut.setBundleName("a name");
  EXPECT_EQ(sut.init(), 0);
  EXPECT_THAT(traces(), ElementsAre(info("init", "Bundlename: a name"), info("init", "Init Motion.Kavo " + VERSION_TEXT)));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Bundlename: %s");
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "Init Motion.Kavo %s");
}

TEST_F(MotionKavoCmpTest, TracesItsEnd) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.deinit(), 0);
  EXPECT_THAT(traces(), ElementsAre(info("deinit", "Motion.Kavo deinit")));
}

TEST_F(MotionKavoCmpTest, IsHarmlessToStopBeforeItWasStarted) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.stop(), 0);
  EXPECT_EQ(sut.stop(), 0);
  EXPECT_THAT(traces(), ElementsAre(info("stop", "Motion.Kavo stopped"), info("stop", "Motion.Kavo stopped")));
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(MotionKavoCmpTest, BringsEverythingUp) {
  auto& sut = *m_sut;
  setServices();
  EXPECT_EQ(sut.start(), 0);
  EXPECT_THAT(ownTraces(),
              ElementsAre(info("start", "Bundlename: a name"), info("start", "Start Motion.Kavo " + VERSION_TEXT),
                          info("start", "Motion.Kavo started successfully")));
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "Start Motion.Kavo %s");
  EXPECT_EQ(traces().back(), info("start", "Motion.Kavo started successfully"));
  EXPECT_TRUE(hasCommands());
  EXPECT_TRUE(hasSystemFunctions());
  EXPECT_EQ(m_host.m_extensionsAlive, 1);
  EXPECT_NE(ExtDepMgr::getInstance().getMotionExtIF(), nullptr);
  EXPECT_EQ(ExtDepMgr::getInstance().getSection(SectionID::CMD_DATA), m_host.sectionMgr.addressOf("CMD_DATA"));
}

TEST_F(MotionKavoCmpTest, BringsUpExtensionThenCommandsThenSystemFunctions) {
  setServices();
  ASSERT_EQ(m_sut->start(), 0);
  const auto calls = m_host.calls.of({"extension.", "sectionMgr.getSection(OBJ_DATA",
                                      "dataLayer.createProvider(inproc:///tmp/"
                                      "datalayer/backend)",
                                      "cmdFactory.registerCmd(1 WaitForSignal)", "cmdFactory.registerCmd(2 ResetSignal)",
                                      "dataLayer.openMemory", "provider.registerNode", "provider.start"});
  EXPECT_THAT(calls, ElementsAre("extension.createExtIfObj(a name)", "sectionMgr.getSection(OBJ_DATA)",
                                 "dataLayer.createProvider(inproc:///tmp/datalayer/backend)", "provider.start()",
                                 "cmdFactory.registerCmd(1 WaitForSignal)", "cmdFactory.registerCmd(2 ResetSignal)",
                                 "dataLayer.openMemory(motion/state/functions/kavo/rt-data/signals_out)",
                                 "dataLayer.openMemory(motion/state/functions/kavo/rt-data/signals_in)",
                                 "dataLayer.createProvider(inproc:///tmp/datalayer/backend)",
                                 "provider.registerNode(motion/state/functions/kavo/signals)",
                                 "provider.registerNode(motion/state/functions/kavo/signals/*)", "provider.start()"));
}

TEST_F(MotionKavoCmpTest, DescribesItselfToTheHost) {
  start();
  const auto& version = m_host.m_version;
  EXPECT_EQ(m_host.m_extensionContext, &m_host);
  EXPECT_EQ(version.componentName, "a name");
  EXPECT_EQ(version.applicationName, "app.motion");
  EXPECT_EQ(version.major, 3U);
  EXPECT_EQ(version.minor, 8U);
  EXPECT_EQ(version.patch, 14U);
  EXPECT_EQ(version.build, 0U);
  EXPECT_EQ(version.branch, "unknown_branch");
  EXPECT_EQ(version.versionText, VERSION_TEXT);
  EXPECT_EQ(version.commit, "unknown_commit");
  EXPECT_THAT(version.additional, IsEmpty());
}

class SchemaDirTest : public MotionKavoCmpTest, public testing::WithParamInterface<std::pair<std::string, std::string>> {};

TEST_P(SchemaDirTest, AppendsTheSchemaDirectoryToThePath) {
  setServices();
  m_sut->setBundlePath(GetParam().first.c_str());
  ASSERT_EQ(m_sut->start(), 0);
  EXPECT_EQ(m_host.cmdFactory.m_commands.at(EXPECTED_ROWS[0][0].id).schemaPath,
            GetParam().second + EXPECTED_ROWS[0][0].schemaFile);
}

INSTANTIATE_TEST_SUITE_P(All, SchemaDirTest,
                         testing::Values(std::pair("/a bundle", "/a bundle/bfbs/"), std::pair("", "/bfbs/"),
                                         std::pair("relative/", "relative//bfbs/")));

TEST_F(MotionKavoCmpTest, KeepsItsPathAndNameWhenGivenNone) {
  auto& sut = *m_sut;
  setServices();
  sut.setBundlePath(nullptr);
  sut.setBundleName(nullptr);
  EXPECT_THAT(traces(),
              ElementsAre(error("setBundlePath", "bundlePath is NULL"), error("setBundleName", "bundleName is NULL")));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  ASSERT_EQ(sut.start(), 0);
  EXPECT_EQ(m_host.m_version.componentName, "a name");
  EXPECT_EQ(m_host.cmdFactory.m_commands.at(EXPECTED_ROWS[0][0].id).schemaPath, "/a bundle/bfbs/cmdWaitForSignal.bfbs");
}

TEST_F(MotionKavoCmpTest, ForgetsItsPathAndName) {
  auto& sut = *m_sut;
  setServices();
  sut.clrBundlePath();
  sut.clrBundleName();
  EXPECT_THAT(traces(), IsEmpty());
  ASSERT_EQ(sut.start(), 0);
  EXPECT_EQ(m_host.m_version.componentName, "");
  EXPECT_EQ(m_host.cmdFactory.m_commands.at(EXPECTED_ROWS[0][0].id).schemaPath, "/bfbs/cmdWaitForSignal.bfbs");
}

TEST_F(MotionKavoCmpTest, KeepsItsPathAndNameWithoutMemoryForOthers) {
  const std::string path = "/a path that does not fit into the string object itself";
  const std::string name = "a name that does not fit into the string object itself";
  setServices();
  ASSERT_TRUE(test::failsDuring(1, [&] { m_sut->setBundlePath(path.c_str()); }));
  ASSERT_TRUE(test::failsDuring(1, [&] { m_sut->setBundleName(name.c_str()); }));
  EXPECT_THAT(traces(), ElementsAre(error("setBundlePath", "no memory for '" + path + "'"),
                                    error("setBundleName", "no memory for '" + name + "'")));
  ASSERT_EQ(m_sut->start(), 0);
  EXPECT_EQ(m_host.m_version.componentName, "a name");
  EXPECT_EQ(m_host.cmdFactory.m_commands.at(EXPECTED_ROWS[0][0].id).schemaPath, "/a bundle/bfbs/cmdWaitForSignal.bfbs");
}

TEST_F(MotionKavoCmpTest, TakesItsPathAndNameSilently) {
  m_sut->setBundlePath("/a bundle");
  m_sut->setBundleName("a name");
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(MotionKavoCmpTest, ForgetsTheSectionsBetweenTheFunctionsAndTheExtension) {
  start();
  int destroyed = 0;
  const auto closing =
      m_host.calls.onCall("dataLayer.closeMemory", [] { EXPECT_NE(ExtDepMgr::getInstance().getMotionExtIF(), nullptr); });
  const auto destroying = m_host.calls.onCall("ext.destroyed", [&destroyed] {
    ++destroyed;
    EXPECT_EQ(ExtDepMgr::getInstance().getMotionExtIF(), nullptr);
    EXPECT_EQ(ExtDepMgr::getInstance().getSection(SectionID::CMD_DATA), nullptr);
  });
  EXPECT_EQ(m_sut->stop(), 0);
  EXPECT_EQ(m_host.calls.count("dataLayer.closeMemory"), 2);
  EXPECT_EQ(destroyed, 1);
}

TEST_F(MotionKavoCmpTest, TakesEverythingDownWhenStartedTwice) {
  start();
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_THAT(traces(),
              testing::IsSupersetOf({std::string("Error rt_signals initialize: Already initialized"),
                                     error("bundleStart", "MotionKavoCmd::initialize() failed"), CLEAN_UP, FAILED}));
  EXPECT_EQ(m_host.calls.count("extension.createExtIfObj"), 1);
  EXPECT_EQ(m_host.calls.count("ext.destroyed"), 2) << "the extension interface of each start";
  expectNothingLeft();
  m_host.jobDataIDMgr.m_names.clear();
  EXPECT_EQ(m_sut->start(), 0) << "a later start begins from a clean state";
}

TEST_F(MotionKavoCmpTest, TakesEverythingDownInOrder) {
  start();
  EXPECT_EQ(m_sut->stop(), 0);
  EXPECT_EQ(traces().back(), info("stop", "Motion.Kavo stopped"));
  EXPECT_THAT(m_host.calls.of({"cmdFactory.unregisterCmd(1 WaitForSignal)", "cmdFactory.unregisterCmd(2 ResetSignal)",
                               "dataLayer.deleteMemorySync", "dataLayer.closeMemory", "ext.destroyed"}),
              ElementsAre("cmdFactory.unregisterCmd(1 WaitForSignal)", "cmdFactory.unregisterCmd(2 ResetSignal)",
                          "dataLayer.deleteMemorySync(signals_out)", "dataLayer.deleteMemorySync(signals_in)",
                          "dataLayer.closeMemory(signals_out)", "dataLayer.closeMemory(signals_in)", "ext.destroyed()"));
  expectNothingLeft();
}

TEST_F(MotionKavoCmpTest, LeavesNothingAfterTwoLives) {
  setServices();
  for (int life = 0; life < 2; ++life) {
    EXPECT_EQ(m_sut->init(), 0);
    EXPECT_EQ(m_sut->start(), 0);
    EXPECT_TRUE(hasCommands());
    EXPECT_TRUE(hasSystemFunctions());
    EXPECT_EQ(m_sut->stop(), 0);
    EXPECT_EQ(m_sut->deinit(), 0);
    expectNothingLeft();
    m_host.jobDataIDMgr.m_names.clear();
  }
}

class MissingServiceTest : public MotionKavoCmpTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(MissingServiceTest, FailsToStartAndLeavesNothing) {
  setServices(GetParam());
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_THAT(traces(), ElementsAre(info("start", "Bundlename: a name"), info("start", "Start Motion.Kavo " + VERSION_TEXT),
                                    error("bundleStart", SERVICES[GetParam()].missingText), CLEAN_UP, FAILED));
  EXPECT_EQ(m_host.traceSink.entries()[2].format, "%s");
  expectNothingLeft();
  const bool isExtensionMade = GetParam() > 0;
  EXPECT_EQ(m_host.calls.count("extension.createExtIfObj"), isExtensionMade ? 1 : 0);
  EXPECT_EQ(m_host.calls.count("sectionMgr.getSection"), isExtensionMade ? 7 : 0) << "the sections are looked up before";
  EXPECT_EQ(m_host.calls.count("ext.destroyed"), isExtensionMade ? 1 : 0);

  SERVICES[GetParam()].set(*m_sut, m_host);
  EXPECT_EQ(m_sut->start(), 0) << "a later start begins from a clean state";
}

TEST_P(MissingServiceTest, AsksForItBeforeAllThatFollow) {
  for (std::size_t i = 0; i < GetParam(); ++i) {
    SERVICES[i].set(*m_sut, m_host);
  }
  forget();
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_EQ(ownTraces().at(2), error("bundleStart", SERVICES[GetParam()].missingText));
}

INSTANTIATE_TEST_SUITE_P(All, MissingServiceTest, testing::Range<std::size_t>(0, SERVICES.size()));

struct ExtensionCase {
  std::uint32_t result;
  bool isMade;
  std::string text;
};

class ExtensionFailureTest : public MotionKavoCmpTest, public testing::WithParamInterface<ExtensionCase> {};

TEST_P(ExtensionFailureTest, FailsToStart) {
  setServices();
  m_host.m_extensionResult = static_cast<core::FctResult>(GetParam().result);
  m_host.m_makesExtension = GetParam().isMade;
  const auto destroying = m_host.calls.onCall("ext.destroyed", [this] {
    EXPECT_THAT(traces(), testing::Not(Contains(CLEAN_UP))) << "what was made goes before the common clean-up";
    EXPECT_EQ(traces().back(), error("bundleStart", GetParam().text));
  });
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_THAT(traces(), ElementsAre(info("start", "Bundlename: a name"), info("start", "Start Motion.Kavo " + VERSION_TEXT),
                                    error("bundleStart", GetParam().text), CLEAN_UP, FAILED));
  EXPECT_EQ(m_host.traceSink.entries()[2].format, "Can't create ExtIfObj! Result: 0x0%x");
  EXPECT_EQ(m_host.calls.count("ext.destroyed"), GetParam().isMade ? 1 : 0);
  EXPECT_EQ(m_host.calls.count("sectionMgr.getSection"), 0);
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(All, ExtensionFailureTest,
                         testing::Values(ExtensionCase{0xF0100006, false, "Can't create ExtIfObj! Result: 0x0f0100006"},
                                         ExtensionCase{0xF0100006, true, "Can't create ExtIfObj! Result: 0x0f0100006"},
                                         ExtensionCase{0, true, "Can't create ExtIfObj! Result: 0x00"},
                                         ExtensionCase{0x00100001, true, "Can't create ExtIfObj! Result: 0x0100001"},
                                         ExtensionCase{0x00100000, false, "Can't create ExtIfObj! Result: 0x0100000"}));

TEST_F(MotionKavoCmpTest, DeletesAnExtensionThatWasMadeBeforeAnException) {
  setServices();
  m_host.extension.createExtIfObj = [](void* context, const core::ComponentVersionAdd* /*version*/,
                                       core::IMotionExt** ext) -> core::FctResult {
    auto& host = *static_cast<test::FakeHost*>(context);
    *ext = new test::FakeMotionExt(host.calls, host.parts);
    throw std::runtime_error("planned failure");
  };
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_THAT(ownTraces(), Contains(error("bundleStart", "Can't create ExtIfObj! Result: 0x0f0100006")));
  EXPECT_EQ(m_host.calls.count("ext.destroyed"), 1);
  expectNothingLeft();
}

TEST_F(MotionKavoCmpTest, FailsToStartWithoutItsCommands) {
  setServices();
  m_host.calls.fail("cmdFactory.registerCmd", 0xF0110020, 7);
  EXPECT_EQ(m_sut->start(), START_FAILED);
  EXPECT_THAT(ownTraces(),
              ElementsAre(info("start", "Bundlename: a name"), info("start", "Start Motion.Kavo " + VERSION_TEXT),
                          error("bundleStart", "MotionKavoCmd::initialize() failed"), CLEAN_UP, FAILED));
  EXPECT_THAT(traces(), Contains("Error motion_kavo_cmd initialize: Registration of ResetSignal failed"));
  EXPECT_EQ(m_host.calls.count("dataLayer.openMemory"), 0) << "the system functions come later";
  expectNothingLeft();
}

TEST_F(MotionKavoCmpTest, StartsWithoutSections) {
  setServices();
  m_host.parts.sectionMgr = nullptr;
  EXPECT_EQ(m_sut->start(), 0) << "a missing section shows when it is needed";
  EXPECT_EQ(ExtDepMgr::getInstance().getSection(SectionID::CMD_DATA), nullptr);
}

TEST_F(MotionKavoCmpTest, LeavesNothingAfterAStartThatRunsOutOfMemory) {
  setServices();
  std::int32_t result = 0;
  int systemFailures = 0;
  const int failures = withEachAllocationFailing(
      [&] { result = m_sut->start(); },
      [&](bool hasFailed) {
        EXPECT_TRUE(result == START_FAILED || result == 0);
        EXPECT_TRUE(hasFailed || result == 0);
        const auto own = ownTraces();
        if (result == START_FAILED) {
          expectNothingLeft();
          ASSERT_GE(own.size(), 2U);
          EXPECT_EQ(own[own.size() - 2], CLEAN_UP);
          EXPECT_EQ(own[own.size() - 1], FAILED);
        }
        if (own.size() > 2 && own[2] == error("bundleStart", "MotionKavoSys::initialize() failed")) {
          ++systemFailures;
          EXPECT_THAT(own, ElementsAre(testing::_, testing::_, testing::_, CLEAN_UP, FAILED));
          EXPECT_EQ(m_host.calls.count("objFactory.unregisterObj"), 2 * static_cast<int>(EXPECTED_ROWS.size()))
              << "once for the system functions, once in the clean-up";
        }
        m_sut->stop();
        expectNothingLeft();
        m_host.jobDataIDMgr.m_names.clear();
        forget();
      });
  EXPECT_GT(failures, 20);
  EXPECT_GT(systemFailures, 0) << "one of these allocations is that of the signal store";
}

TEST_F(MotionKavoCmpTest, LeavesNothingAfterAnExceptionOfTheHost) {
  setServices();
  for (const char* operation : {"sectionMgr.getSection", "dataLayer.createProvider", "ext.getJobDataIDMgr",
                                "objFactory.registerObj", "cmdFactory.registerCmd"}) {
    m_host.calls.fail(operation, test::FakeCalls::THROW, 1);
    const auto result = m_sut->start();
    EXPECT_TRUE(result == START_FAILED || operation == std::string("sectionMgr.getSection")) << operation;
    m_host.calls.failNothing();
    EXPECT_EQ(m_sut->stop(), 0);
    expectNothingLeft();
  }
}

TEST_F(MotionKavoCmpTest, DeletesOnlyItsExtensionWhenDestroyedWithoutAStop) {
  start();
  auto next = std::make_unique<MotionKavoCmp>();
  m_sut.swap(next);
  next.reset();
  EXPECT_THAT(m_host.calls.all(), ElementsAre("ext.destroyed()"));
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_TRUE(hasCommands());
  EXPECT_TRUE(hasSystemFunctions());

  MotionKavoCmd::terminate(&m_host.ext);
  MotionKavoSys::terminate();
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
}

TEST(CreateMotionKavoCmpTest, MakesAComponent) {
  const std::unique_ptr<core::framework::IMotionComponent> sut(createMotionKavoCmp());
  EXPECT_NE(dynamic_cast<MotionKavoCmp*>(sut.get()), nullptr);
}

TEST(CreateMotionKavoCmpTest, MakesNoComponentWithoutMemory) {
  core::framework::IMotionComponent* sut = nullptr;
  const int failures = withEachAllocationFailing([&] { sut = createMotionKavoCmp(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(sut == nullptr, hasFailed);
                                                   delete sut;
                                                 });
  EXPECT_EQ(failures, 1);
}

}  // namespace
}  // namespace motion::kavo::bundle
