// Parameters that were encoded are read back by their names.
#include "host/scenario/parameter_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "host/scenario/parameter_encoder.h"
#include "host/scenario/yaml_tree.h"
#include "reading.h"

namespace motion::host::scenario {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

std::vector<std::uint8_t> schemaOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

class ParameterReaderTest : public testing::Test {
 protected:
  /// Encodes parameters with a schema; the reader borrows both.
  ParameterReader reader(const std::string& path, const std::string& parameters) {
    ProblemCollector problems("f");
    const auto value = parseYaml(parameters, problems);
    m_schema = schemaOf(path);
    EncodeResult encoded = encodeParameters(m_schema, value.value_or(Value()), "Cmd", {1, 1}, "f");
    EXPECT_THAT(textsOf(encoded.problems), IsEmpty());
    m_data = encoded.data.value_or(comm::datalayer::Variant());
    return {m_schema, m_data};
  }
  ParameterReader everyType(const std::string& parameters) { return reader(TEST_SCHEMA_DIR "/every_type.bfbs", parameters); }

  std::vector<std::uint8_t> m_schema;
  comm::datalayer::Variant m_data;
};

TEST_F(ParameterReaderTest, readsWhatWasWritten) {
  const auto sut =
      reader(BUNDLE_SCHEMA_DIR "/cmdOptionSwitchOnPath.bfbs",
             "{permType: PermOn, signalId: 6, action: RESET_SIGNAL, targetPosition: [1, -2.5, 3], radius: 0.25}");
  EXPECT_EQ(sut.text("permType"), "PermOn");
  EXPECT_THAT(sut.number("signalId"), Optional(6.0));
  EXPECT_THAT(sut.number("action"), Optional(1.0));
  EXPECT_THAT(sut.numbers("targetPosition"), ElementsAre(1.0, -2.5, 3.0));
  EXPECT_THAT(sut.number("radius"), Optional(0.25));
}

TEST_F(ParameterReaderTest, readsTheDefaultsOfWhatIsAbsent) {
  const auto sut = everyType("{}");
  EXPECT_THAT(sut.number("i8"), Optional(-8.0));
  EXPECT_THAT(sut.number("f64"), Optional(2.5));
  EXPECT_THAT(sut.number("colour"), Optional(2.0));
  EXPECT_THAT(sut.number("flag"), Optional(1.0));
  EXPECT_THAT(sut.number("i16"), Optional(0.0));
  EXPECT_THAT(sut.numbers("f64s"), IsEmpty());
  EXPECT_EQ(sut.text("text"), "");
}

TEST_F(ParameterReaderTest, readsEveryKindOfNumber) {
  const auto sut = everyType(
      "{flag: false, i8: -1, u8: 200, i16: -300, u16: 60000, i32: -70000, u32: 4000000000, i64: -5, u64: 6, f32: 0.5, f64: "
      "-0.25, colour: RED, i8s: [-1, 2], u16s: [60000], i64s: [-3], f32s: [0.5, 1.5], f64s: [0.1]}");
  const std::vector<std::pair<const char*, double>> expected{
      {"flag", 0.0},         {"i8", -1.0},  {"u8", 200.0}, {"i16", -300.0}, {"u16", 60000.0}, {"i32", -70000.0},
      {"u32", 4000000000.0}, {"i64", -5.0}, {"u64", 6.0},  {"f32", 0.5},    {"f64", -0.25},   {"colour", -1.0}};
  for (const auto& [name, value] : expected) {
    EXPECT_THAT(sut.number(name), Optional(value)) << name;
  }
  EXPECT_THAT(sut.numbers("i8s"), ElementsAre(-1.0, 2.0));
  EXPECT_THAT(sut.numbers("u16s"), ElementsAre(60000.0));
  EXPECT_THAT(sut.numbers("i64s"), ElementsAre(-3.0));
  EXPECT_THAT(sut.numbers("f32s"), ElementsAre(0.5, 1.5));
  EXPECT_THAT(sut.numbers("f64s"), ElementsAre(0.1));
}

TEST_F(ParameterReaderTest, hasNothingForFieldsOfOtherKindsOrNames) {
  const auto sut = everyType("{text: hello, texts: [a], f64s: [1, 2], f64: 3}");
  for (const char* name : {"text", "texts", "f64s", "point", "inner", "inners", "none", ""}) {
    EXPECT_EQ(sut.number(name), std::nullopt) << name;
  }
  for (const char* name : {"text", "texts", "f64", "point", "inners", "none"}) {
    EXPECT_THAT(sut.numbers(name), IsEmpty()) << name;
  }
  for (const char* name : {"f64", "texts", "point", "none"}) {
    EXPECT_EQ(sut.text(name), "") << name;
  }
  EXPECT_EQ(sut.text("text"), "hello");
}

TEST_F(ParameterReaderTest, hasNothingWithoutASchema) {
  static_cast<void>(everyType("{f64: 3}"));
  const ParameterReader sut({}, m_data);
  EXPECT_EQ(sut.number("f64"), std::nullopt);
  EXPECT_THAT(sut.numbers("f64s"), IsEmpty());
  EXPECT_EQ(sut.text("text"), "");
}

}  // namespace
}  // namespace motion::host::scenario
