// What the component writes to the journal while no trace service takes its traces.
#include <fmt/format.h>

#include <charconv>
#include <ctime>
#include <memory>

#include "conformance/check.h"
#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/own_journal.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::framework::IMotionComponent;

constexpr const char* INIT = "6 090A0FFC motion_kavo_cmp init: Bundlename: ";

std::int64_t numberIn(const std::string& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  expectTrue(fmt::format("\"{}\" is a number", text), error == std::errc() && end == text.data() + text.size());
  return number;
}

/// The entries of a component that has no trace service yet.
struct Untraced {
  explicit Untraced(const Bundle& bundle) : component(bundle.makeComponent()) {}

  TraceInJournal only() {
    const auto all = journal.entries();
    expectEqual("number of entries", all.size(), 1U);
    return all.front();
  }

  OwnJournal journal;
  std::unique_ptr<IMotionComponent> component;
};

void beforeTheService(const Bundle& bundle) {
  Untraced subject(bundle);
  subject.component->setBundleName("a name");
  subject.component->init();
  expectEqual("entries", subject.journal.summaries(),
              Texts{std::string(INIT) + "a name",
                    "6 090A0FFC motion_kavo_cmp init: Init Motion.Kavo 3.8.14-unknown_branch-unknown_commit.0"});
}

void fields(const Bundle& bundle) {
  Untraced subject(bundle);
  subject.component->deinit();
  const auto end = microsecondsNow();
  const auto entry = subject.only();
  expectEqual("R_ENTRY_TYPE", entry.field("R_ENTRY_TYPE"), "palvane_trace");
  expectEqual("PRIORITY", entry.field("PRIORITY"), "6");
  expectEqual("R_USER_ID", entry.field("R_USER_ID"), "");
  expectEqual("R_DIAG_MAIN", entry.field("R_DIAG_MAIN"), "090A0FFC");
  expectEqual("R_DIAG_DETAILED", entry.field("R_DIAG_DETAILED"), "");
  expectEqual("R_ENTITY", entry.field("R_ENTITY"), "");
  expectEqual("R_ORIGIN", entry.field("R_ORIGIN"), "motion.kavo");
  expectEqual("R_UNIT", entry.field("R_UNIT"), "motion.kavo");
  expectEqual("CODE_FILE", entry.field("CODE_FILE"), "motion_kavo_cmp");
  expectEqual("CODE_FUNC", entry.field("CODE_FUNC"), "deinit");
  expectTrue("CODE_LINE is a line", numberIn(entry.field("CODE_LINE")) > 0);
  const auto time = numberIn(entry.field("R_TIMESTAMP"));
  expectTrue("R_TIMESTAMP lies between the call and now", time >= subject.journal.begin() && time <= end);
}

void message(const Bundle& bundle) {
  Untraced subject(bundle);
  subject.component->deinit();
  const auto entry = subject.only();
  const auto time = numberIn(entry.field("R_TIMESTAMP"));
  const std::time_t seconds = time / 1'000'000;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 32> date{};
  expectTrue("the time can be written", std::strftime(date.data(), date.size(), "%FT%T", &utc) > 0);
  const auto expected = fmt::format(
      "{}.{:06}Z||090A0FFC|Trace message motion.kavo||||motion.kavo|motion.kavo|motion_kavo_cmp|deinit|{}|"
      "Motion.Kavo deinit",
      date.data(), time % 1'000'000, entry.field("CODE_LINE"));
  expectEqual("MESSAGE", entry.field("MESSAGE"), expected);
}

void error(const Bundle& bundle) {
  Untraced subject(bundle);
  subject.component->setBundlePath(nullptr);
  const auto entry = subject.only();
  expectEqual("entry", entry.summary(), "3 090F0FFC motion_kavo_cmp setBundlePath: bundlePath is NULL");
  expectEqual("title", entry.part(Part::TITLE), "Trace error motion.kavo");
}

/// A component whose trace service has left.
void withoutService(Subject& subject) {
  subject.component().removeBundleTrace(&subject.host.traceService);
}

void warning(const Bundle& bundle) {
  Subject subject(bundle);
  OwnJournal journal;
  withoutService(subject);
  subject.host.calls.fail("idMgr.addID", 0, 1);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  std::vector<TraceInJournal> warnings;
  for (const auto& entry : journal.entries()) {
    if (entry.field("PRIORITY") == "4") {
      warnings.push_back(entry);
    }
  }
  expectEqual("number of warnings", warnings.size(), 1U);
  expectEqual("R_DIAG_MAIN", warnings[0].field("R_DIAG_MAIN"), "090E0FFC");
  expectEqual("title", warnings[0].part(Part::TITLE), "Trace warning motion.kavo");
}

void sameAsService(const Bundle& bundle) {
  Subject subject(bundle);
  OwnJournal journal;
  subject.component().init();
  expectEqual("entries while a service takes the traces", journal.summaries(), Texts{});
}

void failedRegistration(const Bundle& bundle) {
  OwnJournal journal;
  test::FakeCalls calls;
  test::FakeTraceSink sink;
  test::FakeTraceService service(calls, sink);
  calls.fail("trace.registerUnit", 0x80000ABC);
  const std::unique_ptr<IMotionComponent> component(bundle.makeComponent());
  component->addBundleTrace(&service);
  expectEqual("entries", journal.summaries(),
              Texts{"6 090A0FFC motion_kavo_cmp addBundleTrace: Add trace service dependency.",
                    "3 090F0FFC debug_trace addTraceBundle: Calling 'registerUnit' failed with error code 0x80000ABC, so "
                    "continue using buffered trace."});
}

void removed(const Bundle& bundle) {
  Subject subject(bundle);
  OwnJournal journal;
  withoutService(subject);
  withoutService(subject);
  expectEqual("entries", journal.summaries(),
              Texts{"6 090A0FFC debug_trace removeTraceBundle: Removed trace from bundle.",
                    "6 090A0FFC motion_kavo_cmp removeBundleTrace: Remove trace service dependency."});
}

void failedRemoval(const Bundle& bundle) {
  Subject subject(bundle);
  OwnJournal journal;
  subject.host.calls.fail("trace.unregisterUnit", 0x80000ABC);
  withoutService(subject);
  expectEqual("entries", journal.summaries(),
              Texts{"3 090F0FFC debug_trace removeTraceBundle: Calling 'unregisterUnit' failed with error code 0x80000ABC.",
                    "6 090A0FFC debug_trace removeTraceBundle: Removed trace from bundle."});
}

void switchedOff(const Bundle& bundle) {
  Subject subject(bundle);
  OwnJournal journal;
  subject.host.traceService.m_callback({false, true, true});
  withoutService(subject);
  subject.component().init();
  subject.component().setBundleName(nullptr);
  expectEqual("entries", journal.summaries(), Texts{"3 090F0FFC motion_kavo_cmp setBundleName: bundleName is NULL"});
}

void longText(const Bundle& bundle) {
  Untraced subject(bundle);
  const std::string name(300, 'n');
  subject.component->setBundleName(name.c_str());
  subject.component->init();
  const auto all = subject.journal.entries();
  expectEqual("number of entries", all.size(), 3U);
  const auto text = "Bundlename: " + name;
  expectEqual("first part", all[0].part(Part::TEXT), "1/2: " + text.substr(0, 250));
  expectEqual("second part", all[1].part(Part::TEXT), "2/2: " + text.substr(250));
  expectEqual("time of the second part", all[1].field("R_TIMESTAMP"), all[0].field("R_TIMESTAMP"));
}

}  // namespace

Checks journalChecks() {
  const Checks own = {
      {"journal.before-the-service", "before a trace service is there, traces are entries of the journal", beforeTheService},
      {"journal.fields", "an entry has its fields, each once", fields},
      {"journal.message", "MESSAGE holds the time and the twelve texts", message},
      {"journal.error", "an error has priority 3 and its title", error},
      {"journal.warning", "a warning has priority 4 and its title", warning},
      {"journal.nothing-beside-the-service", "while a service takes the traces the journal gets none", sameAsService},
      {"journal.failed-registration", "a refused registration is an entry that names its code", failedRegistration},
      {"journal.removed", "the removal of the service is an entry, once", removed},
      {"journal.failed-removal", "a refused removal is an entry that names its code", failedRemoval},
      {"journal.switched-off", "the level switches hold for the journal, too", switchedOff},
      {"journal.long-text", "a long text becomes several entries of one time", longText},
  };
  return together({own, bufferedSinkChecks()});
}

}  // namespace motion::conformance
