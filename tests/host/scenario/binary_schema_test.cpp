// Which bytes are a schema that can be used.
#include "host/scenario/binary_schema.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "host/scenario/parameter_encoder.h"
#include "reading.h"

namespace motion::host::scenario {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}
Bytes everyType() {
  return bytesOf(std::string(TEST_SCHEMA_DIR) + "/every_type.bfbs");
}

// A field of the root table, and its type, in the bytes that are about to be damaged.
const reflection::Field& fieldOf(const Bytes& bytes, std::string_view name) {
  const auto& fields = *reflection::GetSchema(bytes.data())->root_table()->fields();
  return **std::find_if(fields.begin(), fields.end(),
                        [&](const reflection::Field* field) { return nameOf(*field) == name; });
}

// Overwrites a number that the table stores.
template <typename T, typename Table>
void overwrite(const Table& table, flatbuffers::voffset_t place, T value) {
  auto* writable = reinterpret_cast<flatbuffers::Table*>(const_cast<Table*>(&table));
  ASSERT_NE(writable->GetOptionalFieldOffset(place), 0);
  writable->SetField<T>(place, value, T{});
}

TEST(BinarySchema, takesTheSchemasOfTheBundle) {
  for (const std::string name : {"cmdJoin", "cmdOptionSetSignal", "cmdOptionSwitchOnPath", "cmdResetSignal", "cmdSetSignal",
                                 "cmdWaitForSignal", "cmdWaitForSignalReset"}) {
    EXPECT_TRUE(isUsableSchema(bytesOf(std::string(BUNDLE_SCHEMA_DIR) + "/" + name + ".bfbs"))) << name;
  }
  EXPECT_TRUE(isUsableSchema(everyType()));
}

TEST(BinarySchema, takesBytesFromAnyPlace) {
  Bytes bytes = everyType();
  bytes.insert(bytes.begin(), 0);
  EXPECT_TRUE(isUsableSchema(std::span(bytes).subspan(1)));
}

TEST(BinarySchema, refusesWhatIsNone) {
  EXPECT_FALSE(isUsableSchema({}));
  EXPECT_FALSE(isUsableSchema(Bytes(3, 0)));
  EXPECT_FALSE(isUsableSchema(Bytes(1000, 0)));
  EXPECT_FALSE(isUsableSchema(bytesOf(std::string(TEST_SCHEMA_DIR) + "/no_root.bfbs")));
}

TEST(BinarySchema, refusesEveryBeginningOfOne) {
  const Bytes bytes = everyType();
  for (std::size_t size = 0; size < bytes.size() / 2; size += 7) {
    EXPECT_FALSE(isUsableSchema(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
  }
}

TEST(BinarySchema, refusesFieldsAtPlacesThatABuilderDoesNotUse) {
  using Field = reflection::Field;
  Bytes bytes = everyType();
  overwrite<std::uint16_t>(fieldOf(bytes, "i16"), Field::VT_OFFSET, 6);
  EXPECT_FALSE(isUsableSchema(bytes));
  bytes = everyType();
  overwrite<std::uint16_t>(fieldOf(bytes, "i16"), Field::VT_ID, 500);
  overwrite<std::uint16_t>(fieldOf(bytes, "i16"), Field::VT_OFFSET, flatbuffers::FieldIndexToOffset(500));
  EXPECT_FALSE(isUsableSchema(bytes));
}

TEST(BinarySchema, refusesTwoFieldsAtOnePlace) {
  using Field = reflection::Field;
  Bytes bytes = everyType();
  overwrite<std::uint16_t>(fieldOf(bytes, "i16"), Field::VT_ID, 1);
  overwrite<std::uint16_t>(fieldOf(bytes, "i16"), Field::VT_OFFSET, flatbuffers::FieldIndexToOffset(1));
  EXPECT_FALSE(isUsableSchema(bytes));
}

TEST(BinarySchema, refusesTypesThatDoNotExist) {
  using Type = reflection::Type;
  const auto isUsableWith = [](const char* field, flatbuffers::voffset_t place, auto value) {
    const Bytes bytes = everyType();
    overwrite(*fieldOf(bytes, field).type(), place, value);
    return isUsableSchema(bytes);
  };
  EXPECT_FALSE(isUsableWith("colour", Type::VT_INDEX, std::int32_t{3000}));
  EXPECT_FALSE(isUsableWith("colours", Type::VT_INDEX, std::int32_t{3000}));
  EXPECT_FALSE(isUsableWith("inner", Type::VT_INDEX, std::int32_t{3000}));
  EXPECT_FALSE(isUsableWith("inner", Type::VT_INDEX, std::int32_t{-1}));
  EXPECT_TRUE(isUsableWith("i16", Type::VT_BASE_TYPE, std::int8_t{reflection::Int}));
  EXPECT_FALSE(isUsableWith("i16", Type::VT_BASE_TYPE, std::int8_t{90}));
  EXPECT_FALSE(isUsableWith("i16", Type::VT_BASE_TYPE, std::int8_t{-1}));
  EXPECT_FALSE(isUsableWith("i16", Type::VT_BASE_TYPE, std::int8_t{reflection::None}));
  EXPECT_FALSE(isUsableWith("i16", Type::VT_BASE_TYPE, std::int8_t{reflection::Array}));
  EXPECT_FALSE(isUsableWith("f64s", Type::VT_ELEMENT, std::int8_t{90}));
  EXPECT_FALSE(isUsableWith("f64s", Type::VT_ELEMENT, std::int8_t{reflection::None}));
  EXPECT_FALSE(isUsableWith("f64s", Type::VT_ELEMENT, std::int8_t{reflection::Vector}));
  EXPECT_FALSE(isUsableWith("i16", Type::VT_BASE_TYPE, std::int8_t{reflection::Vector}));
}

TEST(BinarySchema, refusesUnionsWithoutTheFieldOfTheirType) {
  const Bytes bytes = everyType();
  overwrite(*fieldOf(bytes, "i16").type(), reflection::Type::VT_BASE_TYPE, std::int8_t{reflection::Union});
  EXPECT_FALSE(isUsableSchema(bytes));
}

TEST(BinarySchema, refusesFileIdentifiersThatABuilderDoesNotTake) {
  Bytes bytes = everyType();
  const auto* identifier = reinterpret_cast<const std::uint8_t*>(reflection::GetSchema(bytes.data())->file_ident()->Data());
  bytes[static_cast<std::size_t>(identifier - bytes.data())] = 'X';
  EXPECT_TRUE(isUsableSchema(bytes));
  bytes[static_cast<std::size_t>(identifier - bytes.data()) + 2] = 0;
  EXPECT_FALSE(isUsableSchema(bytes));
}

TEST(BinarySchema, leavesOutDeprecatedFields) {
  const auto sut = BinarySchema::open(everyType());
  ASSERT_TRUE(sut.has_value());
  EXPECT_EQ(sut->root().fields()->size(), sut->fields().size() + 1);
  EXPECT_EQ(nameOf(*sut->fields().front()), "flag");
  EXPECT_EQ(nameOf(*sut->fields().back()), "inners");
}

TEST(BinarySchema, mayBeDamagedWithoutHarm) {
  const Bytes original = everyType();
  Value number;
  number.kind = Value::Kind::SCALAR;
  number.text = "1";
  Value parameters;
  parameters.kind = Value::Kind::MAP;
  for (const std::string name : {"i16", "f64", "flag", "colour", "text", "point"}) {
    parameters.fields.push_back({name, number});
  }
  const bool held = rc::check("schemas with random bytes", [&] {
    Bytes bytes = original;
    const int edits = *rc::gen::inRange(1, 4);
    for (int i = 0; i < edits; ++i) {
      bytes[*rc::gen::inRange<std::size_t>(0, bytes.size())] = *rc::gen::arbitrary<std::uint8_t>();
    }
    const EncodeResult result = encodeParameters(bytes, parameters, "Cmd", {}, "f");
    RC_ASSERT(result.data.has_value() == result.problems.empty());
    RC_ASSERT(isUsableSchema(bytes) || describeParameters(bytes).empty());
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace motion::host::scenario
