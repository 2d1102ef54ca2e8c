// The buffered sink, seen through the entries that arrive in the journal and the reports of its own trouble.
#include "log_trace/log_buffered3.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "log_buffered3_fixture.h"

namespace common::log::trace {
namespace {

using motion::test::ClockTap;
using motion::test::JournalEntry;
using motion::test::JournalTap;
using motion::test::uniqueMarker;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct LevelCase {
  unsigned int code;
  const char* codeText;
  const char* title;
  const char* priority;
};

class LogBuffered3LevelTest : public LogBuffered3Test, public testing::WithParamInterface<LevelCase> {};

TEST_P(LogBuffered3LevelTest, WritesTheWholeEntry) {
  auto& sut = m_sut;
  m_record.format = "number %d, text %s";
  ASSERT_EQ(sut.logRealTime(GetParam().code, &m_record, 5, "abc"), TraceResult::Ok);
  const auto written = entries();
  ASSERT_EQ(written.size(), 1U);
  const auto texts = messageTexts(written[0]);
  EXPECT_EQ(texts[TIME].size(), 27U);
  EXPECT_THAT(std::vector<std::string>(texts.begin() + 1, texts.end()),
              ElementsAre("", GetParam().codeText, GetParam().title + (" " + m_unit), "", "", "an entity", "an origin",
                          m_unit, "a_file", "aFunction", "77", "number 5, text abc"));
  EXPECT_EQ(written[0].value("R_ENTRY_TYPE"), "palvane_trace");
  EXPECT_EQ(written[0].value("PRIORITY"), GetParam().priority);
  EXPECT_EQ(written[0].value("R_USER_ID"), "");
  EXPECT_EQ(written[0].value("R_DIAG_MAIN"), GetParam().codeText);
  EXPECT_EQ(written[0].value("R_DIAG_DETAILED"), "");
  EXPECT_EQ(written[0].value("R_ENTITY"), "an entity");
  EXPECT_EQ(written[0].value("R_ORIGIN"), "an origin");
  EXPECT_EQ(written[0].value("CODE_FILE"), "a_file");
  EXPECT_EQ(written[0].value("CODE_FUNC"), "aFunction");
  EXPECT_EQ(written[0].value("CODE_LINE"), "77");
  EXPECT_THAT(m_output.texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, LogBuffered3LevelTest,
                         testing::Values(LevelCase{MESSAGE_CODE, "090A0FFC", "Trace message", "6"},
                                         LevelCase{WARNING_CODE, "090E0FFC", "Trace warning", "4"},
                                         LevelCase{ERROR_CODE, "090F0FFC", "Trace error", "3"},
                                         LevelCase{0xFFFAFFFF, "FFFAFFFF", "Trace message", "6"}));

TEST_F(LogBuffered3Test, DisabledSinkWritesNothing) {
  LogBuffered3 sut(m_unit.c_str(), false);
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "text"), TraceResult::Disabled);
  EXPECT_EQ(static_cast<unsigned int>(TraceResult::Disabled), 2U);
  m_record.classType = 7;
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "text"), TraceResult::Disabled) << "nothing else is looked at";
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogBuffered3Test, EmptyTextWritesNoEntry) {
  auto& sut = m_sut;
  m_record.format = nullptr;
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record), TraceResult::Ok);
  m_record.format = "";
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record), TraceResult::Ok);
  EXPECT_EQ(sut.logFinal(MESSAGE_CODE, &m_record, nullptr), TraceResult::Ok);
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogBuffered3Test, AbsentTextsAndLineZeroAreEmpty) {
  auto& sut = m_sut;
  LogParametersExtended bare;
  ASSERT_EQ(sut.logFinal(MESSAGE_CODE, &bare, "text"), TraceResult::Ok);
  const auto written = entries();
  ASSERT_EQ(written.size(), 1U);
  for (const char* field : {"R_ENTITY", "R_ORIGIN", "CODE_FILE", "CODE_FUNC", "CODE_LINE"}) {
    EXPECT_EQ(written[0].value(field), "") << field;
  }
}

TEST_F(LogBuffered3Test, LineIsASignedNumber) {
  auto& sut = m_sut;
  m_record.line = 0xFFFFFFFF;
  ASSERT_EQ(sut.logFinal(MESSAGE_CODE, &m_record, "text"), TraceResult::Ok);
  ASSERT_EQ(entries().size(), 1U);
  EXPECT_EQ(entries()[0].value("CODE_LINE"), "-1");
}

struct NameLimit {
  const char* parameter;
  const char* LogParameters::*member;
  Position position;
  const char* field;
  std::size_t limit;
};

class LogBuffered3NameTest : public LogBuffered3Test, public testing::WithParamInterface<NameLimit> {};

TEST_P(LogBuffered3NameTest, IsKeptUpToItsLimitAndCutBehind) {
  auto& sut = m_sut;
  const auto [parameter, member, position, field, limit] = GetParam();
  const std::string fitting = pattern(limit);
  m_record.*member = fitting.c_str();
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "fits"), TraceResult::Ok);
  EXPECT_THAT(m_output.texts(), IsEmpty());

  const std::string tooLong = pattern(limit + 1);
  m_record.*member = tooLong.c_str();
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "too long"), TraceResult::Truncated);
  ASSERT_THAT(m_output.texts(), ElementsAre(cutReport(limit + 1, parameter, static_cast<int>(limit))));
  EXPECT_EQ(m_output.messages()[0].level, "ERR");

  const auto written = entries();
  ASSERT_EQ(written.size(), 2U);
  for (const auto& entry : written) {
    EXPECT_EQ(entry.value(field), fitting);
    EXPECT_EQ(messageTexts(entry)[position], fitting);
  }
}

INSTANTIATE_TEST_SUITE_P(All, LogBuffered3NameTest,
                         testing::Values(NameLimit{"entity", &LogParameters::entity, ENTITY, "R_ENTITY", 127},
                                         NameLimit{"origin", &LogParameters::origin, ORIGIN, "R_ORIGIN", 63},
                                         NameLimit{"file name", &LogParameters::fileName, FILE_NAME, "CODE_FILE", 63},
                                         NameLimit{"function name", &LogParameters::functionName, FUNCTION, "CODE_FUNC",
                                                   63}));

TEST_F(LogBuffered3Test, EveryCutIsReportedInOrder) {
  const std::string longText = pattern(800);
  const std::string longUnit = m_unit + pattern(200);
  LogBuffered3 sut(longUnit.c_str(), true);
  m_record.entity = m_record.origin = m_record.fileName = m_record.functionName = longText.c_str();
  JournalTap tap;
  EXPECT_EQ(sut.logFinal(MESSAGE_CODE, &m_record, longText.c_str()), TraceResult::Truncated);
  EXPECT_THAT(m_output.texts(),
              ElementsAre(cutReport(longUnit.size(), "unit name", 63), cutReport(800, "entity", 127),
                          cutReport(800, "origin", 63), cutReport(800, "file name", 63), cutReport(800, "function name", 63),
                          cutReport(800, "dynamic description", 749)));
  EXPECT_EQ(tap.entries().size(), 3U);
}

TEST_F(LogBuffered3Test, UnitNameIsKeptUpTo63Characters) {
  const std::string name = (m_unit + pattern(63)).substr(0, 63);
  LogBuffered3 fitting(name.c_str(), true);
  EXPECT_EQ(fitting.logRealTime(MESSAGE_CODE, &m_record, "fits"), TraceResult::Ok);
  EXPECT_THAT(m_output.texts(), IsEmpty());

  LogBuffered3 sut((name + "+seven+").c_str(), true);
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "cut"), TraceResult::Truncated);
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "cut again"), TraceResult::Truncated);
  EXPECT_THAT(m_output.texts(), ElementsAre(cutReport(70, "unit name", 63), cutReport(70, "unit name", 63)));

  const auto written = m_reader.read("R_UNIT", name);
  ASSERT_EQ(written.size(), 3U);
  EXPECT_EQ(messageTexts(written[1])[TITLE], "Trace message " + name);
  EXPECT_EQ(messageTexts(written[1])[UNIT], name);
}

TEST_F(LogBuffered3Test, AbsentUnitNameIsReplaced) {
  const std::string origin = uniqueMarker();
  m_record.origin = origin.c_str();
  LogBuffered3 withoutName(nullptr, true);
  LogBuffered3 withEmptyName("", true);
  EXPECT_EQ(withoutName.logRealTime(WARNING_CODE, &m_record, "null"), TraceResult::Ok);
  EXPECT_EQ(withEmptyName.logRealTime(WARNING_CODE, &m_record, "empty"), TraceResult::Ok);
  const auto written = m_reader.read("R_ORIGIN", origin);
  ASSERT_EQ(written.size(), 2U);
  for (const auto& entry : written) {
    EXPECT_EQ(entry.value("R_UNIT"), "unknown buffered3 trace");
    EXPECT_EQ(messageTexts(entry)[TITLE], "Trace warning unknown buffered3 trace");
  }
}

void expectInternalError(const JournalEntry& entry, const std::string& function, const std::string& text) {
  EXPECT_EQ(entry.value("R_DIAG_MAIN"), "080F0112");
  EXPECT_EQ(entry.value("PRIORITY"), "3");
  EXPECT_EQ(entry.value("R_ENTITY"), "trace");
  EXPECT_EQ(entry.value("R_ORIGIN"), "unknownSnap");
  EXPECT_EQ(entry.value("CODE_FILE"), "log_buffered3");
  EXPECT_EQ(entry.value("CODE_FUNC"), function);
  EXPECT_GT(std::atoi(entry.value("CODE_LINE").c_str()), 0);
  EXPECT_EQ(messageTexts(entry)[TITLE], "Trace error " + entry.value("R_UNIT"));
  EXPECT_EQ(messageTexts(entry)[TEXT], text);
}

class LogBuffered3InternalErrorTest : public LogBuffered3Test {
 protected:
  LogBuffered3InternalErrorTest() { ::unsetenv("SNAP_NAME"); }
  LogBuffered3 m_errorSut{m_unit.c_str(), true};
};

TEST_F(LogBuffered3InternalErrorTest, WrongClassTypeIsRefused) {
  auto& sut = m_errorSut;
  for (const unsigned int classType : {0U, 2U, 0xFFFFFFFFU}) {
    m_record.classType = classType;
    EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "text"), TraceResult::InvalidParameter);
    EXPECT_EQ(sut.logFinal(MESSAGE_CODE, &m_record, "text"), TraceResult::InvalidParameter);
  }
  const auto written = entries();
  ASSERT_EQ(written.size(), 6U) << "the internal errors only";
  for (std::size_t i = 0; i < written.size(); ++i) {
    const std::string type = i < 2 ? "0" : i < 4 ? "2" : "-1";
    expectInternalError(written[i], i % 2 == 0 ? "logRealTimeVaList" : "logFinal",
                        "Incorrect class type was sent. Class type: " + type + ". Unit name: " + m_unit + ".");
  }
}

TEST_F(LogBuffered3InternalErrorTest, NullRecordIsRefused) {
  auto& sut = m_errorSut;
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, nullptr), TraceResult::InvalidParameter);
  EXPECT_EQ(sut.logFinal(MESSAGE_CODE, nullptr, "text"), TraceResult::InvalidParameter);
  EXPECT_EQ(entries().size(), 2U);
}

TEST_F(LogBuffered3InternalErrorTest, InvalidClassBitsAreTreatedAsError) {
  auto& sut = m_errorSut;
  EXPECT_EQ(sut.logRealTime(0x09050FFC, &m_record, "text"), TraceResult::InvalidParameter);
  const auto written = entries();
  ASSERT_EQ(written.size(), 2U);
  expectInternalError(written[0], "logFinal",
                      "Invalid main diagnosis code 0x09050FFC: treat as trace error, using 0x080F0112 instead.");
  EXPECT_EQ(written[1].value("R_DIAG_MAIN"), "080F0112");
  EXPECT_EQ(written[1].value("PRIORITY"), "3");
  EXPECT_EQ(written[1].value("R_ENTITY"), "an entity");
  EXPECT_EQ(messageTexts(written[1])[TITLE], "Trace error " + m_unit);
  EXPECT_EQ(messageTexts(written[1])[TEXT], "text");
}

TEST_F(LogBuffered3InternalErrorTest, OnlyThreeClassesAreValid) {
  auto& sut = m_errorSut;
  JournalTap tap;
  for (unsigned int bits = 0; bits < 16; ++bits) {
    const bool isValid = bits == 10 || bits == 14 || bits == 15;
    EXPECT_EQ(sut.logFinal(0x09000FFC | (bits << 16U), &m_record, "text"),
              isValid ? TraceResult::Ok : TraceResult::InvalidParameter)
        << bits;
  }
}

TEST_F(LogBuffered3InternalErrorTest, InvalidCodeOutweighsACut) {
  auto& sut = m_errorSut;
  const std::string origin = pattern(64);
  m_record.origin = origin.c_str();
  JournalTap tap;
  EXPECT_EQ(sut.logFinal(0, &m_record, "text"), TraceResult::InvalidParameter);
  EXPECT_THAT(m_output.texts(), ElementsAre(cutReport(64, "origin", 63)));
}

TEST_F(LogBuffered3InternalErrorTest, FailingFormatIsRefused) {
  auto& sut = m_errorSut;
  const wchar_t invalid[] = {static_cast<wchar_t>(0x7FFFFFFF), L'\0'};
  m_record.format = "%ls";
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, invalid), TraceResult::FormatFailed);
  const auto written = entries();
  ASSERT_EQ(written.size(), 1U);
  expectInternalError(written[0], "logRealTimeVaList", "Calling 'vsnprintf' failed. Output string could not be built.");
}

TEST_F(LogBuffered3InternalErrorTest, OriginIsTheSnap) {
  ::setenv("SNAP_NAME", "motion-snap", 1);
  LogBuffered3 sut(m_unit.c_str(), true);
  ::unsetenv("SNAP_NAME");
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, nullptr), TraceResult::InvalidParameter);
  ASSERT_EQ(entries().size(), 1U);
  EXPECT_EQ(entries()[0].value("R_ORIGIN"), "motion-snap");
}

TEST_F(LogBuffered3Test, RefusedEntryEndsTheCall) {
  auto& sut = m_sut;
  JournalTap tap;
  tap.refuse(ECONNREFUSED);
  EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, pattern(700).c_str()), TraceResult::JournalWriteFailed);
  EXPECT_EQ(tap.entries().size(), 1U) << "the second part is not tried";
  EXPECT_EQ(sut.logRealTime(0, &m_record, "text"), TraceResult::JournalWriteFailed) << "outweighs the invalid code";
  EXPECT_THAT(m_output.texts(), IsEmpty());
}

TEST_F(LogBuffered3Test, TimeIsThatOfTheRealtimeClock) {
  auto& sut = m_sut;
  ClockTap tap;
  ASSERT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, pattern(700).c_str()), TraceResult::Ok);
  EXPECT_THAT(tap.asked(), ElementsAre(CLOCK_REALTIME)) << "once for all parts";
}

TEST_F(LogBuffered3Test, FailingClockGivesAnEmptyTime) {
  auto& sut = m_sut;
  {
    ClockTap tap;
    tap.fail(EINVAL);
    ASSERT_EQ(sut.logRealTime(MESSAGE_CODE, &m_record, "text"), TraceResult::Ok);
  }
  EXPECT_THAT(m_output.texts(), ElementsAre("Calling 'clock_gettime()' failed with error code 'Invalid argument'"));
  const auto written = entries();
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0].value("R_TIMESTAMP"), "0");
  EXPECT_EQ(messageTexts(written[0])[TIME], "");
}

TEST_F(LogBuffered3Test, FinishedTextKeepsATimeThatWasTakenEarlier) {
  auto& sut = m_sut;
  ClockTap tap;
  ASSERT_EQ(sut.logFinal(ERROR_CODE, &m_record, "text", timespec{1'000'000'000, 5'000}), TraceResult::Ok);
  EXPECT_THAT(tap.asked(), IsEmpty());
  const auto written = entries();
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0].value("R_TIMESTAMP"), "1000000000000005");
  EXPECT_EQ(messageTexts(written[0])[TIME], "2001-09-09T01:46:40.000005Z");
}

TEST_F(LogBuffered3Test, ServesSeveralThreadsAtOnce) {
  constexpr int THREADS = 4;
  constexpr int TEXTS = 50;
  auto& sut = m_sut;
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < THREADS; ++thread) {
    threads.emplace_back([&sut, thread] {
      const std::string name = "thread" + std::to_string(thread);
      LogParametersExtended record;
      record.origin = name.c_str();
      record.functionName = name.c_str();
      record.format = "%s text %d";
      for (int text = 0; text < TEXTS; ++text) {
        EXPECT_EQ(sut.logRealTime(MESSAGE_CODE, &record, name.c_str(), text), TraceResult::Ok);
      }
    });
  }
  threads.clear();
  std::set<std::string> written;
  const auto all = entries();
  for (const auto& entry : all) {
    const std::string origin = entry.value("R_ORIGIN");
    EXPECT_EQ(entry.value("CODE_FUNC"), origin);
    EXPECT_THAT(messageTexts(entry)[TEXT], HasSubstr(origin + " text "));
    written.insert(messageTexts(entry)[TEXT]);
  }
  EXPECT_EQ(all.size(), static_cast<std::size_t>(THREADS * TEXTS));
  EXPECT_EQ(written.size(), static_cast<std::size_t>(THREADS * TEXTS));
}

}  // namespace
}  // namespace common::log::trace
