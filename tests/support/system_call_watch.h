// Lets the kernel report the system calls of a thread, and carries them out all the same.
#pragma once

namespace motion::test {

/// Uses Linux' syscall user dispatch: while the thread's selector says so, a system call becomes a signal.
class SystemCallWatch {
 public:
  /// False under sanitizers, whose own system calls cannot be told apart: nothing is reported then.
  [[nodiscard]] static bool isPossible() noexcept;
  /// Prepares the calling thread; a repeated call does nothing. Throws std::runtime_error when the kernel cannot do it.
  static void prepareThread();
  static void start() noexcept;  ///< on a prepared thread
  static void stop() noexcept;
};

}  // namespace motion::test
