// Floors: the least that the hardware needs for the same work.
#include "bench/floors.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace motion::bench {

namespace {

constexpr std::size_t SIGNALS = 100;

std::atomic<bool> g_isTraceEnabled{false};

class SignalFloor : public ISignalFloor {
 public:
  bool get(std::uint32_t id) override { return load(m_in[id]) != load(m_out[id]); }

  void set(std::uint32_t id) override {
    const auto next = static_cast<std::uint8_t>(load(m_in[id]) + 1);
    store(m_in[id], next != load(m_out[id]) ? next : static_cast<std::uint8_t>(next + 1));
  }

  void reset(std::uint32_t id) override { store(m_in[id], load(m_out[id])); }

 private:
  static std::uint8_t load(std::uint8_t& counter) noexcept {
    return std::atomic_ref<std::uint8_t>(counter).load(std::memory_order_acquire);
  }
  static void store(std::uint8_t& counter, std::uint8_t value) noexcept {
    std::atomic_ref<std::uint8_t>(counter).store(value, std::memory_order_release);
  }

  std::array<std::uint8_t, SIGNALS> m_in{};
  std::array<std::uint8_t, SIGNALS> m_out{};
};

class LockedSignalFloor final : public SignalFloor {
 public:
  bool get(std::uint32_t id) override {
    const std::lock_guard lock(m_mutex);
    return SignalFloor::get(id);
  }

  void set(std::uint32_t id) override {
    const std::lock_guard lock(m_mutex);
    SignalFloor::set(id);
  }

  void reset(std::uint32_t id) override {
    const std::lock_guard lock(m_mutex);
    SignalFloor::reset(id);
  }

 private:
  std::mutex m_mutex;
};

/// What the members of one join share.
struct JoinFloor {
  struct Member {
    const std::uint64_t* cycle = nullptr;
    std::uint32_t joinSeq = 0;
  };

  std::vector<Member> members;
  std::vector<std::unique_ptr<std::uint64_t>> cycles;
  std::uint32_t joinedCount = 0;
  std::uint64_t completionCycle = 0;
  bool aborted = false;
};

class JoinMemberFloor final : public IJoinMemberFloor {
 public:
  JoinMemberFloor(std::shared_ptr<JoinFloor> join, std::size_t index) : m_join(std::move(join)), m_index(index) {}

  bool isReleased() override {
    const JoinFloor::Member& member = m_join->members[m_index];
    return !m_waitsForNext && member.joinSeq != 0 &&
           !std::atomic_ref<bool>(m_join->aborted).load(std::memory_order_acquire) &&
           m_join->joinedCount == m_join->members.size() && *member.cycle == m_join->completionCycle + 1;
  }

 private:
  std::shared_ptr<JoinFloor> m_join;
  std::size_t m_index;
  bool m_waitsForNext = false;
};

}  // namespace

std::unique_ptr<ISignalFloor> makeSignalFloor() {
  return std::make_unique<SignalFloor>();
}

std::unique_ptr<ISignalFloor> makeLockedSignalFloor() {
  return std::make_unique<LockedSignalFloor>();
}

void JoinWalkFloor::add(std::size_t members) {
  auto node = std::make_shared<Node>();
  node->members.resize(members);
  for (Member& member : node->members) {
    member.object = &member;
  }
  node->members.front().cmdId = 1;
  add(std::move(node));
}

void JoinWalkFloor::add(std::span<const std::pair<const core::IObj*, std::uint64_t>> members) {
  auto node = std::make_shared<Node>();
  for (const auto& [object, cmdID] : members) {
    node->members.push_back({object, cmdID});
  }
  add(std::move(node));
}

void JoinWalkFloor::add(std::shared_ptr<Node> node) {
  node->next = m_nodes.empty() ? nullptr : m_nodes.back().get();
  m_nodes.push_back(std::move(node));
}

std::uint64_t JoinWalkFloor::visit(const void* object) const noexcept {
  std::uint64_t linked = 0;
  for (const Node* node = m_nodes.empty() ? nullptr : m_nodes.back().get(); node != nullptr; node = node->next) {
    for (const Member& member : node->members) {
      linked += static_cast<std::uint64_t>(member.object != object) & static_cast<std::uint64_t>(member.cmdId != 0);
    }
  }
  return linked;
}

std::uint64_t JoinWalkFloor::ask() {
  const std::lock_guard lock(m_mutex);
  std::uint64_t going = 0;
  for (const Node* node = m_nodes.empty() ? nullptr : m_nodes.back().get(); node != nullptr; node = node->next) {
    for (const Member& member : node->members) {
      if (member.cmdId != 0) {
        const auto* const object = static_cast<const core::IObj*>(member.object);
        going += object->getCmdState(member.cmdId) != core::cmd::CmdState::ABORTED ? 1U : 0U;
      }
    }
  }
  return going;
}

std::uint64_t RecursiveLockFloor::lockOnce() {
  const std::lock_guard lock(m_mutex);
  return ++m_count;
}

std::vector<std::unique_ptr<IJoinMemberFloor>> makeJoinFloor(std::size_t members, bool isComplete) {
  const auto join = std::make_shared<JoinFloor>();
  join->members.resize(members);
  join->joinedCount = static_cast<std::uint32_t>(isComplete ? members : members - 1);
  std::vector<std::unique_ptr<IJoinMemberFloor>> result;
  for (std::uint32_t i = 0; i < join->joinedCount; ++i) {
    join->cycles.push_back(std::make_unique<std::uint64_t>(1));
    join->members[i] = {join->cycles.back().get(), i + 1};
    result.push_back(std::make_unique<JoinMemberFloor>(join, i));
  }
  return result;
}

void traceFloor(const char* format, unsigned int value) noexcept {
  if (g_isTraceEnabled.load(std::memory_order_relaxed)) {
    std::fprintf(stderr, "%s %u\n", format, value);
  }
}

void entryFloor(int socket, const char* format, ...) noexcept {
  std::array<char, 768> text;
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  iovec part{text.data(), static_cast<std::size_t>(length)};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  static_cast<void>(::sendmsg(socket, &message, MSG_NOSIGNAL));
}

}  // namespace motion::bench
