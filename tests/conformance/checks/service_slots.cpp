// The component's operations by their place in its table.
#include <fmt/format.h>

#include <array>
#include <cstddef>

#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/service_rows.h"
#include "conformance/slots.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

constexpr std::size_t INIT = 2;
constexpr std::size_t START = 3;
constexpr std::size_t STOP = 4;
constexpr std::size_t DEINIT = 5;
constexpr std::size_t SET_PATH = 20;
constexpr std::size_t CLEAR_PATH = 21;
constexpr std::size_t SET_NAME = 22;
constexpr std::size_t CLEAR_NAME = 23;
constexpr std::size_t ADD_TRACE = 24;
constexpr std::size_t REMOVE_TRACE = 25;

std::int32_t status(Subject& subject, std::size_t slot) {
  return callSlot<std::int32_t>(&subject.component(), slot);
}

void callWith(Subject& subject, std::size_t slot, const void* argument) {
  callSlot<void, const void*>(&subject.component(), slot, argument);
}

void lifecycle(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of slot 2", status(subject, INIT), 0);
  expectHolds("last trace of slot 2", subject.traces().back(), "Info motion_kavo_cmp init: Init Motion.Kavo ");
  expectEqual("status of slot 3", status(subject, START), 0);
  expectEqual("last trace of slot 3", subject.traces().back(),
              infoOf("motion_kavo_cmp", "start", "Motion.Kavo started successfully"));
  expectEqual("status of slot 4", status(subject, STOP), 0);
  expectEqual("last trace of slot 4", subject.traces().back(), infoOf("motion_kavo_cmp", "stop", "Motion.Kavo stopped"));
  expectEqual("status of slot 5", status(subject, DEINIT), 0);
  expectEqual("last trace of slot 5", subject.traces().back(), infoOf("motion_kavo_cmp", "deinit", "Motion.Kavo deinit"));
}

void service(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  callWith(subject, row.slot, nullptr);
  callWith(subject, row.slot + 1, nullptr);
  expectEqual("traces", subject.traces(),
              Texts{row.added(), errorOf("motion_kavo_cmp", row.setFunction, row.nullText), row.removed()});
}

void pathAndName(const Bundle& bundle) {
  Subject subject(bundle);
  const auto schemaPath = [&subject] {
    expectEqual("status of start", status(subject, START), 0);
    const auto path = subject.host.cmdFactory.m_commands[{core::ObjectType::AXIS, "WaitForSignal"}].schemaPath;
    expectEqual("status of stop", status(subject, STOP), 0);
    return path;
  };
  subject.giveEverything();
  callWith(subject, SET_PATH, "/by slot");
  callWith(subject, SET_NAME, "name by slot");
  expectEqual("schema path after slot 20", schemaPath(), "/by slot/bfbs/cmdWaitForSignal.bfbs");
  expectEqual("name after slot 22", subject.host.m_version.componentName, "name by slot");
  callSlot<void>(&subject.component(), CLEAR_PATH);
  expectEqual("schema path after slot 21", schemaPath(), "/bfbs/cmdWaitForSignal.bfbs");
  expectEqual("name after slot 21", subject.host.m_version.componentName, "name by slot");
  callSlot<void>(&subject.component(), CLEAR_NAME);
  expectEqual("schema path after slot 23", schemaPath(), "/bfbs/cmdWaitForSignal.bfbs");
  expectEqual("name after slot 23", subject.host.m_version.componentName, "");
}

void traceService(const Bundle& bundle) {
  Subject subject(bundle);
  auto* const registration = static_cast<common::log::trace::IRegistrationRealTime3*>(&subject.host.traceService);
  callWith(subject, REMOVE_TRACE, registration);
  expectEqual("registrations given back by slot 25", subject.host.calls.count("trace.unregisterUnit"), 1);
  callWith(subject, ADD_TRACE, registration);
  expectEqual("registrations made by slot 24", subject.host.calls.count("trace.registerUnit"), 1);
}

void deletingDestructor(const Bundle& bundle) {
  Subject subject(bundle);
  const auto component = bundle.makeComponent();
  component->setMotionExtIF(&subject.host.extension);
  // A start that fails behind the extension object takes it back; one that succeeds leaves it to the destructor.
  component->setMotionSysIF(&subject.host.sysIf);
  component->setDataLayerFactory(&subject.host.dataLayer);
  component->setMotionCmdIF(&subject.host.cmdIf);
  component->setMotionCmdIF(&subject.host.cmdIf2);
  component->setMotionSysIF(&subject.host.sysIf2);
  component->setMotionDataIF(&subject.host.dataIf);
  expectEqual("status of start", component->start(), 0);
  subject.forget();
  constexpr std::size_t DELETING_DESTRUCTOR = 1;
  callSlot<void>(component, DELETING_DESTRUCTOR);
  expectEqual("extension interfaces alive", subject.host.m_extensionsAlive, 0);
  expectEqual("calls", subject.host.calls.all(), Texts{"ext.destroyed()"});
  expectEqual("traces", subject.traces(), Texts{});
}

}  // namespace

Checks serviceSlotChecks() {
  Checks checks = {
      {"services.slots-lifecycle", "init, start, stop and deinit lie in slots 2 to 5", lifecycle},
      {"services.slots-path-and-name", "path and name are set and cleared in slots 20 to 23", pathAndName},
      {"services.slots-trace-service", "the trace service is added and removed in slots 24 and 25", traceService},
      {"services.slots-destructor", "slot 1 deletes the component and its extension object, without a stop",
       deletingDestructor},
  };
  for (const auto& row : serviceRows()) {
    checks.push_back({fmt::format("services.slots-{}", row.label),
                      fmt::format("{} is set in slot {} and removed in slot {}", row.name, row.slot, row.slot + 1),
                      [row](const Bundle& bundle) { service(bundle, row); }});
  }
  return checks;
}

}  // namespace motion::conformance
