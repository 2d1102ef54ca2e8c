// What components say while they decode parameters is kept with all that belongs to it.
#include "host/motion/diag_collector.h"

#include <gtest/gtest.h>

#include <new>

#include "host/motion/dia_log.h"

namespace motion::host {
namespace {

const core::dia::CmdSourceInfo SOURCE{"client", "program.txt", 12};

TEST(DiagCollectorTest, keepsCodesTextAndSource) {
  DiaLog log;
  DiagCollector sut(log, SOURCE);
  sut.add(0x090F2001, 0x0C570101, "100 % wrong: %s %n");
  sut.add(1, 2, nullptr);
  const auto all = log.all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].mainCode, 0x090F2001U);
  EXPECT_EQ(all[0].detailCode, 0x0C570101U);
  EXPECT_EQ(all[0].text, "100 % wrong: %s %n") << "the text is no format";
  EXPECT_EQ(all[0].source.client, "client");
  EXPECT_EQ(all[0].source.file, "program.txt");
  EXPECT_EQ(all[0].source.line, 12U);
  EXPECT_TRUE(all[0].closed);
  EXPECT_EQ(all[1].text, "");
  EXPECT_TRUE(all[1].closed);
}

/// A log without memory.
class FullLog : public core::dia::IDia {
 public:
  void report(std::uint32_t /*mainCode*/, std::uint32_t /*detailCode*/, const core::dia::CmdSourceInfo& /*source*/,
              const core::dia::SourcePosition& /*position*/, const char* /*format*/, ...) override {
    ++calls;
    throw std::bad_alloc();
  }
  void close() override {}

  int calls = 0;
};

TEST(DiagCollectorTest, losesADiagnosisRatherThanThrow) {
  FullLog log;
  DiagCollector sut(log, SOURCE);
  sut.add(1, 2, "text");
  EXPECT_EQ(log.calls, 1);
}

}  // namespace
}  // namespace motion::host
