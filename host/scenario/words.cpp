// Words in messages: quoting and nearest match.
#include "host/scenario/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <vector>

namespace motion::host::scenario {
namespace {

constexpr std::size_t LONGEST_QUOTE = 60;       // [byte]
constexpr std::size_t LONGEST_COMPARISON = 64;  // [byte], also bounds the cost of a comparison
constexpr std::size_t LONGEST_LIST = 30;        // [word]

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

char lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Edits that turn one word into the other: a character added, removed or replaced, or two neighbours exchanged.
// Upper and lower case count as equal. Dynamic programming over three rows of the distance table.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = lower(a[i - 1]) == lower(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1])) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
    std::swap(beforeLast, last);
    std::swap(last, row);
  }
  return last[b.size()];
}

}  // namespace

std::string inQuotes(std::string_view word) {
  const bool cut = word.size() > LONGEST_QUOTE;
  if (cut) {
    std::size_t end = LONGEST_QUOTE;
    while (end > 0 && isContinuation(word[end])) {
      --end;
    }
    word = word.substr(0, end);
  }
  std::string result = "'";
  for (const char c : word) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || code == 0x7F) {
      result += fmt::format("\\x{:02x}", code);
    } else {
      result += c;
    }
  }
  return result + (cut ? "...'" : "'");
}

std::string_view nearestWord(std::string_view word, std::span<const std::string_view> words) {
  if (word.empty() || word.size() > LONGEST_COMPARISON) {
    return {};
  }
  std::string_view best;
  std::size_t bestDistance = 0;
  for (const std::string_view candidate : words) {
    const std::size_t shorter = std::min(word.size(), candidate.size());
    const std::size_t allowed = std::min<std::size_t>(shorter / 3 + (shorter == 2 ? 1 : 0), 3);
    const std::size_t difference = std::max(word.size(), candidate.size()) - shorter;
    if (difference > allowed) {
      continue;
    }
    const std::size_t edits = distance(word, candidate);
    if (edits <= allowed && (best.empty() || edits < bestDistance)) {
      best = candidate;
      bestDistance = edits;
    }
  }
  return best;
}

std::string listOfWords(std::span<const std::string_view> words) {
  const auto shown = words.first(std::min(words.size(), LONGEST_LIST));
  std::string result = fmt::format("{}", fmt::join(shown, ", "));
  if (shown.size() < words.size()) {
    result += fmt::format(" and {} more", words.size() - shown.size());
  }
  return result;
}

std::string knownWords(std::string_view word, std::span<const std::string_view> words) {
  if (words.empty()) {
    return "nothing is known here";
  }
  const std::string_view near = nearestWord(word, words);
  const std::string question = near.empty() ? std::string() : fmt::format("did you mean {}? ", inQuotes(near));
  return question + "known here: " + listOfWords(words);
}

}  // namespace motion::host::scenario
