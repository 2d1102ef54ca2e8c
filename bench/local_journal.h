// Takes the journal's place within this process, so that figures do not depend on how fast a journald of this machine reads.
#pragma once

namespace motion::bench {

/// While one exists, whatever the process sends by sendmsg goes to its datagram socket, with the same system call.
class LocalJournal {
 public:
  /// Entries that fit before drain must be called.
  static constexpr int CAPACITY = 8;

  /// Throws std::system_error.
  LocalJournal();
  LocalJournal(const LocalJournal&) = delete;
  LocalJournal& operator=(const LocalJournal&) = delete;
  ~LocalJournal();

  [[nodiscard]] int socket() const noexcept { return m_ends[0]; }
  /// Throws away what was sent; returns how many messages that were.
  int drain() noexcept;

 private:
  int m_ends[2] = {-1, -1};
};

}  // namespace motion::bench
