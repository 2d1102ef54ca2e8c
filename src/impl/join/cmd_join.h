// The command Join: holds an object's command buffer until all objects of a group have reached theirs.
#pragma once

#include "comm/datalayer/variant.h"
#include "impl/command/cmd_groups.h"
#include "impl/command/generic_buffered_cmd.h"
#include "impl/join/join_pars.h"
#include "motion/core/i_obj.h"

namespace motion::kavo::cmd {

/// The object on which a command was issued: the one that the host publishes to the command, and until it does so the one
/// that came with the parameters.
class IssuedOn {
 public:
  void setGiven(const core::IObj* obj) noexcept { m_given = obj; }
  void setPublished(core::IObjPtr* handle) noexcept { m_published = handle; }
  [[nodiscard]] const core::IObj* get() const { return m_published != nullptr ? m_published->get() : m_given; }

 private:
  core::IObjPtr* m_published = nullptr;
  const core::IObj* m_given = nullptr;
};

template <core::ObjectType OBJECT_TYPE>
class CmdJoin : public GenericBufferedCmd<CmdJoin<OBJECT_TYPE>, job::JoinJobPars, OBJECT_TYPE> {
 public:
  using GenericBufferedCmd<CmdJoin, job::JoinJobPars, OBJECT_TYPE>::GenericBufferedCmd;

  /// What the host's command factory calls. [prepare]
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned);

  /// Turns the names into objects.
  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& source,
                                      core::IObj* obj, bool flag) override;
  core::cmd::CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override;
  /// Adds the object itself to the group, if it is not named, and brings the group into the order that all members share.
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override;
  /// Tells the job of an abort.
  void onCmdStateChanged(const core::cmd::ICmdFrame& frame, core::cmd::CmdState state) override;

  [[nodiscard]] static const CmdDefinition& define() noexcept;  ///< [any]
  static constexpr const char* GROUPS[] = {GROUP_JOIN_CMD};
  static constexpr auto MARSHAL = &onMarshall;

 private:
  IssuedOn m_motionObj;
};

extern template class CmdJoin<core::ObjectType::AXIS>;
extern template class CmdJoin<core::ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
