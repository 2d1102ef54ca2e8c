#include "host/run/session.h"

#include <fmt/format.h>

#include <utility>

#include "host/framework/bundle_loader.h"
#include "host/trace/journal_writer.h"

namespace motion::host::run {

namespace {

constexpr const char* BUNDLE_NAME = "Motion.Kavo";

/// Bits 16 to 19 of a main diagnosis code say what an entry is.
bool isWarningOrError(unsigned int mainDiagnosisCode) {
  constexpr unsigned int WARNING = 14;
  return ((mainDiagnosisCode >> 16U) & 0xFU) >= WARNING;
}

}  // namespace

void TraceMemory::add(const trace::TraceEntry& entry) {
  if (isWarningOrError(entry.mainDiagnosisCode)) {
    const std::scoped_lock lock(m_mutex);
    m_texts.emplace_back(entry.text.data());
  }
}

std::vector<std::string> TraceMemory::take() {
  const std::scoped_lock lock(m_mutex);
  return std::exchange(m_texts, {});
}

Session::Session(SessionConfig config) : m_config(std::move(config)) {
  std::unique_ptr<trace::TraceWriter> writer;
  if (m_config.journal) {
    writer = std::make_unique<trace::JournalWriter>();
  }
  m_trace = std::make_unique<trace::TraceService>(std::move(writer));
  m_trace->addListener([messages = m_messages](const trace::TraceEntry& entry) { messages->add(entry); });
  m_dataLayer = std::make_unique<datalayer::DataLayer>();
  m_runtime = std::make_unique<Runtime>(m_config.runtime);
}

Session::~Session() {
  std::string ignored;
  static_cast<void>(close(ignored));
}

bool Session::open(std::string& problem) {
  framework::LoadResult loaded = framework::loadBundle(m_config.bundleDir);
  if (!loaded.bundle) {
    problem = loaded.error;
    return false;
  }
  m_dataLayer->openClients();
  m_lifecycle = std::make_unique<framework::ComponentLifecycle>(std::move(*loaded.bundle));
  if (start(problem)) {
    return true;
  }
  if (m_lifecycle->isLost()) {
    abandon();
  }
  return false;
}

bool Session::start(std::string& problem) {
  Records& records = m_runtime->records();
  framework::Services services;
  services.trace = m_trace.get();
  services.motionExtIF = &records.extension;
  services.dataLayerFactory = m_dataLayer.get();
  services.motionCmdIF = &records.cmd;
  services.motionSysIF = &records.sys;
  services.motionCmdIF2 = &records.cmd2;
  services.motionSysIF2 = &records.sys2;
  services.motionDataIF = &records.data;
  const auto isOk = [&](const framework::StepResult& step) {
    if (!step.isOk()) {
      problem = explain(step.text);
    }
    return step.isOk();
  };
  return isOk(m_lifecycle->setServices(services, m_config.bundleDir.string(), BUNDLE_NAME)) && isOk(m_lifecycle->init()) &&
         isOk(m_lifecycle->start(m_config.startLimit));
}

std::string Session::explain(const std::string& failure) {
  std::string text = failure;
  for (const std::string& complaint : m_runtime->complaints().all()) {
    text += fmt::format("\n  {}", complaint);
  }
  for (const std::string& message : takeMessages()) {
    text += fmt::format("\n  the component says: {}", message);
  }
  return text;
}

bool Session::close(std::string& problem) {
  if (m_lifecycle == nullptr || m_lost) {
    return !m_lost;
  }
  m_runtime->stopThreads();
  m_runtime->stopCommands();
  // First: the component takes its nodes away before it says so.
  if (!m_dataLayer->closeClients(m_config.closeLimit)) {
    problem =
        explain(fmt::format("bundle '{}': a node of the component has been asked and never came back; look in the "
                            "component's traces for the cause",
                            m_config.bundleDir.string()));
    abandon();
    return false;
  }
  bool isFine = true;
  if (m_lifecycle->state() == framework::LifecycleState::STARTED) {
    const framework::StepResult stopped = m_lifecycle->stop();
    if (!stopped.isOk()) {
      isFine = false;
      problem = explain(stopped.text);
    }
  }
  if (m_lifecycle->isLost()) {
    abandon();
    return false;
  }
  m_lifecycle.reset();
  m_trace->flush();
  return isFine;
}

void Session::abandon() noexcept {
  // A thread still runs in the component and may use whatever it was given: everything stays until the process ends.
  m_lost = true;
  static_cast<void>(m_lifecycle.release());
  static_cast<void>(m_runtime.release());
  static_cast<void>(m_dataLayer.release());
  static_cast<void>(m_trace.release());
}

std::vector<std::string> Session::takeMessages() {
  m_trace->flush();
  return m_messages->take();
}

}  // namespace motion::host::run
