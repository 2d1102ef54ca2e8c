// One occurrence of a join: the place where the jobs of all its members meet.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "impl/join/join_pars.h"

namespace motion::kavo::job {

class JobObjJoin;

/// What is known of one member.
struct ObjJoinInfo {
  const core::IObj* motionObj = nullptr;
  std::uint64_t cmdId = 0;    ///< of the member's command; 0 while the member has not linked
  std::uint32_t joinSeq = 0;  ///< 0 while it has not joined, else its rank, from 1
  bool aborted = false;       ///< through std::atomic_ref
};

/// The members, in group order.
class GroupMap {
 public:
  explicit GroupMap(const JoinGroup& group);
  virtual ~GroupMap() = default;

  std::vector<ObjJoinInfo> m_infos;
};

/// Made when the first member is prepared, owned by the jobs that have linked into it, dies with the last of them. While
/// members are missing it stands in a list of all open occurrences, which holds weak references only.
///
/// | what | who touches it | how |
/// |---|---|---|
/// | list: g_head, g_listSize, every m_next | preparation | g_mtx |
/// | cmdId of the entries | preparation | g_mtx, held by create |
/// | m_joinedCount, joinSeq, m_completionCycle | cyclic jobs, one after the other | plain |
/// | m_aborted, aborted of the entries | both | std::atomic_ref |
class JoinCmdGlobalContext {
 public:
  explicit JoinCmdGlobalContext(const JoinGroup& group);
  JoinCmdGlobalContext(const JoinCmdGlobalContext&) = delete;
  JoinCmdGlobalContext& operator=(const JoinCmdGlobalContext&) = delete;
  virtual ~JoinCmdGlobalContext();

  /// Finds the oldest open occurrence of the job's group that still misses this member, or opens one, and links the job into
  /// it. `index` is the member's place, -1 when the group does not name the job's object. Throws std::bad_alloc. [prepare]
  [[nodiscard]] static std::shared_ptr<JoinCmdGlobalContext> create(const JobObjJoin& job, int& index);
  /// Forgets all open occurrences; the next one gets sequence number 1. [framework]
  static void reset();

  /// Notes the member's command. Its index; -1 for a stranger. [prepare]
  int linkJobObject(const JobObjJoin& job);
  [[nodiscard]] bool isAllObjLinked() const noexcept;  ///< [prepare]
  /// The member has arrived; the last arrival notes the cycle of its object. A second time nothing happens.
  /// [cyclic & real-time]
  void join(int index);
  [[nodiscard]] bool isJoined(int index) const noexcept;  ///< [cyclic & real-time]
  /// The member's command was aborted, and with it the whole occurrence. [any & real-time]
  void markAborted(int index) noexcept;
  [[nodiscard]] bool isAborted(int index) const noexcept;  ///< [any & real-time]
  /// Notes the first member, in group order, whose command is aborted according to its object. [prepare]
  void determineAbortedFromCmdStates();

  /// The same members, in whatever order. [prepare]
  [[nodiscard]] bool isSameGroup(const JoinGroup& group) const noexcept;
  [[nodiscard]] bool isSameGroup(const JoinCmdGlobalContext& other) const noexcept;  ///< [prepare]
  /// A job that has its data and an object. [prepare]
  [[nodiscard]] static bool isValidJobObject(const JobObjJoin& job);

  /// The newest open occurrence of the group; null when there is none. [prepare]
  [[nodiscard]] static std::shared_ptr<JoinCmdGlobalContext> findMostRecent(const JoinGroup& group);
  /// The next older open occurrence of the same group; null when there is none. [prepare]
  [[nodiscard]] std::shared_ptr<JoinCmdGlobalContext> findPreviousWithSameGroup() const;
  /// Takes the aborted occurrences out of the list. [prepare]
  static void removeAbortedContexts();
  static void appendToLinkedList(const std::shared_ptr<JoinCmdGlobalContext>& context);  ///< [prepare]
  /// Without effect on a context that a walk does not find. [prepare]
  void removeFromLinkedList();

  [[nodiscard]] std::uint32_t joinedCount() const noexcept { return m_joinedCount; }          ///< [cyclic & real-time]
  [[nodiscard]] std::uint64_t completionCycle() const noexcept { return m_completionCycle; }  ///< [cyclic & real-time]
  [[nodiscard]] const GroupMap& groupMap() const noexcept { return m_groupMap; }              ///< [any & real-time]
  [[nodiscard]] std::uint32_t seq() const noexcept { return m_seq; }                          ///< [any & real-time]
  [[nodiscard]] bool isAborted() const noexcept;                                              ///< [any & real-time]
  [[nodiscard]] static std::uint32_t listSize();                                              ///< [prepare]

 private:
  using Handle = std::shared_ptr<JoinCmdGlobalContext>;
  using Link = std::weak_ptr<JoinCmdGlobalContext>;

  /// An open occurrence and where it stands in the list: `link` leads to it and belongs to `newer`, or is g_head.
  struct Place {
    Handle newer;
    Link* link = nullptr;
    Handle context;
    int index = -1;               ///< of the member that looks for it
    std::size_t linkedCount = 0;  ///< members that have linked
  };

  [[nodiscard]] ObjJoinInfo* infoAt(int index) noexcept;
  [[nodiscard]] const ObjJoinInfo* infoAt(int index) const noexcept;
  [[nodiscard]] int indexOf(const core::IObj* obj) const noexcept;
  /// determineAbortedFromCmdStates; how many members have linked, unless one is aborted.
  [[nodiscard]] std::size_t noteAbortedMember();

  // What follows is called with g_mtx held.

  /// Takes the aborted occurrences out of the list and calls visit(newer, link, context, linkedCount) for each of the
  /// others, newest first. `link` leads to the context and belongs to `newer`, or is g_head. A visitor may move the handles
  /// away; it then keeps the context at least until it is called again, for that owns the next link, and `newer` is null
  /// there.
  template <typename VISIT>
  static void walkUnlocked(const VISIT& visit);
  /// The occurrence into which the member belongs, if one is open. Takes the aborted ones out of the list, in the same walk.
  [[nodiscard]] static Place findOpenFor(const core::IObj* obj, const JoinGroup& group);
  static void appendUnlocked(const Handle& context) noexcept;
  /// Takes out the context to which the link leads.
  static void removeUnlocked(Link& link, JoinCmdGlobalContext& context) noexcept;

  std::uint32_t m_joinedCount = 0;
  std::uint64_t m_completionCycle = 0;
  GroupMap m_groupMap;
  std::weak_ptr<JoinCmdGlobalContext> m_next;
  std::uint32_t m_seq;
  bool m_aborted = false;

  static std::weak_ptr<JoinCmdGlobalContext> g_head;
  static std::uint32_t g_listSize;
  static std::atomic<std::uint32_t> g_idCounter;
  static std::recursive_mutex g_mtx;
};

}  // namespace motion::kavo::job
