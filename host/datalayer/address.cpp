#include "host/datalayer/address.h"

#include <algorithm>

namespace motion::host::datalayer {

namespace {

bool isControl(unsigned char byte) noexcept {
  constexpr unsigned char del = 0x7F;
  return byte < 0x20 || byte == del;
}

/// How many bytes follow the first of a character; -1 when no character begins like that.
int followers(unsigned char first) noexcept {
  if (first < 0x80) {
    return 0;
  }
  if (first >= 0xC2 && first <= 0xDF) {
    return 1;
  }
  if (first >= 0xE0 && first <= 0xEF) {
    return 2;
  }
  return first >= 0xF0 && first <= 0xF4 ? 3 : -1;
}

/// Rules out what is written longer than needed, halves of pairs, and what lies beyond the last character.
bool isSecondByte(unsigned char first, unsigned char second) noexcept {
  const unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  return second >= low && second <= high;
}

bool isUtf8(std::string_view text) noexcept {
  for (std::size_t i = 0; i < text.size();) {
    const auto first = static_cast<unsigned char>(text[i]);
    const int count = followers(first);
    if (count < 0 || text.size() - i <= static_cast<std::size_t>(count) ||
        (count > 0 && !isSecondByte(first, static_cast<unsigned char>(text[i + 1])))) {
      return false;
    }
    for (int next = 2; next <= count; ++next) {
      if ((static_cast<unsigned char>(text[i + static_cast<std::size_t>(next)]) & 0xC0U) != 0x80U) {
        return false;
      }
    }
    i += static_cast<std::size_t>(count) + 1;
  }
  return true;
}

bool isPlainLevel(std::string_view level) noexcept {
  return !level.empty() && level != "." && level != ".." && level.find('*') == std::string_view::npos;
}

/// `isLast` is told to the judge of each level.
template <typename IS_LEVEL>
bool isMadeOf(std::string_view text, const IS_LEVEL& isLevel) noexcept {
  if (text.empty() || text.size() > MAX_ADDRESS_LENGTH || text.back() == '/' || !isUtf8(text) ||
      std::ranges::any_of(text, [](char byte) { return isControl(static_cast<unsigned char>(byte)); })) {
    return false;
  }
  std::string_view level;
  while (takeLevel(text, level)) {
    if (!isLevel(level, text.empty())) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool takeLevel(std::string_view& rest, std::string_view& level) noexcept {
  if (rest.empty()) {
    return false;
  }
  const std::size_t slash = rest.find('/');
  level = rest.substr(0, slash);
  rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
  return true;
}

std::string_view parentOf(std::string_view address) noexcept {
  const std::size_t slash = address.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : address.substr(0, slash);
}

bool isAddress(std::string_view text) noexcept {
  return isMadeOf(text, [](std::string_view level, bool /*isLast*/) { return isPlainLevel(level); });
}

bool isNodeAddress(std::string_view text) noexcept {
  return isMadeOf(text,
                  [](std::string_view level, bool isLast) { return isPlainLevel(level) || (isLast && level == ONE_LEVEL); });
}

bool isPattern(std::string_view text) noexcept {
  return isMadeOf(text, [](std::string_view level, bool isLast) {
    return isPlainLevel(level) || level == ONE_LEVEL || (isLast && level == ALL_LEVELS);
  });
}

}  // namespace motion::host::datalayer
