// What a component called in the host, in order, and which of these calls have to fail.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/fake_allocation.h"

namespace motion::test {

/// One list for all fakes of a host, so that the order of calls into different parts of it can be checked. Each call is a
/// text such as "objFactory.registerObj(a_job, 0)". May be used from several threads.
class FakeCalls {
 public:
  /// Plan `nth` of a failure that concerns every call.
  static constexpr int EVERY = 0;

  /// From now on the n-th call (from 1) of an operation fails with that code, or every one. Operations that answer with a
  /// pointer answer null, whatever the code. THROW makes the operation throw a std::runtime_error.
  void fail(std::string operation, std::uint32_t code, int nth = EVERY);
  static constexpr std::uint32_t THROW = 0xFFFFFFFFU;
  /// From now on the n-th call (from 1) fails, whatever its operation.
  void failCall(int nth, std::uint32_t code);
  /// No call fails any more.
  void failNothing();
  /// The call that failCall has made fail, empty until then.
  [[nodiscard]] std::string failed() const;
  /// As long as the result lives, each call of an operation runs the action before it is answered: for a look at what is so
  /// at that moment.
  [[nodiscard]] std::shared_ptr<const void> onCall(std::string operation, std::function<void()> action);

  /// Notes a call; the code with which it has to fail, if it has to.
  template <typename... ARGUMENTS>
  std::optional<std::uint32_t> note(std::string_view operation, const ARGUMENTS&... arguments) {
    const AllocationPause pause;
    std::string list;
    ((list += list.empty() ? "" : ", ", list += fmt::format("{}", arguments)), ...);
    return add(operation, list);
  }
  /// The same for an operation whose result is an enumeration.
  template <typename RESULT, typename... ARGUMENTS>
  RESULT noteOr(RESULT success, std::string_view operation, const ARGUMENTS&... arguments) {
    const auto code = note(operation, arguments...);
    return code ? static_cast<RESULT>(*code) : success;
  }

  [[nodiscard]] std::vector<std::string> all() const;
  /// The calls whose text begins with one of these.
  [[nodiscard]] std::vector<std::string> of(std::initializer_list<std::string_view> beginnings) const;
  /// Number of calls of one operation.
  [[nodiscard]] int count(std::string_view operation) const;
  void clear();

 private:
  struct Plan {
    std::string operation;
    std::uint32_t code;
    int nth;
    int seen = 0;
  };
  struct Watch {
    std::string operation;
    std::weak_ptr<const std::function<void()>> action;
  };

  std::optional<std::uint32_t> add(std::string_view operation, const std::string& arguments);

  mutable std::mutex m_mutex;
  std::vector<std::string> m_calls;
  std::vector<Plan> m_plans;
  int m_untilFailure = 0;  ///< calls until the one that fails whatever it is, 0 = none
  std::uint32_t m_failureCode = 0;
  std::string m_failed;
  std::vector<Watch> m_watches;
};

}  // namespace motion::test
