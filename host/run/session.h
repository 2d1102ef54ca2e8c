// A host with one started component: data layer, trace service, motion runtime and the bundle's life.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "host/framework/component_lifecycle.h"
#include "host/motion/runtime.h"
#include "host/trace/trace_service.h"

namespace motion::host::run {

struct SessionConfig {
  std::filesystem::path bundleDir;
  RuntimeConfig runtime;
  std::chrono::milliseconds startLimit = framework::ComponentLifecycle::DEFAULT_TIME_LIMIT;
  bool journal = true;  ///< traces go to the system's journal
  /// How long closing waits for nodes that answer somebody.
  std::chrono::milliseconds closeLimit = datalayer::DataLayer::CLOSE_LIMIT;
};

/// Warnings and errors that the component traced, in words.
class TraceMemory {
 public:
  void add(const trace::TraceEntry& entry);
  /// All since the last call.
  [[nodiscard]] std::vector<std::string> take();

 private:
  std::mutex m_mutex;
  std::vector<std::string> m_texts;
};

/// Opening brings everything up; closing takes it down in the reverse order. If the component is lost (a call into it never
/// came back), nothing can be taken down: the process should print what it has to say and end by std::_Exit.
class Session {
 public:
  explicit Session(SessionConfig config);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  /// Loads and starts the bundle; on failure the text names the place and the remedy. [framework]
  [[nodiscard]] bool open(std::string& problem);
  /// Stops and unloads it; false with a text when that failed. [framework]
  [[nodiscard]] bool close(std::string& problem);
  [[nodiscard]] bool isLost() const noexcept { return m_lost; }

  [[nodiscard]] Runtime& runtime() noexcept { return *m_runtime; }
  [[nodiscard]] datalayer::DataLayer& dataLayer() noexcept { return *m_dataLayer; }
  [[nodiscard]] trace::TraceService& traceService() noexcept { return *m_trace; }
  /// What the component has said as warning or error since the last call. [framework]
  [[nodiscard]] std::vector<std::string> takeMessages();

 private:
  [[nodiscard]] bool start(std::string& problem);
  [[nodiscard]] std::string explain(const std::string& failure);
  void abandon() noexcept;

  SessionConfig m_config;
  std::shared_ptr<TraceMemory> m_messages = std::make_shared<TraceMemory>();
  std::unique_ptr<trace::TraceService> m_trace;
  std::unique_ptr<datalayer::DataLayer> m_dataLayer;
  std::unique_ptr<Runtime> m_runtime;
  std::unique_ptr<framework::ComponentLifecycle> m_lifecycle;
  bool m_lost = false;
};

}  // namespace motion::host::run
