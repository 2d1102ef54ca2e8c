// Takes the place of the journal for the whole test program: nothing is sent, everything is kept.
#include "support/fake_journal.h"

#include <sys/socket.h>

#include <cstddef>
#include <sstream>

namespace motion::test {
namespace {
thread_local FakeJournal* t_journal = nullptr;
}  // namespace

FakeJournal::FakeJournal() {
  t_journal = this;
}

FakeJournal::~FakeJournal() {
  t_journal = nullptr;
}

std::vector<std::string> FakeJournal::summaries() const {
  std::vector<std::string> result;
  for (const auto& entry : m_entries) {
    const auto& message = entry.at("MESSAGE");
    result.push_back(entry.at("R_DIAG_MAIN") + " " + entry.at("CODE_FILE") + " " + entry.at("CODE_FUNC") + ": " +
                     message.substr(message.rfind('|') + 1));
  }
  return result;
}

void FakeJournal::take(const std::string& bytes) {
  auto& entry = m_entries.emplace_back();
  std::istringstream stream(bytes);
  for (std::string line; std::getline(stream, line);) {
    const auto separator = line.find('=');
    entry[line.substr(0, separator)] = separator == std::string::npos ? "" : line.substr(separator + 1);
  }
}

/// Hands what the journal client sends to this thread's journal; the number of bytes.
std::size_t takeForJournal(const msghdr* message) {
  std::string bytes;
  for (std::size_t i = 0; i < message->msg_iovlen; ++i) {
    bytes.append(static_cast<const char*>(message->msg_iov[i].iov_base), message->msg_iov[i].iov_len);
  }
  if (t_journal != nullptr) {
    t_journal->take(bytes);
  }
  return bytes.size();
}

}  // namespace motion::test

// The journal client's shared library binds to this definition instead of the C library's.
extern "C" ssize_t sendmsg(int /*descriptor*/, const msghdr* message, int /*flags*/) {
  return static_cast<ssize_t>(motion::test::takeForJournal(message));
}
