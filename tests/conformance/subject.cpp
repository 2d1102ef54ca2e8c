// The component of a bundle in a recording host.
#include "conformance/subject.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "conformance/expect.h"

namespace motion::conformance {
namespace {

using core::framework::IMotionComponent;

constexpr std::array ALL_SERVICES = {Service::MOTION_EXT,  Service::MOTION_SYS,  Service::DATA_LAYER, Service::MOTION_CMD,
                                     Service::MOTION_CMD2, Service::MOTION_SYS2, Service::MOTION_DATA};
static_assert(ALL_SERVICES.size() == NUMBER_OF_SERVICES);

/// The services of a host, or nothing.
struct Offer {
  explicit Offer(test::FakeHost* host) {
    if (host != nullptr) {
      extension = &host->extension;
      sysIf = &host->sysIf;
      dataLayer = &host->dataLayer;
      cmdIf = &host->cmdIf;
      cmdIf2 = &host->cmdIf2;
      sysIf2 = &host->sysIf2;
      dataIf = &host->dataIf;
    }
  }

  const core::MotionExtensionIfT* extension = nullptr;
  const core::MotionSysIfT* sysIf = nullptr;
  comm::datalayer::IDataLayerFactory* dataLayer = nullptr;
  const core::MotionCmdIfT* cmdIf = nullptr;
  const core::MotionCmdIf2T* cmdIf2 = nullptr;
  const core::MotionSysIf2T* sysIf2 = nullptr;
  const core::MotionDataIfT* dataIf = nullptr;
};

void set(IMotionComponent& component, Service service, const Offer& offer) {
  switch (service) {
    case Service::MOTION_EXT:
      return component.setMotionExtIF(offer.extension);
    case Service::MOTION_SYS:
      return component.setMotionSysIF(offer.sysIf);
    case Service::DATA_LAYER:
      return component.setDataLayerFactory(offer.dataLayer);
    case Service::MOTION_CMD:
      return component.setMotionCmdIF(offer.cmdIf);
    case Service::MOTION_CMD2:
      return component.setMotionCmdIF(offer.cmdIf2);
    case Service::MOTION_SYS2:
      return component.setMotionSysIF(offer.sysIf2);
    case Service::MOTION_DATA:
      return component.setMotionDataIF(offer.dataIf);
  }
}

}  // namespace

Subject::Subject(const Bundle& bundle)
    : Subject(std::unique_ptr<IMotionComponent>(bundle.makeComponent()), bundle.directory().string()) {}

Subject::Subject(std::unique_ptr<IMotionComponent> component, const std::string& bundlePath)
    : m_component(std::move(component)) {
  host.listNodes();
  m_component->addBundleTrace(&host.traceService);
  m_component->setBundlePath(bundlePath.c_str());
  m_component->setBundleName(BUNDLE_NAME);
  forget();
}

Subject::~Subject() {
  if (m_component != nullptr) {
    m_component->stop();
    m_component->removeBundleTrace(&host.traceService);
  }
}

void Subject::give(Service service) {
  set(*m_component, service, Offer(&host));
}

void Subject::giveNull(Service service) {
  set(*m_component, service, Offer(nullptr));
}

void Subject::remove(Service service) {
  switch (service) {
    case Service::MOTION_EXT:
      return m_component->removeMotionExtIF(&host.extension);
    case Service::MOTION_SYS:
      return m_component->removeMotionSysIF(&host.sysIf);
    case Service::DATA_LAYER:
      return m_component->removeDataLayerFactory(&host.dataLayer);
    case Service::MOTION_CMD:
      return m_component->removeMotionCmdIF(&host.cmdIf);
    case Service::MOTION_CMD2:
      return m_component->removeMotionCmdIF(&host.cmdIf2);
    case Service::MOTION_SYS2:
      return m_component->removeMotionSysIF(&host.sysIf2);
    case Service::MOTION_DATA:
      return m_component->removeMotionDataIF(&host.dataIf);
  }
}

void Subject::giveEverything() {
  for (const auto service : ALL_SERVICES) {
    give(service);
  }
}

void Subject::giveEverythingBut(Service missing) {
  for (const auto service : ALL_SERVICES) {
    if (service != missing) {
      give(service);
    }
  }
}

void Subject::start() {
  giveEverything();
  expectEqual("status of start", m_component->start(), 0);
  forget();
}

std::vector<std::string> Subject::traces(std::string_view beginning) const {
  auto all = traces();
  std::erase_if(all, [beginning](const std::string& trace) { return !trace.starts_with(beginning); });
  return all;
}

std::vector<std::string> Subject::tracesOf(std::string_view unit) const {
  std::vector<std::string> result;
  for (const auto& entry : host.traceSink.entries()) {
    if (entry.file == unit) {
      result.push_back(entry.summary());
    }
  }
  return result;
}

void Subject::forget() {
  host.calls.clear();
  host.traceSink.clear();
}

void Subject::expectNothingLeft() const {
  expectEqual("extension interfaces alive", host.m_extensionsAlive, 0);
  expectEqual("registered commands", host.cmdFactory.m_commands.size(), 0U);
  expectEqual("registered command options", host.cmdOptionFactory.m_options.size(), 0U);
  expectEqual("registered job prototypes", host.objFactory.m_prototypes.size(), 0U);
  expectEqual("real-time memories", host.dataLayer.m_memories.size(), 0U);
  expectEqual("open memory handles", host.dataLayer.m_openUsers, 0);
  expectEqual("data-layer providers alive", host.dataLayer.m_providersAlive, 0);
  const auto& old = host.cmdIf;
  const auto& general = host.cmdGeneral;
  const std::array<bool, 18> areNull = {old.resetSignalCmd == nullptr,
                                        old.setSignalCmd == nullptr,
                                        old.setSignalCmdOpt == nullptr,
                                        old.waitForSignalCmd == nullptr,
                                        old.joinCmd == nullptr,
                                        general.resetSignalCmd == nullptr,
                                        general.setSignalCmd == nullptr,
                                        general.setSignalCmdOpt == nullptr,
                                        general.waitForSignalCmd == nullptr,
                                        general.joinCmd == nullptr,
                                        general.waitForSignalResetCmd == nullptr,
                                        host.cmdKin.kinSwitchOnPathCmdOpt == nullptr,
                                        host.sysIf.getSignal == nullptr,
                                        host.sysIf.setSignal == nullptr,
                                        host.sysIf.resetSignal == nullptr,
                                        host.sysSync.getSignal == nullptr,
                                        host.sysSync.setSignal == nullptr,
                                        host.sysSync.resetSignal == nullptr};
  expectEqual("published functions", std::count(areNull.begin(), areNull.end(), false), 0);
}

std::vector<std::uint8_t>& Subject::bytes(const std::string& address) {
  const auto found = host.dataLayer.m_memories.find(address);
  expectNotNull("the memory " + address, found != host.dataLayer.m_memories.end());
  return found->second->bytes;
}

}  // namespace motion::conformance
