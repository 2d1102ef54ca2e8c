// Parameters become the tables that generated accessors read.
#include "host/scenario/parameter_encoder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>

#include "host/scenario/yaml_tree.h"
#include "reading.h"
#include "schemas/command/cmdJoin_generated.h"
#include "schemas/command/cmdOptionSwitchOnPath_generated.h"
#include "schemas/command/cmdWaitForSignal_generated.h"
#include "schemas/host/cmdMoveAbs_bfbs_generated.h"
#include "schemas/host/cmdMoveAbs_generated.h"
#include "tests/scenario/every_type_generated.h"

namespace motion::host::scenario {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}
Bytes bundleSchema(const std::string& name) {
  return bytesOf(std::string(BUNDLE_SCHEMA_DIR) + "/" + name + ".bfbs");
}
Bytes testSchema(const std::string& name) {
  return bytesOf(std::string(TEST_SCHEMA_DIR) + "/" + name + ".bfbs");
}

Value valueOf(const std::string& text) {
  ProblemCollector problems("f");
  const auto value = parseYaml(text, problems);
  EXPECT_THAT(textsOf(problems.take()), testing::IsEmpty()) << text;
  return value.value_or(Value());
}

// Encodes, and lets the accessors' own verification judge the result.
template <typename Table>
const Table* encode(const Bytes& schema, const std::string& parameters, comm::datalayer::Variant& data) {
  const EncodeResult result = encodeParameters(schema, valueOf(parameters), "Cmd", {9, 1}, "f");
  EXPECT_THAT(textsOf(result.problems), testing::IsEmpty());
  data = result.data.value_or(comm::datalayer::Variant());
  const auto buffer = data.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  const bool valid = !buffer.empty() && verifier.VerifyBuffer<Table>(nullptr);
  EXPECT_TRUE(valid);
  return valid ? flatbuffers::GetRoot<Table>(buffer.data()) : nullptr;
}

// Whether the root table stores the field, whatever its value.
bool isStored(const comm::datalayer::Variant& data, flatbuffers::voffset_t field) {
  return flatbuffers::GetRoot<flatbuffers::Table>(data.getFlatBuffer().data())->GetOptionalFieldOffset(field) != 0;
}

Texts problemsOfEveryType(const std::string& parameters) {
  const EncodeResult result = encodeParameters(testSchema("every_type"), valueOf(parameters), "Cmd", {9, 1}, "f");
  EXPECT_NE(result.data.has_value(), !result.problems.empty());
  return textsOf(result.problems);
}

TEST(EncodeParameters, servesTheCommandsOfTheBundle) {
  comm::datalayer::Variant data;
  const auto* wait =
      encode<motion::kavo::fbs::CmdWaitForSignal>(bundleSchema("cmdWaitForSignal"), "{signalId: 5, autoReset: true}", data);
  ASSERT_NE(wait, nullptr);
  EXPECT_EQ(data.getType(), comm::datalayer::VariantType::FLATBUFFERS);
  EXPECT_EQ(wait->signalId(), 5U);
  EXPECT_TRUE(wait->autoReset());

  const auto* join = encode<motion::kavo::fbs::CmdJoin>(bundleSchema("cmdJoin"),
                                                        "{group: [Robot, 'Feeder 1', 7], syncStartNextCmd: false}", data);
  ASSERT_NE(join, nullptr);
  ASSERT_EQ(join->group()->size(), 3U);
  EXPECT_EQ(join->group()->Get(1)->str(), "Feeder 1");
  EXPECT_EQ(join->group()->Get(2)->str(), "7");
  EXPECT_FALSE(join->syncStartNextCmd());

  const auto* path =
      encode<motion::kavo::fbs::CmdOptionSwitchOnPath>(bundleSchema("cmdOptionSwitchOnPath"),
                                                       "{permType: Once, signalId: 6, action: RESET_SIGNAL, targetPosition: "
                                                       "[200, 0.1, -1e2], radius: 1, preTriggerTime: 0.008}",
                                                       data);
  ASSERT_NE(path, nullptr);
  EXPECT_EQ(path->permType()->str(), "Once");
  EXPECT_EQ(path->action(), motion::kavo::fbs::SwitchOnPathAction::RESET_SIGNAL);
  EXPECT_THAT(*path->targetPosition(), testing::ElementsAre(200.0, 0.1, -100.0));
  EXPECT_EQ(path->preTriggerTime(), 0.008);
}

TEST(EncodeParameters, leavesAbsentFieldsAbsent) {
  comm::datalayer::Variant data;
  const auto* join = encode<motion::kavo::fbs::CmdJoin>(bundleSchema("cmdJoin"), "{}", data);
  ASSERT_NE(join, nullptr);
  EXPECT_EQ(join->group(), nullptr);
  const auto* move = encode<motion::host::fbs::CmdMoveAbs>(
      Bytes(motion::host::fbs::CmdMoveAbsBinarySchema::data(),
            motion::host::fbs::CmdMoveAbsBinarySchema::data() + motion::host::fbs::CmdMoveAbsBinarySchema::size()),
      "{to: 250}", data);
  ASSERT_NE(move, nullptr);
  EXPECT_EQ(move->to(), 250.0);
  EXPECT_EQ(move->velocity(), 100.0);
  EXPECT_FALSE(isStored(data, motion::host::fbs::CmdMoveAbs::VT_VELOCITY));
}

TEST(EncodeParameters, storesGivenFieldsThatEqualTheirDefault) {
  comm::datalayer::Variant data;
  const auto* sut =
      encode<test::EveryType>(testSchema("every_type"), "{flag: true, i32: 0, f64: 2.5, f64s: [], maybe: 0}", data);
  ASSERT_NE(sut, nullptr);
  EXPECT_TRUE(isStored(data, test::EveryType::VT_FLAG));
  EXPECT_TRUE(isStored(data, test::EveryType::VT_I32));
  EXPECT_TRUE(isStored(data, test::EveryType::VT_F64));
  EXPECT_FALSE(isStored(data, test::EveryType::VT_I64));
  EXPECT_EQ(sut->maybe(), 0);
  ASSERT_NE(sut->f64s(), nullptr);
  EXPECT_EQ(sut->f64s()->size(), 0U);
}

TEST(EncodeParameters, acceptsNoParametersAtAll) {
  EXPECT_TRUE(encodeParameters(bundleSchema("cmdJoin"), Value(), "Cmd", {}, "f").data.has_value());
}

TEST(EncodeParameters, writesEveryTypeAtItsLimits) {
  comm::datalayer::Variant data;
  const auto* sut = encode<test::EveryType>(
      testSchema("every_type"),
      "{flag: false, i8: -128, u8: 255, i16: -32768, u16: 65535, i32: -2147483648, u32: 4294967295, i64: "
      "-9223372036854775808,"
      " u64: 18446744073709551614, f32: 3.4028235e38, f64: 1.7976931348623157e308, text: \"\u00e4 \\\"x\\\"\","
      " flags: [true, false], i8s: [-1, 127], u16s: [65535], i64s: [9223372036854775807], f32s: [0.1], f64s: [0.1, -5],"
      " texts: ['', b], colours: [RED, 5]}",
      data);
  ASSERT_NE(sut, nullptr);
  EXPECT_FALSE(sut->flag());
  EXPECT_EQ(sut->i8(), -128);
  EXPECT_EQ(sut->u8(), 255);
  EXPECT_EQ(sut->i16(), -32768);
  EXPECT_EQ(sut->u16(), 65535);
  EXPECT_EQ(sut->i32(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(sut->u32(), 4294967295U);
  EXPECT_EQ(sut->i64(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(sut->u64(), 18446744073709551614U);
  EXPECT_EQ(sut->f32(), std::numeric_limits<float>::max());
  EXPECT_EQ(sut->f64(), std::numeric_limits<double>::max());
  EXPECT_EQ(sut->text()->str(), "\u00e4 \"x\"");
  EXPECT_THAT(*sut->flags(), testing::ElementsAre(1, 0));
  EXPECT_THAT(*sut->i8s(), testing::ElementsAre(-1, 127));
  EXPECT_THAT(*sut->u16s(), testing::ElementsAre(65535));
  EXPECT_THAT(*sut->i64s(), testing::ElementsAre(std::numeric_limits<std::int64_t>::max()));
  EXPECT_THAT(*sut->f32s(), testing::ElementsAre(0.1F));
  EXPECT_THAT(*sut->f64s(), testing::ElementsAre(0.1, -5.0));
  ASSERT_EQ(sut->texts()->size(), 2U);
  EXPECT_EQ(sut->texts()->Get(0)->str(), "");
  EXPECT_EQ(sut->texts()->Get(1)->str(), "b");
  EXPECT_EQ(sut->colours()->Get(0), test::Colour::RED);
  EXPECT_EQ(sut->colours()->Get(1), test::Colour::BLUE);
  EXPECT_TRUE(test::EveryTypeBufferHasIdentifier(data.getFlatBuffer().data()));
}

TEST(EncodeParameters, takesEnumerationsByNameOrNumber) {
  comm::datalayer::Variant data;
  const auto schema = testSchema("every_type");
  EXPECT_EQ(encode<test::EveryType>(schema, "{colour: RED}", data)->colour(), test::Colour::RED);
  EXPECT_EQ(encode<test::EveryType>(schema, "{colour: 'BLUE'}", data)->colour(), test::Colour::BLUE);
  EXPECT_EQ(encode<test::EveryType>(schema, "{colour: -1}", data)->colour(), test::Colour::RED);
  EXPECT_EQ(encode<test::EveryType>(schema, "{far: FAR}", data)->far(), test::Far::FAR);
  EXPECT_EQ(encode<test::EveryType>(schema, "{far: 18446744073709551615}", data)->far(), test::Far::FAR);
  EXPECT_EQ(encode<test::EveryType>(schema, "{access: WRITE}", data)->access(), test::Access::WRITE);
  EXPECT_EQ(problemsOfEveryType("{colour: Red}"),
            (Texts{"f:1:10: Cmd: colour: 'Red' is none of its values; did you mean 'RED'? known here: RED, GREEN, BLUE"}));
  EXPECT_EQ(problemsOfEveryType("{colour: 3}"),
            (Texts{"f:1:10: Cmd: colour: '3' is none of its values; known here: RED, GREEN, BLUE"}));
  EXPECT_EQ(problemsOfEveryType("{access: 8}"),
            (Texts{"f:1:10: Cmd: access: '8' is none of its values; known here: READ, WRITE, RUN"}));
  EXPECT_EQ(problemsOfEveryType("{colour: [RED]}"),
            (Texts{"f:1:10: Cmd: colour: a list is none of its values; known here: RED, GREEN, BLUE"}));
}

TEST(EncodeParameters, refusesUnknownFields) {
  EXPECT_EQ(
      textsOf(
          encodeParameters(bundleSchema("cmdWaitForSignal"), valueOf("{signalID: 5, x: 1}"), "WaitForSignal", {9, 1}, "f")
              .problems),
      (Texts{"f:1:2: WaitForSignal: unknown parameter 'signalID'; did you mean 'signalId'? known here: signalId, autoReset",
             "f:1:15: WaitForSignal: unknown parameter 'x'; known here: signalId, autoReset"}));
  EXPECT_THAT(problemsOfEveryType("{old: 1}"),
              testing::ElementsAre(testing::StartsWith("f:1:2: Cmd: unknown parameter 'old'")));
}

TEST(EncodeParameters, refusesFieldsThatStandTwice) {
  Value parameters = valueOf("{i32: 1, i16: 2}");
  parameters.fields[1].key = "i32";
  EXPECT_EQ(textsOf(encodeParameters(testSchema("every_type"), parameters, "Cmd", {9, 1}, "f").problems),
            (Texts{"f:1:10: Cmd: the parameter 'i32' stands twice"}));
}

TEST(EncodeParameters, refusesIntegersOutOfRange) {
  const auto problem = [](const std::string& name, const std::string& value) {
    return problemsOfEveryType("{" + name + ": " + value + "}");
  };
  EXPECT_EQ(problem("i8", "128"), (Texts{"f:1:6: Cmd: i8: expected a whole number from -128 to 127, found '128'"}));
  EXPECT_EQ(problem("u8", "256"), (Texts{"f:1:6: Cmd: u8: expected a whole number from 0 to 255, found '256'"}));
  EXPECT_EQ(problem("i16", "-32769"),
            (Texts{"f:1:7: Cmd: i16: expected a whole number from -32768 to 32767, found '-32769'"}));
  EXPECT_EQ(problem("u32", "-1"), (Texts{"f:1:7: Cmd: u32: expected a whole number from 0 to 4294967295, found '-1'"}));
  EXPECT_EQ(
      problem("u64", "18446744073709551616"),
      (Texts{"f:1:7: Cmd: u64: expected a whole number from 0 to 18446744073709551615, found '18446744073709551616'"}));
  EXPECT_EQ(problem("u8s", "[1]").size(), 1U);
  EXPECT_EQ(problem("i8s", "[1, 300, x]"), (Texts{"f:1:11: Cmd: i8s: expected a whole number from -128 to 127, found '300'",
                                                  "f:1:16: Cmd: i8s: expected a whole number from -128 to 127, found 'x'"}));
}

TEST(EncodeParameters, refusesValuesOfAnotherKind) {
  const std::string whole = "expected a whole number from -2147483648 to 2147483647, found ";
  EXPECT_EQ(problemsOfEveryType("{i32: 1.0}"), (Texts{"f:1:7: Cmd: i32: " + whole + "'1.0'"}));
  EXPECT_EQ(problemsOfEveryType("{i32: true}"), (Texts{"f:1:7: Cmd: i32: " + whole + "'true'"}));
  EXPECT_EQ(problemsOfEveryType("{i32: '1'}"),
            (Texts{"f:1:7: Cmd: i32: " + whole + "the text '1'; write it without quotes"}));
  EXPECT_EQ(problemsOfEveryType("{i32: }"), (Texts{"f:1:2: Cmd: i32: " + whole + "nothing"}));
  EXPECT_EQ(problemsOfEveryType("{i32: [1]}"), (Texts{"f:1:7: Cmd: i32: " + whole + "a list"}));
  EXPECT_EQ(problemsOfEveryType("{flag: yes}"), (Texts{"f:1:8: Cmd: flag: expected true or false, found 'yes'"}));
  EXPECT_EQ(problemsOfEveryType("{flag: 1}"), (Texts{"f:1:8: Cmd: flag: expected true or false, found '1'"}));
  EXPECT_EQ(problemsOfEveryType("{f64: fast}"), (Texts{"f:1:7: Cmd: f64: expected a number, found 'fast'"}));
  EXPECT_EQ(problemsOfEveryType("{f64: '1'}"),
            (Texts{"f:1:7: Cmd: f64: expected a number, found the text '1'; write it without quotes"}));
  EXPECT_EQ(problemsOfEveryType("{f64: {a: 1}}"), (Texts{"f:1:7: Cmd: f64: expected a number, found a map"}));
  EXPECT_EQ(problemsOfEveryType("{text: [a]}"), (Texts{"f:1:8: Cmd: text: expected a text, found a list"}));
  EXPECT_EQ(problemsOfEveryType("{text: }"), (Texts{"f:1:2: Cmd: text: expected a text, found nothing"}));
  EXPECT_EQ(problemsOfEveryType("{text: \"a\\0b\"}"), (Texts{"f:1:8: Cmd: text: the text 'a\\x00b' holds a NUL character"}));
  EXPECT_EQ(problemsOfEveryType("{texts: a}"),
            (Texts{"f:1:9: Cmd: texts: expected a list, found 'a'; write it in brackets, separated by ','"}));
  EXPECT_EQ(problemsOfEveryType("{texts: [a, [b]]}"), (Texts{"f:1:13: Cmd: texts: expected a text, found a list"}));
  EXPECT_EQ(problemsOfEveryType("{f64s: 1}"),
            (Texts{"f:1:8: Cmd: f64s: expected a list, found '1'; write it in brackets, separated by ','"}));
  EXPECT_EQ(problemsOfEveryType("[1]"), (Texts{"f:1:1: Cmd: expected a map, found a list"}));
}

TEST(EncodeParameters, refusesNumbersBeyondTheirType) {
  const std::string range = "expected a number from -1.7976931348623157e+308 to 1.7976931348623157e+308, found ";
  EXPECT_EQ(problemsOfEveryType("{f64: nan}"), (Texts{"f:1:7: Cmd: f64: " + range + "'nan'"}));
  EXPECT_EQ(problemsOfEveryType("{f64: .inf}"), (Texts{"f:1:7: Cmd: f64: " + range + "'.inf'"}));
  EXPECT_EQ(problemsOfEveryType("{f64: 1e999}"), (Texts{"f:1:7: Cmd: f64: " + range + "'1e999'"}));
  EXPECT_EQ(problemsOfEveryType("{f32: 1e39}"),
            (Texts{"f:1:7: Cmd: f32: expected a number from -3.4028235e+38 to 3.4028235e+38, found '1e39'"}));
}

TEST(EncodeParameters, refusesTypesThatItCannotWrite) {
  const std::string text =
      ": a scenario cannot give a parameter of this type; what it can give are numbers, true and false, texts, and lists of "
      "these";
  for (const std::string name : {"point", "inner", "any", "any_type", "inners"}) {
    EXPECT_EQ(problemsOfEveryType("{" + name + ": {a: 1}}"), (Texts{"f:1:2: Cmd: " + name + text}));
  }
}

TEST(EncodeParameters, asksForRequiredFields) {
  EXPECT_EQ(textsOf(encodeParameters(testSchema("needs_text"), valueOf("{}"), "Cmd", {9, 1}, "f").problems),
            (Texts{"f:9:1: Cmd: the parameter 'text' is missing"}));
  EXPECT_TRUE(encodeParameters(testSchema("needs_text"), valueOf("{text: a}"), "Cmd", {9, 1}, "f").data.has_value());
  // A faulty value is not reported as missing too.
  EXPECT_EQ(textsOf(encodeParameters(testSchema("needs_text"), valueOf("{text: [a]}"), "Cmd", {9, 1}, "f").problems),
            (Texts{"f:1:8: Cmd: text: expected a text, found a list"}));
}

TEST(EncodeParameters, refusesSchemasThatAreNone) {
  const Bytes none(64, 0xFF);
  EXPECT_EQ(textsOf(encodeParameters(none, valueOf("{}"), "Cmd", {9, 1}, "f").problems),
            (Texts{"f:9:1: Cmd: the schema of its parameters cannot be used"}));
}

template <typename T>
std::string listText(const std::vector<T>& values) {
  std::string text = "[";
  for (const T value : values) {
    text += fmt::format("{}{}", text.size() > 1 ? ", " : "", value);
  }
  return text + "]";
}

template <typename T>
bool isSame(const flatbuffers::Vector<T>* stored, const std::vector<T>& values) {
  return stored != nullptr && stored->size() == values.size() && std::equal(values.begin(), values.end(), stored->begin());
}

double finiteFrom(std::uint64_t bits) {
  double number = 0.0;
  std::memcpy(&number, &bits, sizeof(number));
  return std::isfinite(number) ? number : 0.0;
}

TEST(EncodeParameters, returnsRandomNumbersToTheBit) {
  const Bytes schema = testSchema("every_type");
  const bool held = rc::check("numbers survive", [&](bool flag, std::int8_t i8, std::uint16_t u16, std::int64_t i64,
                                                     std::uint64_t u64, const std::vector<std::int64_t>& i64s,
                                                     const std::vector<std::uint16_t>& u16s) {
    const double f64 = finiteFrom(*rc::gen::arbitrary<std::uint64_t>());
    const auto f32 = *rc::gen::arbitrary<float>();
    comm::datalayer::Variant data;
    const auto* sut = encode<test::EveryType>(
        schema,
        fmt::format("{{flag: {}, i8: {}, u16: {}, i64: {}, u64: {}, f64: {}, f32: {}, i64s: {}, u16s: {}, f64s: [{}, 1]}}",
                    flag, i8, u16, i64, u64, f64, f32, listText(i64s), listText(u16s), f64),
        data);
    RC_ASSERT(sut != nullptr);
    RC_ASSERT(sut->flag() == flag);
    RC_ASSERT(sut->i8() == i8);
    RC_ASSERT(sut->u16() == u16);
    RC_ASSERT(sut->i64() == i64);
    RC_ASSERT(sut->u64() == u64);
    RC_ASSERT(sut->f64() == f64);
    RC_ASSERT(sut->f32() == f32);
    RC_ASSERT(isSame(sut->i64s(), i64s));
    RC_ASSERT(isSame(sut->u16s(), u16s));
    RC_ASSERT(sut->f64s()->Get(0) == f64);
  });
  EXPECT_TRUE(held);
}

TEST(EncodeParameters, returnsRandomTextsToTheByte) {
  const Bytes schema = testSchema("every_type");
  const auto character = rc::gen::inRange<char>(1, 127);
  const auto anyText = rc::gen::container<std::string>(character);
  const bool held = rc::check("texts survive", [&] {
    const auto texts = *rc::gen::container<std::vector<std::string>>(anyText);
    Value parameters;
    parameters.kind = Value::Kind::MAP;
    Value list;
    list.kind = Value::Kind::LIST;
    for (const std::string& text : texts) {
      Value item;
      item.kind = Value::Kind::SCALAR;
      item.text = text;
      list.items.push_back(item);
    }
    parameters.fields.push_back({"texts", list});
    const EncodeResult result = encodeParameters(schema, parameters, "Cmd", {}, "f");
    RC_ASSERT(result.data.has_value());
    const auto* stored = flatbuffers::GetRoot<test::EveryType>(result.data->getFlatBuffer().data())->texts();
    RC_ASSERT(stored->size() == texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
      RC_ASSERT(stored->Get(static_cast<flatbuffers::uoffset_t>(i))->str() == texts[i]);
    }
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace motion::host::scenario
