// The door into a real-time run: HTTP on a local socket, as docs/door.md describes it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/door/api.h"
#include "host/door/http_server.h"
#include "host/door/live_run.h"
#include "host/door/socket_file.h"
#include "host/run/player.h"

namespace motion::host::door {

struct DoorConfig {
  std::string program;  ///< name and version of the program that plays
  /// What clients may be granted at most.
  std::vector<std::string> grantedScopes{"motion.operate", "motion.view"};
  Clock clock = std::chrono::steady_clock::now;  ///< for the rate of requests
};

/// Open before the run, so that clients may already knock; answers from its start to its end.
///
/// | who | does |
/// |---|---|
/// | thread that plays | tells what is new, at most under a short lock; opens and closes |
/// | threads of the door | answer; they ask the data layer as any client does, and never touch what the cycle uses |
class Door {
 public:
  explicit Door(DoorConfig config) : m_config(std::move(config)) {}
  Door(const Door&) = delete;
  Door& operator=(const Door&) = delete;
  ~Door() { close(); }

  /// Makes the socket; false with a text when it cannot. [framework]
  [[nodiscard]] bool open(const std::filesystem::path& path, std::string& problem) { return m_socket.open(path, problem); }
  /// The same in the default directory, under the number of this process. [framework]
  [[nodiscard]] bool openDefault(std::string& problem);
  /// Lets the door follow a run. It must outlive the run.
  void follow(run::Watch& watch);
  /// Ends all connections and removes the socket. [framework]
  void close() noexcept;

 private:
  [[nodiscard]] std::string begin(run::Session& session, const scenario::Scenario& scenario);

  DoorConfig m_config;
  SocketFile m_socket;
  LiveRun m_run;
  std::unique_ptr<Api> m_api;
  std::unique_ptr<HttpServer> m_server;
};

}  // namespace motion::host::door
