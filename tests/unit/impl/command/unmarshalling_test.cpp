// From a value of the data layer to a parameter record, for each command.
#include "impl/command/unmarshalling.h"

#include <flatbuffers/flatbuffers.h>

#include <optional>
#include <random>

#include "command_cases.h"
#include "impl_fixture.h"

namespace motion::kavo::cmd {
namespace {

using comm::datalayer::Variant;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr flatbuffers::voffset_t SIGNAL_ID = 4;
constexpr flatbuffers::voffset_t AUTO_RESET = 6;

/// A table as a client would send it, with the fields that are given.
Variant table(std::optional<std::uint32_t> signalId, std::optional<std::uint8_t> autoReset = std::nullopt) {
  flatbuffers::FlatBufferBuilder builder;
  builder.ForceDefaults(true);
  const auto start = builder.StartTable();
  if (signalId) {
    builder.AddElement<std::uint32_t>(SIGNAL_ID, *signalId, 0);
  }
  if (autoReset) {
    builder.AddElement<std::uint8_t>(AUTO_RESET, *autoReset, 0);
  }
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  return Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

std::optional<std::uint32_t> signalIdOf(const core::IContainer* container) {
  if (const auto* const record = CmdSendSignalPars::safeCast(container); record != nullptr) {
    return record->get().signalId;
  }
  if (const auto* const record = job::WaitForSignalJobPars::safeCast(container); record != nullptr) {
    return record->get().signalId;
  }
  if (const auto* const record = job::WaitForSignalResetJobPars::safeCast(container); record != nullptr) {
    return record->get().signalId;
  }
  return std::nullopt;
}

class UnmarshallingTest : public ImplTest, public testing::WithParamInterface<CommandCase> {
 protected:
  [[nodiscard]] CmdResult unmarshal(const Variant* data) {
    core::IContainer* container = nullptr;
    m_owned = false;
    const auto result = GetParam().onMarshal(data, container, m_owned);
    m_container.reset(container);
    return result;
  }
  void expectRefused(const Variant* data, std::uint32_t code, const std::string& format, const std::string& text) {
    m_host.traceSink.clear();
    EXPECT_EQ(core::toCode(unmarshal(data)), code);
    EXPECT_EQ(m_container, nullptr);
    EXPECT_FALSE(m_owned);
    EXPECT_THAT(traces(), ElementsAre("Error " + GetParam().unit + " " + GetParam().marshal + ": " + text));
    ASSERT_EQ(m_host.traceSink.entries().size(), 1U);
    EXPECT_EQ(m_host.traceSink.entries()[0].format, format);
  }
  void expectInvalid(const Variant& data) { expectRefused(&data, 0xF011000F, "%s", GetParam().invalidBuffer); }

  std::unique_ptr<core::IContainer> m_container;
  bool m_owned = false;
};

TEST_P(UnmarshallingTest, MakesTheRecordOfTheCommand) {
  for (const std::uint32_t id : {0U, 7U, 99U, 100U, 0xFFFFFFFFU}) {
    const auto data = table(id);
    EXPECT_EQ(unmarshal(&data), CmdResult::Okay);
    EXPECT_TRUE(m_owned);
    EXPECT_EQ(signalIdOf(m_container.get()), id) << "whether the signal exists is not asked here";
  }
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(UnmarshallingTest, TakesTheDefaultForAnAbsentField) {
  const auto data = table(std::nullopt);
  EXPECT_EQ(unmarshal(&data), CmdResult::Okay);
  EXPECT_EQ(signalIdOf(m_container.get()), 0U);
}

TEST_P(UnmarshallingTest, RefusesNoData) {
  expectRefused(nullptr, 0xF0110011, "%s", "Invalid flatBufferData");
}

TEST_P(UnmarshallingTest, RefusesAnotherTypeOfValue) {
  const auto refuse = [this](const Variant& data, const std::string& number) {
    const auto& format = GetParam().wrongVariant;
    auto text = format;
    text.replace(text.find("%d"), 2, number);
    expectRefused(&data, 0xF011000F, format, text);
  };
  refuse(Variant(), "0");
  refuse(Variant(true), "1");
  refuse(Variant(std::uint32_t{5}), "7");
  refuse(Variant(2.0), "11");
  refuse(Variant(std::string("5")), "12");
  refuse(Variant(Variant::Strings{"5"}), "24");
}

TEST_P(UnmarshallingTest, RefusesATruncatedBuffer) {
  const auto data = table(7);
  const auto buffer = data.getFlatBuffer();
  for (std::size_t size = 0; size < buffer.size(); ++size) {
    const auto truncated = Variant::fromFlatBuffer(buffer.first(size));
    expectInvalid(truncated);
  }
}

TEST_P(UnmarshallingTest, RefusesGarbage) {
  expectInvalid(Variant::fromFlatBuffer(std::vector<std::uint8_t>(64, 0xFF)));
  const std::vector<std::uint8_t> outside = {0xF0, 0xFF, 0xFF, 0x7F, 0, 0, 0, 0, 0, 0, 0, 0};
  expectInvalid(Variant::fromFlatBuffer(outside));
}

TEST_P(UnmarshallingTest, ReadsNoByteOutsideOfADamagedBuffer) {
  std::mt19937 random(4711);
  const auto good = table(7, 1);
  const auto buffer = good.getFlatBuffer();
  int refused = 0;
  for (int round = 0; round < 500; ++round) {
    std::vector<std::uint8_t> bytes(buffer.begin(), buffer.end());
    bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    const auto data = Variant::fromFlatBuffer(bytes);
    const auto result = unmarshal(&data);
    EXPECT_TRUE(result == CmdResult::Okay || result == CmdResult::InvalidParameterData);
    EXPECT_EQ(result == CmdResult::Okay, m_container != nullptr);
    refused += result == CmdResult::Okay ? 0 : 1;
  }
  EXPECT_GT(refused, 0);
}

TEST_P(UnmarshallingTest, RefusesAFieldOfTheWrongSize) {
  flatbuffers::FlatBufferBuilder builder;
  const auto start = builder.StartTable();
  builder.AddElement<std::uint8_t>(SIGNAL_ID, 7, 0);
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  // The field is the last byte of the buffer; four of them would be read.
  expectInvalid(Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()}));
}

TEST_P(UnmarshallingTest, FailsWithoutMemory) {
  const auto data = table(7);
  CmdResult result{};
  core::IContainer* container = nullptr;
  bool owned = false;
  const int failures = withEachAllocationFailing(
      [&] {
        container = nullptr;
        owned = false;
        result = GetParam().onMarshal(&data, container, owned);
      },
      [&](bool hasFailed) {
        EXPECT_EQ(core::isFailure(result), hasFailed);
        EXPECT_EQ(container == nullptr, hasFailed);
        EXPECT_EQ(owned, !hasFailed);
        m_container.reset(container);
      });
  EXPECT_EQ(failures, 1);
}

INSTANTIATE_TEST_SUITE_P(All, UnmarshallingTest, testing::ValuesIn(commandCases()), caseName);

struct FlagCase {
  std::optional<std::uint8_t> byte;
  bool value;
};

class AutoResetTest : public ImplTest, public testing::WithParamInterface<FlagCase> {};

TEST_P(AutoResetTest, IsTrueForEveryByteButZero) {
  const auto data = table(7, GetParam().byte);
  core::IContainer* container = nullptr;
  bool owned = false;
  EXPECT_EQ(CmdWaitForSignal<core::ObjectType::AXIS>::onMarshall(&data, container, owned), CmdResult::Okay);
  const std::unique_ptr<core::IContainer> sut(container);
  const auto* const record = job::WaitForSignalJobPars::safeCast(container);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->get().signalId, 7U);
  EXPECT_EQ(record->get().autoReset, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(All, AutoResetTest,
                         testing::Values(FlagCase{std::nullopt, false}, FlagCase{0, false}, FlagCase{1, true},
                                         FlagCase{2, true}, FlagCase{128, true}, FlagCase{255, true}));

}  // namespace
}  // namespace motion::kavo::cmd
