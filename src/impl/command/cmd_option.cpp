// What command options do alike.
#include "impl/command/cmd_option.h"

#include <string_view>

#include "impl/debug_trace.h"
#include "impl/guarded.h"

namespace motion::kavo::cmd {

using core::ObjFactoryResult;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using core::job::IJobObject;
using core::job::JobResult;

namespace {

struct PermTypeName {
  std::string_view name;
  CmdOptPermType permType;
};

constexpr PermTypeName ONCE = {"Once", CmdOptPermType::ONCE};
constexpr PermTypeName PERM_ON = {"PermOn", CmdOptPermType::PERM_ON};
constexpr PermTypeName PERM_OFF = {"PermOff", CmdOptPermType::PERM_OFF};

/// Null, with a trace, when the factory refuses.
std::unique_ptr<IJobObject> createJob(const CallSite& site, core::IObjFactory& factory, const char* jobName) noexcept {
  IJobObject* made = nullptr;
  const ObjFactoryResult result =
      guarded(ObjFactoryResult::CreationFailed, [&] { return factory.createObj(jobName, 0, made); });
  std::unique_ptr<IJobObject> job(made);
  if (core::isFailure(result) || job == nullptr) {
    KAVO_TRACE_AT(site, Error, "jobObjFactory.createObj() failed: %d", core::toCode(result));
    return nullptr;
  }
  return job;
}

}  // namespace

CmdResult getOptionFactories(const CallSite& site, const core::IMotionExt& extIf, OptionFactories& factories) noexcept {
  guarded([&] { factories.objects = extIf.getObjFactory(); });
  guarded([&] { factories.options = extIf.getGenericCmdOptionFactory(); });
  if (factories.objects == nullptr || factories.options == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", "extIf.getObjFactory() or extIf.getGenericCmdOptionFactory() failed");
    return CmdResult::NullPointer;
  }
  return CmdResult::Okay;
}

CmdResult readPermType(const CallSite& site, const flatbuffers::String* text, CmdOptPermType& permType) noexcept {
  if (text == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", "cmdDataIn->permType==nullptr");
    return CmdResult::InvalidParameterData;
  }
  const std::string_view word = text->string_view();
  const PermTypeName& found = word == ONCE.name ? ONCE : word == PERM_ON.name ? PERM_ON : PERM_OFF;
  permType = found.permType;
  if (word != found.name) {
    KAVO_TRACE_AT(site, Error, "Invalid permType(%s)", text->c_str());
    return CmdResult::InvalidParameterData;
  }
  return CmdResult::Okay;
}

CmdResult checkByJob(const CallSite& site, core::IObjFactory& factory, const char* jobName,
                     const core::IContainer& parameters, core::dia::IDia& dia) noexcept {
  const std::unique_ptr<IJobObject> job = createJob(site, factory, jobName);
  if (job == nullptr) {
    return CmdResult::JobCreationFailed;
  }
  const JobResult result = guarded(JobResult::OutOfMemory, [&] { return job->checkParameter(&parameters, &dia); });
  if (core::isFailure(result)) {
    KAVO_TRACE_AT(site, Error, "jobObj->checkParameter() failed: %d", core::toCode(result));
    return CmdResult::Refused;
  }
  return CmdResult::Okay;
}

std::vector<IJobObject*> makeOptionJob(const CallSite& site, core::IObjFactory& factory, const char* jobName,
                                       const core::IContainer& parameters) noexcept {
  std::unique_ptr<IJobObject> job = createJob(site, factory, jobName);
  if (job == nullptr) {
    return {};
  }
  const JobResult result = guarded(JobResult::OutOfMemory, [&] { return job->setJobData(&parameters); });
  if (core::isFailure(result)) {
    KAVO_TRACE_AT(site, Error, "jobObj->setJobData() failed: %d", core::toCode(result));
    return {};
  }
  return guarded(std::vector<IJobObject*>(), [&job] {
    std::vector<IJobObject*> jobs{job.get()};
    (void)job.release();  // the list's owner owns it from here on
    return jobs;
  });
}

}  // namespace motion::kavo::cmd
