// A whole pretended host: every service that a component is given.
#pragma once

#include "motion/core/component_version.h"
#include "motion/core/records/motion_cmd_if.h"
#include "motion/core/records/motion_data_if.h"
#include "motion/core/records/motion_extension_if.h"
#include "motion/core/records/motion_sys_if.h"
#include "support/fake_calls.h"
#include "support/fake_data_layer.h"
#include "support/fake_dia.h"
#include "support/fake_factories.h"
#include "support/fake_jobs.h"
#include "support/fake_motion_ext.h"
#include "support/fake_trace.h"

namespace motion::test {

/// The parts know one another; each can be made to fail through `calls`. Operation of the extension record:
/// "extension.createExtIfObj".
class FakeHost {
 public:
  FakeHost();
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;

  /// Its data layer has clients from now on, and they find the component's nodes listed.
  void listNodes();

  FakeCalls calls;
  FakeTraceSink traceSink;
  FakeTraceService traceService{calls, traceSink};
  FakeSectionMgr sectionMgr{calls};
  FakeObjMgr objMgr{calls};
  FakeJobDataIDMgr jobDataIDMgr{calls};
  FakeObjFactory objFactory{calls};
  FakeCmdFactory cmdFactory{calls};
  FakeCmdOptionFactory cmdOptionFactory{calls};
  FakeDataLayer dataLayer{calls};
  FakeCmdContext cmdContext{calls};
  FakeMotionParts parts{&objMgr, &sectionMgr, &jobDataIDMgr, &objFactory, &cmdFactory, &cmdOptionFactory};
  FakeMotionExt ext{calls, parts};  ///< for tests that need no component

  core::MotionExtensionIfT extension;
  core::MotionSysIfT sysIf;
  core::MotionSysGeneralFctT sysGeneral;
  core::MotionSysSyncFctT sysSync;
  core::MotionSysIf2T sysIf2;
  core::MotionCmdIfT cmdIf;
  core::MotionCmdGeneralFctT cmdGeneral;
  core::MotionCmdKinFctT cmdKin;
  core::MotionCmdIf2T cmdIf2;
  core::MotionDataIfT dataIf;

  /// What createExtIfObj was called with last.
  const void* m_extensionContext = nullptr;
  core::ComponentVersionAdd m_version;
  /// The result of createExtIfObj, and whether it makes an object.
  core::FctResult m_extensionResult = core::FctResult::Okay;
  bool m_makesExtension = true;
  /// Extension interfaces that components own.
  int m_extensionsAlive = 0;
};

}  // namespace motion::test
