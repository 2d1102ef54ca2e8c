// The command Join: holds an object's command buffer until all objects of a group have reached theirs.
#pragma once

#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "impl/command/kavo_cmd.h"
#include "impl/join/join_pars.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/i_motion_ext.h"

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
class CmdJoin : public KavoCmd<OBJECT_TYPE> {
 public:
  explicit CmdJoin(core::IObjFactory& objFactory);

  /// Registers and unregisters the job and the command; see registerCommand. [framework]
  [[nodiscard]] static core::cmd::CmdResult registerCmd(const core::IMotionExt& extIf, const std::string& schemaDir);
  [[nodiscard]] static core::cmd::CmdResult unregisterCmd(const core::IMotionExt& extIf);  ///< [framework]
  /// What the host's command factory calls. [prepare]
  static core::cmd::CmdResult onCreate(core::IObjFactory& factory, bool buffered, core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd,
                                       std::string& errText);
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                         bool& owned);  ///< [prepare]
  /// The first call, at registration, may throw std::bad_alloc. [framework] [prepare]
  [[nodiscard]] static const core::cmd::CmdId& getCmdId();
  [[nodiscard]] static const char* getStaticName() noexcept;  ///< [any]

  [[nodiscard]] std::vector<std::string> getJobNames() const override;
  /// Turns the names into objects.
  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& source,
                                      core::IObj* obj, bool flag) override;
  core::cmd::CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override;
  /// Adds the object itself to the group, if it is not named, and brings the group into the order that all members share.
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override;
  /// Tells the job of an abort.
  void onCmdStateChanged(const core::cmd::ICmdFrame& frame, core::cmd::CmdState state) override;

 private:
  job::JoinJobPars m_cmdValues;
  IssuedOn m_motionObj;
};

extern template class CmdJoin<core::ObjectType::AXIS>;
extern template class CmdJoin<core::ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
