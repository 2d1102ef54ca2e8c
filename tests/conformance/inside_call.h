// Looks at a component from within one of its calls into the host.
#pragma once

#include <exception>
#include <utility>

namespace motion::conformance {

/// No exception thrown within a call gets through the component, so the first Mismatch is kept until the call is over.
class InsideCall {
 public:
  template <typename LOOK>
  void look(LOOK&& look) noexcept {
    try {
      std::forward<LOOK>(look)();
    } catch (...) {
      m_first = m_first != nullptr ? m_first : std::current_exception();
    }
  }
  /// Throws what was kept.
  void expectFine() const {
    if (m_first != nullptr) {
      std::rethrow_exception(m_first);
    }
  }

 private:
  std::exception_ptr m_first;
};

}  // namespace motion::conformance
