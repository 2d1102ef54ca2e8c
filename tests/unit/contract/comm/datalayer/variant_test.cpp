#include "comm/datalayer/variant.h"

#include <gtest/gtest.h>

namespace comm::datalayer {
namespace {

TEST(Variant, HasTheNumbersOfItsTypes) {
  EXPECT_EQ(static_cast<std::uint32_t>(VariantType::ARRAY_OF_STRING), 24U);
  EXPECT_EQ(static_cast<std::uint32_t>(VariantType::FLATBUFFERS), 26U);
}

TEST(Variant, IsUnknownAtFirst) {
  const Variant sut;
  EXPECT_EQ(sut.getType(), VariantType::UNKNOWN);
  EXPECT_EQ(sut.getBool(), nullptr);
  EXPECT_TRUE(sut.getFlatBuffer().empty());
}

TEST(Variant, GivesWhatItHolds) {
  EXPECT_EQ(*Variant(true).getBool(), true);
  EXPECT_EQ(*Variant(std::int32_t{-5}).getSigned(), -5);
  EXPECT_EQ(*Variant(std::uint32_t{5}).getUnsigned(), 5U);
  EXPECT_EQ(*Variant(2.5).getDouble(), 2.5);
  EXPECT_EQ(*Variant(std::string("x")).getString(), "x");
  EXPECT_EQ(Variant(Variant::Strings{"a", "b"}).getStrings()->size(), 2U);
}

TEST(Variant, MakesATextOfALiteralAndOfNothingElse) {
  const Variant literal("glue valve");
  ASSERT_EQ(literal.getType(), VariantType::STRING);
  EXPECT_EQ(*literal.getString(), "glue valve");
  char letters[] = "x";
  EXPECT_EQ(Variant(letters).getType(), VariantType::STRING);
  const char* const missing = nullptr;
  EXPECT_EQ(*Variant(missing).getString(), "");
  EXPECT_FALSE((std::is_constructible_v<Variant, void*>)) << "it would become a bool";
  EXPECT_FALSE((std::is_constructible_v<Variant, const int*>));
}

TEST(Variant, NamesItsType) {
  EXPECT_EQ(Variant(true).getType(), VariantType::BOOL8);
  EXPECT_EQ(Variant(std::int32_t{1}).getType(), VariantType::INT32);
  EXPECT_EQ(Variant(std::uint32_t{1}).getType(), VariantType::UINT32);
  EXPECT_EQ(Variant(1.0).getType(), VariantType::FLOAT64);
  EXPECT_EQ(Variant(std::string()).getType(), VariantType::STRING);
  EXPECT_EQ(Variant(Variant::Strings{}).getType(), VariantType::ARRAY_OF_STRING);
}

TEST(Variant, AnswersNullForAnotherType) {
  const Variant sut(std::int32_t{1});
  EXPECT_EQ(sut.getBool(), nullptr);
  EXPECT_EQ(sut.getUnsigned(), nullptr);
  EXPECT_EQ(sut.getDouble(), nullptr);
  EXPECT_EQ(sut.getString(), nullptr);
  EXPECT_EQ(sut.getStrings(), nullptr);
}

TEST(Variant, CopiesAndMovesWhatItHolds) {
  const Variant original(Variant::Strings{"a", "b"});
  Variant copy(original);
  EXPECT_EQ(*copy.getStrings(), *original.getStrings());
  Variant assigned(true);
  assigned = original;
  EXPECT_EQ(assigned.getType(), VariantType::ARRAY_OF_STRING);
  EXPECT_EQ(*assigned.getStrings(), *original.getStrings());
  const Variant moved(std::move(copy));
  EXPECT_EQ(*moved.getStrings(), *original.getStrings());
}

TEST(Variant, CopiesAFlatBuffer) {
  std::vector<std::uint8_t> bytes{1, 2, 3};
  const Variant sut = Variant::fromFlatBuffer(bytes);
  bytes[0] = 9;
  ASSERT_EQ(sut.getFlatBuffer().size(), 3U);
  EXPECT_EQ(sut.getFlatBuffer()[0], 1);
  EXPECT_EQ(sut.getType(), VariantType::FLATBUFFERS);
}

}  // namespace
}  // namespace comm::datalayer
