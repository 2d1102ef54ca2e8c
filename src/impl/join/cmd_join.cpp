// The command Join.
#include "impl/join/cmd_join.h"

#include <algorithm>
#include <string_view>

#include "impl/command/unmarshalling.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/join/job_obj_join.h"
#include "motion/core/cmd/i_cmd.h"
#include "schemas/command/cmdJoin_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

constexpr JobPrototype JOBS[] = {{job::JobObjJoin::JOB_NAME, &makePrototype<job::JobObjJoin>}};

constexpr CmdDefinition DEFINITION = {
    .site = KAVO_SITE,
    .name = "Join",
    .description = {.schemaFile = "cmdJoin.bfbs",
                    .description = "Synchronize start next buffered command on multiple motion objects",
                    .jobs = JOBS,
                    .texts = REGISTRATION_TEXTS},
    .publishRefused =
        [](const CallSite& site, core::job::JobResult result) noexcept {
          KAVO_TRACE_AT(site, Error, "JoinJobPars::registerPublish failed: [0x%X]", core::toCode(result));
        },
};

constexpr UnmarshalTexts UNMARSHALLING = {
    .wrongType = &traceIsNotFlatbuffers,
    .invalidBuffer = "Invalid FlatBuffer structure",
};

CmdJoinParsT read(const fbs::CmdJoin& table) {
  CmdJoinParsT pars{.group = {}, .syncStartNextCmd = table.syncStartNextCmd()};
  pars.group.reserve(table.group()->size());
  for (const flatbuffers::String* const name : *table.group()) {
    pars.group.push_back(name->str());
  }
  return pars;
}

/// Appends the objects of these names, up to the first that does not exist.
CmdResult appendObjects(const CallSite& site, core::IObjMgr& objMgr, const std::vector<std::string>& names,
                        job::JoinGroup& group) {
  group.reserve(group.size() + names.size());
  for (const std::string& name : names) {
    const core::IObj* const obj = objMgr.findObj(name.c_str(), 0);
    if (obj == nullptr) {
      KAVO_TRACE_IN(site, Error, "motion object %s is not found", name.c_str());
      return CmdResult::Refused;
    }
    group.push_back(obj);
  }
  return CmdResult::Okay;
}

/// Byte by byte, as all members do it.
void sortByName(const core::IObjMgr& objMgr, job::JoinGroup& group) {
  std::ranges::sort(group, {}, [&objMgr](const core::IObj* obj) {
    const char* const name = objMgr.getObjName(obj);
    return std::string_view(name != nullptr ? name : "");
  });
}

}  // namespace

void registerJoinDataTypes(core::job::IJobDataIDMgr& idMgr) {
  registerDataType(KAVO_HERE, idMgr, CmdJoinPars::getMyID(), "CmdJoinPars");
  registerDataType(KAVO_HERE, idMgr, job::JoinJobPars::getMyID(), "JoinJobPars");
}

template <ObjectType OBJECT_TYPE>
const CmdDefinition& CmdJoin<OBJECT_TYPE>::define() noexcept {
  return DEFINITION;
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdJoin<OBJECT_TYPE>::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned) {
  std::span<const std::uint8_t> buffer;
  const auto result = getVerifiedBuffer(KAVO_HERE, UNMARSHALLING, data, &isBufferOf<fbs::CmdJoin>, buffer);
  if (core::isFailure(result)) {
    return result;
  }
  const auto& table = *flatbuffers::GetRoot<fbs::CmdJoin>(buffer.data());
  if (table.group() == nullptr) {
    KAVO_TRACE_TEXT(Error, "No axes defined in group");
    return CmdResult::InvalidParameterData;
  }
  return makeContainer<CmdJoinPars>(container, owned, [&table] { return read(table); });
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdJoin<OBJECT_TYPE>::onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& /*source*/,
                                               core::IObj* obj, bool /*flag*/) {
  m_motionObj.setGiven(obj);
  const CallSite site = KAVO_HERE;
  return guarded(CmdResult::OutOfMemory, [&] {
    const auto* const values = CmdJoinPars::safeCast(cmdValues);
    if (values == nullptr) {
      KAVO_TRACE_IN(site, Error, "%s", "CmdJoinPars::safeCast(cmdValues) failed");
      return CmdResult::WrongContainer;
    }
    const CmdJoinParsT pars = values->get();
    if (pars.group.empty()) {
      KAVO_TRACE_IN(site, Error, "%s", "No motion objects specified for the join command");
      return CmdResult::Refused;
    }
    core::IObjMgr* const objMgr = getObjMgr(site);
    if (objMgr == nullptr) {
      return CmdResult::NullPointer;
    }
    job::JoinJobParsT& jobPars = this->m_cmdValues.getRef();
    jobPars.syncStartNextCmd = pars.syncStartNextCmd;
    return appendObjects(site, *objMgr, pars.group, jobPars.group);
  });
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdJoin<OBJECT_TYPE>::onValidate(const core::dia::CmdSourceInfo& /*source*/, core::dia::IDia* /*dia*/) {
  const CallSite site = KAVO_HERE;
  const core::IObjMgr* const objMgr = getObjMgr(site);
  if (objMgr == nullptr) {
    return CmdResult::NullPointer;
  }
  return guarded(CmdResult::OutOfMemory, [&] {
    const core::IObj* const obj = m_motionObj.get();
    if (obj == nullptr) {
      KAVO_TRACE_IN(site, Error, "%s", "Motion object is invalid");
      return CmdResult::NullPointer;
    }
    job::JoinGroup& group = this->m_cmdValues.getRef().group;
    if (std::ranges::find(group, obj) == group.end()) {
      group.push_back(obj);
    }
    if (group.size() < 2) {
      KAVO_TRACE_IN(site, Error, "%s", "No motion object(s) specified to join with.");
      return CmdResult::Refused;
    }
    sortByName(*objMgr, group);
    return CmdResult::Okay;
  });
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdJoin<OBJECT_TYPE>::onRegisterJobListsInputs(core::job::IJobDataHandler& handler) {
  using Base = GenericBufferedCmd<CmdJoin, job::JoinJobPars, OBJECT_TYPE>;
  if (const auto published = Base::onRegisterJobListsInputs(handler); core::isFailure(published)) {
    return published;
  }
  core::IObjPtr* motionObj = nullptr;
  const auto result = job::readData(handler, SectionID::OBJ_DATA, "onRegisterJobListsInputs", motionObj);
  if (core::isFailure(result)) {
    KAVO_TRACE(Error, "IObjPtr::registerRead failed: [0x%X]", core::toCode(result));
    return CmdResult::Refused;
  }
  m_motionObj.setPublished(motionObj);
  return CmdResult::Okay;
}

template <ObjectType OBJECT_TYPE>
void CmdJoin<OBJECT_TYPE>::onCmdStateChanged(const core::cmd::ICmdFrame& frame, core::cmd::CmdState /*state*/) {
  guarded([&frame] {
    if (frame.getCmdState() != core::cmd::CmdState::ABORTED) {
      return;
    }
    if (core::job::IJobObject* const found = frame.getJobHandler().findJobObject(job::JobObjJoin::JOB_NAME);
        found != nullptr) {
      // The name belongs to this class: the factory clones the prototype that this command has registered.
      static_cast<job::JobObjJoin*>(found)->onAbort();
    }
  });
}

template class CmdJoin<ObjectType::AXIS>;
template class CmdJoin<ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
