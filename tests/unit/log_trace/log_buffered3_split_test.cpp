// Long texts of the buffered sink: how they are spread over entries, what is lost and what is reported.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "log_buffered3_fixture.h"

namespace common::log::trace {
namespace {

using motion::test::JournalEntry;
using testing::ElementsAre;
using testing::IsEmpty;

struct SplitCase {
  std::size_t length;
  std::vector<std::string> prefixes;
  std::vector<std::size_t> sizes;
  bool isTruncated;
};

class LogBuffered3SplitTest : public LogBuffered3Test, public testing::WithParamInterface<SplitCase> {
 protected:
  void expectParts(const std::vector<JournalEntry>& written) {
    const std::string text = pattern(GetParam().length);
    ASSERT_EQ(written.size(), GetParam().sizes.size());
    std::set<std::string> times;
    for (std::size_t i = 0; i < written.size(); ++i) {
      const auto texts = messageTexts(written[i]);
      EXPECT_EQ(texts[TEXT], GetParam().prefixes[i] + text.substr(i * 250, GetParam().sizes[i]));
      EXPECT_EQ(texts[ENTITY], "an entity");
      times.insert(texts[TIME]);
    }
    EXPECT_EQ(times.size(), 1U) << "all parts carry the time of the call";
  }
};

TEST_P(LogBuffered3SplitTest, FinishedTextIsSpreadOverEntries) {
  auto& sut = m_sut;
  const TraceResult result = sut.logFinal(MESSAGE_CODE, &m_record, pattern(GetParam().length).c_str());
  if (GetParam().isTruncated) {
    EXPECT_EQ(result, TraceResult::Truncated);
    EXPECT_THAT(m_output.texts(), ElementsAre(cutReport(GetParam().length, "dynamic description", 749)));
  } else {
    EXPECT_EQ(result, TraceResult::Ok);
    EXPECT_THAT(m_output.texts(), IsEmpty());
  }
  expectParts(entries());
}

TEST_P(LogBuffered3SplitTest, FormattedTextIsSpreadAfterItsCutAt767) {
  auto& sut = m_sut;
  const TraceResult result = sut.logRealTime(MESSAGE_CODE, &m_record, pattern(GetParam().length).c_str());
  if (GetParam().isTruncated) {
    EXPECT_EQ(result, TraceResult::Truncated);
    EXPECT_THAT(m_output.texts(),
                ElementsAre(cutReport(std::min<std::size_t>(GetParam().length, 767), "dynamic description", 749)));
  } else {
    EXPECT_EQ(result, TraceResult::Ok);
    EXPECT_THAT(m_output.texts(), IsEmpty());
  }
  expectParts(entries());
}

// The number of parts is counted as if a part held 251 characters: at 501 one character is lost, at 752 two are.
INSTANTIATE_TEST_SUITE_P(All, LogBuffered3SplitTest,
                         testing::Values(SplitCase{1, {""}, {1}, false}, SplitCase{255, {""}, {255}, false},
                                         SplitCase{256, {"1/2: ", "2/2: "}, {250, 6}, false},
                                         SplitCase{300, {"1/2: ", "2/2: "}, {250, 50}, false},
                                         SplitCase{500, {"1/2: ", "2/2: "}, {250, 250}, false},
                                         SplitCase{501, {"1/2: ", "2/2: "}, {250, 250}, false},
                                         SplitCase{502, {"1/3: ", "2/3: ", "3/3: "}, {250, 250, 2}, false},
                                         SplitCase{750, {"1/3: ", "2/3: ", "3/3: "}, {250, 250, 250}, false},
                                         SplitCase{752, {"1/3: ", "2/3: ", "3/3: "}, {250, 250, 250}, false},
                                         SplitCase{753, {"1/3: ", "2/3: ", "3/3: "}, {250, 250, 250}, true},
                                         SplitCase{767, {"1/3: ", "2/3: ", "3/3: "}, {250, 250, 250}, true},
                                         SplitCase{800, {"1/3: ", "2/3: ", "3/3: "}, {250, 250, 250}, true}),
                         [](const auto& split) { return std::to_string(split.param.length); });

}  // namespace
}  // namespace common::log::trace
