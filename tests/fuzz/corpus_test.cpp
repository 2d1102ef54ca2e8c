// Everything that fuzzing has found to be interesting is fed again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/targets.h"

namespace motion::fuzz {
namespace {

std::vector<std::filesystem::path> corpusOf(std::string_view target) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(KAVO_FUZZ_CORPUS) / target)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::uint8_t> contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class CorpusTest : public testing::TestWithParam<Target> {};

/// Whoever breaks a promise aborts, and the last file named is the one that does it.
TEST_P(CorpusTest, KeepsAllPromises) {
  const auto files = corpusOf(GetParam().name);
  ASSERT_GE(files.size(), 10U) << "a corpus belongs to each target";
  for (const auto& file : files) {
    SCOPED_TRACE(file.string());
    const auto content = contentOf(file);
    GetParam().run(content);
  }
  RecordProperty("files", static_cast<int>(files.size()));
}

INSTANTIATE_TEST_SUITE_P(Fuzz, CorpusTest, testing::ValuesIn(targets()),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace
}  // namespace motion::fuzz
