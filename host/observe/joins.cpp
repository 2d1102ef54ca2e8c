#include "host/observe/joins.h"

#include <algorithm>
#include <map>
#include <ranges>

#include "host/observe/outlook.h"

namespace motion::host::observe {

using core::cmd::CmdState;

namespace {

std::uint64_t between(std::uint64_t from, std::uint64_t to) {
  return to > from ? to - from : 0;
}

/// The cycle in which a join's command can have joined: with its own first turn, or when its successor is prepared.
std::uint64_t arrivalOf(const ObjectRecord& object, const CmdRecord& join) {
  if (join.active == 0 || !join.sync.awaitsNext) {
    return join.active;
  }
  const std::uint64_t next = join.number < object.commands.size() ? object.commands[join.number].prepared : 0;
  return next == 0 ? 0 : std::max(join.active, next);
}

JoinMember memberOf(const ObjectRecord& object, const CmdRecord& join) {
  JoinMember member;
  member.object = join.object;
  member.number = join.number;
  member.active = join.active;
  member.arrived = arrivalOf(object, join);
  member.ended = join.ended;
  member.done = join.state == CmdState::DONE;
  member.aborted = join.state == CmdState::ABORTED || join.state == CmdState::FAILED;
  return member;
}

class Finder {
 public:
  explicit Finder(const RunRecord& record) : m_record(record) {}

  std::vector<JoinOccurrence> find() {
    for (const ObjectRecord& object : m_record.objects) {
      std::vector<SyncStep> before;
      for (const CmdRecord& command : object.commands) {
        if (command.sync.kind == SyncKind::JOINS) {
          add(object, command, occurrenceOf(command.sync, before));
          before.push_back(command.sync);
        }
      }
    }
    for (JoinOccurrence& join : m_joins) {
      if (std::ranges::all_of(join.members, &JoinMember::done)) {
        join.completed = join.members.front().ended;
      }
    }
    std::ranges::stable_sort(m_joins, {}, [](const JoinOccurrence& join) { return join.completed - 1; });  // 0 comes last
    return std::move(m_joins);
  }

 private:
  void add(const ObjectRecord& object, const CmdRecord& command, std::size_t occurrence) {
    const auto [place, isNew] = m_places.try_emplace({command.sync.group, occurrence}, m_joins.size());
    if (isNew) {
      JoinOccurrence join{command.sync.group, occurrence, {}, 0};
      for (const std::uint32_t member : join.group) {
        join.members.push_back({.object = member});
      }
      m_joins.push_back(std::move(join));
    }
    auto& members = m_joins[place->second].members;
    *std::ranges::find(members, command.object, &JoinMember::object) = memberOf(object, command);
  }

  const RunRecord& m_record;
  std::vector<JoinOccurrence> m_joins;
  std::map<std::pair<std::vector<std::uint32_t>, std::size_t>, std::size_t> m_places;
};

}  // namespace

std::uint64_t JoinMember::forPreparation(std::uint64_t runEnd) const {
  const std::uint64_t end = arrived != 0 ? arrived : ended != 0 ? ended : runEnd;
  return active == 0 ? 0 : between(active, end);
}

std::uint64_t JoinMember::forMembers(std::uint64_t runEnd) const {
  return arrived == 0 ? 0 : between(arrived, ended != 0 ? ended : runEnd);
}

const JoinMember* JoinOccurrence::last() const {
  const bool isComplete = std::ranges::all_of(members, [](const JoinMember& member) { return member.arrived != 0; });
  // Of several that arrived in one cycle the last one in the order of the objects had its turn last.
  return isComplete ? &*std::ranges::max_element(members | std::views::reverse, {}, &JoinMember::arrived) : nullptr;
}

std::vector<JoinOccurrence> findJoins(const RunRecord& record) {
  return Finder(record).find();
}

}  // namespace motion::host::observe
