// Gathers what is wrong with one file, so that the user sees more than the first mistake.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "host/scenario/problem.h"

namespace motion::host::scenario {

/// Keeps the first LIMIT problems; how many there were beyond is not counted, that there were more is said.
class ProblemCollector {
 public:
  static constexpr std::size_t LIMIT = 50;

  explicit ProblemCollector(std::string file) : m_file(std::move(file)) {}

  void error(const Mark& mark, std::string message, std::string remedy = {});
  void warning(const Mark& mark, std::string message, std::string remedy = {});
  /// An error whose remedy names the words that are right, and the one that was probably meant.
  void unknownWord(const Mark& mark, std::string message, std::string_view word, std::span<const std::string_view> right);

  [[nodiscard]] bool hasErrors() const noexcept { return m_hasErrors; }
  /// In the order of the file. Leaves the collector empty.
  [[nodiscard]] Problems take();

 private:
  void add(Problem problem);

  std::string m_file;
  Problems m_problems;
  bool m_hasErrors = false;
  bool m_overflown = false;
};

}  // namespace motion::host::scenario
