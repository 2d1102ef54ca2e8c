// Registers and unregisters job prototypes, commands and the names of records.
#include "impl/command/registration.h"

#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "motion/core/job/i_job_data_id_mgr.h"

namespace motion::kavo::cmd {

using core::IAmCreatable;
using core::IObjFactory;
using core::ObjFactoryResult;
using core::cmd::CmdResult;
using core::cmd::IGenericCmdFactory;

namespace {

/// The factories of the host that every command needs.
struct Factories {
  IObjFactory* objects = nullptr;
  IGenericCmdFactory* commands = nullptr;
};

CmdResult getFactories(const CallSite& site, const RegistrationTexts& texts, const core::IMotionExt& extIf,
                       Factories& factories) noexcept {
  guarded([&] { factories.objects = extIf.getObjFactory(); });
  guarded([&] { factories.commands = extIf.getGenericCmdFactory(); });
  if (factories.objects == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", texts.objFactoryMissing);
    return CmdResult::NullPointer;
  }
  if (factories.commands == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", texts.cmdFactoryMissing);
    return CmdResult::NullPointer;
  }
  return CmdResult::Okay;
}

constexpr const char* FACTORY_MISSING = "extIf.getObjFactory() or extIf.getGenericCmdOptionFactory() failed";

}  // namespace

const RegistrationTexts REGISTRATION_TEXTS = {
    .objFactoryMissing = FACTORY_MISSING,
    .cmdFactoryMissing = FACTORY_MISSING,
    .jobRefused =
        [](const CallSite& site, ObjFactoryResult result) noexcept {
          KAVO_TRACE_AT(site, Error, "objFactory->registerObj() failed: %d", core::toCode(result));
        },
};

CmdResult registerJobs(const CallSite& site, const RegistrationTexts& texts, std::span<const JobPrototype> jobs,
                       IObjFactory& objFactory) {
  // The factory takes the prototypes that it accepts; the others end here.
  std::vector<std::unique_ptr<IAmCreatable>> prototypes;
  for (const JobPrototype& job : jobs) {
    prototypes.push_back(job.create());
  }
  for (auto& prototype : prototypes) {
    const ObjFactoryResult result = objFactory.registerObj(prototype, 0);
    // The variant for the other type of object brings the same job.
    if (core::isFailure(result) && result != ObjFactoryResult::AlreadyKnown) {
      texts.jobRefused(site, result);
      return CmdResult::JobRegistrationFailed;
    }
  }
  return CmdResult::Okay;
}

void unregisterJobs(std::span<const JobPrototype> jobs, IObjFactory& objFactory) noexcept {
  for (const JobPrototype& job : jobs) {
    guarded([&] { (void)objFactory.unregisterObj(job.name, 0); });
  }
}

std::vector<std::string> jobNamesOf(std::span<const JobPrototype> jobs) {
  std::vector<std::string> names;
  for (const JobPrototype& job : jobs) {
    names.emplace_back(job.name);
  }
  return names;
}

template <core::ObjectType OBJECT_TYPE>
CmdResult registerCommand(const CallSite& site, const CmdDescription& description,
                          const CmdRegistration<OBJECT_TYPE>& registration, const core::IMotionExt& extIf,
                          const std::string& schemaDir) noexcept {
  Factories factories;
  if (const CmdResult result = getFactories(site, description.texts, extIf, factories); core::isFailure(result)) {
    return result;
  }
  return guarded(CmdResult::OutOfMemory, [&] {
    if (const CmdResult result = registerJobs(site, description.texts, description.jobs, *factories.objects);
        core::isFailure(result)) {
      return result;
    }
    return factories.commands->registerCmd(
        registration.getCmdId(), core::cmd::CmdCreateFn<OBJECT_TYPE>(registration.onCreate),
        core::cmd::CmdMarshalFn(registration.onMarshal), true, {registration.groups.begin(), registration.groups.end()},
        schemaDir + description.schemaFile, description.description, "");
  });
}

template CmdResult registerCommand(const CallSite&, const CmdDescription&, const CmdRegistration<core::ObjectType::AXIS>&,
                                   const core::IMotionExt&, const std::string&) noexcept;
template CmdResult registerCommand(const CallSite&, const CmdDescription&,
                                   const CmdRegistration<core::ObjectType::KINEMATICS>&, const core::IMotionExt&,
                                   const std::string&) noexcept;

CmdResult unregisterCommand(const CallSite& site, const CmdDescription& description, const core::cmd::CmdId& (*getCmdId)(),
                            const core::IMotionExt& extIf) noexcept {
  Factories factories;
  if (const CmdResult result = getFactories(site, description.texts, extIf, factories); core::isFailure(result)) {
    return result;
  }
  // The variant for the other type of object may have taken them away already.
  unregisterJobs(description.jobs, *factories.objects);
  return guarded(CmdResult::OutOfMemory, [&] { return factories.commands->unregisterCmd(getCmdId()); });
}

void registerDataType(const CallSite& site, core::job::IJobDataIDMgr& idMgr, core::DataID id, const char* name,
                      const char* shortName) noexcept {
  bool isNew = false;
  if (!guarded([&] { isNew = idMgr.addID(id, name); })) {
    KAVO_TRACE_AT(site, Error, "%s could not be registered", name);
  } else if (!isNew) {
    KAVO_TRACE_AT(site, Warning, "%s was already registered", shortName != nullptr ? shortName : name);
  }
}

}  // namespace motion::kavo::cmd
