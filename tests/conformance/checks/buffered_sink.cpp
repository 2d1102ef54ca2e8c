// The component's own sink: what it answers, cuts and splits.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/own_journal.h"
#include "conformance/trace_texts.h"
#include "support/scratch_dir.h"

namespace motion::conformance {
namespace {

using common::log::trace::ILogRealTime3;
using common::log::trace::LogParameters;
using common::log::trace::LogParametersExtended;

constexpr std::uint32_t OK = 1;
constexpr std::uint32_t FORMAT_FAILED = 0xF0000001;
constexpr std::uint32_t INVALID = 0xF0000003;
constexpr std::uint32_t TRUNCATED = 0xF0000005;
constexpr unsigned int MESSAGE_CODE = 0x090A0FFC;

/// The sink, a record for it, and the entries that it writes.
class SinkSubject {
 public:
  explicit SinkSubject(const Bundle& bundle) : m_component(bundle.makeComponent()), m_sink(bufferedSink(*m_component)) {
    record.entity = "an entity";
    record.origin = "an origin";
    record.fileName = "a_file";
    record.functionName = "aFunction";
    record.line = 77;
    record.format = "%s";
    m_journal = std::make_unique<OwnJournal>();
  }

  template <typename... ARGUMENTS>
  std::uint32_t log(unsigned int code, ARGUMENTS... arguments) {
    return static_cast<std::uint32_t>(m_sink.logRealTime(code, &record, arguments...));
  }
  std::vector<TraceInJournal> entries() { return m_journal->entries(); }
  TraceInJournal only() {
    const auto all = entries();
    expectEqual("number of entries", all.size(), 1U);
    return all.front();
  }

  LogParametersExtended record;

 private:
  std::unique_ptr<core::framework::IMotionComponent> m_component;
  ILogRealTime3& m_sink;
  std::unique_ptr<OwnJournal> m_journal;
};

/// What a step writes to standard error; little enough for a pipe to hold.
template <typename STEP>
std::string errorsOf(const STEP& step) {
  std::array<int, 2> ends{};
  expectEqual("result of pipe", pipe(ends.data()), 0);
  const int kept = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  step();
  dup2(kept, STDERR_FILENO);
  close(kept);
  std::string text;
  std::array<char, 512> chunk{};
  for (auto count = read(ends[0], chunk.data(), chunk.size()); count > 0;
       count = read(ends[0], chunk.data(), chunk.size())) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  return text;
}

/// Throws a Mismatch unless that is what the library says about a text that was cut.
void expectCutReport(const std::string& errors, std::size_t size, const std::string& parameter, int limit) {
  expectTrue(fmt::format("\"{}\" begins with its level", errors), errors.starts_with("ERR"));
  expectHolds("place of the report", errors, " (line ");
  expectHolds("report on standard error", errors,
              fmt::format("): Source string size ({}) of parameter '{}' exceeded and is truncated after {} characters.",
                          size, parameter, limit));
}

/// A text in which every position can be told from its neighbours.
std::string pattern(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; text.size() < length; ++i) {
    text += std::to_string(i) + ".";
  }
  return text.substr(0, length);
}

void wholeRecord(const Bundle& bundle) {
  SinkSubject subject(bundle);
  expectEqual("result", subject.log(MESSAGE_CODE, "a text"), OK);
  const auto entry = subject.only();
  expectEqual("R_ENTITY", entry.field("R_ENTITY"), "an entity");
  expectEqual("R_ORIGIN", entry.field("R_ORIGIN"), "an origin");
  expectEqual("R_UNIT", entry.field("R_UNIT"), "motion.kavo");
  expectEqual("CODE_LINE", entry.field("CODE_LINE"), "77");
  const auto time = entry.part(Part::TIME);
  expectEqual("MESSAGE", entry.field("MESSAGE"),
              time + "||090A0FFC|Trace message motion.kavo|||an entity|an origin|motion.kavo|a_file|aFunction|77|a text");
}

void codeClass(const Bundle& bundle, unsigned int code, const std::string& priority, const std::string& title) {
  SinkSubject subject(bundle);
  expectEqual("result", subject.log(code, "a text"), OK);
  const auto entry = subject.only();
  expectEqual("PRIORITY", entry.field("PRIORITY"), priority);
  expectEqual("title", entry.part(Part::TITLE), title + " motion.kavo");
  expectEqual("R_DIAG_MAIN", entry.field("R_DIAG_MAIN"), fmt::format("{:08X}", code));
}

/// The entry that the library writes about itself.
void expectInternal(const TraceInJournal& entry, const std::string& text) {
  expectEqual("R_DIAG_MAIN of the entry about the library", entry.field("R_DIAG_MAIN"), "080F0112");
  expectEqual("R_ENTITY of the entry about the library", entry.field("R_ENTITY"), "trace");
  expectEqual("CODE_FILE of the entry about the library", entry.field("CODE_FILE"), "log_buffered3");
  expectEqual("text of the entry about the library", entry.part(Part::TEXT), text);
}

void invalidCode(const Bundle& bundle) {
  SinkSubject subject(bundle);
  expectEqual("result", subject.log(0x09050FFC, "a text"), INVALID);
  const auto entries = subject.entries();
  expectEqual("number of entries", entries.size(), 2U);
  const bool isFirst = entries[0].field("R_ENTITY") == "trace";
  expectInternal(entries[isFirst ? 0 : 1],
                 "Invalid main diagnosis code 0x09050FFC: treat as trace error, using 0x080F0112 instead.");
  const auto& own = entries[isFirst ? 1 : 0];
  expectEqual("R_DIAG_MAIN", own.field("R_DIAG_MAIN"), "080F0112");
  expectEqual("PRIORITY", own.field("PRIORITY"), "3");
  expectEqual("text", own.part(Part::TEXT), "a text");
}

void invalidClassType(const Bundle& bundle) {
  SinkSubject subject(bundle);
  subject.record.classType = 2;
  expectEqual("result", subject.log(MESSAGE_CODE, "a text"), INVALID);
  expectInternal(subject.only(), "Incorrect class type was sent. Class type: 2. Unit name: motion.kavo.");
}

void unformattable(const Bundle& bundle) {
  SinkSubject subject(bundle);
  subject.record.format = "%lc";
  expectEqual("result", subject.log(MESSAGE_CODE, static_cast<std::wint_t>(0x12345678)), FORMAT_FAILED);
  expectInternal(subject.only(), "Calling 'vsnprintf' failed. Output string could not be built.");
}

void noFormat(const Bundle& bundle, const char* format) {
  SinkSubject subject(bundle);
  subject.record.format = format;
  expectEqual("result", subject.log(MESSAGE_CODE), OK);
  expectEqual("number of entries for an empty text", subject.entries().size(), 0U);
}

void lineZero(const Bundle& bundle) {
  SinkSubject subject(bundle);
  subject.record.line = 0;
  expectEqual("result", subject.log(MESSAGE_CODE, "a text"), OK);
  expectEqual("CODE_LINE", subject.only().field("CODE_LINE"), "");
}

void nullTexts(const Bundle& bundle) {
  SinkSubject subject(bundle);
  subject.record.entity = nullptr;
  subject.record.origin = nullptr;
  subject.record.fileName = nullptr;
  subject.record.functionName = nullptr;
  expectEqual("result", subject.log(MESSAGE_CODE, "a text"), OK);
  const auto entry = subject.only();
  for (const char* field : {"R_ENTITY", "R_ORIGIN", "CODE_FILE", "CODE_FUNC"}) {
    expectEqual(field, entry.field(field), "");
  }
}

/// A text of the record and how much of it is kept.
struct Limited {
  const char* name;       ///< in the name of the check
  const char* parameter;  ///< as the library calls it
  const char* LogParameters::*text;
  const char* field;
  std::size_t limit;
};

constexpr Limited LIMITED[] = {
    {"entity", "entity", &LogParameters::entity, "R_ENTITY", 127},
    {"origin", "origin", &LogParameters::origin, "R_ORIGIN", 63},
    {"file-name", "file name", &LogParameters::fileName, "CODE_FILE", 63},
    {"function-name", "function name", &LogParameters::functionName, "CODE_FUNC", 63},
};

void cutText(const Bundle& bundle, const Limited& limited) {
  for (const std::size_t beyond : {0U, 1U, 50U}) {
    SinkSubject subject(bundle);
    const auto text = pattern(limited.limit + beyond);
    subject.record.*limited.text = text.c_str();
    std::uint32_t result = 0;
    const auto errors = errorsOf([&] { result = subject.log(MESSAGE_CODE, "a text"); });
    expectEqual("result", result, beyond == 0 ? OK : TRUNCATED);
    if (beyond == 0) {
      expectEqual("report on standard error", errors, "");
    } else {
      expectCutReport(errors, text.size(), limited.parameter, static_cast<int>(limited.limit));
    }
    expectEqual(limited.field, subject.only().field(limited.field), text.substr(0, limited.limit));
  }
}

void split(const Bundle& bundle, std::size_t length, std::uint32_t result, const std::vector<std::size_t>& lengths) {
  SinkSubject subject(bundle);
  const auto text = pattern(length);
  std::uint32_t found = 0;
  const auto errors = errorsOf([&] { found = subject.log(MESSAGE_CODE, text.c_str()); });
  expectEqual("result", found, result);
  if (result == TRUNCATED) {
    // What is longer than the buffer of the formatted text is cut there already.
    expectCutReport(errors, std::min<std::size_t>(length, 767), "dynamic description", 749);
  } else {
    expectEqual("report on standard error", errors, "");
  }
  const auto entries = subject.entries();
  expectEqual("number of entries", entries.size(), lengths.size());
  std::size_t begin = 0;
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    const auto marker = lengths.size() > 1 ? fmt::format("{}/{}: ", i + 1, lengths.size()) : "";
    expectEqual(fmt::format("text of entry {}", i + 1), entries[i].part(Part::TEXT),
                marker + text.substr(begin, lengths[i]));
    begin += lengths[i];
  }
}

/// The origin of an entry about the library, written by a copy of the bundle that is loaded now.
std::string originWhenLoadedNow(const Bundle& bundle) {
  const test::ScratchDir directory;
  std::filesystem::copy(bundle.directory() / "libmotion_kavo.so", directory / "libmotion_kavo.so");
  const Bundle copy(directory.path());
  SinkSubject subject(copy);
  subject.record.classType = 2;
  expectEqual("result", subject.log(MESSAGE_CODE, "a text"), INVALID);
  return subject.only().field("R_ORIGIN");
}

void snapName(const Bundle& bundle) {
  setenv("SNAP_NAME", "a-snap", 1);
  expectEqual("origin of an entry about the library", originWhenLoadedNow(bundle), "a-snap");
}

void noSnapName(const Bundle& bundle) {
  unsetenv("SNAP_NAME");
  expectEqual("origin of an entry about the library", originWhenLoadedNow(bundle), "unknownSnap");
}

}  // namespace

Checks bufferedSinkChecks() {
  const auto ofClass = [](unsigned int code, const std::string& priority, const std::string& title) {
    return [=](const Bundle& bundle) { codeClass(bundle, code, priority, title); };
  };
  const auto splitInto = [](std::size_t length, std::uint32_t result, const std::vector<std::size_t>& lengths) {
    return [=](const Bundle& bundle) { split(bundle, length, result, lengths); };
  };
  Checks checks = {
      {"journal.sink-record", "each text of a record has its place in the entry", wholeRecord},
      {"journal.sink-message", "class 10 of a code is a message", ofClass(0x090A0FFC, "6", "Trace message")},
      {"journal.sink-warning", "class 14 of a code is a warning", ofClass(0x010E0001, "4", "Trace warning")},
      {"journal.sink-error", "class 15 of a code is an error", ofClass(0xFFFFFFFF, "3", "Trace error")},
      {"journal.sink-invalid-code", "another class is written as an error with another code, and refused", invalidCode},
      {"journal.sink-class-type", "a record of another class type is refused, with an entry that says so", invalidClassType},
      {"journal.sink-unformattable", "a text that cannot be formatted is refused, with an entry that says so",
       unformattable},
      {"journal.sink-null-format", "a null format gives an empty text, and so no entry",
       [](const Bundle& bundle) { noFormat(bundle, nullptr); }},
      {"journal.sink-empty-format", "an empty format gives an empty text, and so no entry",
       [](const Bundle& bundle) { noFormat(bundle, ""); }},
      {"journal.sink-line-0", "line 0 is no line", lineZero},
      {"journal.sink-null-texts", "texts that are null are empty", nullTexts},
      {"journal.sink-255", "a text of 255 characters is one entry", splitInto(255, OK, {255})},
      {"journal.sink-256", "a text of 256 characters is split behind 250", splitInto(256, OK, {250, 6})},
      {"journal.sink-300", "a text of 300 characters is split behind 250", splitInto(300, OK, {250, 50})},
      {"journal.sink-500", "a text of 500 characters fills two entries", splitInto(500, OK, {250, 250})},
      {"journal.sink-501", "parts are counted by 251 characters: the last of 501 is lost", splitInto(501, OK, {250, 250})},
      {"journal.sink-502", "a text of 502 characters is split into three", splitInto(502, OK, {250, 250, 2})},
      {"journal.sink-600", "a text of 600 characters is split into three", splitInto(600, OK, {250, 250, 100})},
      {"journal.sink-750", "a text of 750 characters fills three entries", splitInto(750, OK, {250, 250, 250})},
      {"journal.sink-752", "a text of 752 characters is cut behind 750", splitInto(752, OK, {250, 250, 250})},
      {"journal.sink-753", "a text of 753 characters is cut, and the result says so",
       splitInto(753, TRUNCATED, {250, 250, 250})},
      {"journal.sink-1000", "a text of 1000 characters is cut, and the result says so",
       splitInto(1000, TRUNCATED, {250, 250, 250})},
      {"journal.sink-snap-name", "entries about the library have the snap's name as their origin", snapName},
      {"journal.sink-no-snap-name", "without a snap's name their origin is unknownSnap", noSnapName},
  };
  for (const auto& limited : LIMITED) {
    checks.push_back({fmt::format("journal.sink-{}", limited.name),
                      fmt::format("{} is cut behind {} characters, and the result says so", limited.field, limited.limit),
                      [limited](const Bundle& bundle) { cutText(bundle, limited); }});
  }
  return checks;
}

}  // namespace motion::conformance
