// From a value of the data layer to permanence and parameter record, for each command option.
#include <random>

#include "impl/command/cmd_option.h"
#include "impl_fixture.h"
#include "option_cases.h"

namespace motion::kavo::cmd {
namespace {

using comm::datalayer::Variant;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto UNTOUCHED = static_cast<CmdOptPermType>(77);

class CmdOptionUnmarshallingTest : public ImplTest, public testing::WithParamInterface<OptionCase> {
 protected:
  [[nodiscard]] CmdResult unmarshal(const Variant* data) {
    core::IContainer* container = nullptr;
    m_permType = UNTOUCHED;
    const auto result = GetParam().onMarshall(data, container, m_permType, m_collector);
    m_container.reset(container);
    return result;
  }
  void expectRefused(const Variant* data, std::uint32_t code, const std::string& format, const std::string& text) {
    forget();
    EXPECT_EQ(core::toCode(unmarshal(data)), code);
    EXPECT_EQ(m_container, nullptr);
    EXPECT_THAT(traces(), ElementsAre("Error " + GetParam().unit + " onMarshall: " + text));
    ASSERT_EQ(m_host.traceSink.entries().size(), 1U);
    EXPECT_EQ(m_host.traceSink.entries()[0].format, format);
    EXPECT_THAT(m_host.calls.all(), IsEmpty()) << "nothing for the collector";
  }
  void expectInvalid(const Variant& data) {
    expectRefused(&data, 0xF011000F, "%s", "Invalid FlatBuffer structure");
    EXPECT_EQ(m_permType, UNTOUCHED);
  }

  test::FakeDiagCollector m_collector{m_host.calls};
  std::unique_ptr<core::IContainer> m_container;
  CmdOptPermType m_permType = UNTOUCHED;
};

TEST_P(CmdOptionUnmarshallingTest, MakesTheRecordOfTheOptionAndTellsThePermanence) {
  for (const auto& [text, number] : {std::pair("Once", 0U), std::pair("PermOn", 1U), std::pair("PermOff", 2U)}) {
    const auto data = GetParam().table(text);
    EXPECT_EQ(core::toCode(unmarshal(&data)), 0x00110000U);
    EXPECT_EQ(static_cast<std::uint32_t>(m_permType), number);
    ASSERT_NE(m_container, nullptr);
    EXPECT_EQ(m_container->getID(), GetParam().parametersID());
  }
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionUnmarshallingTest, AcceptsTheThreeWordsOnlyToTheLetter) {
  for (const std::string text : {"", "once", "ONCE", "Once ", " Once", "permon", "Permon", "permOn", "permoff", "PERMOFF",
                                 "Permoff", "PermOffx", "Perm", "always", "0", "2"}) {
    const auto data = GetParam().table(text);
    expectRefused(&data, 0xF011000F, "Invalid permType(%s)", "Invalid permType(" + text + ")");
    EXPECT_EQ(static_cast<std::uint32_t>(m_permType), 2U) << "anything else is first taken for the third word";
  }
}

TEST_P(CmdOptionUnmarshallingTest, RefusesAnAbsentPermanence) {
  const auto data = GetParam().table(std::nullopt);
  expectRefused(&data, 0xF011000F, "%s", "cmdDataIn->permType==nullptr");
  EXPECT_EQ(m_permType, UNTOUCHED);
}

TEST_P(CmdOptionUnmarshallingTest, RefusesNoData) {
  expectRefused(nullptr, 0xF0110011, "%s", "Invalid flatBufferData");
}

TEST_P(CmdOptionUnmarshallingTest, RefusesAnotherTypeOfValue) {
  const auto refuse = [this](const Variant& data, const std::string& number) {
    expectRefused(&data, 0xF011000F, "flatBufferData type(%d) != FLATBUFFERS",
                  "flatBufferData type(" + number + ") != FLATBUFFERS");
  };
  refuse(Variant(), "0");
  refuse(Variant(true), "1");
  refuse(Variant(std::uint32_t{5}), "7");
  refuse(Variant(std::string("Once")), "12");
  refuse(Variant(Variant::Strings{"Once"}), "24");
}

TEST_P(CmdOptionUnmarshallingTest, RefusesTruncatedBuffersAndGarbage) {
  const auto data = GetParam().table("PermOn");
  const auto buffer = data.getFlatBuffer();
  for (std::size_t size = 0; size + 8 < buffer.size(); ++size) {  // the rest may be the filling behind the text
    expectInvalid(Variant::fromFlatBuffer(buffer.first(size)));
  }
  expectInvalid(Variant::fromFlatBuffer(std::vector<std::uint8_t>(64, 0xFF)));
}

TEST_P(CmdOptionUnmarshallingTest, RefusesAPermanenceThatIsNoText) {
  flatbuffers::FlatBufferBuilder builder;
  const auto start = builder.StartTable();
  builder.AddElement<std::uint32_t>(OptionTable::PERM_TYPE, 0x7FFFFFF0, 0);
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  expectInvalid(Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()}));
}

TEST_P(CmdOptionUnmarshallingTest, ReadsNoByteOutsideOfADamagedBuffer) {
  std::mt19937 random(4711);
  const auto good = GetParam().table("Once");
  const auto buffer = good.getFlatBuffer();
  int refused = 0;
  for (int round = 0; round < 1000; ++round) {
    std::vector<std::uint8_t> bytes(buffer.begin(), buffer.end());
    bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
    const auto data = Variant::fromFlatBuffer(bytes);
    const auto result = unmarshal(&data);
    EXPECT_TRUE(result == CmdResult::Okay || core::toCode(result) == 0xF011000F || core::toCode(result) == 0xF0110011);
    EXPECT_EQ(result == CmdResult::Okay, m_container != nullptr);
    refused += result == CmdResult::Okay ? 0 : 1;
  }
  EXPECT_GT(refused, 100);
}

TEST_P(CmdOptionUnmarshallingTest, FailsWithoutMemory) {
  const auto data = GetParam().table("Once");
  CmdResult result{};
  core::IContainer* container = nullptr;
  const int failures = withEachAllocationFailing(
      [&] {
        container = nullptr;
        result = GetParam().onMarshall(&data, container, m_permType, m_collector);
      },
      [&](bool hasFailed) {
        EXPECT_EQ(core::isFailure(result), hasFailed);
        EXPECT_EQ(container == nullptr, hasFailed);
        m_container.reset(container);
      });
  EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(All, CmdOptionUnmarshallingTest, testing::ValuesIn(optionCases()), optionCaseName);

}  // namespace
}  // namespace motion::kavo::cmd
