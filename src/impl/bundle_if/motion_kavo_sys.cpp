// Publishes the system functions and answers them from the signal store.
#include "impl/bundle_if/motion_kavo_sys.h"

#include <utility>

#include "impl/debug_trace.h"
#include "impl/guarded.h"

namespace motion::kavo {

using core::FctResult;

namespace {

/// Does the work with the signal store, if there is one.
template <typename WORK>
FctResult withSignals(const CallSite& site, WORK&& work) noexcept {
  Signals* const signals = MotionKavoSys::g_signals.get();
  if (signals == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", "g_signals is null! MotionKavoSys not initialized?");
    return FctResult::NotAvailable;
  }
  return guarded(FctResult::NotOkay, [&] { return work(*signals); });
}

}  // namespace

bool MotionKavoSys::initialize(core::MotionSysIfT& sysIf, core::MotionSysIf2T& sysIf2,
                               comm::datalayer::IDataLayerFactory& factory) noexcept {
  if (!guarded([&factory] { g_signals = std::make_unique<Signals>(factory); })) {
    terminate();
    return false;
  }
  g_motionSysIf = &sysIf;
  sysIf.getSignal = &getSignal;
  sysIf.resetSignal = &resetSignal;
  sysIf.setSignal = &setSignal;
  *sysIf2.sync = {.resetSignal = &resetSignal, .setSignal = &setSignal, .getSignal = &getSignal};
  g_motionSysIf2 = &sysIf2;
  if (guarded([&] { g_providerMgr = std::make_unique<ProviderMgr>(sysIf, factory); }) && g_providerMgr->run()) {
    return true;
  }
  terminate();
  return false;
}

void MotionKavoSys::terminate() noexcept {
  // First of all: the nodes use what follows.
  std::exchange(g_providerMgr, nullptr).reset();
  if (core::MotionSysIfT* const sysIf = std::exchange(g_motionSysIf, nullptr); sysIf != nullptr) {
    sysIf->resetSignal = nullptr;
    sysIf->setSignal = nullptr;
    sysIf->getSignal = nullptr;
  }
  if (core::MotionSysIf2T* const sysIf2 = std::exchange(g_motionSysIf2, nullptr); sysIf2 != nullptr) {
    *sysIf2->sync = {};
  }
  std::exchange(g_signals, nullptr).reset();
}

FctResult MotionKavoSys::getSignal(void* /*context*/, unsigned int signalId, bool& value) noexcept {
  return withSignals(KAVO_HERE, [&](Signals& signals) { return signals.get(signalId, value); });
}

FctResult MotionKavoSys::setSignal(void* /*context*/, unsigned int signalId) noexcept {
  return withSignals(KAVO_HERE, [=](Signals& signals) { return signals.set(signalId); });
}

FctResult MotionKavoSys::resetSignal(void* /*context*/, unsigned int signalId) noexcept {
  return withSignals(KAVO_HERE, [=](Signals& signals) { return signals.reset(signalId); });
}

}  // namespace motion::kavo
