// What the tests of a component's life share: services to hand over, bundles brought to a state, and the texts of failures.
#pragma once

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/framework/component_lifecycle.h"
#include "tests/host/framework/call_record.h"

namespace motion::host::framework::test {

using Lines = std::vector<std::string>;

/// A limit that only a call that hangs exceeds.
inline constexpr auto AMPLE = std::chrono::seconds(60);

/// Strict: the framework itself asks nothing of the services that it passes on.
class TraceService : public common::log::trace::IRegistrationRealTime3 {
 public:
  using Sink = common::log::trace::ILogRealTime3;
  using Enabling = common::log::trace::EnablingState;
  MOCK_METHOD(std::int32_t, registerUnit, (Sink**, const char*, const EnablingCallback&), (override));
  MOCK_METHOD(std::int32_t, getEnablingState, (const Sink*, Enabling&), (const, override));
  MOCK_METHOD(std::int32_t, unregisterUnit, (Sink**), (override));
};

class DataLayerFactory : public comm::datalayer::IDataLayerFactory {
 public:
  using Result = comm::datalayer::DlResult;
  using Owner = std::shared_ptr<comm::datalayer::IMemoryOwner>;
  using User = std::shared_ptr<comm::datalayer::IMemoryUser>;
  MOCK_METHOD(comm::datalayer::IClient*, createClient, (const std::string&), (override));
  MOCK_METHOD(comm::datalayer::IProvider*, createProvider, (const std::string&), (override));
  MOCK_METHOD(Result, createMemorySync,
              (Owner&, const std::string&, comm::datalayer::IProvider*, std::uint32_t, comm::datalayer::MemoryType),
              (override));
  MOCK_METHOD(Result, deleteMemorySync, (const Owner&), (override));
  MOCK_METHOD(Result, openMemory, (User&, const std::string&), (override));
  MOCK_METHOD(Result, closeMemory, (const User&), (override));
};

class ComponentLifecycleTest : public testing::Test {
 protected:
  using Owner = std::unique_ptr<ComponentLifecycle>;

  ComponentLifecycleTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

  [[nodiscard]] static Owner load(const std::string& plugin) {
    LoadResult result = loadBundle(pluginDirectory(plugin));
    return std::make_unique<ComponentLifecycle>(std::move(result.bundle).value());
  }

  [[nodiscard]] Services allServices() {
    return {.trace = &m_trace,
            .motionExtIF = &m_motionExtIF,
            .dataLayerFactory = &m_dataLayerFactory,
            .motionCmdIF = &m_motionCmdIF,
            .motionSysIF = &m_motionSysIF,
            .motionCmdIF2 = &m_motionCmdIF2,
            .motionSysIF2 = &m_motionSysIF2,
            .motionDataIF = &m_motionDataIF};
  }

  /// The bundle after every step up to and including the one that leads to `state`; later records start there.
  [[nodiscard]] Owner loadUpTo(const std::string& plugin, LifecycleState state) {
    Owner lifecycle = load(plugin);
    if (state >= LifecycleState::SERVICES_SET) {
      EXPECT_TRUE(lifecycle->setServices({}, "", "").isOk());
    }
    if (state >= LifecycleState::INITIALISED) {
      EXPECT_TRUE(lifecycle->init().isOk());
    }
    if (state >= LifecycleState::STARTED) {
      EXPECT_TRUE(lifecycle->start(AMPLE).isOk());
    }
    if (state >= LifecycleState::STOPPED) {
      EXPECT_TRUE(lifecycle->stop().isOk());
    }
    if (state >= LifecycleState::DEINITIALISED) {
      EXPECT_TRUE(lifecycle->deinit().isOk());
    }
    if (state >= LifecycleState::SERVICES_REMOVED) {
      EXPECT_TRUE(lifecycle->removeServices().isOk());
    }
    EXPECT_EQ(lifecycle->state(), state);
    m_record.clear();
    return lifecycle;
  }

  [[nodiscard]] static std::string from(const std::string& plugin, const std::string& rest) {
    return "bundle '" + pluginDirectory(plugin).string() + "': " + rest;
  }

  static void expectThrew(const StepResult& result, const std::string& plugin, const std::string& what) {
    EXPECT_EQ(result.outcome, StepOutcome::THREW);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.text, from(plugin, what + "; an exception must not leave a component, so the bundle needs a repair"));
  }

  static void expectRefused(const StepResult& result, const std::string& plugin, const std::string& step,
                            std::int32_t code) {
    EXPECT_EQ(result.outcome, StepOutcome::REFUSED);
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.text,
              from(plugin, fmt::format("{} failed with code {}; look in the component's traces for the cause", step, code)));
  }

  /// The lines of a life from its first service on.
  [[nodiscard]] Lines whole() {
    const auto line = [](const char* operation, const void* service) {
      return fmt::format("{} {}", operation, fmt::ptr(service));
    };
    return {line("addBundleTrace", &m_trace),
            line("setMotionExtIF", &m_motionExtIF),
            line("setDataLayerFactory", &m_dataLayerFactory),
            line("setMotionCmdIF", &m_motionCmdIF),
            line("setMotionSysIF", &m_motionSysIF),
            line("setMotionCmdIF2", &m_motionCmdIF2),
            line("setMotionSysIF2", &m_motionSysIF2),
            line("setMotionDataIF", &m_motionDataIF),
            "setBundlePath /opt/bundle",
            "setBundleName robot cell",
            "init",
            "start",
            "stop",
            "deinit",
            "clrBundleName",
            "clrBundlePath",
            line("removeMotionDataIF", &m_motionDataIF),
            line("removeMotionSysIF2", &m_motionSysIF2),
            line("removeMotionCmdIF2", &m_motionCmdIF2),
            line("removeMotionSysIF", &m_motionSysIF),
            line("removeMotionCmdIF", &m_motionCmdIF),
            line("removeDataLayerFactory", &m_dataLayerFactory),
            line("removeMotionExtIF", &m_motionExtIF),
            line("removeBundleTrace", &m_trace)};
  }

  CallRecord m_record;
  testing::StrictMock<TraceService> m_trace;
  testing::StrictMock<DataLayerFactory> m_dataLayerFactory;
  core::MotionExtensionIfT m_motionExtIF;
  core::MotionCmdIfT m_motionCmdIF;
  core::MotionSysIfT m_motionSysIF;
  core::MotionCmdIf2T m_motionCmdIF2;
  core::MotionSysIf2T m_motionSysIF2;
  core::MotionDataIfT m_motionDataIF;
};

inline void expectOk(const StepResult& result) {
  EXPECT_TRUE(result.isOk());
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.text, "");
}

}  // namespace motion::host::framework::test
