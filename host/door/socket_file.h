// The local socket of a door and the file by which it is found.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace motion::host::door {

/// A socket that listens at a path. Only its owner can connect, at no moment anybody else.
class SocketFile {
 public:
  SocketFile() = default;
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;
  /// Closes.
  ~SocketFile();

  /// Makes the file and listens. A socket on which nobody listens any more is replaced; whatever else is there stays, and
  /// the text says what it is. [framework]
  [[nodiscard]] bool open(const std::filesystem::path& path, std::string& problem);
  /// Hands the listening descriptor over; the file stays until close.
  [[nodiscard]] int release() noexcept;
  /// Removes the file, unless somebody has put another one in its place.
  void close() noexcept;
  [[nodiscard]] const std::filesystem::path& path() const noexcept { return m_path; }

 private:
  [[nodiscard]] bool bind(std::string& problem);

  std::filesystem::path m_path;  ///< empty while there is no file
  int m_descriptor = -1;
  dev_t m_device = 0;  ///< of the file
  ino_t m_inode = 0;
};

/// True when somebody listens at that path. [any]
[[nodiscard]] bool isAlive(const std::filesystem::path& path);

/// Where runs put their sockets if nobody says otherwise: $XDG_RUNTIME_DIR/kavo or /tmp/kavo-<uid>. [any]
[[nodiscard]] std::filesystem::path defaultDirectory();
/// False with a text when that directory is none, belongs to another user, or others may write to it. [any]
[[nodiscard]] bool isSafe(const std::filesystem::path& directory, std::string& problem);
/// Makes that directory if it is not there; false with a text when that fails or it is not safe. [framework]
[[nodiscard]] bool prepareDirectory(const std::filesystem::path& directory, std::string& problem);
/// Removes sockets on which nobody listens any more. Only in a directory of the user's own. [framework]
void sweep(const std::filesystem::path& directory) noexcept;
/// The sockets in a directory on which somebody listens, in order. [any]
[[nodiscard]] std::vector<std::filesystem::path> livingSockets(const std::filesystem::path& directory);

}  // namespace motion::host::door
