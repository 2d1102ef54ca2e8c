// Gathers what is wrong with one file.
#include "host/scenario/problem_collector.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "host/scenario/words.h"

namespace motion::host::scenario {

void ProblemCollector::add(Problem problem) {
  m_hasErrors = m_hasErrors || !problem.warning;
  if (m_problems.size() < LIMIT) {
    m_problems.push_back(std::move(problem));
  } else {
    m_overflown = true;
  }
}

void ProblemCollector::error(const Mark& mark, std::string message, std::string remedy) {
  add({m_file, mark, std::move(message), std::move(remedy), false});
}

void ProblemCollector::warning(const Mark& mark, std::string message, std::string remedy) {
  add({m_file, mark, std::move(message), std::move(remedy), true});
}

void ProblemCollector::unknownWord(const Mark& mark, std::string message, std::string_view word,
                                   std::span<const std::string_view> right) {
  // The search for the nearest word is not paid for problems that nobody will see.
  const bool seen = m_problems.size() < LIMIT;
  error(mark, std::move(message), seen ? knownWords(word, right) : std::string());
}

Problems ProblemCollector::take() {
  std::stable_sort(m_problems.begin(), m_problems.end(), [](const Problem& a, const Problem& b) {
    return std::tie(a.mark.line, a.mark.column) < std::tie(b.mark.line, b.mark.column);
  });
  if (m_overflown) {
    m_problems.push_back({m_file, {}, fmt::format("there are more problems than the {} listed", LIMIT), {}, !m_hasErrors});
  }
  m_hasErrors = false;
  m_overflown = false;
  return std::exchange(m_problems, {});
}

}  // namespace motion::host::scenario
