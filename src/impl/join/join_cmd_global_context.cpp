// The meeting place of a join: linking, joining, aborting, and the list of open occurrences.
#include "impl/join/join_cmd_global_context.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "impl/join/job_obj_join.h"

namespace motion::kavo::job {

namespace {

using core::cmd::CmdState;

/// Flags that preparation and the cycle touch without a lock.
bool loadFlag(const bool& flag) noexcept {
  // Reading through atomic_ref changes nothing; the flags themselves are never constant.
  return std::atomic_ref<bool>(const_cast<bool&>(flag)).load(std::memory_order_acquire);
}

void raiseFlag(bool& flag) noexcept {
  std::atomic_ref<bool>(flag).store(true, std::memory_order_release);
}

const core::IObj* objOf(const core::IObj* obj) noexcept {
  return obj;
}
const core::IObj* objOf(const ObjJoinInfo& info) noexcept {
  return info.motionObj;
}

/// True when every element of `group` is the object of some entry and there are as many of them as entries. Groups are
/// sorted by name, so each element is looked for from the place behind the one before: one pass in all.
template <typename GROUP>
bool isSame(const std::vector<ObjJoinInfo>& infos, const GROUP& group) noexcept {
  if (group.size() != infos.size()) {
    return false;
  }
  auto place = infos.begin();
  for (const auto& element : group) {
    const core::IObj* const obj = objOf(element);
    auto found = std::ranges::find(place, infos.end(), obj, &ObjJoinInfo::motionObj);
    if (found == infos.end()) {
      found = std::ranges::find(infos.begin(), place, obj, &ObjJoinInfo::motionObj);
      if (found == place) {
        return false;
      }
    }
    place = std::next(found);
  }
  return true;
}

}  // namespace

std::weak_ptr<JoinCmdGlobalContext> JoinCmdGlobalContext::g_head;
std::uint32_t JoinCmdGlobalContext::g_listSize = 0;
std::atomic<std::uint32_t> JoinCmdGlobalContext::g_idCounter{1};
std::recursive_mutex JoinCmdGlobalContext::g_mtx;

GroupMap::GroupMap(const JoinGroup& group) {
  m_infos.reserve(group.size());
  for (const core::IObj* const obj : group) {
    m_infos.push_back({.motionObj = obj});
  }
}

JoinCmdGlobalContext::JoinCmdGlobalContext(const JoinGroup& group) : m_groupMap(group), m_seq(g_idCounter.fetch_add(1)) {}

JoinCmdGlobalContext::~JoinCmdGlobalContext() {
  // Nobody finds a context that dies, for the list's references are weak: this leaves a dead link, which ends later walks.
  removeFromLinkedList();
}

std::shared_ptr<JoinCmdGlobalContext> JoinCmdGlobalContext::create(const JobObjJoin& job, int& index) {
  const std::lock_guard lock(g_mtx);
  index = -1;
  if (!isValidJobObject(job)) {
    return nullptr;
  }
  removeAbortedContexts();
  Handle context = findOpenFor(job.getMotionObj(), *job.getGroup());
  const bool isNew = context == nullptr;
  if (isNew) {
    context = std::make_shared<JoinCmdGlobalContext>(*job.getGroup());
  }
  index = context->linkJobObject(job);
  if (context->isAllObjLinked()) {
    // Later joins are other occurrences.
    context->removeFromLinkedList();
  } else if (isNew) {
    appendToLinkedList(context);
  }
  return context;
}

JoinCmdGlobalContext::Handle JoinCmdGlobalContext::findOpenFor(const core::IObj* obj, const JoinGroup& group) {
  Handle context = findMostRecent(group);
  if (context != nullptr && context->isAborted()) {
    context->removeFromLinkedList();
    return nullptr;
  }
  if (context == nullptr || context->isLinked(obj)) {
    return nullptr;
  }
  // A member that has several joins in its buffer takes part in the occurrences in the order in which they were opened.
  for (Handle older = context->findPreviousWithSameGroup(); older != nullptr; older = older->findPreviousWithSameGroup()) {
    if (!older->isLinked(obj)) {
      context = older;
    }
  }
  return context;
}

void JoinCmdGlobalContext::reset() {
  const std::lock_guard lock(g_mtx);
  g_head.reset();
  g_listSize = 0;
  g_idCounter = 1;
}

ObjJoinInfo* JoinCmdGlobalContext::infoAt(int index) noexcept {
  return const_cast<ObjJoinInfo*>(std::as_const(*this).infoAt(index));
}

const ObjJoinInfo* JoinCmdGlobalContext::infoAt(int index) const noexcept {
  const auto& infos = m_groupMap.m_infos;
  return index >= 0 && static_cast<std::size_t>(index) < infos.size() ? &infos[static_cast<std::size_t>(index)] : nullptr;
}

bool JoinCmdGlobalContext::isLinked(const core::IObj* obj) const noexcept {
  const auto& infos = m_groupMap.m_infos;
  const auto info = std::ranges::find(infos, obj, &ObjJoinInfo::motionObj);
  return info != infos.end() && info->cmdId != 0;
}

int JoinCmdGlobalContext::linkJobObject(const JobObjJoin& job) {
  auto& infos = m_groupMap.m_infos;
  const auto info = std::ranges::find(infos, job.getMotionObj(), &ObjJoinInfo::motionObj);
  if (info == infos.end()) {
    return -1;
  }
  info->cmdId = job.getCmdId();
  return static_cast<int>(info - infos.begin());
}

bool JoinCmdGlobalContext::isAllObjLinked() const noexcept {
  return std::ranges::all_of(m_groupMap.m_infos, [](const ObjJoinInfo& info) { return info.cmdId != 0; });
}

void JoinCmdGlobalContext::join(int index) {
  ObjJoinInfo* const info = infoAt(index);
  if (info == nullptr || info->joinSeq != 0) {
    return;
  }
  info->joinSeq = ++m_joinedCount;
  if (m_joinedCount == m_groupMap.m_infos.size()) {
    m_completionCycle = info->motionObj->getCycleCount();
  }
}

bool JoinCmdGlobalContext::isJoined(int index) const noexcept {
  const ObjJoinInfo* const info = infoAt(index);
  return info != nullptr && info->joinSeq != 0;
}

void JoinCmdGlobalContext::markAborted(int index) noexcept {
  raiseFlag(m_aborted);
  if (ObjJoinInfo* const info = infoAt(index); info != nullptr) {
    raiseFlag(info->aborted);
  }
}

bool JoinCmdGlobalContext::isAborted(int index) const noexcept {
  const ObjJoinInfo* const info = infoAt(index);
  return info != nullptr && loadFlag(info->aborted);
}

bool JoinCmdGlobalContext::isAborted() const noexcept {
  return loadFlag(m_aborted);
}

void JoinCmdGlobalContext::determineAbortedFromCmdStates() {
  if (isAborted()) {
    return;
  }
  const auto& infos = m_groupMap.m_infos;
  const auto aborted = std::ranges::find_if(infos, [](const ObjJoinInfo& info) {
    return info.cmdId != 0 && info.motionObj->getCmdState(info.cmdId) == CmdState::ABORTED;
  });
  if (aborted != infos.end()) {
    markAborted(static_cast<int>(aborted - infos.begin()));
  }
}

bool JoinCmdGlobalContext::isSameGroup(const JoinGroup& group) const noexcept {
  return isSame(m_groupMap.m_infos, group);
}

bool JoinCmdGlobalContext::isSameGroup(const JoinCmdGlobalContext& other) const noexcept {
  return isSame(m_groupMap.m_infos, other.m_groupMap.m_infos);
}

bool JoinCmdGlobalContext::isValidJobObject(const JobObjJoin& job) {
  return job.getGroup() != nullptr && job.getMotionObj() != nullptr;
}

std::shared_ptr<JoinCmdGlobalContext> JoinCmdGlobalContext::findMostRecent(const JoinGroup& group) {
  const std::lock_guard lock(g_mtx);
  Handle context = g_head.lock();
  while (context != nullptr && !context->isSameGroup(group)) {
    context = context->m_next.lock();
  }
  return context;
}

std::shared_ptr<JoinCmdGlobalContext> JoinCmdGlobalContext::findPreviousWithSameGroup() const {
  const std::lock_guard lock(g_mtx);
  Handle context = m_next.lock();
  while (context != nullptr && !context->isSameGroup(*this)) {
    context = context->m_next.lock();
  }
  return context;
}

void JoinCmdGlobalContext::removeAbortedContexts() {
  const std::lock_guard lock(g_mtx);
  Handle context = g_head.lock();
  while (context != nullptr) {
    // Taking a context out of the list clears its link.
    Handle next = context->m_next.lock();
    context->determineAbortedFromCmdStates();
    if (context->isAborted()) {
      context->removeFromLinkedList();
    }
    context = std::move(next);
  }
}

void JoinCmdGlobalContext::appendToLinkedList(const std::shared_ptr<JoinCmdGlobalContext>& context) {
  const std::lock_guard lock(g_mtx);
  context->m_next = g_head;
  g_head = context;
  ++g_listSize;
}

void JoinCmdGlobalContext::removeFromLinkedList() {
  const std::lock_guard lock(g_mtx);
  Handle newer;
  for (Handle context = g_head.lock(); context != nullptr; context = newer->m_next.lock()) {
    if (context.get() == this) {
      (newer == nullptr ? g_head : newer->m_next) = m_next;
      m_next.reset();
      --g_listSize;
      return;
    }
    newer = std::move(context);
  }
}

std::uint32_t JoinCmdGlobalContext::listSize() {
  const std::lock_guard lock(g_mtx);
  return g_listSize;
}

}  // namespace motion::kavo::job
