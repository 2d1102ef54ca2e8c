// What the tests of the buffered sink share: a sink of a unit of its own, a record, and the way to read both back.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "interception.h"
#include "log_trace/log_buffered3.h"
#include "support/journal_reader.h"

namespace common::log::trace {

inline constexpr unsigned int MESSAGE_CODE = 0x090A0FFC;
inline constexpr unsigned int WARNING_CODE = 0x090E0FFC;
inline constexpr unsigned int ERROR_CODE = 0x090F0FFC;

// Positions of the texts in MESSAGE.
enum Position {
  TIME,
  USER_ID,
  MAIN_DIAGNOSIS,
  TITLE,
  DETAILS,
  ADDITIONAL,
  ENTITY,
  ORIGIN,
  UNIT,
  FILE_NAME,
  FUNCTION,
  LINE,
  TEXT
};

inline std::vector<std::string> messageTexts(const motion::test::JournalEntry& entry) {
  std::vector<std::string> texts(1);
  for (const char character : entry.value("MESSAGE")) {
    if (character == '|') {
      texts.emplace_back();
    } else {
      texts.back() += character;
    }
  }
  EXPECT_EQ(texts.size(), 13U);
  texts.resize(13);
  return texts;
}

/// A text in which every position can be told from its neighbours.
inline std::string pattern(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; text.size() < length; ++i) {
    text += std::to_string(i) + ".";
  }
  return text.substr(0, length);
}

inline std::string cutReport(std::size_t length, const std::string& parameter, int limit) {
  return "Source string size (" + std::to_string(length) + ") of parameter '" + parameter +
         "' exceeded and is truncated after " + std::to_string(limit) + " characters.";
}

class LogBuffered3Test : public testing::Test {
 protected:
  LogBuffered3Test() {
    m_record.entity = "an entity";
    m_record.origin = "an origin";
    m_record.fileName = "a_file";
    m_record.functionName = "aFunction";
    m_record.line = 77;
    m_record.format = "%s";
  }

  std::vector<motion::test::JournalEntry> entries() { return m_reader.read("R_UNIT", m_unit); }

  motion::test::JournalReader m_reader;
  std::string m_unit = motion::test::uniqueMarker();
  LogBuffered3 m_sut{m_unit.c_str(), true};
  LogParametersExtended m_record;
  motion::test::OutputTap m_output;
};

}  // namespace common::log::trace
