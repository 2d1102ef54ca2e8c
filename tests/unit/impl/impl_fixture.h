// Base of the component's tests: a pretended host whose trace sink the component uses.
#pragma once

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "impl/debug_trace.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/rt_signals.h"
#include "support/fake_host.h"

namespace motion::kavo {

class ImplTest : public testing::Test {
 protected:
  ImplTest() {
    DebugTrace::addTraceBundle(&m_host.traceService);
    forget();
  }

  ~ImplTest() override {
    expectWellFormedTraces();
    DebugTrace::removeTraceBundle(&m_host.traceService);
  }

  /// Each trace as in "Error rt_signals initialize: Already initialized".
  [[nodiscard]] std::vector<std::string> traces() const { return m_host.traceSink.summaries(); }
  /// Each trace as in "Error rt_signals: Already initialized".
  [[nodiscard]] std::vector<std::string> tracesWithoutFunction() const {
    return m_host.traceSink.summariesWithoutFunction();
  }
  /// Forgets the calls and traces so far.
  void forget() {
    expectWellFormedTraces();
    m_host.calls.clear();
    m_host.traceSink.clear();
  }

  test::FakeHost m_host;

 private:
  /// What every trace of the component has in common.
  void expectWellFormedTraces() const {
    for (const auto& entry : m_host.traceSink.entries()) {
      EXPECT_EQ(entry.classType, 1U) << entry.summary();
      EXPECT_EQ(entry.entity, std::nullopt) << entry.summary();
      EXPECT_EQ(entry.origin, "motion.kavo") << entry.summary();
      EXPECT_GT(entry.line, 0U) << entry.summary();
      EXPECT_NE(entry.format.find('%'), std::string::npos) << "a fixed text belongs into an argument: " << entry.summary();
    }
  }
};

/// With the real-time memories in place, and empty.
class SignalTest : public ImplTest {
 protected:
  SignalTest() {
    EXPECT_TRUE(rt_data::RtSignals::getInstance().initialize(m_host.dataLayer));
    forget();
  }
  ~SignalTest() override { rt_data::RtSignals::getInstance().terminate(); }

  [[nodiscard]] std::uint8_t& in(std::uint32_t id) { return bytes(SIGNALS_IN_ADDRESS).at(id); }
  [[nodiscard]] std::uint8_t& out(std::uint32_t id) { return bytes(SIGNALS_OUT_ADDRESS).at(id); }
  [[nodiscard]] int openAccesses() const {
    return m_host.dataLayer.m_memories.at(SIGNALS_IN_ADDRESS)->openAccesses +
           m_host.dataLayer.m_memories.at(SIGNALS_OUT_ADDRESS)->openAccesses;
  }
  [[nodiscard]] std::vector<std::uint8_t>& bytes(const std::string& address) {
    return m_host.dataLayer.m_memories.at(address)->bytes;
  }
};

/// Also with the host's sections known to the component.
class CommandTest : public SignalTest {
 protected:
  CommandTest() {
    ExtDepMgr::getInstance().setMotionExtIF(&m_host.ext);
    forget();
  }
  ~CommandTest() override { ExtDepMgr::getInstance().setMotionExtIF(nullptr); }

  [[nodiscard]] core::SectionValue cmdDataSection() const { return m_host.sectionMgr.valueOf("CMD_DATA"); }

  test::FakeJobDataHandler m_handler{m_host.calls};
  test::FakeJobList m_jobList{m_host.calls};
  test::FakeDia m_dia{m_host.calls};
  core::dia::CmdSourceInfo m_source{"a client", "a program", 12};
};

/// Does the work once with its first allocation failing, once with its second, and so on until none fails, and checks each
/// time: `check` is told whether an allocation failed. Returns how many times one did.
template <typename WORK, typename CHECK>
int withEachAllocationFailing(WORK work, CHECK check) {
  for (int nth = 1;; ++nth) {
    bool hasFailed = false;
    {
      const test::AllocationFailure failure(nth);
      work();
      hasFailed = failure.happened();
    }
    check(hasFailed);
    if (!hasFailed) {
      return nth - 1;
    }
  }
}

/// Calls a virtual operation by its place in the object's table, as a host does that knows only the order.
template <typename RESULT, typename... ARGUMENTS>
RESULT callSlot(void* object, std::size_t slot, ARGUMENTS... arguments) {
  void* const operation = (*static_cast<void***>(object))[slot];
  return reinterpret_cast<RESULT (*)(void*, ARGUMENTS...)>(operation)(object, arguments...);
}

}  // namespace motion::kavo
