// Main program of every test. It works in the build tree that it belongs to, so that the places of bundle, tool and examples
// can be written relative to it, and a compiled test is the same wherever the project lies.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

int main(int argc, char** argv) {
  // The place of a report has to be absolute, therefore.
  std::filesystem::current_path(std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path());
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
