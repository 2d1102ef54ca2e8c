// Base of the tests of the component as a whole.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "expected_commands.h"
#include "impl/bundle_if/motion_kavo_cmd.h"
#include "impl/bundle_if/motion_kavo_cmp.h"
#include "impl/bundle_if/motion_kavo_sys.h"
#include "impl_fixture.h"

namespace motion::kavo::bundle {

inline constexpr std::int32_t START_FAILED = 70001;
inline const std::string VERSION_TEXT = "3.8.14-unknown_branch-unknown_commit.0";
inline const std::string CLEAN_UP = "Error motion_kavo_cmp bundleStart: Call bundleStop as to cleanup after error";
inline const std::string FAILED = "Error motion_kavo_cmp start: Motion.Kavo failed to start - return with error code";

/// A service of the component, with its operations.
struct Service {
  std::string name;
  std::string nullText;     ///< of a null argument
  std::string missingText;  ///< of a start without it
  std::string setFunction;
  std::string removeFunction;
  void (*set)(MotionKavoCmp& sut, test::FakeHost& host);
  void (*setNull)(MotionKavoCmp& sut);
  void (*remove)(MotionKavoCmp& sut);
  bool stopsCommands;
  bool stopsSystem;
};

/// In the order in which a start asks for them.
inline const std::vector<Service> SERVICES = {
    {"MotionExt", "motionExtIF is NULL", "m_extIF is null", "setMotionExtIF", "removeMotionExtIF",
     [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setMotionExtIF(&host.extension); },
     [](MotionKavoCmp& sut) { sut.setMotionExtIF(nullptr); }, [](MotionKavoCmp& sut) { sut.removeMotionExtIF(nullptr); },
     true, true},
    {"deprecated motion.core system interface", "motionSysIF is NULL", "m_motionSysIF is null", "setMotionSysIF",
     "removeMotionSysIF", [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setMotionSysIF(&host.sysIf); },
     [](MotionKavoCmp& sut) { sut.setMotionSysIF(static_cast<const core::MotionSysIfT*>(nullptr)); },
     [](MotionKavoCmp& sut) { sut.removeMotionSysIF(static_cast<const core::MotionSysIfT*>(nullptr)); }, false, true},
    {"dataLayer factory", "dataLayerFactory is NULL", "m_datalayerFactory is null", "setDataLayerFactory",
     "removeDataLayerFactory", [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setDataLayerFactory(&host.dataLayer); },
     [](MotionKavoCmp& sut) { sut.setDataLayerFactory(nullptr); },
     [](MotionKavoCmp& sut) { sut.removeDataLayerFactory(nullptr); }, true, true},
    {"deprecated motion.core command interface", "motionCmdIF is NULL", "m_motionCmdIF is null", "setMotionCmdIF",
     "removeMotionCmdIF", [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setMotionCmdIF(&host.cmdIf); },
     [](MotionKavoCmp& sut) { sut.setMotionCmdIF(static_cast<const core::MotionCmdIfT*>(nullptr)); },
     [](MotionKavoCmp& sut) { sut.removeMotionCmdIF(static_cast<const core::MotionCmdIfT*>(nullptr)); }, true, false},
    {"motion.core command interface", "motionCmdIF is NULL", "m_motionCmdIF2 is null", "setMotionCmdIF", "removeMotionCmdIF",
     [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setMotionCmdIF(&host.cmdIf2); },
     [](MotionKavoCmp& sut) { sut.setMotionCmdIF(static_cast<const core::MotionCmdIf2T*>(nullptr)); },
     [](MotionKavoCmp& sut) { sut.removeMotionCmdIF(static_cast<const core::MotionCmdIf2T*>(nullptr)); }, true, false},
    {"motion.core system interface", "motionSysIF is NULL", "m_motionSysIF2 is null", "setMotionSysIF", "removeMotionSysIF",
     [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setMotionSysIF(&host.sysIf2); },
     [](MotionKavoCmp& sut) { sut.setMotionSysIF(static_cast<const core::MotionSysIf2T*>(nullptr)); },
     [](MotionKavoCmp& sut) { sut.removeMotionSysIF(static_cast<const core::MotionSysIf2T*>(nullptr)); }, false, true},
    {"motion.core data interface", "motionDataIF is NULL", "m_motionDataIF is null", "setMotionDataIF", "removeMotionDataIF",
     [](MotionKavoCmp& sut, test::FakeHost& host) { sut.setMotionDataIF(&host.dataIf); },
     [](MotionKavoCmp& sut) { sut.setMotionDataIF(nullptr); }, [](MotionKavoCmp& sut) { sut.removeMotionDataIF(nullptr); },
     false, true},
};

class MotionKavoCmpTest : public ImplTest {
 protected:
  MotionKavoCmpTest() { m_host.listNodes(); }
  ~MotionKavoCmpTest() override {
    m_sut->stop();
    m_sut.reset();
    expectNothingLeft();
  }

  /// Gives the component every service but one.
  void setServices(std::size_t without = SERVICES.size()) {
    for (std::size_t i = 0; i < SERVICES.size(); ++i) {
      if (i != without) {
        SERVICES[i].set(*m_sut, m_host);
      }
    }
    m_sut->setBundlePath("/a bundle");
    m_sut->setBundleName("a name");
    forget();
  }
  void start() {
    setServices();
    ASSERT_EQ(m_sut->start(), 0);
    forget();
  }
  [[nodiscard]] static std::string info(const std::string& function, const std::string& text) {
    return "Info motion_kavo_cmp " + function + ": " + text;
  }
  [[nodiscard]] static std::string error(const std::string& function, const std::string& text) {
    return "Error motion_kavo_cmp " + function + ": " + text;
  }
  /// The traces of the component's own source.
  [[nodiscard]] std::vector<std::string> ownTraces() const {
    std::vector<std::string> result;
    for (const auto& entry : m_host.traceSink.entries()) {
      if (entry.file == "motion_kavo_cmp") {
        result.push_back(entry.summary());
      }
    }
    return result;
  }

  [[nodiscard]] bool hasCommands() const {
    const bool isPublished = m_host.cmdIf.setSignalCmd != nullptr && m_host.cmdGeneral.setSignalCmd != nullptr;
    EXPECT_EQ(isPublished, m_host.cmdGeneral.setSignalCmdOpt != nullptr);
    EXPECT_EQ(isPublished, m_host.cmdKin.kinSwitchOnPathCmdOpt != nullptr);
    EXPECT_EQ(isPublished, m_host.cmdFactory.m_commands.size() == countOf({RegisteredAs::COMMAND}));
    EXPECT_EQ(isPublished,
              m_host.cmdOptionFactory.m_options.size() == countOf({RegisteredAs::OPTION, RegisteredAs::OPTION_WITH_SLOTS}));
    EXPECT_EQ(isPublished, !m_host.dataLayer.m_memories.empty());
    return isPublished;
  }
  [[nodiscard]] bool hasSystemFunctions() const {
    const bool isPublished = m_host.sysIf.setSignal != nullptr && m_host.sysSync.setSignal != nullptr;
    EXPECT_EQ(isPublished, m_host.dataLayer.m_openUsers == 2);
    return isPublished;
  }
  void expectNothingLeft() const {
    EXPECT_FALSE(hasCommands());
    EXPECT_FALSE(hasSystemFunctions());
    EXPECT_EQ(m_host.m_extensionsAlive, 0);
    EXPECT_EQ(m_host.cmdIf.resetSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdIf.waitForSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdIf.setSignalCmdOpt, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.resetSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.waitForSignalCmd, nullptr);
    EXPECT_EQ(m_host.cmdGeneral.waitForSignalResetCmd, nullptr);
    EXPECT_EQ(m_host.sysIf.resetSignal, nullptr);
    EXPECT_EQ(m_host.sysIf.getSignal, nullptr);
    EXPECT_EQ(m_host.sysSync.resetSignal, nullptr);
    EXPECT_EQ(m_host.sysSync.getSignal, nullptr);
    EXPECT_TRUE(m_host.cmdFactory.m_commands.empty());
    EXPECT_TRUE(m_host.cmdOptionFactory.m_options.empty());
    EXPECT_TRUE(m_host.objFactory.m_prototypes.empty());
    EXPECT_TRUE(m_host.dataLayer.m_memories.empty());
    EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
    EXPECT_EQ(ExtDepMgr::getInstance().getMotionExtIF(), nullptr);
    EXPECT_EQ(ExtDepMgr::getInstance().getSection(SectionID::CMD_DATA), nullptr);
  }

  std::unique_ptr<MotionKavoCmp> m_sut = std::make_unique<MotionKavoCmp>();
};

}  // namespace motion::kavo::bundle
