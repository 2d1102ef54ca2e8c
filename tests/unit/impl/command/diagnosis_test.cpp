// Reports to the user of a motion object.
#include "impl/command/diagnosis.h"

#include "impl_fixture.h"

namespace motion::kavo::cmd {
namespace {

using testing::ElementsAre;

class DiagnosisTest : public CommandTest {};

TEST_F(DiagnosisTest, ReportsAndClosesARefusedParameter) {
  const auto sut = &reportInvalidParameter;
  sut({"src/impl/a_unit", "aFunction", 3}, m_dia, m_source, "a text with %d in it");
  ASSERT_EQ(m_dia.m_reports.size(), 1U);
  const auto& report = m_dia.m_reports[0];
  EXPECT_EQ(report.mainCode, 0x090F0FFFU);
  EXPECT_EQ(report.detailCode, 0x0C570101U);
  EXPECT_EQ(report.source.client, m_source.client);
  EXPECT_EQ(report.source.file, m_source.file);
  EXPECT_EQ(report.source.line, m_source.line);
  EXPECT_THAT(report.file, testing::EndsWith("a_unit"));
  EXPECT_EQ(report.function, "aFunction");
  EXPECT_EQ(report.line, 3U);
  EXPECT_EQ(report.format, "%s");
  EXPECT_EQ(report.text, "a text with %d in it");
  EXPECT_TRUE(report.isClosed);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("dia.report(a text with %d in it)", "dia.close()"));
}

TEST_F(DiagnosisTest, SurvivesAnExceptionOfTheHost) {
  m_host.calls.fail("dia.report", test::FakeCalls::THROW);
  reportInvalidParameter({"src/impl/a_unit", "aFunction", 3}, m_dia, m_source, "text");
  EXPECT_EQ(m_host.calls.count("dia.report"), 1);
}

}  // namespace
}  // namespace motion::kavo::cmd
