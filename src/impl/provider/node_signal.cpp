// The node that stands for every signal.
#include "impl/provider/node_signal.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "comm/datalayer/variant.h"
#include "impl/diagnosis_codes.h"
#include "impl/provider/node_addresses.h"
#include "impl/provider/node_answer.h"
#include "impl/rt_signals.h"

namespace motion::kavo {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using comm::datalayer::VariantType;
using core::FctResult;

namespace {

constexpr std::uint32_t VARIABLE_CLASS = 3;
constexpr const char* SIGNAL_TYPE = "types/datalayer/bool8";
constexpr const char* NO_SIGNAL_ID = "Can not get signalId: %s";

/// "00" to "99".
const Variant& signalNames() {
  static const Variant names = [] {
    Variant::Strings list;
    for (std::uint32_t id = 0; id < rt_data::RtSignals::getNrOfSignals(); ++id) {
      std::array<char, sizeof("4294967295")> name{};
      std::snprintf(name.data(), name.size(), "%02d", static_cast<int>(id));
      list.emplace_back(name.data());
    }
    return Variant(std::move(list));
  }();
  return names;
}

void refuse(const NodeBase::ResponseCallback& callback, DlResult result, std::uint32_t detail, const char* text) {
  ProviderHelper::sendDlErrorResponse(callback, result, diagnosis::MAIN_NODE_ERROR, detail, "%s", text);
}

/// What a system function has refused is the request's fault when there is no such signal.
std::uint32_t detailOf(FctResult result) noexcept {
  return result == FctResult::InvalidParameter ? diagnosis::DETAIL_INVALID_PARAMETER : diagnosis::DETAIL_INTERNAL_ERROR;
}

}  // namespace

NodeSignal::NodeSignal(const ProviderMgr& manager)
    : NodeBase({"Kavo signal", "", VARIABLE_CLASS, NODE_READ | NODE_WRITE}, manager) {}

DlResult NodeSignal::getSignalId(const std::string& address, std::uint32_t& signalId) noexcept {
  // Only the presence of the folder is tested, not that the address begins with it.
  if (address.find(signalsNodeUri) == std::string::npos) {
    return comm::datalayer::DL_INVALID_ADDRESS;
  }
  const std::string_view number = std::string_view(address).substr(signalsNodeUri.size());
  std::uint32_t parsed = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), parsed);
  if (error != std::errc() || end != number.data() + number.size()) {
    return comm::datalayer::DL_INVALID_ADDRESS;
  }
  signalId = parsed;
  return comm::datalayer::DL_OK;
}

void NodeSignal::onBrowse(const std::string& /*address*/, const ResponseCallback& callback) noexcept {
  answerOnce(callback, [](const ResponseCallback& answer) { answer(comm::datalayer::DL_OK, &signalNames()); });
}

void NodeSignal::onRead(const std::string& address, const Variant* /*data*/, const ResponseCallback& callback) noexcept {
  answerOnce(callback, [&](const ResponseCallback& answer) { read(address, answer); });
}

void NodeSignal::read(const std::string& address, const ResponseCallback& callback) const {
  std::uint32_t signalId = 0;
  if (const DlResult result = getSignalId(address, signalId); isFailure(result)) {
    ProviderHelper::sendDlErrorResponse(callback, result, diagnosis::MAIN_NODE_ERROR, diagnosis::DETAIL_INVALID_PARAMETER,
                                        NO_SIGNAL_ID, address.c_str());
    return;
  }
  const core::GetSignalFn getSignal = getMotionSysIF().getSignal;
  if (getSignal == nullptr) {
    refuse(callback, comm::datalayer::DL_INVALID_HANDLE, diagnosis::DETAIL_INTERNAL_ERROR, "motionSysIF.getSignal==nullptr");
    return;
  }
  bool value = false;
  if (const FctResult result = getSignal(nullptr, signalId, value); core::isFailure(result)) {
    ProviderHelper::sendDlErrorResponse(callback, comm::datalayer::DL_INVALID_HANDLE, diagnosis::MAIN_NODE_ERROR,
                                        detailOf(result), NO_SIGNAL_ID, address.c_str());
    return;
  }
  const Variant answer(value);
  callback(comm::datalayer::DL_OK, &answer);
}

void NodeSignal::onWrite(const std::string& address, const Variant* data, const ResponseCallback& callback) noexcept {
  answerOnce(callback, [&](const ResponseCallback& answer) {
    if (data == nullptr) {
      refuse(answer, comm::datalayer::DL_INVALID_HANDLE, diagnosis::DETAIL_INVALID_PARAMETER, "Invalid data");
    } else if (data->getType() != VariantType::BOOL8) {
      refuse(answer, comm::datalayer::DL_TYPE_MISMATCH, diagnosis::DETAIL_INVALID_PARAMETER,
             "no data provided, expected boolean");
    } else {
      write(address, *data->getBool(), answer);
    }
  });
}

void NodeSignal::write(const std::string& address, bool value, const ResponseCallback& callback) const {
  std::uint32_t signalId = 0;
  if (const DlResult result = getSignalId(address, signalId); isFailure(result)) {
    ProviderHelper::sendDlErrorResponse(callback, result, diagnosis::MAIN_NODE_ERROR, diagnosis::DETAIL_INVALID_PARAMETER,
                                        NO_SIGNAL_ID, address.c_str());
    return;
  }
  const core::MotionSysIfT& functions = getMotionSysIF();
  const core::SignalFn function = value ? functions.setSignal : functions.resetSignal;
  if (function == nullptr) {
    refuse(callback, comm::datalayer::DL_INVALID_HANDLE, diagnosis::DETAIL_INTERNAL_ERROR,
           value ? "motionSysIF.setSignal==nullptr" : "motionSysIF.resetSignal==nullptr");
    return;
  }
  if (const FctResult result = function(nullptr, signalId); core::isFailure(result)) {
    ProviderHelper::sendDlErrorResponse(callback, comm::datalayer::DL_INVALID_HANDLE, diagnosis::MAIN_NODE_ERROR,
                                        detailOf(result), "Can not %s signalId: %s", value ? "set" : "reset",
                                        address.c_str());
    return;
  }
  callback(comm::datalayer::DL_OK, nullptr);
}

void NodeSignal::onMetadata(const std::string& /*address*/, const ResponseCallback& callback) noexcept {
  answerOnce(callback, [this](const ResponseCallback& answer) {
    ProviderHelper::createMetaData(SIGNAL_TYPE, info(), answer, "", true);
  });
}

}  // namespace motion::kavo
