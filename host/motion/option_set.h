// The options that accompany the commands of one motion object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/motion/cmd_factory.h"
#include "host/motion/cmd_request.h"
#include "host/motion/obj_factory.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "motion/core/i_obj.h"
#include "motion/core/job/job_object_base.h"

namespace motion::host {

/// An option that was accepted for an object.
class AcceptedOption {
 public:
  using Entry = Registry<CmdOptionEntry>::Shared;

  AcceptedOption(Entry entry, std::unique_ptr<core::cmd::GenericCmdOption> option, core::cmd::CmdOptDuration duration,
                 core::dia::CmdSourceInfo source, std::uint64_t id)
      : m_entry(std::move(entry)),
        m_option(std::move(option)),
        m_duration(duration),
        m_source(std::move(source)),
        m_id(id) {}

  [[nodiscard]] const std::string& name() const noexcept { return m_entry->id.name; }
  [[nodiscard]] const CmdOptionEntry& entry() const noexcept { return *m_entry; }
  [[nodiscard]] core::cmd::GenericCmdOption& option() const noexcept { return *m_option; }
  /// NONE for one that ends others and accompanies nothing itself.
  [[nodiscard]] core::cmd::CmdOptDuration duration() const noexcept { return m_duration; }
  [[nodiscard]] const core::dia::CmdSourceInfo& source() const noexcept { return m_source; }
  /// Ascends in the order in which the options of an object were accepted, from 1.
  [[nodiscard]] std::uint64_t id() const noexcept { return m_id; }

 private:
  Entry m_entry;  // outlives the option, whose code it came from
  std::unique_ptr<core::cmd::GenericCmdOption> m_option;
  core::cmd::CmdOptDuration m_duration;
  core::dia::CmdSourceInfo m_source;
  std::uint64_t m_id;
};

/// A job object that an option made for one command, with the option.
struct OptionJob {
  std::shared_ptr<const AcceptedOption> option;
  std::unique_ptr<core::job::IJobObject> job;
};

/// What is in force on an object, by the name of the option:
///
/// | given for | accompanies | ends |
/// |---|---|---|
/// | one command ("Once") | the next command that belongs to one of the option's groups | with that command |
/// | good ("PermOn") | every following command of those groups | with "PermOff", or when another takes its place |
///
/// Options that offer their data for stacking carry along what was in force before them, so the newest one stands for all of
/// that name: it alone accompanies a command. Others accompany it side by side, in the order in which they were given.
/// Commands that are buffered already keep what they were issued with. Calls of an option that throw are not caught here.
/// Not thread-safe: preparation holds its lock.
class OptionSet : public core::cmd::ICmdOptHandler {
 public:
  using Shared = std::shared_ptr<const AcceptedOption>;

  /// The options of one name.
  struct InForce {
    core::cmd::CmdId id;
    std::vector<Shared> once;  ///< for the next command
    Shared permanent;
    Shared latest;  ///< accompanies the last command of its groups, or was accepted since; others are stacked upon it
  };
  /// Copying it shares the options. Ordered by first use.
  using State = std::vector<InForce>;

  /// Lets an option check its parameters and brings it into force. Null with `result` and `problem` when it is refused; then
  /// nothing has changed. Throws what the option throws, and std::bad_alloc. [prepare]
  [[nodiscard]] Shared accept(const AcceptedOption::Entry& entry, core::IObj& object, const OptionRequest& request,
                              core::IObjFactory& factory, core::dia::IDia& dia, core::cmd::CmdResult& result,
                              std::string& problem);
  /// Makes the jobs of all options that accompany a command. On failure `problem` names the option; the caller takes the
  /// state back. Throws as accept. [prepare]
  [[nodiscard]] core::cmd::CmdResult accompany(const CmdEntry& command, core::IObjFactory& factory,
                                               std::vector<OptionJob>& jobs, std::string& problem);
  /// The data of the option of that name that is in force; not owned. NoOptionData when none is. [prepare]
  core::cmd::CmdResult getDataOfOption(const core::cmd::CmdId& option,
                                       const core::IContainer*& data) const noexcept override;

  [[nodiscard]] const State& state() const noexcept { return m_state; }
  void restore(State&& state) noexcept { m_state = std::move(state); }
  /// Forgets all options; not while jobs of theirs run. [framework]
  void clear() noexcept { m_state.clear(); }

 private:
  [[nodiscard]] InForce& inForce(const core::cmd::CmdId& id);
  void enter(const Shared& option);

  State m_state;
  std::uint64_t m_lastID = 0;
};

/// True when options of these groups can accompany the command. [any]
[[nodiscard]] bool canAccompany(const CmdOptionEntry& option, const CmdEntry& command) noexcept;

}  // namespace motion::host
