// Access to the signals for everybody but the jobs.
#include "impl/signals.h"

#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "impl/provider/node_addresses.h"
#include "impl/rt_signals.h"
#include "impl/signal_counters.h"

namespace motion::kavo {

using comm::datalayer::DlResult;
using core::FctResult;

namespace {

DlResult endAccessOf(comm::datalayer::IMemory& memory) noexcept {
  return guarded(comm::datalayer::DL_FAILED, [&memory] { return memory.endAccess(); });
}

}  // namespace

Signals::Signals(comm::datalayer::IDataLayerFactory& factory) noexcept : m_factory(factory) {
  const auto open = [&factory](std::shared_ptr<comm::datalayer::IMemoryUser>& memory, const char* name) {
    const DlResult result =
        guarded(comm::datalayer::DL_OUT_OF_MEMORY, [&] { return factory.openMemory(memory, rtDataNodeUri + name); });
    if (isFailure(result)) {
      memory.reset();
    }
    return result;
  };
  if (isFailure(open(m_outMemory, "signals_out")) || isFailure(open(m_inMemory, "signals_in"))) {
    KAVO_TRACE_TEXT(Error, "Failed to open memory to real-time signals");
  }
}

Signals::~Signals() {
  const auto close = [this](const std::shared_ptr<comm::datalayer::IMemoryUser>& memory) {
    return guarded(comm::datalayer::DL_FAILED, [&] { return m_factory.closeMemory(memory); });
  };
  // Both messages name the result DL_OK, not the one of the close; they are known to readers in this form.
  const char* const resultText = comm::datalayer::DL_OK.toString();
  if (m_outMemory && isFailure(close(m_outMemory))) {
    KAVO_TRACE(Error, "Failed to close  %ssignals_out: Error(%s)", rtDataNodeUri.c_str(), resultText);
  }
  if (m_inMemory && isFailure(close(m_inMemory))) {
    // Prints "ignals_in": the text is kept to the letter.
    KAVO_TRACE(Error, "Failed to close  %signals_in: Error(%s)", rtDataNodeUri.c_str(), resultText);
  }
}

FctResult Signals::beginAccess(std::uint8_t*& in, std::uint8_t*& out, std::uint32_t id) {
  if (!m_outMemory || !m_inMemory) {
    KAVO_TRACE_TEXT(Error, "Failed to open rt-dataLayer memory during construction");
    return FctResult::NotOkay;
  }
  if (!rt_data::RtSignals::isValidId(id)) {
    KAVO_TRACE(Error, "wrong id %d", id);
    return FctResult::InvalidParameter;
  }
  const auto begin = [](comm::datalayer::IMemory& memory, std::uint8_t*& data) {
    return guarded(comm::datalayer::DL_FAILED, [&] { return memory.beginAccess(data, 0); });
  };
  std::unique_lock lock(m_mutex);
  if (const DlResult result = begin(*m_outMemory, out); isFailure(result)) {
    KAVO_TRACE(Error, "Failed to access %s%s: Error(%s)", rtDataNodeUri.c_str(), "signals_out", result.toString());
    return FctResult::NotOkay;
  }
  if (const DlResult result = begin(*m_inMemory, in); isFailure(result)) {
    endAccessOf(*m_outMemory);
    KAVO_TRACE(Error, "Failed to access %s%s: Error(%s)", rtDataNodeUri.c_str(), "signals_in", result.toString());
    return FctResult::NotOkay;
  }
  lock.release();  // held until endAccess
  return FctResult::Okay;
}

FctResult Signals::endAccess() {
  const std::unique_lock lock(m_mutex, std::adopt_lock);
  // A memory that refuses keeps the other one open; this is kept as it is.
  const bool isEnded = !isFailure(endAccessOf(*m_inMemory)) && !isFailure(endAccessOf(*m_outMemory));
  return isEnded ? FctResult::Okay : FctResult::NotOkay;
}

FctResult Signals::set(std::uint32_t id) {
  std::uint8_t* in = nullptr;
  std::uint8_t* out = nullptr;
  const FctResult result = beginAccess(in, out, id);
  if (!isFailure(result)) {
    storeCounter(out, id, settingCounter(KAVO_HERE, id, loadCounter(out, id), loadCounter(in, id)));
    endAccess();
  }
  return result;
}

FctResult Signals::reset(std::uint32_t id) {
  std::uint8_t* in = nullptr;
  std::uint8_t* out = nullptr;
  const FctResult result = beginAccess(in, out, id);
  if (!isFailure(result)) {
    storeCounter(out, id, loadCounter(in, id));
    endAccess();
  }
  return result;
}

FctResult Signals::get(std::uint32_t id, bool& value) {
  std::uint8_t* in = nullptr;
  std::uint8_t* out = nullptr;
  const FctResult result = beginAccess(in, out, id);
  if (!isFailure(result)) {
    value = loadCounter(out, id) != loadCounter(in, id);
    endAccess();
  }
  return result;
}

}  // namespace motion::kavo
