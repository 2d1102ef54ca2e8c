// The record of a trace: sinks and callers that were built apart find its fields by their places.
#include "common/log/trace/log_parameters.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace common::log::trace {
namespace {

/// The place of a field, counted in pointers; that of the virtual operations' table is 0.
std::ptrdiff_t placeOf(const LogParameters& record, const void* field) {
  const auto distance = static_cast<const std::byte*>(field) - reinterpret_cast<const std::byte*>(&record);
  EXPECT_EQ(distance % static_cast<std::ptrdiff_t>(sizeof(void*)), 0);
  return distance / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(LogParameters, HaveTheirFieldsInOrder) {
  const LogParameters sut;
  EXPECT_EQ(placeOf(sut, &sut.classType), 1);
  EXPECT_EQ(placeOf(sut, &sut.entity), 2);
  EXPECT_EQ(placeOf(sut, &sut.origin), 3);
  EXPECT_EQ(placeOf(sut, &sut.fileName), 4);
  EXPECT_EQ(placeOf(sut, &sut.functionName), 5);
  EXPECT_EQ(placeOf(sut, &sut.line), 6);
  EXPECT_EQ(placeOf(sut, &sut.format), 7);
  EXPECT_EQ(sizeof(sut), 8 * sizeof(void*));
  EXPECT_EQ(sizeof(sut.classType), 4U);
  EXPECT_EQ(sizeof(sut.line), 4U);
}

TEST(LogParameters, AreTheSameInTheFormThatSinksAccept) {
  EXPECT_EQ(sizeof(LogParametersExtended), sizeof(LogParameters));
  EXPECT_EQ(LogParameters().classType, 0U);
  EXPECT_EQ(LogParametersExtended().classType, 1U);
  EXPECT_TRUE(std::has_virtual_destructor_v<LogParameters>);
}

}  // namespace
}  // namespace common::log::trace
