// Lifecycle of the component and arrival and departure of the services it needs.
#include "impl/bundle_if/motion_kavo_cmp.h"

#include <utility>

#include "impl/bundle_if/motion_kavo_cmd.h"
#include "impl/bundle_if/motion_kavo_sys.h"
#include "impl/debug_trace.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/guarded.h"

namespace motion::kavo::bundle {

namespace {

using core::FctResult;

constexpr const char* VERSION_TEXT = "3.8.14-unknown_branch-unknown_commit.0";
/// Where the binary schemas lie in the bundle.
constexpr const char* SCHEMA_DIR = "/bfbs/";

core::ComponentVersionAdd makeVersion(const std::string& componentName) {
  return {.componentName = componentName,
          .applicationName = "app.motion",
          .major = 3,
          .minor = 8,
          .patch = 14,
          .build = 0,
          .branch = "unknown_branch",
          .versionText = VERSION_TEXT,
          .commit = "unknown_commit",
          .additional = {}};
}

/// Hosts hand their records out as const, so that no component touches a field of another one. The fields of this component
/// are its own to write, and no record is a constant object.
template <typename RECORD>
RECORD& writable(const RECORD* record) noexcept {
  return const_cast<RECORD&>(*record);
}

/// Keeps a service that arrives; null is refused.
template <typename SERVICE>
void keepService(const CallSite& site, SERVICE*& member, SERVICE* service, const char* arrival,
                 const char* refusal) noexcept {
  KAVO_TRACE_AT(site, Info, "%s", arrival);
  if (service == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", refusal);
    return;
  }
  member = service;
}

/// Keeps a text of the framework; null is refused and leaves the text as it was.
void keepText(const CallSite& site, std::string& member, const char* text, const char* refusal) noexcept {
  if (text == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", refusal);
  } else if (!guarded([&] { member = text; })) {
    KAVO_TRACE_AT(site, Error, "no memory for '%s'", text);
  }
}

}  // namespace

std::int32_t MotionKavoCmp::init() {
  KAVO_TRACE(Info, "Bundlename: %s", m_bundleName.c_str());
  KAVO_TRACE(Info, "Init Motion.Kavo %s", VERSION_TEXT);
  return 0;
}

std::int32_t MotionKavoCmp::start() {
  KAVO_TRACE(Info, "Bundlename: %s", m_bundleName.c_str());
  KAVO_TRACE(Info, "Start Motion.Kavo %s", VERSION_TEXT);
  if (!bundleStart()) {
    KAVO_TRACE_TEXT(Error, "Motion.Kavo failed to start - return with error code");
    return START_FAILED;
  }
  KAVO_TRACE_TEXT(Info, "Motion.Kavo started successfully");
  return 0;
}

std::int32_t MotionKavoCmp::stop() {
  bundleStop();
  KAVO_TRACE_TEXT(Info, "Motion.Kavo stopped");
  return 0;
}

std::int32_t MotionKavoCmp::deinit() {
  KAVO_TRACE_TEXT(Info, "Motion.Kavo deinit");
  return 0;
}

bool MotionKavoCmp::bundleStart() noexcept {
  if (m_extIF == nullptr) {
    KAVO_TRACE_TEXT(Error, "m_extIF is null");
    return failStart(KAVO_HERE);
  }
  std::unique_ptr<core::IMotionExt> motionExt;
  const FctResult result = guarded(FctResult::OutOfMemory, [&] { return createMotionExt(motionExt); });
  if (result != FctResult::Okay || !motionExt) {
    KAVO_TRACE(Error, "Can't create ExtIfObj! Result: 0x0%x", core::toCode(result));
    motionExt.reset();
    return failStart(KAVO_HERE);
  }
  m_motionExt = std::move(motionExt);
  ExtDepMgr::getInstance().setMotionExtIF(m_motionExt.get());

  const struct {
    const void* service;
    const char* refusal;
  } required[] = {{m_motionSysIF, "m_motionSysIF is null"},   {m_datalayerFactory, "m_datalayerFactory is null"},
                  {m_motionCmdIF, "m_motionCmdIF is null"},   {m_motionCmdIF2, "m_motionCmdIF2 is null"},
                  {m_motionSysIF2, "m_motionSysIF2 is null"}, {m_motionDataIF, "m_motionDataIF is null"}};
  for (const auto& [service, refusal] : required) {
    if (service == nullptr) {
      KAVO_TRACE_TEXT(Error, refusal);
      return failStart(KAVO_HERE);
    }
  }
  if (!guarded(false, [this] {
        return MotionKavoCmd::initialize(writable(m_motionCmdIF), writable(m_motionCmdIF2), *m_motionExt,
                                         *m_datalayerFactory, m_bundlePath + SCHEMA_DIR);
      })) {
    KAVO_TRACE_TEXT(Error, "MotionKavoCmd::initialize() failed");
    return failStart(KAVO_HERE);
  }
  if (!MotionKavoSys::initialize(writable(m_motionSysIF), writable(m_motionSysIF2), *m_datalayerFactory)) {
    KAVO_TRACE_TEXT(Error, "MotionKavoSys::initialize() failed");
    MotionKavoCmd::terminate(m_motionExt.get());
    return failStart(KAVO_HERE);
  }
  return true;
}

FctResult MotionKavoCmp::createMotionExt(std::unique_ptr<core::IMotionExt>& motionExt) const {
  const core::ComponentVersionAdd version = makeVersion(m_bundleName);
  core::IMotionExt* made = nullptr;
  const FctResult result =
      guarded(FctResult::OutOfMemory, [&] { return m_extIF->createExtIfObj(m_extIF->context, &version, &made); });
  motionExt.reset(made);  // also what a failing call has made
  return result;
}

bool MotionKavoCmp::failStart(const CallSite& site) noexcept {
  KAVO_TRACE_AT(site, Error, "%s", "Call bundleStop as to cleanup after error");
  bundleStop();
  return false;
}

bool MotionKavoCmp::bundleStop() noexcept {
  MotionKavoCmd::terminate(m_motionExt.get());
  MotionKavoSys::terminate();
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  m_motionExt.reset();
  return true;
}

void MotionKavoCmp::setMotionExtIF(const core::MotionExtensionIfT* motionExtIF) {
  keepService(KAVO_HERE, m_extIF, motionExtIF, "Add MotionExt service dependency", "motionExtIF is NULL");
}

void MotionKavoCmp::removeMotionExtIF(const core::MotionExtensionIfT* /*motionExtIF*/) {
  KAVO_TRACE_TEXT(Info, "Remove MotionExt service dependency");
  if (m_motionExt || m_extIF != nullptr) {
    bundleStop();
    m_extIF = nullptr;
  }
}

void MotionKavoCmp::setDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) {
  keepService(KAVO_HERE, m_datalayerFactory, dataLayerFactory, "Add dataLayer factory service dependency",
              "dataLayerFactory is NULL");
}

void MotionKavoCmp::removeDataLayerFactory(comm::datalayer::IDataLayerFactory* /*dataLayerFactory*/) {
  KAVO_TRACE_TEXT(Info, "Remove dataLayer factory service dependency");
  m_datalayerFactory = nullptr;
  MotionKavoCmd::terminate(m_motionExt.get());
  MotionKavoSys::terminate();
}

void MotionKavoCmp::setMotionCmdIF(const core::MotionCmdIfT* motionCmdIF) {
  keepService(KAVO_HERE, m_motionCmdIF, motionCmdIF, "Add deprecated motion.core command interface service dependency",
              "motionCmdIF is NULL");
}

void MotionKavoCmp::removeMotionCmdIF(const core::MotionCmdIfT* /*motionCmdIF*/) {
  KAVO_TRACE_TEXT(Info, "Remove deprecated motion.core command interface service dependency");
  m_motionCmdIF = nullptr;
  MotionKavoCmd::terminate(m_motionExt.get());
}

void MotionKavoCmp::setMotionSysIF(const core::MotionSysIfT* motionSysIF) {
  keepService(KAVO_HERE, m_motionSysIF, motionSysIF, "Add deprecated motion.core system interface service dependency",
              "motionSysIF is NULL");
}

void MotionKavoCmp::removeMotionSysIF(const core::MotionSysIfT* /*motionSysIF*/) {
  KAVO_TRACE_TEXT(Info, "Remove deprecated motion.core system interface service dependency");
  m_motionSysIF = nullptr;
  MotionKavoSys::terminate();
}

void MotionKavoCmp::setMotionCmdIF(const core::MotionCmdIf2T* motionCmdIF) {
  keepService(KAVO_HERE, m_motionCmdIF2, motionCmdIF, "Add motion.core command interface service dependency",
              "motionCmdIF is NULL");
}

void MotionKavoCmp::removeMotionCmdIF(const core::MotionCmdIf2T* /*motionCmdIF*/) {
  KAVO_TRACE_TEXT(Info, "Remove motion.core command interface service dependency");
  m_motionCmdIF2 = nullptr;
  MotionKavoCmd::terminate(m_motionExt.get());
}

void MotionKavoCmp::setMotionSysIF(const core::MotionSysIf2T* motionSysIF) {
  keepService(KAVO_HERE, m_motionSysIF2, motionSysIF, "Add motion.core system interface service dependency",
              "motionSysIF is NULL");
}

void MotionKavoCmp::removeMotionSysIF(const core::MotionSysIf2T* /*motionSysIF*/) {
  KAVO_TRACE_TEXT(Info, "Remove motion.core system interface service dependency");
  m_motionSysIF2 = nullptr;
  MotionKavoSys::terminate();
}

void MotionKavoCmp::setMotionDataIF(const core::MotionDataIfT* motionDataIF) {
  keepService(KAVO_HERE, m_motionDataIF, motionDataIF, "Add motion.core data interface service dependency",
              "motionDataIF is NULL");
}

void MotionKavoCmp::removeMotionDataIF(const core::MotionDataIfT* /*motionDataIF*/) {
  KAVO_TRACE_TEXT(Info, "Remove motion.core data interface service dependency");
  m_motionDataIF = nullptr;
  // The system functions do not use the record, yet they go with it: starting requires it, so running does.
  MotionKavoSys::terminate();
}

void MotionKavoCmp::setBundlePath(const char* bundlePath) {
  keepText(KAVO_HERE, m_bundlePath, bundlePath, "bundlePath is NULL");
}

void MotionKavoCmp::clrBundlePath() {
  m_bundlePath.clear();
}

void MotionKavoCmp::setBundleName(const char* bundleName) {
  keepText(KAVO_HERE, m_bundleName, bundleName, "bundleName is NULL");
}

void MotionKavoCmp::clrBundleName() {
  m_bundleName.clear();
}

void MotionKavoCmp::addBundleTrace(common::log::trace::IRegistrationRealTime3* registration) {
  KAVO_TRACE_TEXT(Info, "Add trace service dependency.");
  DebugTrace::addTraceBundle(registration);
}

void MotionKavoCmp::removeBundleTrace(common::log::trace::IRegistrationRealTime3* registration) {
  KAVO_TRACE_TEXT(Info, "Remove trace service dependency.");
  DebugTrace::removeTraceBundle(registration);
}

}  // namespace motion::kavo::bundle

motion::core::framework::IMotionComponent* createMotionKavoCmp() {
  return motion::kavo::guarded<motion::core::framework::IMotionComponent*>(
      nullptr, [] { return new motion::kavo::bundle::MotionKavoCmp; });
}
