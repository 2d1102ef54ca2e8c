// Fuzz target: the decoders of command and option parameters, and what is done with decoded parameters.
#include <array>
#include <memory>
#include <string>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "fuzz/started_component.h"
#include "fuzz/targets.h"
#include "motion/core/obj/kin_pose.h"

namespace motion::fuzz {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using core::job::JobListTypes;
using core::job::JobResult;

constexpr std::array COMMANDS = {"SetSignal", "ResetSignal", "WaitForSignal", "WaitForSignalReset", "Join"};
constexpr std::array OPTIONS = {"SetSignal", "SwitchOnPath"};
constexpr int CYCLES = 3;

void fuzzCommand(const std::string& name, test::FakeObj& obj, const comm::datalayer::Variant& data) {
  auto& subject = startedComponent();
  const auto type = conformance::typeOf(obj);
  const auto marshalled = conformance::marshal(subject, type, name, &data);
  const bool isOkay = marshalled.result == CmdResult::Okay;
  require(isOkay == (marshalled.container != nullptr), "there are parameters exactly when marshalling succeeds");
  require(isOkay == marshalled.isOwned, "parameters belong to the host");
  if (!isOkay) {
    require(core::isFailure(marshalled.result), "what is not okay is a failure");
    return;
  }
  const auto created = conformance::create(subject, type, name);
  require(created.cmd != nullptr, "a buffered command is created");
  const auto taken = created.cmd->onSetCmdValues(marshalled.container.get(), conformance::source(), &obj, false);
  // The names in a group may be those of nobody.
  const bool mayRefuse = name == "Join";
  require(taken == CmdResult::Okay || (mayRefuse && core::isFailure(taken)), "decoded parameters are taken over");
  const auto valid = created.cmd->onValidate(conformance::source(), &obj.m_dia);
  require(valid == CmdResult::Okay || core::isFailure(valid), "validation answers");
}

void runJobs(std::vector<std::unique_ptr<core::job::IJobObject>> jobs, conformance::Inputs& inputs) {
  auto& subject = startedComponent();
  for (const auto& job : jobs) {
    if (core::isFailure(job->registerInputs(&inputs.handler))) {
      continue;
    }
    test::FakeJobList list(subject.host.calls);
    require(job->addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION) == JobResult::NoEffect, "jobs are added");
    for (int cycle = 0; cycle < CYCLES; ++cycle) {
      for (const auto& entry : list.m_jobs) {
        static_cast<void>(entry.job());
      }
    }
  }
}

void fuzzOption(const std::string& name, test::FakeObj& obj, const comm::datalayer::Variant& data) {
  auto& subject = startedComponent();
  auto marshalled = conformance::marshalOption(subject, conformance::typeOf(obj), name, &data);
  const bool isOkay = marshalled.result == CmdResult::Okay;
  require(isOkay == (marshalled.container != nullptr), "there are parameters exactly when marshalling succeeds");
  if (!isOkay) {
    require(core::isFailure(marshalled.result), "what is not okay is a failure");
    return;
  }
  const auto option = conformance::makeOption(subject, conformance::typeOf(obj), name);
  const conformance::ActiveOptions active;
  static_cast<void>(option->prepareStackableCmdOption(obj, active, marshalled.container.get(), marshalled.permType,
                                                      conformance::source()));
  if (core::isFailure(option->setParameter(marshalled.container.get(), subject.host.objFactory, obj, obj.m_dia))) {
    return;
  }
  conformance::CmdFrame frame(1);
  conformance::Inputs inputs(subject, obj, frame);
  core::KinPose pose;
  inputs.offer(core::KinPose::getMyID(), "GEOMETRY_TOOL_OFFSET", &pose);
  std::vector<std::unique_ptr<core::job::IJobObject>> jobs;
  for (auto* job : option->createJobs(subject.host.objFactory)) {
    jobs.emplace_back(job);
  }
  runJobs(std::move(jobs), inputs);
}

}  // namespace

void fuzzParameters(Bytes bytes) {
  if (bytes.empty()) {
    return;
  }
  const std::size_t which = bytes[0] % (COMMANDS.size() + OPTIONS.size());
  const auto data = comm::datalayer::Variant::fromFlatBuffer(bytes.subspan(1));
  if (which < COMMANDS.size()) {
    fuzzCommand(COMMANDS.at(which), axis(), data);
  } else {
    fuzzOption(OPTIONS.at(which - COMMANDS.size()), kinematics(), data);
  }
  startedComponent().forget();
  axis().m_dia.m_reports.clear();
  kinematics().m_dia.m_reports.clear();
}

}  // namespace motion::fuzz
