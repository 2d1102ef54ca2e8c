// Knocks at the door of a run that goes on in another process.
#pragma once

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace motion::host::door {

struct Reply {
  int status = 0;  ///< of HTTP; 0 when nobody answered
  nlohmann::ordered_json body;
  std::string problem;  ///< for people; empty when all is fine

  [[nodiscard]] bool isFine() const noexcept { return problem.empty(); }
};

/// For one thread. Nothing of it throws but std::bad_alloc.
class DoorClient {
 public:
  using Json = nlohmann::ordered_json;
  using EventHandler = std::function<void(const std::string& name, const Json& data)>;

  /// With scopes the client asks for no more than these.
  explicit DoorClient(std::filesystem::path socket, std::optional<std::vector<std::string>> scopes = {})
      : m_socket(std::move(socket)), m_scopes(std::move(scopes)) {}

  [[nodiscard]] Reply get(const std::string& path) const;
  [[nodiscard]] Reply put(const std::string& path, const Json& body) const;
  /// Gives every event to the handler until the stream ends; fine when it ended with the run.
  [[nodiscard]] Reply watch(const std::string& path, const EventHandler& onEvent) const;

 private:
  std::filesystem::path m_socket;
  std::optional<std::vector<std::string>> m_scopes;
};

struct LivingDoor {
  std::filesystem::path socket;
  std::string scenario;
};

/// The doors in a directory at which somebody answers; none, with a text, when the directory is not the user's own.
[[nodiscard]] std::vector<LivingDoor> livingDoors(const std::filesystem::path& directory, std::string& problem);

}  // namespace motion::host::door
