// What a component called in the host, in order, and which of these calls have to fail.
#include "support/fake_calls.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace motion::test {

void FakeCalls::fail(std::string operation, std::uint32_t code, int nth) {
  const std::lock_guard lock(m_mutex);
  m_plans.push_back({std::move(operation), code, nth});
}

void FakeCalls::failCall(int nth, std::uint32_t code) {
  const std::lock_guard lock(m_mutex);
  m_untilFailure = nth;
  m_failureCode = code;
  m_failed.clear();
}

void FakeCalls::failNothing() {
  const std::lock_guard lock(m_mutex);
  m_plans.clear();
  m_untilFailure = 0;
}

std::string FakeCalls::failed() const {
  const std::lock_guard lock(m_mutex);
  return m_failed;
}

std::shared_ptr<const void> FakeCalls::onCall(std::string operation, std::function<void()> action) {
  const auto kept = std::make_shared<const std::function<void()>>(std::move(action));
  const std::lock_guard lock(m_mutex);
  m_watches.push_back({std::move(operation), kept});
  return kept;
}

std::optional<std::uint32_t> FakeCalls::add(std::string_view operation, const std::string& arguments) {
  std::optional<std::uint32_t> code;
  std::vector<Watch> watches;
  {
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(fmt::format("{}({})", operation, arguments));
    if (m_untilFailure > 0 && --m_untilFailure == 0) {
      code = m_failureCode;
      m_failed = m_calls.back();
    }
    for (auto& plan : m_plans) {
      if (plan.operation == operation) {
        ++plan.seen;
        if (plan.nth == EVERY || plan.nth == plan.seen) {
          code = plan.code;
        }
      }
    }
    std::copy_if(m_watches.begin(), m_watches.end(), std::back_inserter(watches),
                 [operation](const Watch& watch) { return watch.operation == operation; });
  }
  for (const auto& watch : watches) {
    if (const auto action = watch.action.lock()) {
      (*action)();
    }
  }
  if (code == THROW) {
    throw std::runtime_error("planned failure of " + std::string(operation));
  }
  return code;
}

std::vector<std::string> FakeCalls::all() const {
  const std::lock_guard lock(m_mutex);
  return m_calls;
}

std::vector<std::string> FakeCalls::of(std::initializer_list<std::string_view> beginnings) const {
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> result;
  std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(result), [&beginnings](const std::string& call) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&call](std::string_view beginning) { return call.starts_with(beginning); });
  });
  return result;
}

int FakeCalls::count(std::string_view operation) const {
  const std::lock_guard lock(m_mutex);
  const auto beginning = std::string(operation) + "(";
  return static_cast<int>(std::count_if(m_calls.begin(), m_calls.end(),
                                        [&beginning](const std::string& call) { return call.starts_with(beginning); }));
}

void FakeCalls::clear() {
  const std::lock_guard lock(m_mutex);
  m_calls.clear();
}

}  // namespace motion::test
