#include "support/scratch_dir.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace motion::test {

ScratchDir::ScratchDir() {
  std::string pattern = std::filesystem::temp_directory_path() / "kavo-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a scratch directory");
  }
  m_path = pattern;
}

ScratchDir::~ScratchDir() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchDir::write(const std::string& name, const std::string& content) const {
  const auto file = m_path / name;
  std::ofstream(file, std::ios::binary) << content;
  return file;
}

}  // namespace motion::test
