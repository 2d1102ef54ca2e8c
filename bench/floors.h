// Floors: the least that the hardware needs for the same work. Each figure is printed as a multiple of its floor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "motion/core/i_obj.h"

namespace motion::bench {

/// A signal as two counters, reached by one virtual call.
class ISignalFloor {
 public:
  virtual ~ISignalFloor() = default;
  virtual bool get(std::uint32_t id) = 0;    ///< two byte loads and a compare
  virtual void set(std::uint32_t id) = 0;    ///< two byte loads, a compare and a byte store
  virtual void reset(std::uint32_t id) = 0;  ///< a byte load and a byte store
};

/// Made where the compiler of a benchmark does not see which class it is.
[[nodiscard]] std::unique_ptr<ISignalFloor> makeSignalFloor();
/// The same within an uncontended mutex: what exclusion among several callers costs.
[[nodiscard]] std::unique_ptr<ISignalFloor> makeLockedSignalFloor();

/// Open occurrences of joins as a chain of nodes, each with a table of its members.
class JoinWalkFloor {
 public:
  JoinWalkFloor() = default;
  JoinWalkFloor(const JoinWalkFloor&) = delete;
  JoinWalkFloor& operator=(const JoinWalkFloor&) = delete;

  /// Puts an occurrence with one linked member in front of the others. Throws std::bad_alloc.
  void add(std::size_t members);
  /// The same with these members and the IDs of their commands, 0 where a member has not linked. Throws std::bad_alloc.
  void add(std::span<const std::pair<const core::IObj*, std::uint64_t>> members);
  /// Visits every member of every occurrence once: loads its object and its command. The number of linked members.
  [[nodiscard]] std::uint64_t visit(const void* object) const noexcept;
  /// Visits them with an uncontended recursive mutex held, and asks the object of each linked member for the state of its
  /// command. The number of linked members whose command is not aborted. Needs members that are objects.
  [[nodiscard]] std::uint64_t ask();

 private:
  struct Member {
    const void* object = nullptr;
    std::uint64_t cmdId = 0;
    std::uint32_t joinSeq = 0;
    bool aborted = false;
  };
  struct Node {
    virtual ~Node() = default;

    std::uint64_t counters[2]{};
    std::vector<Member> members;
    const Node* next = nullptr;
  };

  void add(std::shared_ptr<Node> node);

  std::vector<std::shared_ptr<Node>> m_nodes;
  std::recursive_mutex m_mutex;
};

/// A recursive mutex, made where the compiler of a benchmark does not see what it guards.
class RecursiveLockFloor {
 public:
  /// Locks and unlocks it once. How often that has been done.
  std::uint64_t lockOnce();

 private:
  std::recursive_mutex m_mutex;
  std::uint64_t m_count = 0;
};

/// A member of a join, reached by one virtual call.
class IJoinMemberFloor {
 public:
  virtual ~IJoinMemberFloor() = default;
  /// Loads whether the member has joined, whether the join is aborted and complete and, when it is, two cycle counts to
  /// compare.
  virtual bool isReleased() = 0;
};

/// The members of one join that have joined; of a join that is not complete, all but one. Made where the compiler of a
/// benchmark does not see which class it is.
[[nodiscard]] std::vector<std::unique_ptr<IJoinMemberFloor>> makeJoinFloor(std::size_t members, bool isComplete);

/// A trace that is switched off: a call and a branch on an atomic flag.
void traceFloor(const char* format, unsigned int value) noexcept;
/// An entry: one vsnprintf of the text, and one sendmsg of it to the datagram socket.
void entryFloor(int socket, const char* format, ...) noexcept __attribute__((format(printf, 2, 3)));

}  // namespace motion::bench
