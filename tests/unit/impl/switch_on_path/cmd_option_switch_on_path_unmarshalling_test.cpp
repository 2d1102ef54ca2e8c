// The fields of the command option SwitchOnPath, from a value of the data layer to a list of one condition.
#include <limits>

#include "impl/switch_on_path/cmd_option_switch_on_path.h"
#include "impl_fixture.h"
#include "option_cases.h"

namespace motion::kavo::cmd {
namespace {

using comm::datalayer::Variant;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr flatbuffers::voffset_t MODE = 6;
constexpr flatbuffers::voffset_t SIGNAL_ID = 8;
constexpr flatbuffers::voffset_t ACTION = 10;
constexpr flatbuffers::voffset_t TARGET_POSITION = 12;
constexpr flatbuffers::voffset_t RADIUS = 14;
constexpr flatbuffers::voffset_t PRE_TRIGGER_TIME = 16;

class CmdOptionSwitchOnPathUnmarshallingTest : public ImplTest {
 protected:
  [[nodiscard]] CmdResult unmarshal(const Variant& data) {
    core::IContainer* container = nullptr;
    const auto result = CmdOptionSwitchOnPath::onMarshall(&data, container, m_permType, m_collector);
    m_container.reset(container);
    return result;
  }
  /// The only condition of a table that is right.
  [[nodiscard]] SwitchOnPathPars conditionOf(const Variant& data) {
    EXPECT_EQ(core::toCode(unmarshal(data)), 0x00110000U);
    const auto* const list = SwitchOnPathParsList::safeCast(m_container.get());
    EXPECT_NE(list, nullptr);
    if (list == nullptr || list->get().size() != 1) {
      ADD_FAILURE() << "not one condition";
      return {};
    }
    return *list->get().front();
  }
  void expectTargetRefused(const Variant& data, std::uint32_t code, const std::vector<std::string>& collected,
                           const std::string& text) {
    forget();
    EXPECT_EQ(core::toCode(unmarshal(data)), code);
    EXPECT_EQ(m_container, nullptr);
    EXPECT_EQ(m_host.calls.all(), collected);
    ASSERT_THAT(traces(), ElementsAre("Error cmd_option_switch_on_path onMarshall: " + text));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  }
  [[nodiscard]] static std::string collected(std::size_t count) {
    return fmt::format("collector.add({}, {}, require 3 double values for the \"targetPosition\" field, but found {})",
                       0x090F2001, 0x0C570101, count);
  }

  test::FakeDiagCollector m_collector{m_host.calls};
  std::unique_ptr<core::IContainer> m_container;
  CmdOptPermType m_permType = CmdOptPermType::ONCE;
};

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, ReadsEachFieldFromItsPlace) {
  for (const char* permType : {"Once", "PermOn"}) {
    const auto read = conditionOf(OptionTable(permType)
                                      .with(TARGET_POSITION, {1.5, -2.25, 1e9})
                                      .with<std::uint8_t>(MODE, 0)
                                      .with<std::uint32_t>(SIGNAL_ID, 42)
                                      .with<std::uint8_t>(ACTION, 1)
                                      .with<double>(RADIUS, 0.125)
                                      .with<double>(PRE_TRIGGER_TIME, 0.008)
                                      .finish());
    EXPECT_EQ(read.mode, SwitchOnPathMode::ENTER_SPHERE);
    EXPECT_EQ(read.signalId, 42U);
    EXPECT_EQ(read.action, SwitchOnPathAction::RESET_SIGNAL);
    EXPECT_THAT(read.targetPos, ElementsAre(1.5, -2.25, 1e9));
    EXPECT_EQ(read.radius, 0.125);
    EXPECT_EQ(read.preTriggerTime, 0.008);
    EXPECT_FALSE(read.reached);
  }
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, TakesZeroForAbsentFields) {
  const auto read = conditionOf(OptionTable("Once").with(TARGET_POSITION, {1, 2, 3}).finish());
  EXPECT_EQ(read.mode, SwitchOnPathMode::ENTER_SPHERE);
  EXPECT_EQ(read.signalId, 0U);
  EXPECT_EQ(read.action, SwitchOnPathAction::SET_SIGNAL);
  EXPECT_EQ(read.radius, 0.0);
  EXPECT_EQ(read.preTriggerTime, 0.0);
  EXPECT_FALSE(read.reached);
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, ReadsATargetWhereverItLies) {
  const auto read =
      conditionOf(Variant::fromFlatBuffer(OptionTable("Once").with(TARGET_POSITION, {1.5, -2.25, 1e9}).finishMovedBytes()));
  EXPECT_THAT(read.targetPos, ElementsAre(1.5, -2.25, 1e9));
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, LeavesTheNumbersToLaterChecks) {
  const auto read = conditionOf(OptionTable("Once")
                                    .with(TARGET_POSITION, {0, 0, 0})
                                    .with<std::uint8_t>(MODE, 255)
                                    .with<std::uint32_t>(SIGNAL_ID, 0xFFFFFFFF)
                                    .with<std::uint8_t>(ACTION, 2)
                                    .with<double>(RADIUS, -1)
                                    .with<double>(PRE_TRIGGER_TIME, -std::numeric_limits<double>::infinity())
                                    .finish());
  EXPECT_EQ(static_cast<std::uint32_t>(read.mode), 255U);
  EXPECT_EQ(read.signalId, 0xFFFFFFFFU);
  EXPECT_EQ(static_cast<std::uint32_t>(read.action), 2U);
  EXPECT_EQ(read.radius, -1.0);
  EXPECT_EQ(read.preTriggerTime, -std::numeric_limits<double>::infinity());
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, MakesAConditionOfItsOwnEachTime) {
  const auto data = OptionTable("Once").with(TARGET_POSITION, {1, 2, 3}).finish();
  ASSERT_EQ(unmarshal(data), CmdResult::Okay);
  const auto first = SwitchOnPathParsList::safeCast(m_container.get())->get().front();
  ASSERT_EQ(unmarshal(data), CmdResult::Okay);
  EXPECT_NE(SwitchOnPathParsList::safeCast(m_container.get())->get().front(), first);
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, NeedsATargetToBeSwitchedOn) {
  for (const char* permType : {"Once", "PermOn"}) {
    expectTargetRefused(OptionTable(permType).with<std::uint32_t>(SIGNAL_ID, 42).finish(), 0xF0110011, {},
                        "cmdDataIn->targetPosition==nullptr");
  }
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, NeedsThreeCoordinates) {
  for (const char* permType : {"Once", "PermOn"}) {
    for (const std::size_t count : {0U, 1U, 2U, 4U, 1000U}) {
      expectTargetRefused(OptionTable(permType).with(TARGET_POSITION, std::vector<double>(count, 1.0)).finish(), 0xF011000F,
                          {collected(count)},
                          "cmdDataIn->targetPosition()->size() != sizeof(::motion::kavo::SwitchOnPathPars::targetPos) / "
                          "sizeof(double)");
    }
  }
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, RefusesAWrongTargetWhateverBecomesOfTheCollector) {
  m_host.calls.fail("collector.add", test::FakeCalls::THROW);
  EXPECT_EQ(core::toCode(unmarshal(OptionTable("Once").with(TARGET_POSITION, {1, 2}).finish())), 0xF011000FU);
  EXPECT_EQ(traces().size(), 1U);
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, ReadsNoTargetToBeSwitchedOff) {
  for (const std::vector<double>& target :
       {std::vector<double>{}, std::vector<double>{1, 2}, std::vector<double>{1, 2, 3}, std::vector<double>{1, 2, 3, 4}}) {
    const auto read =
        conditionOf(OptionTable("PermOff").with(TARGET_POSITION, target).with<std::uint32_t>(SIGNAL_ID, 42).finish());
    EXPECT_EQ(m_permType, CmdOptPermType::PERM_OFF);
    EXPECT_THAT(read.targetPos, ElementsAre(0.0, 0.0, 0.0));
    EXPECT_EQ(read.signalId, 42U);
  }
  const auto read = conditionOf(OptionTable("PermOff").with<double>(RADIUS, 3).finish());
  EXPECT_THAT(read.targetPos, ElementsAre(0.0, 0.0, 0.0));
  EXPECT_EQ(read.radius, 3.0);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, AsksForThePermanenceBeforeTheTarget) {
  EXPECT_EQ(core::toCode(unmarshal(OptionTable("never").with(TARGET_POSITION, {1, 2}).finish())), 0xF011000FU);
  EXPECT_EQ(core::toCode(unmarshal(OptionTable(std::nullopt).finish())), 0xF011000FU);
  EXPECT_THAT(traces(), ElementsAre("Error cmd_option_switch_on_path onMarshall: Invalid permType(never)",
                                    "Error cmd_option_switch_on_path onMarshall: cmdDataIn->permType==nullptr"));
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathUnmarshallingTest, RefusesATargetThatIsNoVector) {
  flatbuffers::FlatBufferBuilder builder;
  const auto text = builder.CreateString("PermOff");
  const auto start = builder.StartTable();
  builder.AddOffset(OptionTable::PERM_TYPE, text);
  builder.AddElement<std::uint32_t>(TARGET_POSITION, 0x7FFFFFF0, 0);
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  EXPECT_EQ(core::toCode(unmarshal(Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()}))), 0xF011000FU);
  EXPECT_THAT(traces(), ElementsAre("Error cmd_option_switch_on_path onMarshall: Invalid FlatBuffer structure"));
}

}  // namespace
}  // namespace motion::kavo::cmd
