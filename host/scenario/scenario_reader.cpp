// Reads scenario files: gets at the text, refuses what is none, and goes through the parts.
#include "host/scenario/scenario_reader.h"

#include <flatbuffers/util.h>
#include <fmt/format.h>

#include <cerrno>
#include <exception>
#include <fstream>
#include <new>
#include <system_error>
#include <utility>

#include "host/scenario/problem_collector.h"
#include "host/scenario/scenario_sections.h"
#include "host/scenario/yaml_tree.h"

namespace motion::host::scenario {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

ReadResult failure(std::string file, std::string message, std::string remedy = {}) {
  return {std::nullopt, {{std::move(file), {}, std::move(message), std::move(remedy), false}}};
}

ReadResult tooLong(std::string file) {
  return failure(std::move(file), "the file is too long", fmt::format("at most {} bytes are read", MAX_SCENARIO_SIZE));
}

// The first place that no text can have: a NUL character or a byte that is not UTF-8.
std::optional<Problem> findBinary(const std::string& text, const std::string& file) {
  Mark mark{1, 1};
  const char* const end = text.data() + text.size();
  for (const char* place = text.c_str(); place < end;) {
    const char byte = *place;
    if (byte == '\0') {
      return Problem{file, mark, "this is not a text file: it holds a NUL character", "scenarios are YAML text in UTF-8",
                     false};
    }
    // The text ends in NUL, which ends every sequence: nothing is read beyond it.
    if (flatbuffers::FromUTF8(&place) < 0) {
      return Problem{
          file, mark,
          fmt::format("this is not a text file: the byte 0x{:02x} is not UTF-8", static_cast<unsigned char>(byte)),
          "scenarios are YAML text in UTF-8", false};
    }
    mark = byte == '\n' ? Mark{mark.line + 1, 1} : Mark{mark.line, mark.column + 1};
  }
  return std::nullopt;
}

ReadResult readText(std::string text, std::string fileName) {
  if (text.size() > MAX_SCENARIO_SIZE) {
    return tooLong(std::move(fileName));
  }
  if (text.starts_with(BYTE_ORDER_MARK)) {
    text.erase(0, BYTE_ORDER_MARK.size());
  }
  if (auto binary = findBinary(text, fileName)) {
    return {std::nullopt, {std::move(*binary)}};
  }
  Reading reading{{}, ProblemCollector(fileName), {}, {}, {}};
  reading.scenario.file = fileName;
  const std::optional<Value> root = parseYaml(text, reading.problems);
  if (root && root->kind == Value::Kind::MAP) {
    const MapReader file(*root, "scenario",
                         {"cycle", "limit", "buffer", "signals", "objects", "program", "outside", "expect"},
                         reading.problems);
    readTiming(file, reading);
    readSignalNames(file, reading);
    readObjects(file, reading);
    readPrograms(file, reading);
    readOutside(file, reading);
    readExpectations(file, reading);
  } else if (!reading.problems.hasErrors()) {
    if (!root || root->kind == Value::Kind::EMPTY) {
      return failure(std::move(fileName), "the file holds nothing", "a scenario needs at least 'objects'");
    }
    reportUnexpected(*root, "scenario", "a map", reading.problems, "begin with 'objects:'");
  }
  ReadResult result;
  if (!reading.problems.hasErrors()) {
    result.scenario = std::move(reading.scenario);
  }
  result.problems = reading.problems.take();
  return result;
}

ReadResult readFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    return failure(path.string(), "there is no such file");
  }
  if (status.type() == std::filesystem::file_type::none) {
    return failure(path.string(), "the file cannot be read: " + error.message());
  }
  if (status.type() == std::filesystem::file_type::directory) {
    return failure(path.string(), "this is a directory", "name the scenario file in it");
  }
  if (status.type() != std::filesystem::file_type::regular) {
    return failure(path.string(), "this is not a regular file");
  }
  const auto size = std::filesystem::file_size(path, error);
  if (!error && size > MAX_SCENARIO_SIZE) {
    return tooLong(path.string());
  }
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    return failure(path.string(), "the file cannot be read: " + std::generic_category().message(errno));
  }
  // One byte beyond the limit is enough to see that a file has grown over it since.
  std::string text(MAX_SCENARIO_SIZE + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad()) {
    return failure(path.string(), "the file cannot be read: " + std::generic_category().message(errno));
  }
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return readText(std::move(text), path.string());
}

// Runs `read`; what it throws becomes a problem, or an empty result if there is no memory even for that.
template <typename Read>
ReadResult guarded(const Read& read) noexcept {
  try {
    try {
      return read();
    } catch (const std::bad_alloc&) {
      return failure({}, "there is not enough memory to read the scenario");
    } catch (const std::exception& problem) {
      return failure({}, fmt::format("the scenario cannot be read: {}", problem.what()));
    }
  } catch (...) {
    return {};
  }
}

}  // namespace

ReadResult readScenarioFile(const std::filesystem::path& path) {
  return guarded([&] { return readFile(path); });
}

ReadResult readScenarioText(std::string_view text, std::string fileName) {
  return guarded([&] { return readText(std::string(text), std::move(fileName)); });
}

}  // namespace motion::host::scenario
