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

/// How many elements of a group stand at the same places among the entries, counted from the first on. Groups are sorted by
/// name, so for the same group these are all as a rule.
template <typename GROUP>
std::size_t countInStep(const std::vector<ObjJoinInfo>& infos, const GROUP& group) noexcept {
  std::size_t count = 0;
  while (count < infos.size() && infos[count].motionObj == objOf(group[count])) {
    ++count;
  }
  return count;
}

/// True when every element of `group` is the object of some entry and there are as many of them as entries.
template <typename GROUP>
bool isSame(const std::vector<ObjJoinInfo>& infos, const GROUP& group) noexcept {
  if (group.size() != infos.size()) {
    return false;
  }
  const auto inStep = static_cast<std::ptrdiff_t>(countInStep(infos, group));
  // Each of the others is looked for from the place behind the one before.
  auto place = infos.begin() + inStep;
  for (auto element = group.begin() + inStep; element != group.end(); ++element) {
    const core::IObj* const obj = objOf(*element);
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
  const JoinGroup* const group = job.getGroup();
  const core::IObj* const obj = job.getMotionObj();
  if (group == nullptr || obj == nullptr) {
    return nullptr;
  }
  Place place = findOpenFor(obj, *group);
  if (place.context == nullptr) {
    Handle made = std::make_shared<JoinCmdGlobalContext>(*group);
    index = made->linkJobObject(job);
    if (!made->isAllObjLinked()) {
      appendUnlocked(made);
    }
    return made;
  }
  index = place.index;
  if (ObjJoinInfo* const info = place.context->infoAt(index); info != nullptr) {
    info->cmdId = job.getCmdId();
    place.linkedCount += info->cmdId != 0 ? 1U : 0U;
  }
  if (place.linkedCount == place.context->m_groupMap.m_infos.size()) {
    // Later joins are other occurrences.
    removeUnlocked(*place.link, *place.context);
  }
  return std::move(place.context);
}

template <typename VISIT>
void JoinCmdGlobalContext::walkUnlocked(const VISIT& visit) {
  Handle newer;
  Link* link = &g_head;
  for (Handle context = link->lock(), next; context != nullptr; context = std::move(next)) {
    // Taking a context out of the list clears its link.
    next = context->m_next.lock();
    const std::size_t linkedCount = context->noteAbortedMember();
    if (context->isAborted()) {
      removeUnlocked(*link, *context);
      continue;
    }
    Link* const linkToOlder = &context->m_next;
    visit(newer, *link, context, linkedCount);
    newer = std::move(context);
    link = linkToOlder;
  }
}

JoinCmdGlobalContext::Place JoinCmdGlobalContext::findOpenFor(const core::IObj* obj, const JoinGroup& group) {
  Place newest;
  Place oldest;
  bool isLinkedInNewest = false;
  walkUnlocked([&](Handle& newer, Link& link, Handle& context, std::size_t linkedCount) {
    if (!context->isSameGroup(group)) {
      return;
    }
    const int index = context->indexOf(obj);
    const ObjJoinInfo* const info = context->infoAt(index);
    const bool isMemberLinked = info != nullptr && info->cmdId != 0;
    if (newest.context == nullptr) {
      newest = {std::move(newer), &link, std::move(context), index, linkedCount};
      isLinkedInNewest = isMemberLinked;
    } else if (!isMemberLinked) {
      // Where the walk has nothing newer to give, the link belongs to the context that was kept last.
      if (newer == nullptr) {
        newer = oldest.context != nullptr ? std::move(oldest.context) : newest.context;
      }
      oldest = {std::move(newer), &link, std::move(context), index, linkedCount};
    }
  });
  if (newest.context != nullptr && newest.context->isAborted()) {
    // Since it was visited. Older ones are not looked at then.
    removeUnlocked(*newest.link, *newest.context);
    return {};
  }
  if (isLinkedInNewest) {
    return {};
  }
  // A member that has several joins in its buffer takes part in the occurrences in the order in which they were opened.
  return oldest.context != nullptr ? std::move(oldest) : std::move(newest);
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

int JoinCmdGlobalContext::indexOf(const core::IObj* obj) const noexcept {
  const auto& infos = m_groupMap.m_infos;
  const auto info = std::ranges::find(infos, obj, &ObjJoinInfo::motionObj);
  return info != infos.end() ? static_cast<int>(info - infos.begin()) : -1;
}

int JoinCmdGlobalContext::linkJobObject(const JobObjJoin& job) {
  const int index = indexOf(job.getMotionObj());
  if (ObjJoinInfo* const info = infoAt(index); info != nullptr) {
    info->cmdId = job.getCmdId();
  }
  return index;
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
  static_cast<void>(noteAbortedMember());
}

std::size_t JoinCmdGlobalContext::noteAbortedMember() {
  std::size_t linkedCount = 0;
  if (isAborted()) {
    return linkedCount;
  }
  const auto& infos = m_groupMap.m_infos;
  for (const ObjJoinInfo& info : infos) {
    if (info.cmdId == 0) {
      continue;
    }
    ++linkedCount;
    if (info.motionObj->getCmdState(info.cmdId) == CmdState::ABORTED) {
      markAborted(static_cast<int>(&info - infos.data()));
      break;
    }
  }
  return linkedCount;
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
  walkUnlocked([](const Handle&, const Link&, const Handle&, std::size_t) {});
}

void JoinCmdGlobalContext::appendToLinkedList(const std::shared_ptr<JoinCmdGlobalContext>& context) {
  const std::lock_guard lock(g_mtx);
  appendUnlocked(context);
}

void JoinCmdGlobalContext::appendUnlocked(const Handle& context) noexcept {
  context->m_next = std::exchange(g_head, context);
  ++g_listSize;
}

void JoinCmdGlobalContext::removeFromLinkedList() {
  const std::lock_guard lock(g_mtx);
  Handle newer;
  Link* link = &g_head;
  for (Handle context = link->lock(); context != nullptr; context = link->lock()) {
    if (context.get() == this) {
      removeUnlocked(*link, *this);
      return;
    }
    newer = std::move(context);
    link = &newer->m_next;
  }
}

void JoinCmdGlobalContext::removeUnlocked(Link& link, JoinCmdGlobalContext& context) noexcept {
  link = std::exchange(context.m_next, {});
  --g_listSize;
}

std::uint32_t JoinCmdGlobalContext::listSize() {
  const std::lock_guard lock(g_mtx);
  return g_listSize;
}

}  // namespace motion::kavo::job
