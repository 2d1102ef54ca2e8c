// Finds and checks the FlatBuffers value in what the data layer hands over.
#include "impl/command/unmarshalling.h"

#include "impl/debug_trace.h"

namespace motion::kavo::cmd {

using comm::datalayer::Variant;
using comm::datalayer::VariantType;
using core::cmd::CmdResult;

const UnmarshalTexts UNMARSHAL_TEXTS = {
    .wrongType =
        [](const CallSite& site, VariantType type) noexcept {
          KAVO_TRACE_AT(site, Error, "flatBufferData type(%d) != FLATBUFFERS", static_cast<int>(type));
        },
    .invalidBuffer = "Invalid FlatBuffer structure",
};

void traceIsNotFlatbuffers(const CallSite& site, VariantType type) noexcept {
  KAVO_TRACE_AT(site, Error, "'Variant data type(%d), is not FLATBUFFERS", static_cast<int>(type));
}

CmdResult getVerifiedBuffer(const CallSite& site, const UnmarshalTexts& texts, const Variant* data, VerifyFn verify,
                            std::span<const std::uint8_t>& buffer) noexcept {
  if (data == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", "Invalid flatBufferData");
    return CmdResult::NullPointer;
  }
  if (data->getType() != VariantType::FLATBUFFERS) {
    texts.wrongType(site, data->getType());
    return CmdResult::InvalidParameterData;
  }
  buffer = data->getFlatBuffer();
  if (!verify(buffer)) {
    KAVO_TRACE_AT(site, Error, "%s", texts.invalidBuffer);
    return CmdResult::InvalidParameterData;
  }
  return CmdResult::Okay;
}

}  // namespace motion::kavo::cmd
