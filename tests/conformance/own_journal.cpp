// The journal entries of the process of a check, and the component's own sink that writes them.
#include "conformance/own_journal.h"

#include <fmt/format.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "common/log/trace/i_registration_real_time3.h"
#include "conformance/expect.h"

namespace motion::conformance {

using common::log::trace::EnablingState;
using common::log::trace::ILogRealTime3;

namespace {

/// Turns a journal that cannot be used into a result that says so.
template <typename STEP>
auto withJournal(const STEP& step) {
  try {
    return step();
  } catch (const std::runtime_error& error) {
    throw Mismatch("the journal", "a systemd-journald that takes and shows entries", error.what());
  }
}

class RefusingService : public common::log::trace::IRegistrationRealTime3 {
 public:
  std::int32_t registerUnit(ILogRealTime3** sink, const char* /*unitName*/, const EnablingCallback& /*callback*/) override {
    found = *sink;
    return -1;
  }
  std::int32_t getEnablingState(const ILogRealTime3* /*sink*/, EnablingState& /*state*/) const override { return -1; }
  std::int32_t unregisterUnit(ILogRealTime3** /*sink*/) override { return -1; }

  ILogRealTime3* found = nullptr;
};

}  // namespace

std::string TraceInJournal::field(std::string_view name) const {
  const auto values = m_entry.values(name);
  expectEqual(fmt::format("number of fields {} in one entry", name), values.size(), 1U);
  return values.front();
}

std::string TraceInJournal::part(Part part) const {
  std::vector<std::string> texts(1);
  for (const char character : field("MESSAGE")) {
    if (character == '|') {
      texts.emplace_back();
    } else {
      texts.back() += character;
    }
  }
  constexpr std::size_t COUNT = static_cast<std::size_t>(Part::TEXT) + 1;
  expectEqual("number of texts in MESSAGE", texts.size(), COUNT);
  return texts[static_cast<std::size_t>(part)];
}

std::string TraceInJournal::summary() const {
  return fmt::format("{} {} {} {}: {}", field("PRIORITY"), field("R_DIAG_MAIN"), field("CODE_FILE"), field("CODE_FUNC"),
                     part(Part::TEXT));
}

std::int64_t microsecondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

OwnJournal::OwnJournal()
    : m_reader(withJournal([] { return std::make_unique<test::JournalReader>(); })), m_begin(microsecondsNow()) {}

std::vector<TraceInJournal> OwnJournal::entries() {
  const auto all = withJournal([this] { return m_reader->read("_PID", std::to_string(getpid())); });
  std::vector<TraceInJournal> traces;
  for (const auto& entry : all) {
    const auto times = entry.values("R_TIMESTAMP");
    std::int64_t time = 0;
    // Earlier processes may have had the same number.
    if (times.size() == 1 && std::from_chars(times[0].data(), times[0].data() + times[0].size(), time).ec == std::errc() &&
        time >= m_begin) {
      traces.emplace_back(entry);
    }
  }
  return traces;
}

std::vector<std::string> OwnJournal::summaries() {
  std::vector<std::string> texts;
  for (const auto& entry : entries()) {
    texts.push_back(entry.summary());
  }
  return texts;
}

ILogRealTime3& bufferedSink(core::framework::IMotionComponent& component) {
  RefusingService service;
  component.addBundleTrace(&service);
  expectNotNull("the sink that the service finds", service.found != nullptr);
  return *service.found;
}

}  // namespace motion::conformance
