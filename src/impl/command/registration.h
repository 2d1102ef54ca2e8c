// How a command comes to the host and leaves it: its job prototypes, the command itself and the names of its records.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "impl/call_site.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/results.h"

namespace motion::kavo::cmd {

/// A job object that the host's factory clones.
struct JobPrototype {
  const char* name;
  std::unique_ptr<core::IAmCreatable> (*create)();
};

/// The prototype of a class of job objects.
template <typename JOB_OBJECT>
[[nodiscard]] std::unique_ptr<core::IAmCreatable> makePrototype() {
  return std::make_unique<JOB_OBJECT>();
}

/// The names of the jobs. Throws std::bad_alloc. [prepare]
[[nodiscard]] std::vector<std::string> jobNamesOf(std::span<const JobPrototype> jobs);

/// Messages in which commands differ. One with a number is a function, so that the compiler checks its format.
struct RegistrationTexts {
  const char* objFactoryMissing;
  const char* cmdFactoryMissing;
  void (*jobRefused)(const CallSite& site, core::ObjFactoryResult result) noexcept;
};

/// The messages of most commands and options.
extern const RegistrationTexts REGISTRATION_TEXTS;

/// What a command says about itself, for whatever type of object. All texts have static storage.
struct CmdDescription {
  const char* schemaFile;
  const char* description;
  std::span<const JobPrototype> jobs;
  const RegistrationTexts& texts;
};

/// Registers job prototypes; one that the factory knows already is fine. JobRegistrationFailed, with a trace. Throws
/// std::bad_alloc. [framework]
[[nodiscard]] core::cmd::CmdResult registerJobs(const CallSite& site, const RegistrationTexts& texts,
                                                std::span<const JobPrototype> jobs, core::IObjFactory& objFactory);
/// Whatever comes of it: somebody else may have taken them away already. [framework]
void unregisterJobs(std::span<const JobPrototype> jobs, core::IObjFactory& objFactory) noexcept;

/// A command for one type of object.
template <core::ObjectType OBJECT_TYPE>
struct CmdRegistration {
  const core::cmd::CmdId& (*getCmdId)();
  std::span<const char* const> groups;
  core::cmd::CmdResult (*onCreate)(core::IObjFactory& factory, bool buffered, core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd,
                                   std::string& errText);
  core::cmd::CmdResult (*onMarshal)(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned);
};

/// Registers the job prototypes, then the command. NullPointer without a factory, JobRegistrationFailed, OutOfMemory, else
/// the result of the command factory. A job that the factory knows already is fine. [framework]
template <core::ObjectType OBJECT_TYPE>
[[nodiscard]] core::cmd::CmdResult registerCommand(const CallSite& site, const CmdDescription& description,
                                                   const CmdRegistration<OBJECT_TYPE>& registration,
                                                   const core::IMotionExt& extIf, const std::string& schemaDir) noexcept;

/// The reverse; allocates nothing of its own. NullPointer without a factory, else the result of the command factory.
/// [framework]
[[nodiscard]] core::cmd::CmdResult unregisterCommand(const CallSite& site, const CmdDescription& description,
                                                     const core::cmd::CmdId& (*getCmdId)(),
                                                     const core::IMotionExt& extIf) noexcept;

/// Announces the name of a record; a warning when it was known already, which calls the record `shortName` where that is
/// given. [framework]
void registerDataType(const CallSite& site, core::job::IJobDataIDMgr& idMgr, core::DataID id, const char* name,
                      const char* shortName = nullptr) noexcept;

extern template core::cmd::CmdResult registerCommand(const CallSite&, const CmdDescription&,
                                                     const CmdRegistration<core::ObjectType::AXIS>&, const core::IMotionExt&,
                                                     const std::string&) noexcept;
extern template core::cmd::CmdResult registerCommand(const CallSite&, const CmdDescription&,
                                                     const CmdRegistration<core::ObjectType::KINEMATICS>&,
                                                     const core::IMotionExt&, const std::string&) noexcept;

}  // namespace motion::kavo::cmd
