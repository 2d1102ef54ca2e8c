// The shared base of the test bundles: a component that does nothing well, and writes down who called it with what.
#include "plugins/recording_component.h"

#include <cstdlib>
#include <fstream>

namespace motion::test {
namespace {

template <typename... Argument>
void record(const char* operation, const Argument&... argument) {
  if (const char* file = std::getenv("KAVO_TEST_CALLS"); file != nullptr) {
    std::ofstream out(file, std::ios::app);
    out << operation;
    ((out << ' ' << argument), ...);
    out << '\n';
  }
}

std::int32_t recordOk(const char* operation) {
  record(operation);
  return 0;
}

}  // namespace

RecordingComponent::RecordingComponent() {
  record("create");
}
RecordingComponent::~RecordingComponent() {
  record("destroy");
}

std::int32_t RecordingComponent::init() {
  return recordOk("init");
}
std::int32_t RecordingComponent::start() {
  return recordOk("start");
}
std::int32_t RecordingComponent::stop() {
  return recordOk("stop");
}
std::int32_t RecordingComponent::deinit() {
  return recordOk("deinit");
}

void RecordingComponent::setMotionExtIF(const core::MotionExtensionIfT* service) {
  record("setMotionExtIF", service);
}
void RecordingComponent::removeMotionExtIF(const core::MotionExtensionIfT* service) {
  record("removeMotionExtIF", service);
}
void RecordingComponent::setDataLayerFactory(comm::datalayer::IDataLayerFactory* service) {
  record("setDataLayerFactory", service);
}
void RecordingComponent::removeDataLayerFactory(comm::datalayer::IDataLayerFactory* service) {
  record("removeDataLayerFactory", service);
}
void RecordingComponent::setMotionCmdIF(const core::MotionCmdIfT* service) {
  record("setMotionCmdIF", service);
}
void RecordingComponent::removeMotionCmdIF(const core::MotionCmdIfT* service) {
  record("removeMotionCmdIF", service);
}
void RecordingComponent::setMotionSysIF(const core::MotionSysIfT* service) {
  record("setMotionSysIF", service);
}
void RecordingComponent::removeMotionSysIF(const core::MotionSysIfT* service) {
  record("removeMotionSysIF", service);
}
void RecordingComponent::setMotionCmdIF(const core::MotionCmdIf2T* service) {
  record("setMotionCmdIF2", service);
}
void RecordingComponent::removeMotionCmdIF(const core::MotionCmdIf2T* service) {
  record("removeMotionCmdIF2", service);
}
void RecordingComponent::setMotionSysIF(const core::MotionSysIf2T* service) {
  record("setMotionSysIF2", service);
}
void RecordingComponent::removeMotionSysIF(const core::MotionSysIf2T* service) {
  record("removeMotionSysIF2", service);
}
void RecordingComponent::setMotionDataIF(const core::MotionDataIfT* service) {
  record("setMotionDataIF", service);
}
void RecordingComponent::removeMotionDataIF(const core::MotionDataIfT* service) {
  record("removeMotionDataIF", service);
}
void RecordingComponent::setBundlePath(const char* text) {
  record("setBundlePath", text);
}
void RecordingComponent::clrBundlePath() {
  record("clrBundlePath");
}
void RecordingComponent::setBundleName(const char* text) {
  record("setBundleName", text);
}
void RecordingComponent::clrBundleName() {
  record("clrBundleName");
}
void RecordingComponent::addBundleTrace(common::log::trace::IRegistrationRealTime3* service) {
  record("addBundleTrace", service);
}
void RecordingComponent::removeBundleTrace(common::log::trace::IRegistrationRealTime3* service) {
  record("removeBundleTrace", service);
}

}  // namespace motion::test
