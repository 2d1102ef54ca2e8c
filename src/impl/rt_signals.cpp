// Makes, publishes and moves the signals.
#include "impl/rt_signals.h"

#include <array>
#include <cstdio>
#include <span>
#include <vector>

#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "impl/memory_access.h"
#include "impl/provider/node_addresses.h"
#include "impl/signal_counters.h"
#include "schemas/datalayer/memory_map_generated.h"

namespace motion::kavo::rt_data {

namespace {

using comm::datalayer::DlResult;
using comm::datalayer::IMemoryOwner;
using comm::datalayer::MemoryType;

constexpr const char* PROVIDER_ENDPOINT = "inproc:///tmp/datalayer/backend";
constexpr const char* COUNTER_TYPE = "types/datalayer/uint8";
constexpr std::uint32_t COUNTER_BITS = 8;

/// Describes both memories: one counter for each signal.
comm::datalayer::Variant makeMemoryMap() {
  flatbuffers::FlatBufferBuilder builder;
  std::vector<flatbuffers::Offset<comm::datalayer::Variable>> variables;
  for (std::uint32_t id = 0; id < RtSignals::getNrOfSignals(); ++id) {
    std::array<char, sizeof("signal_4294967295")> name{};
    std::snprintf(name.data(), name.size(), "signal_%02u", id);
    variables.push_back(
        comm::datalayer::CreateVariableDirect(builder, name.data(), COUNTER_BITS * id, COUNTER_BITS, COUNTER_TYPE));
  }
  // Readers look variables up by name; with two digits, the names are in order as they are made.
  static_assert(RtSignals::getNrOfSignals() <= 100);
  builder.Finish(comm::datalayer::CreateMemoryMap(builder, builder.CreateVector(variables)));
  return comm::datalayer::Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

}  // namespace

RtSignals& RtSignals::getInstance() {
  static RtSignals instance;
  return instance;
}

RtSignals::~RtSignals() {
  terminate();
}

bool RtSignals::initialize(comm::datalayer::IDataLayerFactory& factory) noexcept {
  if (m_outMemory) {
    KAVO_TRACE_TEXT(Error, "Already initialized");
    return false;
  }
  m_factory = &factory;
  m_provider.reset(guarded<comm::datalayer::IProvider*>(nullptr, [&] { return factory.createProvider(PROVIDER_ENDPOINT); }));
  if (!m_provider) {
    KAVO_TRACE_TEXT(Error, "Failed to create a provider");
    return false;
  }
  const auto tryTo = [](auto&& step) { return guarded(comm::datalayer::DL_OUT_OF_MEMORY, step); };
  if (const DlResult result = tryTo([this] { return createMemories(); }); isFailure(result)) {
    KAVO_TRACE(Error, "createMemorySync failed with: %s", result.toString());
  } else if (const DlResult described = tryTo([this] { return describeMemories(); }); isFailure(described)) {
    KAVO_TRACE(Error, "setMemoryMap failed with: %s", described.toString());
  } else if (const DlResult cleared = tryTo([this] { return clearInMemory(); }); isFailure(cleared)) {
    KAVO_TRACE(Error, "fill memory failed with: %s", cleared.toString());
  } else if (const DlResult started = tryTo([this] { return m_provider->start(); }); isFailure(started)) {
    KAVO_TRACE(Error, "Starting provider failed with: %s", started.toString());
  } else {
    return true;
  }
  terminate();
  return false;
}

DlResult RtSignals::createMemories() {
  const auto create = [this](std::shared_ptr<IMemoryOwner>& memory, const char* name, MemoryType type) {
    return m_factory->createMemorySync(memory, rtDataNodeUri + name, m_provider.get(), getNrOfSignals(), type);
  };
  if (const DlResult result = create(m_inMemory, "signals_in", MemoryType::INPUT); isFailure(result)) {
    return result;
  }
  return create(m_outMemory, "signals_out", MemoryType::OUTPUT);
}

DlResult RtSignals::describeMemories() {
  const comm::datalayer::Variant map = makeMemoryMap();
  if (const DlResult result = m_inMemory->setMemoryMap(map); isFailure(result)) {
    return result;
  }
  return m_outMemory->setMemoryMap(map);
}

DlResult RtSignals::clearInMemory() {
  const MemoryAccess in(*m_inMemory);
  for (std::uint32_t id = 0; !in.hasFailed() && id < getNrOfSignals(); ++id) {
    storeCounter(in.data(), id, 0);
  }
  return in.result();
}

void RtSignals::terminate() noexcept {
  if (m_factory == nullptr) {
    return;
  }
  for (auto* memory : {&m_outMemory, &m_inMemory}) {
    if (*memory) {
      const DlResult result = guarded(comm::datalayer::DL_FAILED, [&] { return m_factory->deleteMemorySync(*memory); });
      if (isFailure(result)) {
        // Says "input" for both memories; the text is kept to the letter.
        KAVO_TRACE(Error, "Cannot delete input memory: %s", result.toString());
      }
      memory->reset();
    }
  }
  if (m_provider) {
    const DlResult result = guarded(comm::datalayer::DL_FAILED, [this] { return m_provider->stop(); });
    if (isFailure(result)) {
      KAVO_TRACE(Error, "Stopping provider failed with: %s", result.toString());
    }
    m_provider.reset();
  }
  m_factory = nullptr;
}

}  // namespace motion::kavo::rt_data
