#include "host/door/socket_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "host/door/door_limits.h"

namespace motion::host::door {

namespace fs = std::filesystem;

namespace {

constexpr mode_t OWNER_ONLY = S_IRUSR | S_IWUSR;

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_descriptor >= 0) {
      close(m_descriptor);
    }
  }
  [[nodiscard]] int get() const noexcept { return m_descriptor; }

 private:
  int m_descriptor;
};

/// Keeps others that open or sweep in the same directory away: a socket that is bound and does not listen yet looks to them
/// as if nobody listened any more. Goes on without the lock when somebody keeps it for himself.
class DirectoryLock {
 public:
  explicit DirectoryLock(const fs::path& directory)
      : m_directory(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    constexpr int TRIES = 100;
    for (int i = 0; i < TRIES && m_directory.get() >= 0 && flock(m_directory.get(), LOCK_EX | LOCK_NB) != 0; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

 private:
  Descriptor m_directory;
};

std::optional<sockaddr_un> addressOf(const fs::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string& text = path.native();
  if (text.empty() || text.size() >= sizeof(address.sun_path) || text.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  std::copy(text.begin(), text.end(), address.sun_path);
  return address;
}

/// 0 when somebody listens there, else what connect says.
int tryToConnect(const fs::path& path) {
  const auto address = addressOf(path);
  const Descriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!address || descriptor.get() < 0) {
    return EINVAL;
  }
  if (connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof(*address)) == 0) {
    return 0;
  }
  return errno == EAGAIN ? 0 : errno;  // its queue is full
}

/// Says what stands in the way at that path, after a dead socket was removed; empty when nothing does.
std::string clear(const fs::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return errno == ENOENT ? "" : fmt::format("{}: {}", path.string(), std::strerror(errno));
  }
  if (!S_ISSOCK(status.st_mode)) {
    return fmt::format("{} is there and is no socket; it stays as it is. Choose another path", path.string());
  }
  const int error = tryToConnect(path);
  if (error == 0) {
    return fmt::format("another run listens at {}. Choose another path", path.string());
  }
  if (error != ECONNREFUSED) {
    return fmt::format("{} is there and cannot be tried ({}); it stays as it is. Choose another path", path.string(),
                       std::strerror(error));
  }
  return unlink(path.c_str()) == 0 ? "" : fmt::format("{} cannot be replaced: {}", path.string(), std::strerror(errno));
}

fs::path directoryOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

template <typename WORK>
void forEachSocket(const fs::path& directory, const WORK& work) {
  std::error_code error;
  for (fs::directory_iterator entry(directory, error); !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code gone;
    if (entry->symlink_status(gone).type() == fs::file_type::socket) {
      work(entry->path());
    }
  }
}

}  // namespace

SocketFile::~SocketFile() {
  close();
}

bool SocketFile::open(const fs::path& path, std::string& problem) {
  close();
  if (!addressOf(path)) {
    problem = fmt::format("'{}' cannot be the path of a socket: it has {} bytes, possible are 1 to {}", path.string(),
                          path.native().size(), sizeof(sockaddr_un::sun_path) - 1);
    return false;
  }
  const DirectoryLock lock(directoryOf(path));
  problem = clear(path);
  if (!problem.empty()) {
    return false;
  }
  m_path = path;
  if (!bind(problem)) {
    close();
    return false;
  }
  return true;
}

bool SocketFile::bind(std::string& problem) {
  const auto address = addressOf(m_path);
  const auto fail = [&](const char* what) {
    problem = fmt::format("{} at {}: {}", what, m_path.string(), std::strerror(errno));
    return false;
  };
  m_descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  // The file gets the permissions that the socket has before it is bound.
  if (m_descriptor < 0 || fchmod(m_descriptor, OWNER_ONLY) != 0 ||
      ::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&*address), sizeof(*address)) != 0) {
    fail("no socket could be made");
    m_path.clear();  // whatever is there is not ours
    return false;
  }
  struct stat status {};
  if (lstat(m_path.c_str(), &status) != 0) {
    return fail("the socket has disappeared");
  }
  m_device = status.st_dev;
  m_inode = status.st_ino;
  // Nobody can connect before it listens.
  if ((status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)) != OWNER_ONLY && chmod(m_path.c_str(), OWNER_ONLY) != 0) {
    return fail("the socket cannot be kept from others");
  }
  return listen(m_descriptor, static_cast<int>(MAX_QUEUED)) == 0 || fail("nobody can listen");
}

int SocketFile::release() noexcept {
  return std::exchange(m_descriptor, -1);
}

void SocketFile::close() noexcept {
  if (m_descriptor >= 0) {
    ::close(std::exchange(m_descriptor, -1));
  }
  struct stat status {};
  if (!m_path.empty() && lstat(m_path.c_str(), &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode) {
    unlink(m_path.c_str());
  }
  m_path.clear();
}

bool isAlive(const fs::path& path) {
  return tryToConnect(path) == 0;
}

fs::path defaultDirectory() {
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && fs::path(runtime).is_absolute()) {
    return fs::path(runtime) / "kavo";
  }
  return fmt::format("/tmp/kavo-{}", geteuid());
}

bool prepareDirectory(const fs::path& directory, std::string& problem) {
  if (mkdir(directory.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    problem = fmt::format("the directory {} cannot be made: {}", directory.string(), std::strerror(errno));
    return false;
  }
  return isSafe(directory, problem);
}

bool isSafe(const fs::path& directory, std::string& problem) {
  struct stat status {};
  if (lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    problem = fmt::format("{} is no directory", directory.string());
  } else if (status.st_uid != geteuid()) {
    problem = fmt::format("the directory {} belongs to another user", directory.string());
  } else if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    problem = fmt::format("others may write to the directory {}; 'chmod 700' helps", directory.string());
  } else {
    return true;
  }
  return false;
}

void sweep(const fs::path& directory) noexcept {
  try {
    const DirectoryLock lock(directory);
    forEachSocket(directory, [](const fs::path& path) {
      if (tryToConnect(path) == ECONNREFUSED) {
        unlink(path.c_str());
      }
    });
  } catch (const std::exception&) {
    // They are in nobody's way.
  }
}

std::vector<fs::path> livingSockets(const fs::path& directory) {
  std::vector<fs::path> sockets;
  forEachSocket(directory, [&sockets](const fs::path& path) {
    if (isAlive(path)) {
      sockets.push_back(path);
    }
  });
  std::ranges::sort(sockets);
  return sockets;
}

}  // namespace motion::host::door
