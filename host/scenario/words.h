// Words in messages: how they are quoted, and which of the right ones a wrong one was probably meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace motion::host::scenario {

/// The word in single quotes; a long one is shortened, control characters become visible.
[[nodiscard]] std::string inQuotes(std::string_view word);

/// The one of `words` that differs least from `word`, empty if none is close.
[[nodiscard]] std::string_view nearestWord(std::string_view word, std::span<const std::string_view> words);

/// "did you mean 'velocity'? known here: to, velocity"; the question only if a word is close.
[[nodiscard]] std::string knownWords(std::string_view word, std::span<const std::string_view> words);

/// "a, b, c"; a long list is cut.
[[nodiscard]] std::string listOfWords(std::span<const std::string_view> words);

}  // namespace motion::host::scenario
