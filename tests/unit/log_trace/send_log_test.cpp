// One journal entry: its fields on the wire and in the journal, and what a failing journal or format gives.
#include "log_trace/send_log.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdarg>
#include <cwchar>
#include <map>
#include <string>

#include "interception.h"
#include "support/journal_reader.h"

namespace common::log {
namespace {

using motion::test::JournalReader;
using motion::test::JournalTap;
using motion::test::OutputTap;
using motion::test::uniqueMarker;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr timespec TIME{1'000'000'000, 123'456'789};

CommonResult send(const char* identifier, const std::string& unit, const char* description = "twelve") {
  return sendLogNoVaList(identifier, 4, TIME, "one", "two", "three", "four", "five", "six", "seven", unit.c_str(), "nine",
                         "ten", "eleven", description);
}

CommonResult sendFormatted(const char* identifier, const std::string& unit, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const CommonResult result = sendLog(identifier, 6, TIME, "one", "two", "three", "four", "five", "six", "seven",
                                      unit.c_str(), "nine", "ten", "eleven", format, arguments);
  va_end(arguments);
  return result;
}

TEST(SendLogTest, FieldsStandOnTheWireInTheirOrder) {
  JournalTap tap;
  ASSERT_EQ(send(TRACE_IDENTIFIER, "eight"), CommonResult::Ok);
  ASSERT_EQ(tap.entries().size(), 1U);
  auto fields = tap.entries()[0];
  // The client appends the name of the program; everything before it is ours.
  ASSERT_EQ(fields.size(), 14U);
  EXPECT_THAT(fields.back(), testing::StartsWith("SYSLOG_IDENTIFIER="));
  fields.pop_back();
  EXPECT_THAT(fields, ElementsAre("MESSAGE=2001-09-09T01:46:40.123456Z|one|two|three|four|five|six|seven|eight|nine|ten|"
                                  "eleven|twelve",
                                  "R_ENTRY_TYPE=palvane_trace", "PRIORITY=4", "R_TIMESTAMP=1000000000123456",
                                  "R_USER_ID=one", "R_DIAG_MAIN=two", "R_DIAG_DETAILED=four", "R_ENTITY=six",
                                  "R_ORIGIN=seven", "R_UNIT=eight", "CODE_FILE=nine", "CODE_FUNC=ten", "CODE_LINE=eleven"));
}

TEST(SendLogTest, EachFieldStandsOnceInTheJournal) {
  JournalReader reader;
  const std::string unit = uniqueMarker();
  ASSERT_EQ(send(DIAGNOSIS_IDENTIFIER, unit), CommonResult::Ok);
  const auto entries = reader.read("R_UNIT", unit);
  ASSERT_EQ(entries.size(), 1U);

  std::map<std::string, int> counts;
  for (const auto& [name, value] : entries[0].fields) {
    ++counts[name];
  }
  for (const auto& [name, count] : counts) {
    EXPECT_EQ(count, 1) << name;
  }
  const auto& entry = entries[0];
  EXPECT_EQ(entry.value("MESSAGE"),
            "2001-09-09T01:46:40.123456Z|one|two|three|four|five|six|seven|" + unit + "|nine|ten|eleven|twelve");
  EXPECT_EQ(entry.value("R_ENTRY_TYPE"), "palvane_diag");
  EXPECT_EQ(entry.value("PRIORITY"), "4");
  EXPECT_EQ(entry.value("R_TIMESTAMP"), "1000000000123456");
  EXPECT_EQ(entry.value("R_USER_ID"), "one");
  EXPECT_EQ(entry.value("R_DIAG_MAIN"), "two");
  EXPECT_EQ(entry.value("R_DIAG_DETAILED"), "four");
  EXPECT_EQ(entry.value("R_ENTITY"), "six");
  EXPECT_EQ(entry.value("R_ORIGIN"), "seven");
  EXPECT_EQ(entry.value("CODE_FILE"), "nine");
  EXPECT_EQ(entry.value("CODE_FUNC"), "ten");
  EXPECT_EQ(entry.value("CODE_LINE"), "eleven");
}

TEST(SendLogTest, NullTextsAndTimeZeroAreEmptyFields) {
  JournalTap tap;
  ASSERT_EQ(sendLogNoVaList(nullptr, 3, timespec{}, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr, nullptr),
            CommonResult::Ok);
  ASSERT_EQ(tap.entries().size(), 1U);
  auto fields = tap.entries()[0];
  ASSERT_EQ(fields.size(), 14U);
  fields.pop_back();
  EXPECT_THAT(fields, ElementsAre("MESSAGE=||||||||||||", "R_ENTRY_TYPE=", "PRIORITY=3", "R_TIMESTAMP=0",
                                  "R_USER_ID=", "R_DIAG_MAIN=", "R_DIAG_DETAILED=", "R_ENTITY=", "R_ORIGIN=", "R_UNIT=",
                                  "CODE_FILE=", "CODE_FUNC=", "CODE_LINE="));
}

TEST(SendLogTest, TextsOfConversionsAreNotFormatsThemselves) {
  JournalReader reader;
  const std::string unit = uniqueMarker();
  ASSERT_EQ(send(TRACE_IDENTIFIER, unit, "100 %s %n of it"), CommonResult::Ok);
  const auto entries = reader.read("R_UNIT", unit);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_THAT(entries[0].value("MESSAGE"), testing::EndsWith("|100 %s %n of it"));
}

TEST(SendLogTest, FailedDiagnosisIsReported) {
  OutputTap output;
  JournalTap tap;
  tap.refuse(ECONNREFUSED);
  EXPECT_EQ(send("palvane_diag", "unit"), CommonResult::JournalWriteFailed);
  EXPECT_EQ(tap.entries().size(), 1U);
  ASSERT_THAT(output.texts(), ElementsAre("Calling 'sd_journal_send' failed with error code 111."));
  EXPECT_EQ(output.messages()[0].level, "ERR");
  EXPECT_EQ(output.messages()[0].function, "sendLogNoVaList");
}

TEST(SendLogTest, FailedTraceIsNotReported) {
  OutputTap output;
  JournalTap tap;
  tap.refuse(ECONNREFUSED);
  EXPECT_EQ(send("palvane_trace", "unit"), CommonResult::JournalWriteFailed);
  EXPECT_EQ(send("palvane_diagnosis", "unit"), CommonResult::JournalWriteFailed);
  EXPECT_EQ(tap.entries().size(), 2U);
  EXPECT_THAT(output.texts(), IsEmpty());
}

TEST(SendLogTest, FormatsTheDescription) {
  JournalReader reader;
  OutputTap output;
  const std::string unit = uniqueMarker();
  ASSERT_EQ(sendFormatted(TRACE_IDENTIFIER, unit, "%d of %s", 3, "five"), CommonResult::Ok);
  const auto entries = reader.read("R_UNIT", unit);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].value("MESSAGE"),
            "2001-09-09T01:46:40.123456Z|one|two|three|four|five|six|seven|" + unit + "|nine|ten|eleven|3 of five");
  EXPECT_EQ(entries[0].value("PRIORITY"), "6");
  EXPECT_THAT(output.texts(), IsEmpty());
}

TEST(SendLogTest, CutDescriptionIsReported) {
  OutputTap output;
  JournalTap tap;
  EXPECT_EQ(sendFormatted(TRACE_IDENTIFIER, "unit", "%s", std::string(767, 'x').c_str()), CommonResult::Ok);
  EXPECT_THAT(output.texts(), IsEmpty());
  EXPECT_EQ(sendFormatted(TRACE_IDENTIFIER, "unit", "%s", (std::string(767, 'x') + "y").c_str()), CommonResult::Ok);
  EXPECT_THAT(output.texts(), ElementsAre("Message size of output string exceeded. String is truncated after 767 characters "
                                          "(or before, depending on implementation)."));
  ASSERT_EQ(tap.entries().size(), 2U);
  EXPECT_THAT(tap.entries()[0][0], testing::EndsWith("|" + std::string(767, 'x')));
  EXPECT_THAT(tap.entries()[1][0], testing::EndsWith("|" + std::string(767, 'x')));
}

TEST(SendLogTest, FailingFormatWritesNothing) {
  const wchar_t invalid[] = {static_cast<wchar_t>(0x7FFFFFFF), L'\0'};
  OutputTap output;
  JournalTap tap;
  EXPECT_EQ(sendFormatted(TRACE_IDENTIFIER, "unit", "%ls", invalid), CommonResult::FormatFailed);
  EXPECT_THAT(tap.entries(), IsEmpty());
  EXPECT_THAT(output.texts(), ElementsAre("Calling 'vsnprintf' failed. Output string could not be built."));
}

TEST(SendLogTest, FormattedEntryFailsAsThePlainOne) {
  OutputTap output;
  JournalTap tap;
  tap.refuse(EPIPE);
  EXPECT_EQ(sendFormatted(DIAGNOSIS_IDENTIFIER, "unit", nullptr), CommonResult::JournalWriteFailed);
  EXPECT_THAT(output.texts(), ElementsAre("Calling 'sd_journal_send' failed with error code 32."));
}

}  // namespace
}  // namespace common::log
