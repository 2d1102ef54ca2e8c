// Diagnoses of an object: fields, formatting, and how many are kept.
#include "host/motion/dia_log.h"

#include <gtest/gtest.h>

#include <string>

namespace motion::host {
namespace {

const core::dia::CmdSourceInfo SOURCE{"client", "program.txt", 12};

TEST(DiaLogTest, keepsEveryFieldAndFormatsTheText) {
  DiaLog sut;
  sut.report(0x090F1000, 0x0C561000, SOURCE, {"file.cpp", "fct", 34}, "%s is %d", "x", 5);
  const auto all = sut.all();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].mainCode, 0x090F1000U);
  EXPECT_EQ(all[0].detailCode, 0x0C561000U);
  EXPECT_EQ(all[0].source.client, "client");
  EXPECT_EQ(all[0].source.file, "program.txt");
  EXPECT_EQ(all[0].source.line, 12U);
  EXPECT_EQ(all[0].file, "file.cpp");
  EXPECT_EQ(all[0].function, "fct");
  EXPECT_EQ(all[0].line, 34U);
  EXPECT_EQ(all[0].text, "x is 5");
  EXPECT_FALSE(all[0].closed);
}

TEST(DiaLogTest, closesTheNewestDiagnosis) {
  DiaLog sut;
  sut.close();
  EXPECT_TRUE(sut.all().empty()) << "there was nothing to close";
  sut.report(1, 1, SOURCE, {}, "first");
  sut.close();
  sut.report(1, 1, SOURCE, {}, "second");
  const auto all = sut.all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_TRUE(all[0].closed);
  EXPECT_FALSE(all[1].closed);
}

TEST(DiaLogTest, countsAllAndKeepsTheNewest) {
  DiaLog sut;
  EXPECT_EQ(sut.latestText(), "");
  EXPECT_EQ(sut.latestWithCodes(), "");
  EXPECT_EQ(sut.count(), 0U);
  for (int i = 1; i <= 70; ++i) {
    sut.report(1, 1, SOURCE, {}, "%d", i);
  }
  EXPECT_EQ(sut.count(), 70U);
  EXPECT_EQ(sut.latestText(), "70");
  const auto all = sut.all();
  ASSERT_EQ(all.size(), DiaLog::CAPACITY);
  EXPECT_EQ(all.front().text, "7");
  EXPECT_EQ(all.back().text, "70");
}

TEST(DiaLogTest, cutsAVeryLongText) {
  DiaLog sut;
  const std::string text(2000, 'x');
  sut.report(1, 1, SOURCE, {}, "%s", text.c_str());
  EXPECT_EQ(sut.latestText(), std::string(511, 'x'));
}

TEST(DiaLogTest, givesTheNewestWithItsCodes) {
  DiaLog sut;
  sut.report(1, 2, SOURCE, {}, "older");
  sut.report(0x090F1000, 0x0C561000, SOURCE, {}, "too fast");
  EXPECT_EQ(sut.latestWithCodes(), "too fast (0x090F1000, 0x0C561000)");
}

TEST(DiaLogTest, keepsADiagnosisWithoutAPlace) {
  DiaLog sut;
  sut.report(1, 1, SOURCE, {nullptr, nullptr, 0}, "text");
  const auto all = sut.all();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].file, "");
  EXPECT_EQ(all[0].function, "");
}

}  // namespace
}  // namespace motion::host
