#include "host/motion/option_set.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/support/guarded.h"
#include "motion/core/cmd/cmd_groups.h"

namespace motion::host {

using core::cmd::CmdOptDuration;
using core::cmd::CmdResult;

namespace {

/// An option that offers its data takes over, by stacking, what was in force before it.
bool isStackable(const AcceptedOption& option) {
  const core::IContainer* data = nullptr;
  return !core::isFailure(option.option().getParameter(data)) && data != nullptr;
}

/// The options that accompany the next command; what is for that command only is in force no longer.
std::vector<OptionSet::Shared> takeFor(OptionSet::InForce& options) {
  std::vector<OptionSet::Shared> taken = std::exchange(options.once, {});
  if (options.permanent != nullptr && (taken.empty() || !isStackable(*taken.back()))) {
    taken.push_back(options.permanent);
  }
  std::ranges::sort(taken, {}, [](const OptionSet::Shared& option) { return option->id(); });
  options.latest = taken.empty() ? nullptr : taken.back();
  return taken;
}

/// The slot in which the jobs of an option run: the first of those that it named.
std::uint32_t slotOf(const CmdOptionEntry& entry) noexcept {
  return entry.slots.empty() ? 0 : entry.slots.front();
}

/// Job objects that an option gave away, until somebody takes them over.
class GivenJobs {
 public:
  explicit GivenJobs(std::vector<core::job::IJobObject*> jobs) noexcept : m_jobs(std::move(jobs)) {}
  GivenJobs(const GivenJobs&) = delete;
  GivenJobs& operator=(const GivenJobs&) = delete;
  ~GivenJobs() {
    for (core::job::IJobObject* const job : m_jobs) {
      delete job;
    }
  }

  [[nodiscard]] bool areComplete() const noexcept {
    return !m_jobs.empty() && std::ranges::find(m_jobs, nullptr) == m_jobs.end();
  }
  void moveTo(std::vector<OptionJob>& jobs, const OptionSet::Shared& option) {
    for (core::job::IJobObject*& job : m_jobs) {
      jobs.push_back({option, nullptr});
      job->setCmdOptMetaInfo({option->id(), slotOf(option->entry())});
      jobs.back().job.reset(std::exchange(job, nullptr));
    }
  }

 private:
  std::vector<core::job::IJobObject*> m_jobs;
};

CmdResult makeJobs(const OptionSet::Shared& option, core::IObjFactory& factory, std::vector<OptionJob>& jobs) {
  GivenJobs given(option->option().createJobs(factory));
  if (!given.areComplete()) {
    return CmdResult::JobCreationFailed;
  }
  given.moveTo(jobs, option);
  return CmdResult::Okay;
}

}  // namespace

bool canAccompany(const CmdOptionEntry& option, const CmdEntry& command) noexcept {
  if (option.id.objectType != command.id.objectType) {
    return false;
  }
  const std::string_view all = option.id.objectType == core::ObjectType::AXIS ? core::cmd::axs::GROUP_ALL_COMMANDS
                                                                              : core::cmd::kin::GROUP_ALL_COMMANDS;
  return std::ranges::any_of(option.groups, [&](const std::string& group) {
    return group == all || std::ranges::find(command.groups, group) != command.groups.end();
  });
}

OptionSet::Shared OptionSet::accept(const AcceptedOption::Entry& entry, core::IObj& object, const OptionRequest& request,
                                    core::IObjFactory& factory, core::dia::IDia& dia, CmdResult& result,
                                    std::string& problem) {
  const auto refuse = [&](CmdResult why, const std::string& text) -> Shared {
    result = why;
    problem = text;
    return nullptr;
  };
  std::string errText;
  core::cmd::GenericCmdOption* made = nullptr;
  const CmdResult created = entry->create(made, errText);
  std::unique_ptr<core::cmd::GenericCmdOption> option(made);
  if (core::isFailure(created) || option == nullptr) {
    return refuse(core::isFailure(created) ? created : CmdResult::OptionCreationFailed,
                  errText.empty() ? "it could not be made" : errText);
  }
  core::cmd::CmdOptPermType permType = request.permType;
  if (const auto stacked = option->prepareStackableCmdOption(object, *this, &request.values, permType, request.source);
      core::isFailure(stacked)) {
    return refuse(stacked, "it could not be stacked upon what is in force");
  }
  if (const auto set = option->setParameter(&request.values, factory, object, dia); core::isFailure(set)) {
    return refuse(set, "its parameters are not valid");
  }
  auto duration = CmdOptDuration::NONE;
  if (const auto known = option->getDuration(permType, duration); core::isFailure(known)) {
    return refuse(known, "its permanence is not known");
  }
  auto accepted = std::make_shared<const AcceptedOption>(entry, std::move(option), duration, request.source, m_lastID + 1);
  enter(accepted);
  ++m_lastID;
  result = CmdResult::Okay;
  return accepted;
}

OptionSet::InForce& OptionSet::inForce(const core::cmd::CmdId& id) {
  const auto found = std::ranges::find(m_state, id, &InForce::id);
  return found != m_state.end() ? *found : m_state.emplace_back(InForce{id, {}, nullptr, nullptr});
}

void OptionSet::enter(const Shared& option) {
  InForce& options = inForce(option->entry().id);
  if (option->duration() == CmdOptDuration::NONE) {
    // What was given for the next command was given on purpose; it stays.
    options.permanent = nullptr;
    options.latest = options.once.empty() ? nullptr : options.once.back();
    return;
  }
  const bool replacesAll = isStackable(*option);
  if (option->duration() == CmdOptDuration::ONE_COMMAND) {
    std::vector<Shared> once = replacesAll ? std::vector<Shared>() : options.once;
    once.push_back(option);
    options.once = std::move(once);
  } else {
    options.permanent = option;
    if (replacesAll) {
      options.once.clear();
    }
  }
  options.latest = option;
}

CmdResult OptionSet::accompany(const CmdEntry& command, core::IObjFactory& factory, std::vector<OptionJob>& jobs,
                               std::string& problem) {
  std::vector<Shared> taken;
  for (InForce& options : m_state) {
    const Shared& any = options.permanent != nullptr ? options.permanent : options.latest;
    if (any != nullptr && canAccompany(any->entry(), command)) {
      const std::vector<Shared> ofName = takeFor(options);
      taken.insert(taken.end(), ofName.begin(), ofName.end());
    }
  }
  std::ranges::sort(taken, {}, [](const Shared& option) { return option->id(); });
  for (const Shared& option : taken) {
    if (const auto result = makeJobs(option, factory, jobs); core::isFailure(result)) {
      problem = fmt::format("option '{}' could not make its jobs", option->name());
      return result;
    }
  }
  return CmdResult::Okay;
}

CmdResult OptionSet::getDataOfOption(const core::cmd::CmdId& option, const core::IContainer*& data) const noexcept {
  const auto found = std::ranges::find(m_state, option, &InForce::id);
  if (found == m_state.end() || found->latest == nullptr) {
    return CmdResult::NoOptionData;
  }
  return guarded(CmdResult::OutOfMemory, CmdResult::NullPointer, [&] { return found->latest->option().getParameter(data); });
}

}  // namespace motion::host
