// The signal node between a client and the system functions that it calls.
#pragma once

#include <fmt/format.h>

#include "impl/provider/node_signal.h"
#include "provider_fixture.h"

namespace motion::kavo {

class NodeSignalTest : public ProviderTest {
 protected:
  inline static const std::string FOLDER_PREFIX = "motion/state/functions/kavo/signals/";

  NodeSignalTest() {
    s_calls.clear();
    s_result = core::FctResult::Okay;
    s_value = false;
    m_host.sysIf.context = &m_host;
    m_host.sysIf.getSignal = [](void* context, unsigned int signalId, bool& value) {
      note("getSignal", context, signalId);
      value = s_value;
      return s_result;
    };
    m_host.sysIf.setSignal = [](void* context, unsigned int signalId) {
      note("setSignal", context, signalId);
      return s_result;
    };
    m_host.sysIf.resetSignal = [](void* context, unsigned int signalId) {
      note("resetSignal", context, signalId);
      return s_result;
    };
  }

  /// The answer to a request for the signal at the end of that address.
  void read(const Answers& answers, const std::string& signal) {
    m_sut.onRead(FOLDER_PREFIX + signal, nullptr, answers.callback());
  }
  void write(const Answers& answers, const std::string& signal, const comm::datalayer::Variant& data) {
    m_sut.onWrite(FOLDER_PREFIX + signal, &data, answers.callback());
  }

  /// What the system functions were called with, as in "setSignal(null, 5)".
  inline static std::vector<std::string> s_calls;
  /// What they answer.
  inline static core::FctResult s_result = core::FctResult::Okay;
  inline static bool s_value = false;

  std::unique_ptr<ProviderMgr> m_manager = makeManager();
  NodeSignal m_sut{*m_manager};

 private:
  static void note(const char* function, const void* context, unsigned int signalId) {
    const test::AllocationPause pause;
    s_calls.push_back(fmt::format("{}({}, {})", function, context == nullptr ? "null" : "a context", signalId));
  }
};

}  // namespace motion::kavo
