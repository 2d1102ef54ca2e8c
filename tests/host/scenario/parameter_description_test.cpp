// What users are told of parameters.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "host/scenario/parameter_encoder.h"
#include "reading.h"

namespace motion::host::scenario {
namespace {

std::vector<FieldInfo> describeFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
  return describeParameters(bytes);
}

Texts linesOf(const std::vector<FieldInfo>& fields) {
  Texts lines;
  for (const FieldInfo& field : fields) {
    lines.push_back(field.name + " | " + field.type + " | " + field.defaultText + " | " + field.documentation);
  }
  return lines;
}

TEST(DescribeParameters, tellsTheFieldsOfCommandsInTheirOrder) {
  EXPECT_EQ(linesOf(describeFile(std::string(BUNDLE_SCHEMA_DIR) + "/cmdJoin.bfbs")),
            (Texts{"group | list of text | none | Names of the motion objects to join with. An absent group is refused by "
                   "the command, "
                   "with its own message.",
                   "syncStartNextCmd | bool | false | Wait until every member has its next command prepared."}));
}

TEST(DescribeParameters, knowsEveryType) {
  EXPECT_EQ(linesOf(describeFile(std::string(TEST_SCHEMA_DIR) + "/every_type.bfbs")),
            (Texts{"flag | bool | true | Whether it is so. Usually it is.",
                   "i8 | int8 | -8 | ",
                   "u8 | uint8 | 8 | ",
                   "i16 | int16 | 0 | ",
                   "u16 | uint16 | 0 | ",
                   "i32 | int32 | 0 | ",
                   "u32 | uint32 | 0 | ",
                   "i64 | int64 | 0 | ",
                   "u64 | uint64 | 9007199254740993 | ",
                   "f32 | float | 0 | ",
                   "f64 | double | 2.5 | ",
                   "colour | one of RED, GREEN, BLUE | GREEN | ",
                   "access | one of READ, WRITE, RUN | READ | ",
                   "far | one of NEAR, FAR | NEAR | ",
                   "maybe | int32 | none | ",
                   "text | text | none | ",
                   "flags | list of bool | none | ",
                   "i8s | list of int8 | none | ",
                   "u16s | list of uint16 | none | ",
                   "i64s | list of int64 | none | ",
                   "f32s | list of float | none | ",
                   "f64s | list of double | none | ",
                   "texts | list of text | none | ",
                   "colours | list of one of RED, GREEN, BLUE | none | ",
                   "point | table | none | ",
                   "inner | table | none | ",
                   "any_type | table | none | ",
                   "any | table | none | ",
                   "inners | list of table | none | "}));
}

TEST(DescribeParameters, tellsNothingWithoutASchema) {
  EXPECT_TRUE(describeParameters({}).empty());
}

}  // namespace
}  // namespace motion::host::scenario
