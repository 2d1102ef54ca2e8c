// Reads entries back from the systemd-journald that runs on this machine.
#include "support/journal_reader.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace motion::test {
namespace {

constexpr const char* SOCKET_PATH = "/run/systemd/journal/socket";
constexpr const char* ARRIVAL_FIELD = "KAVO_ARRIVAL";
constexpr std::chrono::milliseconds REOPEN_INTERVAL{500};
constexpr std::uint64_t POLL_INTERVAL = 5'000;  // [us]

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + "; start systemd-journald, or run this through scripts/with_journald of the sources");
}

void check(int result, const char* operation) {
  if (result < 0) {
    fail(std::string(operation) + " failed: " + std::strerror(-result));
  }
}

/// The client library takes a missing journal for success, so ask the socket itself.
void requireJournald() {
  const int descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, SOCKET_PATH, sizeof(address.sun_path) - 1);
  const bool isConnected =
      descriptor >= 0 && ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  const int error = errno;
  if (descriptor >= 0) {
    ::close(descriptor);
  }
  if (!isConnected) {
    fail(std::string("no systemd-journald listens at ") + SOCKET_PATH + " (" + std::strerror(error) + ")");
  }
}

}  // namespace

std::vector<std::string> JournalEntry::values(std::string_view field) const {
  std::vector<std::string> result;
  for (const auto& [name, value] : fields) {
    if (name == field) {
      result.push_back(value);
    }
  }
  return result;
}

std::string JournalEntry::value(std::string_view field) const {
  const auto all = values(field);
  if (all.size() != 1) {
    throw std::runtime_error("field " + std::string(field) + " stands " + std::to_string(all.size()) +
                             " times in the entry");
  }
  return all.front();
}

std::string uniqueMarker() {
  static std::atomic<unsigned int> s_count{0};
  const auto now = std::chrono::system_clock::now().time_since_epoch().count();
  char text[41];
  std::snprintf(text, sizeof(text), "m%x-%llx-%x", static_cast<unsigned int>(::getpid()), static_cast<long long>(now),
                s_count.fetch_add(1));
  return text;
}

JournalReader::JournalReader() {
  requireJournald();
  open();
}

void JournalReader::open() {
  sd_journal* journal = nullptr;
  check(sd_journal_open(&journal, SD_JOURNAL_LOCAL_ONLY), "sd_journal_open");
  m_journal.reset(journal);
}

void JournalReader::Close::operator()(sd_journal* journal) const noexcept {
  sd_journal_close(journal);
}

std::vector<JournalEntry> JournalReader::read(std::string_view field, std::string_view value,
                                              std::chrono::milliseconds limit) {
  waitForArrival(limit);
  match(field, value);
  std::vector<JournalEntry> entries;
  int result = 0;
  while ((result = sd_journal_next(m_journal.get())) > 0) {
    entries.push_back(currentEntry());
  }
  check(result, "sd_journal_next");
  return entries;
}

void JournalReader::waitForArrival(std::chrono::milliseconds limit) {
  const std::string marker = uniqueMarker();
  check(sd_journal_send("MESSAGE=journal reader", "PRIORITY=7", "%s=%s", ARRIVAL_FIELD, marker.c_str(), nullptr),
        "sd_journal_send");
  const auto deadline = std::chrono::steady_clock::now() + limit;
  auto reopening = std::chrono::steady_clock::now() + REOPEN_INTERVAL;
  match(ARRIVAL_FIELD, marker);
  while (true) {
    const int result = sd_journal_next(m_journal.get());
    check(result, "sd_journal_next");
    if (result > 0) {
      return;
    }
    if (std::chrono::steady_clock::now() > deadline) {
      fail("systemd-journald did not store an entry within " + std::to_string(limit.count()) + " ms");
    }
    if (std::chrono::steady_clock::now() > reopening) {
      // A journal that was opened while journald made its files anew may not see the new ones.
      open();
      match(ARRIVAL_FIELD, marker);
      reopening += REOPEN_INTERVAL;
    }
    // journald announces changes a quarter of a second late, so look again before it does.
    check(sd_journal_wait(m_journal.get(), POLL_INTERVAL), "sd_journal_wait");
  }
}

void JournalReader::match(std::string_view field, std::string_view value) {
  const std::string text = std::string(field) + "=" + std::string(value);
  sd_journal_flush_matches(m_journal.get());
  check(sd_journal_add_match(m_journal.get(), text.data(), text.size()), "sd_journal_add_match");
  check(sd_journal_seek_head(m_journal.get()), "sd_journal_seek_head");
}

JournalEntry JournalReader::currentEntry() {
  JournalEntry entry;
  const void* data = nullptr;
  std::size_t length = 0;
  int result = 0;
  sd_journal_restart_data(m_journal.get());
  while ((result = sd_journal_enumerate_data(m_journal.get(), &data, &length)) > 0) {
    const std::string_view text(static_cast<const char*>(data), length);
    const auto equals = text.find('=');
    entry.fields.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  }
  check(result, "sd_journal_enumerate_data");
  return entry;
}

}  // namespace motion::test
