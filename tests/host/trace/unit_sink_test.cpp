// The sink of a unit: what an entry holds, what is refused, and that a call is real-time.
#include "host/trace/unit_sink.h"
#include "support/realtime_guard.h"

#include <gmock/gmock.h>

#include <ctime>
#include <cwchar>
#include <string>
#include <vector>

namespace motion::host::trace {
namespace {

using common::log::trace::LogParameters;
using common::log::trace::LogParametersExtended;
using common::log::trace::TraceResult;
using motion::test::Violations;
using motion::test::violationsOf;

constexpr unsigned int CODE = 0x090A0FFC;

class UnitSinkTest : public testing::Test {
 protected:
  UnitSinkTest() {
    m_sut.setEnabled(true);
    m_record.entity = "entity";
    m_record.origin = "origin";
    m_record.fileName = "file";
    m_record.functionName = "function";
    m_record.line = 17;
    m_record.format = "%s %d";
  }

  std::vector<TraceEntry> entries() {
    std::vector<TraceEntry> result;
    while (m_ring.consume([&](const TraceEntry& entry) { result.push_back(entry); })) {
    }
    return result;
  }

  TraceRing m_ring{4};
  UnitSink m_sut{m_ring, "unit", "snap"};
  LogParametersExtended m_record;
};

TEST_F(UnitSinkTest, EntryHoldsCopiesOfEverything) {
  auto& sut = m_sut;
  const auto nanoseconds = [](const std::timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; };
  std::timespec before{};
  std::timespec after{};
  ::clock_gettime(CLOCK_REALTIME, &before);
  std::string name = "value";
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, name.c_str(), 5), TraceResult::Ok);
  ::clock_gettime(CLOCK_REALTIME, &after);
  name = "other";
  const auto all = entries();
  ASSERT_EQ(all.size(), 1U);
  const TraceEntry& entry = all[0];
  EXPECT_EQ(entry.mainDiagnosisCode, CODE);
  EXPECT_STREQ(entry.unitName.data(), "unit");
  EXPECT_STREQ(entry.entity.data(), "entity");
  EXPECT_STREQ(entry.origin.data(), "origin");
  EXPECT_STREQ(entry.fileName.data(), "file");
  EXPECT_STREQ(entry.functionName.data(), "function");
  EXPECT_EQ(entry.line, 17U);
  EXPECT_STREQ(entry.text.data(), "value 5");
  EXPECT_FALSE(entry.isTruncated);
  EXPECT_LE(nanoseconds(before), nanoseconds(entry.time));
  EXPECT_LE(nanoseconds(entry.time), nanoseconds(after));
}

TEST_F(UnitSinkTest, AbsentTextsAreEmpty) {
  auto& sut = m_sut;
  // A place that was full before keeps nothing of it.
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(sut.logRealTime(CODE, &m_record, "value", i), TraceResult::Ok);
  }
  entries();
  LogParametersExtended record;
  record.format = "text";
  EXPECT_EQ(sut.logRealTime(CODE, &record), TraceResult::Ok);
  const auto all = entries();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_STREQ(all[0].entity.data(), "");
  EXPECT_STREQ(all[0].origin.data(), "");
  EXPECT_STREQ(all[0].fileName.data(), "");
  EXPECT_STREQ(all[0].functionName.data(), "");
  EXPECT_EQ(all[0].line, 0U);
  EXPECT_STREQ(all[0].text.data(), "text");
}

TEST_F(UnitSinkTest, EmptyTextMakesNoEntry) {
  auto& sut = m_sut;
  m_record.format = nullptr;
  EXPECT_EQ(sut.logRealTime(CODE, &m_record), TraceResult::Ok);
  m_record.format = "";
  EXPECT_EQ(sut.logRealTime(CODE, &m_record), TraceResult::Ok);
  m_record.format = "%s";
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, ""), TraceResult::Ok);
  EXPECT_TRUE(entries().empty());
}

TEST_F(UnitSinkTest, LongTextsAreCut) {
  auto& sut = m_sut;
  const std::string fits(767, 'x');
  m_record.format = "%s";
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, fits.c_str()), TraceResult::Ok);
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, (fits + "y").c_str()), TraceResult::Truncated);
  const auto all = entries();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].text.data(), fits);
  EXPECT_FALSE(all[0].isTruncated);
  EXPECT_EQ(all[1].text.data(), fits);
  EXPECT_TRUE(all[1].isTruncated);
}

TEST_F(UnitSinkTest, EachLongNameIsCut) {
  auto& sut = m_sut;
  const std::string tooLong(200, 'x');
  struct Case {
    const char* LogParametersExtended::*field;
    std::size_t kept;
    const char* (*value)(const TraceEntry&);
  };
  const std::vector<Case> cases = {
      {static_cast<const char * LogParametersExtended::*>(&LogParameters::entity), 127,
       [](const TraceEntry& entry) { return entry.entity.data(); }},
      {static_cast<const char * LogParametersExtended::*>(&LogParameters::origin), 63,
       [](const TraceEntry& entry) { return entry.origin.data(); }},
      {static_cast<const char * LogParametersExtended::*>(&LogParameters::fileName), 63,
       [](const TraceEntry& entry) { return entry.fileName.data(); }},
      {static_cast<const char * LogParametersExtended::*>(&LogParameters::functionName), 63,
       [](const TraceEntry& entry) { return entry.functionName.data(); }},
  };
  m_record.format = "text";
  for (const auto& [field, kept, value] : cases) {
    LogParametersExtended record = m_record;
    record.*field = tooLong.c_str();
    EXPECT_EQ(sut.logRealTime(CODE, &record), TraceResult::Truncated);
    const std::string fits = tooLong.substr(0, kept);
    record.*field = fits.c_str();
    EXPECT_EQ(sut.logRealTime(CODE, &record), TraceResult::Ok);
    const auto all = entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(value(all[0]), fits);
    EXPECT_TRUE(all[0].isTruncated);
    EXPECT_EQ(value(all[1]), fits);
    EXPECT_FALSE(all[1].isTruncated);
  }
}

TEST_F(UnitSinkTest, LongUnitNameIsCut) {
  const std::string tooLong(64, 'u');
  UnitSink sut(m_ring, tooLong.c_str(), "snap");
  sut.setEnabled(true);
  m_record.format = "text";
  EXPECT_EQ(sut.logRealTime(CODE, &m_record), TraceResult::Truncated);
  const auto all = entries();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].unitName.data(), tooLong.substr(0, 63));
}

TEST_F(UnitSinkTest, WrongClassTypeIsRefusedAndReported) {
  auto& sut = m_sut;
  LogParameters basic;
  basic.format = "text";
  EXPECT_EQ(sut.logRealTime(CODE, &basic), TraceResult::InvalidParameter);
  m_record.classType = 2;
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, "value", 5), TraceResult::InvalidParameter);
  EXPECT_EQ(sut.logRealTime(CODE, nullptr), TraceResult::InvalidParameter);
  const auto all = entries();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_STREQ(all[0].text.data(), "Incorrect class type was sent. Class type: 0. Unit name: unit.");
  EXPECT_STREQ(all[1].text.data(), "Incorrect class type was sent. Class type: 2. Unit name: unit.");
  EXPECT_STREQ(all[2].text.data(), "Incorrect class type was sent. Class type: 0. Unit name: unit.");
  EXPECT_EQ(all[0].mainDiagnosisCode, 0x080F0112U);
  EXPECT_STREQ(all[0].entity.data(), "trace");
  EXPECT_STREQ(all[0].origin.data(), "snap");
  EXPECT_STREQ(all[0].fileName.data(), "unit_sink");
  EXPECT_STREQ(all[0].functionName.data(), "logRealTimeVaList");
}

TEST_F(UnitSinkTest, FailedFormatIsReported) {
  auto& sut = m_sut;
  m_record.format = "%lc";
  const std::wint_t noCharacter = 0x7FFFFFFF;
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, noCharacter), TraceResult::FormatFailed);
  const auto all = entries();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_STREQ(all[0].text.data(), "Calling 'vsnprintf' failed. Output string could not be built.");
  EXPECT_EQ(all[0].mainDiagnosisCode, 0x080F0112U);
}

TEST_F(UnitSinkTest, DisabledSinkTakesNothing) {
  auto& sut = m_sut;
  sut.setEnabled(false);
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, "value", 5), TraceResult::Disabled);
  EXPECT_EQ(sut.logRealTime(CODE, nullptr), TraceResult::Disabled);
  EXPECT_TRUE(entries().empty());
  EXPECT_EQ(m_ring.takeDroppedCount(), 0U);
}

TEST_F(UnitSinkTest, FullRingDropsTheEntry) {
  auto& sut = m_sut;
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(sut.logRealTime(CODE, &m_record, "value", i), TraceResult::Ok);
  }
  EXPECT_EQ(sut.logRealTime(CODE, &m_record, "value", 4), TraceResult::JournalWriteFailed);
  EXPECT_EQ(m_ring.takeDroppedCount(), 1U);
  EXPECT_EQ(entries().size(), 4U);
}

TEST_F(UnitSinkTest, CallsAreRealTime) {
  auto& sut = m_sut;
  m_record.format = "%s %d %u 0x%08X %.3f";
  TraceResult accepted{};
  TraceResult refused{};
  TraceResult cut{};
  const std::string tooLong(1000, 'x');
  const auto traceAll = [&] {
    accepted = sut.logRealTime(CODE, &m_record, "value", -5, 5U, 0x1234U, 0.125);
    cut = sut.logRealTime(CODE, &m_record, tooLong.c_str(), -5, 5U, 0x1234U, 0.125);
    refused = sut.logRealTime(CODE, nullptr);
  };
  EXPECT_EQ(violationsOf(traceAll), Violations{});
  EXPECT_EQ(accepted, TraceResult::Ok);
  EXPECT_EQ(cut, TraceResult::Truncated);
  EXPECT_EQ(refused, TraceResult::InvalidParameter);
  EXPECT_EQ(violationsOf(traceAll), Violations{}) << "with the ring full";
  EXPECT_EQ(cut, TraceResult::JournalWriteFailed);
  EXPECT_EQ(entries().size(), 4U);
  sut.setEnabled(false);
  EXPECT_EQ(violationsOf(traceAll), Violations{}) << "switched off";
  EXPECT_EQ(accepted, TraceResult::Disabled);
}

}  // namespace
}  // namespace motion::host::trace
