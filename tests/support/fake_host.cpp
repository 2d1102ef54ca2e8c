// A whole pretended host: every service that a component is given.
#include "support/fake_host.h"

namespace motion::test {
namespace {

/// Belongs to a component; its host knows how many there are.
class OwnedMotionExt : public FakeMotionExt {
 public:
  explicit OwnedMotionExt(FakeHost& host) : FakeMotionExt(host.calls, host.parts), m_host(host) {
    ++m_host.m_extensionsAlive;
  }
  ~OwnedMotionExt() override { --m_host.m_extensionsAlive; }

 private:
  FakeHost& m_host;
};

core::FctResult createExtIfObj(void* context, const core::ComponentVersionAdd* version, core::IMotionExt** ext) {
  const AllocationPause pause;
  auto& host = *static_cast<FakeHost*>(context);
  host.m_extensionContext = context;
  host.m_version = *version;
  if (const auto code = host.calls.note("extension.createExtIfObj", version->componentName)) {
    return static_cast<core::FctResult>(*code);
  }
  if (host.m_makesExtension) {
    *ext = new OwnedMotionExt(host);
  }
  return host.m_extensionResult;
}

}  // namespace

FakeHost::FakeHost() {
  extension.context = this;
  extension.createExtIfObj = &createExtIfObj;
  sysIf2.general = &sysGeneral;
  sysIf2.sync = &sysSync;
  cmdIf2.general = &cmdGeneral;
  cmdIf2.kin = &cmdKin;
}

void FakeHost::listNodes() {
  dataLayer.makeFakeClients();
  dataLayer.m_clientValues["datalayer/nodes"] = comm::datalayer::Variant(comm::datalayer::Variant::Strings{
      "datalayer/nodes", "motion/state/functions/kavo/signals", "motion/state/functions/kavo/signals/*"});
}

}  // namespace motion::test
