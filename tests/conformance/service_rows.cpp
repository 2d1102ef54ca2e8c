// The services of the component: their texts, and what depends on each.
#include "conformance/service_rows.h"

#include <array>

#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {

std::string ServiceRow::added() const {
  return infoOf("motion_kavo_cmp", setFunction, "Add " + name + " service dependency");
}

std::string ServiceRow::removed() const {
  return infoOf("motion_kavo_cmp", removeFunction, "Remove " + name + " service dependency");
}

const std::vector<ServiceRow>& serviceRows() {
  static const std::vector<ServiceRow> rows = {
      {Service::MOTION_EXT, "extension", "MotionExt", "setMotionExtIF", "removeMotionExtIF", "motionExtIF is NULL",
       "m_extIF is null", 6, true, true},
      {Service::DATA_LAYER, "data-layer", "dataLayer factory", "setDataLayerFactory", "removeDataLayerFactory",
       "dataLayerFactory is NULL", "m_datalayerFactory is null", 8, true, true},
      {Service::MOTION_CMD, "old-command-record", "deprecated motion.core command interface", "setMotionCmdIF",
       "removeMotionCmdIF", "motionCmdIF is NULL", "m_motionCmdIF is null", 10, true, false},
      {Service::MOTION_SYS, "old-system-record", "deprecated motion.core system interface", "setMotionSysIF",
       "removeMotionSysIF", "motionSysIF is NULL", "m_motionSysIF is null", 12, false, true},
      {Service::MOTION_CMD2, "command-record", "motion.core command interface", "setMotionCmdIF", "removeMotionCmdIF",
       "motionCmdIF is NULL", "m_motionCmdIF2 is null", 14, true, false},
      {Service::MOTION_SYS2, "system-record", "motion.core system interface", "setMotionSysIF", "removeMotionSysIF",
       "motionSysIF is NULL", "m_motionSysIF2 is null", 16, false, true},
      {Service::MOTION_DATA, "data-record", "motion.core data interface", "setMotionDataIF", "removeMotionDataIF",
       "motionDataIF is NULL", "m_motionDataIF is null", 18, false, true},
  };
  return rows;
}

std::vector<std::string> commandTerminationTraces() {
  Texts texts;
  for (const auto& row : expectedRows()) {
    texts.push_back(infoOf("motion_kavo_cmd", "terminate", "Unregistration of " + row.name + " succeeded"));
  }
  return texts;
}

std::vector<std::string> systemTerminationTraces() {
  return {infoOf("provider_mgr", "unregisterScopes", "Deletion of scopes succeeded")};
}

void expectCommands(const Subject& subject, bool isThere) {
  const auto& host = subject.host;
  const std::array published = {host.cmdIf.resetSignalCmd != nullptr,
                                host.cmdIf.setSignalCmd != nullptr,
                                host.cmdIf.setSignalCmdOpt != nullptr,
                                host.cmdIf.waitForSignalCmd != nullptr,
                                host.cmdIf.joinCmd != nullptr,
                                host.cmdGeneral.resetSignalCmd != nullptr,
                                host.cmdGeneral.setSignalCmd != nullptr,
                                host.cmdGeneral.setSignalCmdOpt != nullptr,
                                host.cmdGeneral.waitForSignalCmd != nullptr,
                                host.cmdGeneral.joinCmd != nullptr,
                                host.cmdGeneral.waitForSignalResetCmd != nullptr,
                                host.cmdKin.kinSwitchOnPathCmdOpt != nullptr};
  for (const bool isPublished : published) {
    expectEqual("each command function is published", isPublished, isThere);
  }
  expectEqual("number of registered commands", host.cmdFactory.m_commands.size(), isThere ? expectedCommands().size() : 0U);
  expectEqual("number of registered options", host.cmdOptionFactory.m_options.size(),
              isThere ? expectedOptions().size() : 0U);
  expectEqual("number of real-time memories", host.dataLayer.m_memories.size(), isThere ? 2U : 0U);
}

void expectSystemFunctions(const Subject& subject, bool isThere) {
  const auto& host = subject.host;
  const std::array published = {host.sysIf.getSignal != nullptr,   host.sysIf.setSignal != nullptr,
                                host.sysIf.resetSignal != nullptr, host.sysSync.getSignal != nullptr,
                                host.sysSync.setSignal != nullptr, host.sysSync.resetSignal != nullptr};
  for (const bool isPublished : published) {
    expectEqual("each system function is published", isPublished, isThere);
  }
  expectEqual("open memory handles", host.dataLayer.m_openUsers, isThere ? 2 : 0);
}

}  // namespace motion::conformance
