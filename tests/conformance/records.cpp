// Records in words.
#include "conformance/records.h"

#include <fmt/format.h>

#include "motion/core/i_obj_mgr.h"

namespace motion::conformance {
namespace {

template <typename RECORD>
bool holds(const core::IContainer* record) {
  return RECORD::safeCast(record) != nullptr;
}

/// Only for a record that holds<RECORD>.
template <typename RECORD>
auto read(const core::IContainer* record) {
  return RECORD::safeCast(record)->get();
}

std::string listOf(const std::vector<std::string>& texts) {
  return fmt::format("[{}]", fmt::join(texts, ","));
}

std::string namesOf(const std::vector<const core::IObj*>& group, const core::IObjMgr* objMgr) {
  std::vector<std::string> names;
  for (const auto* const obj : group) {
    const char* const name = objMgr != nullptr ? objMgr->getObjName(obj) : nullptr;
    names.emplace_back(name != nullptr ? name : "<?>");
  }
  return listOf(names);
}

std::string describe(const kavo::SwitchOnPathPars& condition) {
  return fmt::format("(mode={} signalId={} action={} target=({},{},{}) radius={} preTriggerTime={} reached={})",
                     static_cast<std::uint32_t>(condition.mode), condition.signalId,
                     static_cast<std::uint32_t>(condition.action), condition.targetPos[0], condition.targetPos[1],
                     condition.targetPos[2], condition.radius, condition.preTriggerTime, condition.isReached());
}

std::string describeSignalRecord(const core::IContainer* record) {
  using namespace kavo;
  if (holds<cmd::CmdSendSignalPars>(record)) {
    return fmt::format("CmdSendSignalPars signalId={}", read<cmd::CmdSendSignalPars>(record).signalId);
  }
  if (holds<cmd::CmdOptionSetSignalPars>(record)) {
    return fmt::format("CmdOptionSetSignalPars signalId={}", read<cmd::CmdOptionSetSignalPars>(record).signalId);
  }
  if (holds<job::SendSignalJobPars>(record)) {
    const auto pars = read<job::SendSignalJobPars>(record);
    return fmt::format("SendSignalJobPars signalId={} reset={}", pars.signalId, pars.reset);
  }
  if (holds<job::WaitForSignalJobPars>(record)) {
    const auto pars = read<job::WaitForSignalJobPars>(record);
    return fmt::format("WaitForSignalJobPars signalId={} autoReset={}", pars.signalId, pars.autoReset);
  }
  if (holds<job::WaitForSignalResetJobPars>(record)) {
    return fmt::format("WaitForSignalResetJobPars signalId={}", read<job::WaitForSignalResetJobPars>(record).signalId);
  }
  return "another record";
}

}  // namespace

std::string describe(const core::IContainer* record, const core::IObjMgr* objMgr) {
  using namespace kavo;
  if (record == nullptr) {
    return "null";
  }
  if (holds<cmd::CmdJoinPars>(record)) {
    const auto pars = read<cmd::CmdJoinPars>(record);
    return fmt::format("CmdJoinPars group={} sync={}", listOf(pars.group), pars.syncStartNextCmd);
  }
  if (holds<job::JoinJobPars>(record)) {
    const auto pars = read<job::JoinJobPars>(record);
    return fmt::format("JoinJobPars group={} sync={}", namesOf(pars.group, objMgr), pars.syncStartNextCmd);
  }
  if (holds<SwitchOnPathParsList>(record)) {
    std::string text = "SwitchOnPathParsList";
    for (const auto& condition : read<SwitchOnPathParsList>(record)) {
      text += " " + describe(*condition);
    }
    return text;
  }
  return describeSignalRecord(record);
}

}  // namespace motion::conformance
