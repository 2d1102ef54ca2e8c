// Calls into the code of a bundle, which may throw anything or never return.
#include "host/framework/foreign_call.h"

#include <cxxabi.h>
#include <fmt/format.h>

#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <typeinfo>
#include <utility>

namespace motion::host::framework {
namespace {

/// Shared by the waiting and the calling thread, so that it outlives whichever ends first.
struct PendingCall {
  std::mutex mutex;
  std::condition_variable hasEnded;
  std::optional<CallEnd> end;
};

[[nodiscard]] std::string currentExceptionType() {
  const std::type_info* type = abi::__cxa_current_exception_type();
  if (type == nullptr) {
    return "unknown type";
  }
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type->name(), nullptr, nullptr, &status),
                                                         &std::free);
  return fmt::format("type '{}'", status == 0 ? name.get() : type->name());
}

}  // namespace

std::string currentExceptionText() {
  try {
    throw;
  } catch (const std::exception& exception) {
    const char* text = exception.what();
    return text != nullptr ? text : "an exception without text";
  } catch (...) {
    return fmt::format("an exception of {}", currentExceptionType());
  }
}

CallEnd callGuarded(const ForeignCall& call) {
  try {
    return {.code = call(), .exception = {}};
  } catch (...) {
    return {.code = std::nullopt, .exception = currentExceptionText()};
  }
}

std::optional<CallEnd> callWithin(std::chrono::milliseconds limit, ForeignCall call) {
  const auto pending = std::make_shared<PendingCall>();
  std::thread thread([pending, foreignCall = std::move(call)] {
    CallEnd end = callGuarded(foreignCall);
    const std::lock_guard lock(pending->mutex);
    pending->end = std::move(end);
    pending->hasEnded.notify_one();
  });

  std::unique_lock lock(pending->mutex);
  if (!pending->hasEnded.wait_for(lock, limit, [&] { return pending->end.has_value(); })) {
    thread.detach();
    return std::nullopt;
  }
  lock.unlock();
  thread.join();
  return std::move(pending->end);
}

}  // namespace motion::host::framework
