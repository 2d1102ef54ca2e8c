// The records that the component exchanges with a host under their names, as a host has to declare them to look into them:
// the identity of a record comes from these very names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "motion/core/i_obj.h"
#include "motion/core/i_obj_mgr.h"
#include "motion/core/named_type.h"
#include "motion/kavo/switch_on_path_pars.h"

namespace motion::kavo::cmd {

struct CmdOptionSetSignalParsT {
  std::uint32_t signalId = 0;
};
struct CmdOptionSetSignalPars___t;
using CmdOptionSetSignalPars = core::job::JobNamedType<CmdOptionSetSignalParsT, CmdOptionSetSignalPars___t>;

struct CmdSendSignalParsT {
  std::uint32_t signalId = 0;
};
struct CmdSendSignalPars___t;
using CmdSendSignalPars = core::job::JobNamedType<CmdSendSignalParsT, CmdSendSignalPars___t>;

struct CmdJoinParsT {
  std::vector<std::string> group;
  bool syncStartNextCmd = false;
};
struct CmdJoinPars___t;
using CmdJoinPars = core::job::JobNamedType<CmdJoinParsT, CmdJoinPars___t>;

}  // namespace motion::kavo::cmd

namespace motion::kavo::job {

struct SendSignalJobParsT {
  std::uint32_t signalId = 0;
  bool reset = false;
};
struct SendSignalJobPars___t;
using SendSignalJobPars = core::job::JobNamedType<SendSignalJobParsT, SendSignalJobPars___t>;

struct JoinJobParsT {
  std::vector<const core::IObj*> group;
  bool syncStartNextCmd = false;
};
struct JoinJobPars___t;
using JoinJobPars = core::job::JobNamedType<JoinJobParsT, JoinJobPars___t>;

struct WaitForSignalJobParsT {
  std::uint32_t signalId = 0;
  bool autoReset = false;
};
struct WaitForSignalJobPars___t;
using WaitForSignalJobPars = core::job::JobNamedType<WaitForSignalJobParsT, WaitForSignalJobPars___t>;

struct WaitForSignalResetJobParsT {
  std::uint32_t signalId = 0;
};
struct WaitForSignalResetJobPars___t;
using WaitForSignalResetJobPars = core::job::JobNamedType<WaitForSignalResetJobParsT, WaitForSignalResetJobPars___t>;

}  // namespace motion::kavo::job

namespace motion::conformance {

/// A record in words, such as "CmdSendSignalPars signalId=7"; "null" and "another record" for what is none of these. Objects
/// of a group are named by the manager.
[[nodiscard]] std::string describe(const core::IContainer* record, const core::IObjMgr* objMgr = nullptr);

}  // namespace motion::conformance
