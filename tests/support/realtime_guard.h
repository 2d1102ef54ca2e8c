// Counts what a thread with real-time promises must not do: allocate, free, lock and make system calls.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>

namespace motion::test {

enum class Violation { ALLOCATION, DEALLOCATION, LOCK, SYSTEM_CALL };

/// What one thread did.
struct Violations {
  std::uint64_t allocations = 0;
  std::uint64_t deallocations = 0;
  std::uint64_t locks = 0;
  std::uint64_t systemCalls = 0;

  friend bool operator==(const Violations&, const Violations&) = default;
};

/// Counts violations of one thread, between arm and disarm. It sees the whole process: the executable that links this
/// library defines the allocation and locking functions of the C library anew, so that also a library loaded at run time
/// calls them, if the executable has ENABLE_EXPORTS; the kernel itself reports system calls.
///
/// - Allocation: malloc, calloc, realloc, reallocarray, aligned_alloc, memalign, posix_memalign, valloc; operator new is
/// one.
/// - Deallocation: free of a block; freeing a null pointer does nothing and is not counted.
/// - Lock: mutexes (recursive ones and those of std too), read-write locks, spin locks: every attempt, also one that fails.
/// - System call: every one; those that change the own context end the watching of system calls until the next arm.
///
/// Sanitizers replace the same functions. Under them the guard sees less: allocations and deallocations that the sanitizer
/// reports, and pthread_mutex_lock called from the executable itself; no system calls.
class RealtimeGuard {
 public:
  static constexpr std::size_t RECORDS = 8;
  static constexpr std::size_t DEPTH = 16;

  RealtimeGuard() = default;
  RealtimeGuard(const RealtimeGuard&) = delete;
  RealtimeGuard& operator=(const RealtimeGuard&) = delete;
  ~RealtimeGuard() { disarm(); }

  /// Begins, or goes on, to count on the calling thread. Throws std::runtime_error, with a sentence that says why, when the
  /// kernel cannot report system calls; std::logic_error when another guard is armed on this thread.
  void arm();
  /// Makes no difference when it is not armed. On the thread that armed it.
  void disarm() noexcept;

  [[nodiscard]] std::uint64_t count(Violation kind) const noexcept { return m_counts[static_cast<std::size_t>(kind)]; }
  [[nodiscard]] Violations violations() const noexcept;
  [[nodiscard]] bool isClean() const noexcept { return violations() == Violations{}; }
  /// The counts, and of the first violations what they were and who called; for people. Not while armed.
  [[nodiscard]] std::string describe() const;

  /// False under sanitizers. [any]
  [[nodiscard]] static bool countsSystemCalls() noexcept;

  /// For the replaced functions and the signal handler: notes one violation if a guard is armed on this thread. `operation`
  /// has static storage and is null for a system call, of which `number` is given.
  static void note(Violation kind, const char* operation, long number) noexcept;

 private:
  struct Record {
    Violation kind = Violation::ALLOCATION;
    const char* operation = nullptr;
    long number = 0;
    std::array<void*, DEPTH> callers{};
    int depth = 0;
  };

  void record(Violation kind, const char* operation, long number) noexcept;
  static void appendCallers(std::string& text, std::span<void* const> callers);

  std::array<std::uint64_t, 4> m_counts{};
  std::array<Record, RECORDS> m_records{};
  std::size_t m_recordCount = 0;
};

/// Runs the action on this thread and tells what it did.
template <typename Action>
[[nodiscard]] Violations violationsOf(const Action& action) {
  RealtimeGuard guard;
  guard.arm();
  action();
  guard.disarm();
  return guard.violations();
}

/// For people.
void PrintTo(const Violations& violations, std::ostream* out);

}  // namespace motion::test
