// The snap's name comes from the environment at construction.
#include "log_trace/snap_name.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "support/fake_allocation.h"

namespace common::log {
namespace {

class SnapNameTest : public testing::Test {
 protected:
  SnapNameTest() {
    if (const char* value = std::getenv("SNAP_NAME"); value != nullptr) {
      m_before = value;
    }
  }
  ~SnapNameTest() override { m_before ? ::setenv("SNAP_NAME", m_before->c_str(), 1) : ::unsetenv("SNAP_NAME"); }

 private:
  std::optional<std::string> m_before;
};

TEST_F(SnapNameTest, IsTheVariable) {
  ::setenv("SNAP_NAME", "motion-snap", 1);
  const SnapName sut;
  EXPECT_STREQ(sut.get(), "motion-snap");
}

TEST_F(SnapNameTest, IsUnknownWithoutTheVariable) {
  ::unsetenv("SNAP_NAME");
  const SnapName sut;
  EXPECT_STREQ(sut.get(), "unknownSnap");
}

TEST_F(SnapNameTest, KeepsAnEmptyVariable) {
  ::setenv("SNAP_NAME", "", 1);
  const SnapName sut;
  EXPECT_STREQ(sut.get(), "");
}

TEST_F(SnapNameTest, StaysAsItWasAtConstruction) {
  const std::string longName(300, 's');
  ::setenv("SNAP_NAME", longName.c_str(), 1);
  const SnapName sut;
  ::setenv("SNAP_NAME", "later", 1);
  EXPECT_EQ(sut.get(), longName);
}

TEST_F(SnapNameTest, IsUnknownWithoutMemoryForTheVariable) {
  ::setenv("SNAP_NAME", std::string(300, 's').c_str(), 1);
  std::optional<SnapName> sut;
  EXPECT_TRUE(motion::test::failsDuring(1, [&sut] { sut.emplace(); }));
  EXPECT_STREQ(sut->get(), "unknownSnap");
}

}  // namespace
}  // namespace common::log
