// Traces: their form, their switches, and the sink that takes them.
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/inside_call.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using common::log::trace::EnablingState;
using common::log::trace::ILogRealTime3;

const std::string FIRST_OF_INIT = infoOf("motion_kavo_cmp", "init", fmt::format("Bundlename: {}", BUNDLE_NAME));

/// Lets the component trace on every level: a warning for each data type that is known already, an error, and progress.
void traceOnAllLevels(Subject& subject) {
  subject.host.calls.fail("idMgr.addID", 0);
  subject.giveEverything();
  subject.component().setBundlePath(nullptr);
  expectEqual("status of start", subject.component().start(), 0);
  subject.component().stop();
}

/// The levels of the traces, each once.
std::string levelsOf(const Subject& subject) {
  std::string levels;
  for (const char* level : {"Info ", "Warning ", "Error "}) {
    levels += subject.traces(level).empty() ? "" : level;
  }
  return levels;
}

void formOfEachEntry(const Bundle& bundle) {
  Subject subject(bundle);
  traceOnAllLevels(subject);
  const auto entries = subject.host.traceSink.entries();
  expectTrue("there are traces", entries.size() > 30);
  for (const auto& entry : entries) {
    const auto what = [&entry](const char* field) { return fmt::format("{} of \"{}\"", field, entry.summary()); };
    expectEqual(what("class type"), entry.classType, 1U);
    expectEqual(what("entity"), entry.entity, std::optional<std::string>());
    expectEqual(what("origin"), entry.origin, std::optional<std::string>("motion.kavo"));
    expectTrue(what("line"), entry.line > 0);
    const bool isBaseName = entry.file && !entry.file->empty() && entry.file->find_first_of("/\\") == std::string::npos;
    expectTrue(what("base name as the file"), isBaseName);
    expectTrue(what("name as the function"), entry.function && !entry.function->empty());
    expectTrue(what("conversion in the format"), entry.format.find('%') != std::string::npos);
  }
}

void units(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.sectionMgr.remove("OBJ_DATA");
  traceOnAllLevels(subject);
  for (const char* unit : {"motion_kavo_cmp", "motion_kavo_cmd", "ext_dep_mgr", "provider_mgr"}) {
    expectFalse(fmt::format("no trace of {}", unit), subject.tracesOf(unit).empty());
  }
}

void levelCode(const Bundle& bundle, const std::string& level, std::uint32_t code) {
  Subject subject(bundle);
  traceOnAllLevels(subject);
  const auto entries = subject.host.traceSink.entries();
  const auto found =
      std::ranges::find_if(entries, [&](const test::TraceEntry& entry) { return entry.summary().starts_with(level + " "); });
  expectTrue("there is a trace of the level " + level, found != entries.end());
  expectEqual("main code", fmt::format("0x{:08X}", found->mainCode), fmt::format("0x{:08X}", code));
}

/// The format and the text of the only trace that a step writes.
void fixedText(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().deinit();
  const auto entries = subject.host.traceSink.entries();
  expectEqual("number of traces", entries.size(), 1U);
  expectEqual("format", entries[0].format, "%s");
  expectEqual("text", entries[0].text, "Motion.Kavo deinit");
}

void formattedText(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().init();
  const auto entries = subject.host.traceSink.entries();
  expectEqual("number of traces", entries.size(), 2U);
  expectEqual("format of the first", entries[0].format, "Bundlename: %s");
  expectEqual("format of the second", entries[1].format, "Init Motion.Kavo %s");
}

void levelSwitch(const Bundle& bundle, EnablingState state, const std::string& expected) {
  Subject subject(bundle);
  expectTrue("the service was given a callback", static_cast<bool>(subject.host.traceService.m_callback));
  subject.host.traceService.m_callback(state);
  traceOnAllLevels(subject);
  expectEqual("levels that were traced", levelsOf(subject), expected);
}

void switchedOnAgain(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.traceService.m_callback({false, false, false});
  subject.component().init();
  expectEqual("traces while switched off", subject.traces(), Texts{});
  subject.host.traceService.m_callback({true, false, false});
  subject.component().init();
  expectEqual("first trace when switched on again", subject.traces().front(), FIRST_OF_INIT);
}

void switchesSurvive(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.traceService.m_callback({false, true, true});
  subject.component().removeBundleTrace(&subject.host.traceService);
  subject.component().addBundleTrace(&subject.host.traceService);
  subject.component().init();
  subject.component().setBundlePath(nullptr);
  expectEqual("traces", subject.traces(), Texts{errorOf("motion_kavo_cmp", "setBundlePath", "bundlePath is NULL")});
}

void registration(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().removeBundleTrace(&subject.host.traceService);
  subject.forget();
  subject.component().addBundleTrace(&subject.host.traceService);
  expectEqual("calls", subject.host.calls.all(), Texts{"trace.registerUnit(motion.kavo)"});
  const ILogRealTime3* const sink = &subject.host.traceSink;
  const auto text = fmt::format("Registered trace from bundle with pointer 0x{:08X}.",
                                static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(sink)));
  expectEqual("traces", subject.traces(), Texts{infoOf("debug_trace", "addTraceBundle", text)});
  expectEqual("format", subject.host.traceSink.entries()[0].format, "Registered trace from bundle with pointer 0x%08X.");
}

void anotherService(const Bundle& bundle) {
  Subject subject(bundle);
  test::FakeTraceSink sink;
  test::FakeTraceService service(subject.host.calls, sink);
  subject.component().addBundleTrace(&service);
  expectEqual("traces to the earlier sink", subject.traces(),
              Texts{infoOf("motion_kavo_cmp", "addBundleTrace", "Add trace service dependency.")});
  expectEqual("number of traces to the new sink", sink.summaries().size(), 1U);
  sink.clear();
  subject.component().removeBundleTrace(&service);
  expectEqual("traces to the new sink when it leaves", sink.summaries(),
              Texts{infoOf("motion_kavo_cmp", "removeBundleTrace", "Remove trace service dependency.")});
}

void failedRegistration(const Bundle& bundle) {
  test::FakeCalls calls;
  test::FakeTraceSink sink;
  test::FakeTraceService service(calls, sink);
  calls.fail("trace.registerUnit", 0x80000001);
  const std::unique_ptr<core::framework::IMotionComponent> component(bundle.makeComponent());
  component->addBundleTrace(&service);
  component->init();
  expectEqual("traces to the service's sink", sink.summaries(), Texts{});
  component->removeBundleTrace(&service);
  expectEqual("calls", calls.all(), Texts{"trace.registerUnit(motion.kavo)"});
}

/// Stores its sink although it fails.
class ConfusedService : public test::FakeTraceService {
 public:
  using FakeTraceService::FakeTraceService;
  std::int32_t registerUnit(ILogRealTime3** sink, const char* unitName, const EnablingCallback& callback) override {
    FakeTraceService::registerUnit(sink, unitName, callback);
    return -1;
  }
};

void failedRegistrationWithSink(const Bundle& bundle) {
  test::FakeCalls calls;
  test::FakeTraceSink sink;
  ConfusedService service(calls, sink);
  const std::unique_ptr<core::framework::IMotionComponent> component(bundle.makeComponent());
  component->addBundleTrace(&service);
  component->init();
  expectEqual("traces to the service's sink", sink.summaries(), Texts{});
}

void failedAgain(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("trace.registerUnit", 0x80000001);
  subject.component().addBundleTrace(&subject.host.traceService);
  subject.forget();
  subject.component().init();
  expectEqual("traces to the sink of before", subject.traces(), Texts{});
}

void removal(const Bundle& bundle) {
  InsideCall inside;
  Subject subject(bundle);
  bool wasCalled = false;
  subject.host.traceService.m_onUnregister = [&] {
    inside.look([&] {
      wasCalled = true;
      subject.forget();
      subject.component().init();
      expectEqual("traces to the old sink while it is given back", subject.traces(), Texts{});
    });
  };
  subject.component().removeBundleTrace(&subject.host.traceService);
  expectTrue("the unit was unregistered", wasCalled);
  const ILogRealTime3* const sink = &subject.host.traceSink;
  expectTrue("the service gets its own sink back", subject.host.traceService.m_returned == sink);
  subject.component().init();
  expectEqual("traces to the old sink", subject.traces(), Texts{});
  inside.expectFine();
}

void removedTwice(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().removeBundleTrace(&subject.host.traceService);
  subject.component().removeBundleTrace(&subject.host.traceService);
  expectEqual("calls", subject.host.calls.all(), Texts{"trace.unregisterUnit()"});
}

void removedWithoutRegistration(const Bundle& bundle) {
  test::FakeCalls calls;
  test::FakeTraceSink sink;
  test::FakeTraceService service(calls, sink);
  const std::unique_ptr<core::framework::IMotionComponent> component(bundle.makeComponent());
  component->removeBundleTrace(&service);
  expectEqual("calls", calls.all(), Texts{});
}

void failedRemoval(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("trace.unregisterUnit", 0x80000001);
  subject.component().removeBundleTrace(&subject.host.traceService);
  subject.forget();
  subject.component().init();
  expectEqual("traces to the old sink", subject.traces(), Texts{});
  subject.component().removeBundleTrace(&subject.host.traceService);
  expectEqual("calls", subject.host.calls.all(), Texts{});
}

void comesAgain(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().removeBundleTrace(&subject.host.traceService);
  subject.component().addBundleTrace(&subject.host.traceService);
  subject.forget();
  subject.component().init();
  expectEqual("first trace", subject.traces().front(), FIRST_OF_INIT);
}

Checks switchChecks() {
  struct Row {
    const char* name;
    const char* sentence;
    EnablingState state;
    const char* expected;
  };
  static constexpr Row ROWS[] = {
      {"all-on", "with all switches on every level is traced", {true, true, true}, "Info Warning Error "},
      {"info-off", "the first switch is that of progress", {false, true, true}, "Warning Error "},
      {"warning-off", "the second switch is that of warnings", {true, false, true}, "Info Error "},
      {"error-off", "the third switch is that of errors", {true, true, false}, "Info Warning "},
      {"all-off", "with all switches off nothing is traced", {false, false, false}, ""},
  };
  Checks checks;
  for (const auto& row : ROWS) {
    checks.push_back({std::string("traces.switch-") + row.name, row.sentence,
                      [row](const Bundle& bundle) { levelSwitch(bundle, row.state, row.expected); }});
  }
  return checks;
}

}  // namespace

Checks traceChecks() {
  const auto level = [](const std::string& name, std::uint32_t code) {
    return [name, code](const Bundle& bundle) { levelCode(bundle, name, code); };
  };
  const Checks own = {
      {"traces.form", "each trace has class type 1, the unit as origin, no entity, file, function, line and format",
       formOfEachEntry},
      {"traces.units", "a trace names the source file without its directory", units},
      {"traces.info-code", "progress is traced with 0x090A0FFC", level("Info", 0x090A0FFC)},
      {"traces.warning-code", "warnings are traced with 0x090E0FFC", level("Warning", 0x090E0FFC)},
      {"traces.error-code", "errors are traced with 0x090F0FFC", level("Error", 0x090F0FFC)},
      {"traces.fixed-text", "a fixed text is the argument of the format %s", fixedText},
      {"traces.formatted-text", "a text with arguments is passed as its format", formattedText},
      {"traces.switched-on-again", "a switch works both ways", switchedOnAgain},
      {"traces.switches-survive", "the switches stay when the trace service leaves and comes back", switchesSurvive},
      {"traces.registration", "the unit registers under its name and traces the sink's address", registration},
      {"traces.another-service", "a sink takes over when it has been registered, and the one before until then",
       anotherService},
      {"traces.failed-registration", "a refused registration uses no sink of the service, and is not given back",
       failedRegistration},
      {"traces.failed-registration-with-sink", "a sink that was stored by a failing registration is not used",
       failedRegistrationWithSink},
      {"traces.failed-registration-again", "a refused registration ends the use of the sink of before", failedAgain},
      {"traces.removal", "the sink is out of use before it is given back", removal},
      {"traces.removed-twice", "a second removal does nothing", removedTwice},
      {"traces.removed-without-registration", "a removal without a registration does nothing", removedWithoutRegistration},
      {"traces.failed-removal", "a sink that the service does not take back is out of use all the same", failedRemoval},
      {"traces.comes-again", "after a removal the service may come again", comesAgain},
  };
  return together({own, switchChecks()});
}

}  // namespace motion::conformance
