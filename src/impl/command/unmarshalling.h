// Turns FlatBuffers values of the data layer into parameter records.
#pragma once

#include <cstdint>
#include <span>

#include <flatbuffers/flatbuffers.h>

#include "comm/datalayer/variant.h"
#include "impl/call_site.h"
#include "impl/guarded.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::kavo::cmd {

/// Messages in which commands differ. One with a number is a function, so that the compiler checks its format.
struct UnmarshalTexts {
  void (*wrongType)(const CallSite& site, comm::datalayer::VariantType type) noexcept;
  const char* invalidBuffer;
};

/// The messages of most commands and options.
extern const UnmarshalTexts UNMARSHAL_TEXTS;

/// UnmarshalTexts::wrongType of the commands that name the type in other words.
void traceIsNotFlatbuffers(const CallSite& site, comm::datalayer::VariantType type) noexcept;

/// Does a buffer hold a table of some kind?
using VerifyFn = bool (*)(std::span<const std::uint8_t> buffer);

/// Finds the buffer in `data` and checks it. NullPointer or InvalidParameterData, each with a trace. [prepare]
[[nodiscard]] core::cmd::CmdResult getVerifiedBuffer(const CallSite& site, const UnmarshalTexts& texts,
                                                     const comm::datalayer::Variant* data, VerifyFn verify,
                                                     std::span<const std::uint8_t>& buffer) noexcept;

template <typename TABLE>
[[nodiscard]] bool isBufferOf(std::span<const std::uint8_t> buffer) {
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  return verifier.VerifyBuffer<TABLE>(nullptr);
}

/// Makes a CONTAINER of the record that `read` makes; the host owns it. OutOfMemory. [prepare]
template <typename CONTAINER, typename READ>
[[nodiscard]] core::cmd::CmdResult makeContainer(core::IContainer*& container, bool& owned, READ read) noexcept {
  return guarded(core::cmd::CmdResult::OutOfMemory, [&] {
    core::IContainer* const made = new CONTAINER(read());
    owned = true;
    container = made;
    return core::cmd::CmdResult::Okay;
  });
}

/// Makes a CONTAINER of the record that `read` makes of the TABLE; the host owns it. Results as getVerifiedBuffer, and
/// OutOfMemory. [prepare]
template <typename TABLE, typename CONTAINER, typename READ>
[[nodiscard]] core::cmd::CmdResult unmarshal(const CallSite& site, const UnmarshalTexts& texts,
                                             const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned,
                                             READ read) noexcept {
  std::span<const std::uint8_t> buffer;
  if (const auto result = getVerifiedBuffer(site, texts, data, &isBufferOf<TABLE>, buffer); core::isFailure(result)) {
    return result;
  }
  return makeContainer<CONTAINER>(container, owned, [&] { return read(*flatbuffers::GetRoot<TABLE>(buffer.data())); });
}

}  // namespace motion::kavo::cmd
