// The writer thread: what it hands on, the report of drops, flushing and its end.
#include "host/trace/entry_pump.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "log_trace/outputs_lib.h"
#include "recording_writer.h"

namespace motion::host::trace {
namespace {

using test::Recording;
using test::RecordingWriter;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::chrono::milliseconds POLL_INTERVAL{2};
constexpr std::chrono::milliseconds NEVER = std::chrono::hours(1);

bool push(EntryPump& pump, const std::string& text) {
  return pump.ring().push([&](TraceEntry& entry) { copyText(entry.text, text.c_str()); });
}

class EntryPumpTest : public testing::Test {
 protected:
  std::unique_ptr<EntryPump> make(std::size_t capacity = 64, std::chrono::milliseconds interval = NEVER) {
    return std::make_unique<EntryPump>(std::make_unique<RecordingWriter>(m_recording), capacity, interval);
  }

  Recording m_recording;
};

TEST_F(EntryPumpTest, PollsWithoutBeingWoken) {
  const auto sut = make(64, POLL_INTERVAL);
  push(*sut, "a");
  m_recording.waitFor(1);
  push(*sut, "b");
  m_recording.waitFor(2);
  EXPECT_THAT(m_recording.texts(), ElementsAre("a", "b"));
}

TEST_F(EntryPumpTest, FlushWakesTheThreadAndWaits) {
  const auto sut = make();
  sut->flush();
  EXPECT_THAT(m_recording.texts(), IsEmpty());
  push(*sut, "a");
  push(*sut, "b");
  sut->flush();
  EXPECT_THAT(m_recording.texts(), ElementsAre("a", "b"));
  push(*sut, "c");
  sut->flush();
  EXPECT_THAT(m_recording.texts(), ElementsAre("a", "b", "c"));
}

TEST_F(EntryPumpTest, FlushWaitsForAnEntryThatIsBeingWritten) {
  const auto sut = make(64, POLL_INTERVAL);
  m_recording.hold();
  push(*sut, "a");
  m_recording.waitFor(1);
  push(*sut, "b");
  std::vector<std::string> afterFlush;
  std::thread flusher([&] {
    sut->flush();
    afterFlush = m_recording.texts();
  });
  m_recording.release();
  flusher.join();
  EXPECT_THAT(afterFlush, ElementsAre("a", "b"));
}

TEST_F(EntryPumpTest, EndWritesWhatWasAccepted) {
  auto sut = make();
  sut->flush();
  for (int i = 0; i < 64; ++i) {
    ASSERT_TRUE(push(*sut, std::to_string(i)));
  }
  sut.reset();
  EXPECT_EQ(m_recording.texts().size(), 64U);
}

TEST_F(EntryPumpTest, DropsAreCountedAndReportedOnce) {
  const auto sut = make(4, POLL_INTERVAL);
  m_recording.hold();
  ASSERT_TRUE(push(*sut, "0"));
  m_recording.waitFor(1);
  for (const char* text : {"1", "2", "3"}) {
    ASSERT_TRUE(push(*sut, text));
  }
  EXPECT_FALSE(push(*sut, "4"));
  EXPECT_FALSE(push(*sut, "5"));
  m_recording.release();
  sut->flush();
  EXPECT_THAT(m_recording.texts(),
              ElementsAre("0", "1", "2", "3", "2 trace entries were dropped, because 4 entries were waiting."));
  const TraceEntry report = m_recording.entries().back();
  EXPECT_EQ(report.mainDiagnosisCode, 0x090E0FFCU) << "a warning";
  EXPECT_STREQ(report.unitName.data(), "motion.host.trace");
  EXPECT_STREQ(report.origin.data(), "motion.host.trace");
  EXPECT_STREQ(report.fileName.data(), "entry_pump");
  EXPECT_GT(report.line, 0U);
  EXPECT_GT(report.time.tv_sec, 0);
  push(*sut, "6");
  sut->flush();
  EXPECT_EQ(m_recording.texts().size(), 6U);
  EXPECT_EQ(m_recording.texts().back(), "6");
}

TEST_F(EntryPumpTest, DropsFromBeforeTheEndAreReported) {
  auto sut = make(2);
  sut->flush();
  push(*sut, "a");
  push(*sut, "b");
  EXPECT_FALSE(push(*sut, "c"));
  sut.reset();
  EXPECT_THAT(m_recording.texts(), ElementsAre("a", "b", "1 trace entries were dropped, because 2 entries were waiting."));
}

TEST_F(EntryPumpTest, ListenersSeeWhatComesWhileTheyListen) {
  const auto sut = make();
  std::vector<std::string> first;
  std::vector<std::string> second;
  push(*sut, "a");
  sut->flush();
  const auto firstId = sut->addListener([&](const TraceEntry& entry) { first.emplace_back(entry.text.data()); });
  const auto secondId = sut->addListener([&](const TraceEntry& entry) { second.emplace_back(entry.text.data()); });
  EXPECT_NE(firstId, secondId);
  push(*sut, "b");
  sut->flush();
  sut->removeListener(firstId);
  push(*sut, "c");
  sut->flush();
  sut->removeListener(secondId);
  sut->removeListener(secondId);
  push(*sut, "d");
  sut->flush();
  EXPECT_THAT(first, ElementsAre("b"));
  EXPECT_THAT(second, ElementsAre("b", "c"));
  EXPECT_THAT(m_recording.texts(), ElementsAre("a", "b", "c", "d"));
}

TEST_F(EntryPumpTest, WorksWithoutAWriter) {
  EntryPump sut(nullptr, 2, NEVER);
  std::vector<std::string> heard;
  sut.addListener([&](const TraceEntry& entry) { heard.emplace_back(entry.text.data()); });
  push(sut, "a");
  sut.flush();
  EXPECT_THAT(heard, ElementsAre("a"));
}

TEST_F(EntryPumpTest, ThrowingListenerIsReportedAndHarmsNobody) {
  struct Output {
    static void keep(const char*, unsigned int, const char*, const char* message, void* messages) noexcept {
      static_cast<std::vector<std::string>*>(messages)->emplace_back(message);
    }
  };
  std::vector<std::string> messages;
  common::log::setOutputHook(&Output::keep, &messages);
  const auto sut = make();
  std::vector<std::string> heard;
  sut->addListener([](const TraceEntry&) { throw std::runtime_error("broken listener"); });
  sut->addListener([](const TraceEntry&) { throw 5; });
  sut->addListener([&](const TraceEntry& entry) { heard.emplace_back(entry.text.data()); });
  push(*sut, "a");
  sut->flush();
  common::log::setOutputHook(nullptr, nullptr);
  EXPECT_THAT(heard, ElementsAre("a"));
  EXPECT_THAT(m_recording.texts(), ElementsAre("a"));
  EXPECT_THAT(messages, ElementsAre("A trace entry was not written: broken listener",
                                    "A trace entry was not written: unknown exception"));
}

}  // namespace
}  // namespace motion::host::trace
