// What the component's commands have in common: how they are made, their numbers, and the order of operations and fields.
#include "impl/command/kavo_cmd.h"

#include <cstddef>

#include "command_cases.h"
#include "impl_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::cmd::CmdGeneric;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::cmd::ICmdFrame;
using core::cmd::ICmdGeneric;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* REFUSAL = "this command can not be used as a non - buffered command";

class KavoCmdTest : public CommandTest, public testing::WithParamInterface<CommandCase> {
 protected:
  [[nodiscard]] std::unique_ptr<ICmdGeneric> create() {
    std::unique_ptr<ICmdGeneric> sut;
    std::string errText;
    EXPECT_EQ(GetParam().onCreate(m_host.objFactory, true, sut, errText), CmdResult::Okay);
    return sut;
  }
};

TEST_P(KavoCmdTest, IsMadeForTheBuffer) {
  std::unique_ptr<ICmdGeneric> sut;
  std::string errText = "old text";
  EXPECT_EQ(GetParam().onCreate(m_host.objFactory, true, sut, errText), CmdResult::Okay);
  EXPECT_NE(sut, nullptr);
  EXPECT_EQ(errText, "");
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_P(KavoCmdTest, RefusesUseOutsideOfTheBuffer) {
  std::unique_ptr<ICmdGeneric> sut;
  std::string errText = "old text";
  EXPECT_EQ(core::toCode(GetParam().onCreate(m_host.objFactory, false, sut, errText)), 0xF011001DU);
  EXPECT_EQ(sut, nullptr);
  EXPECT_EQ(errText, REFUSAL);
  EXPECT_THAT(traces(), ElementsAre("Error " + GetParam().unit + " onCreate: " + REFUSAL));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_P(KavoCmdTest, FailsWithoutMemory) {
  std::unique_ptr<ICmdGeneric> sut;
  std::string errText;
  CmdResult result{};
  const int failures =
      withEachAllocationFailing([&] { result = GetParam().onCreate(m_host.objFactory, true, sut, errText); },
                                [&](bool hasFailed) {
                                  EXPECT_EQ(core::isFailure(result), hasFailed);
                                  EXPECT_EQ(sut == nullptr, hasFailed);
                                });
  EXPECT_GT(failures, 0);
}

TEST_P(KavoCmdTest, StillRefusesWithoutMemory) {
  std::unique_ptr<ICmdGeneric> sut;
  withEachAllocationFailing(
      [&] {
        std::string errText;
        EXPECT_EQ(GetParam().onCreate(m_host.objFactory, false, sut, errText), CmdResult::Refused);
      },
      [&](bool /*hasFailed*/) { EXPECT_EQ(sut, nullptr); });
}

TEST_P(KavoCmdTest, NeedsItsOneJob) {
  const auto sut = create();
  EXPECT_THAT(sut->getJobNames(), ElementsAre(GetParam().expected.job));
  const auto other = create();
  EXPECT_EQ(&sut->getJobNames(), &other->getJobNames()) << "one list for all commands of a kind, made once";
}

TEST_P(KavoCmdTest, HasTheNumbersOfItsTypeOfObject) {
  const auto sut = create();
  EXPECT_EQ(sut->onGetCmdType(), GetParam().isAxis() ? 35U : 18U);
  EXPECT_EQ(sut->onGetPlcOpenCmdType(), GetParam().isAxis() ? 39U : 4108U);
}

TEST_P(KavoCmdTest, HasItsOperationsInOrder) {
  auto sut = create();
  void* const object = sut.get();
  EXPECT_THAT(callSlot<const std::vector<std::string>&>(object, 2), ElementsAre(GetParam().expected.job));
  EXPECT_TRUE(
      core::isFailure((callSlot<CmdResult, const core::IContainer*, const core::dia::CmdSourceInfo&, core::IObj*, bool>(
          object, 3, nullptr, m_source, nullptr, false))));
  EXPECT_EQ(callSlot<std::uint32_t>(object, 4), sut->onGetCmdType());
  EXPECT_EQ((callSlot<CmdResult, core::job::IJobDataHandler&>(object, 5, m_handler)), CmdResult::Okay);
  EXPECT_EQ(m_handler.m_published.size(), 1U);
  EXPECT_EQ((callSlot<CmdResult, const core::dia::CmdSourceInfo&, core::dia::IDia*>(object, 6, m_source, nullptr)),
            CmdResult::Okay);
  EXPECT_EQ(callSlot<std::uint32_t>(object, 14), sut->onGetPlcOpenCmdType());
  callSlot<void>(sut.release(), 1);  // a leak check would see that the second destructor frees the memory
}

INSTANTIATE_TEST_SUITE_P(All, KavoCmdTest, testing::ValuesIn(commandCases()), caseName);

/// Tells which of its operations was called, and shows its fields.
class ProbeCmd : public CmdGeneric<core::ObjectType::AXIS> {
 public:
  explicit ProbeCmd(core::IObjFactory& factory) : CmdGeneric("probe", true, factory) {}

  const std::vector<std::string>& getJobNames() const override {
    static const std::vector<std::string> names{"2"};
    return names;
  }
  CmdResult onSetCmdValues(const core::IContainer* /*cmdValues*/, const core::dia::CmdSourceInfo& /*source*/,
                           core::IObj* /*obj*/, bool /*flag*/) override {
    m_called = "onSetCmdValues";
    return CmdResult::Okay;
  }
  std::uint32_t onGetCmdType() const override { return 4; }
  CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& /*handler*/) override {
    m_called = "onRegisterJobListsInputs";
    return CmdResult::Okay;
  }
  CmdResult onValidate(const core::dia::CmdSourceInfo& /*source*/, core::dia::IDia* /*dia*/) override {
    m_called = "onValidate";
    return CmdResult::Okay;
  }
  void onCmdStateChanged(const ICmdFrame& /*frame*/, CmdState /*state*/) override { m_called = "onCmdStateChanged"; }
  bool onIsAdditional() override {
    m_called = "onIsAdditional";
    return false;
  }
  CmdResult onAdditionalExecute() override {
    m_called = "onAdditionalExecute";
    return CmdResult::Okay;
  }
  CmdResult onCmdActivate() override {
    m_called = "onCmdActivate";
    return CmdResult::Okay;
  }
  CmdResult onCmdExit() override {
    m_called = "onCmdExit";
    return CmdResult::Okay;
  }
  std::uint32_t onGetAddCmdSlotID() const override { return 12; }
  bool onDeviceHasToFollow() override {
    m_called = "onDeviceHasToFollow";
    return false;
  }
  std::uint32_t onGetPlcOpenCmdType() const override { return 14; }

  [[nodiscard]] std::ptrdiff_t offsetOf(const void* field) const {
    return static_cast<const std::byte*>(field) - reinterpret_cast<const std::byte*>(this);
  }
  [[nodiscard]] std::ptrdiff_t hostDataOffset() const { return offsetOf(&m_hostData); }
  [[nodiscard]] std::ptrdiff_t nameOffset() const { return offsetOf(&m_name); }
  [[nodiscard]] std::ptrdiff_t flagOffset() const { return offsetOf(&m_bufferedOnly); }
  [[nodiscard]] std::uint64_t hostData() const { return m_hostData; }
  [[nodiscard]] bool flag() const { return m_bufferedOnly; }
  [[nodiscard]] const core::IObjFactory& factory() const { return m_objFactory; }

  std::string m_called;
};

TEST_F(CommandTest, HasTheOperationsOfACommandInOrder) {
  ProbeCmd sut(m_host.objFactory);
  const auto expect = [&sut](std::size_t slot, const std::string& operation) {
    callSlot<void, const void*, const void*, const void*, bool>(&sut, slot, nullptr, nullptr, nullptr, false);
    EXPECT_EQ(sut.m_called, operation) << slot;
  };
  EXPECT_THAT(callSlot<const std::vector<std::string>&>(&sut, 2), ElementsAre("2"));
  expect(3, "onSetCmdValues");
  EXPECT_EQ(callSlot<std::uint32_t>(&sut, 4), 4U);
  expect(5, "onRegisterJobListsInputs");
  expect(6, "onValidate");
  expect(7, "onCmdStateChanged");
  expect(8, "onIsAdditional");
  expect(9, "onAdditionalExecute");
  expect(10, "onCmdActivate");
  expect(11, "onCmdExit");
  EXPECT_EQ(callSlot<std::uint32_t>(&sut, 12), 12U);
  expect(13, "onDeviceHasToFollow");
  EXPECT_EQ(callSlot<std::uint32_t>(&sut, 14), 14U);
}

TEST_F(CommandTest, HasTheFieldsOfACommandInOrder) {
  const ProbeCmd sut(m_host.objFactory);
  constexpr std::ptrdiff_t FIRST = sizeof(void*);
  EXPECT_EQ(sut.hostDataOffset(), FIRST);
  EXPECT_EQ(sut.nameOffset(), FIRST + 8);
  EXPECT_EQ(sut.flagOffset(), FIRST + 8 + static_cast<std::ptrdiff_t>(sizeof(std::string)));
  const auto* factory = *reinterpret_cast<core::IObjFactory* const*>(reinterpret_cast<const std::byte*>(&sut) +
                                                                     sut.flagOffset() + sizeof(void*));
  EXPECT_EQ(factory, &m_host.objFactory);
  EXPECT_EQ(sizeof(CmdGeneric<core::ObjectType::AXIS>), static_cast<std::size_t>(sut.flagOffset()) + 2 * sizeof(void*));
  EXPECT_EQ(sut.hostData(), 0U);
  EXPECT_EQ(sut.getName(), "probe");
  EXPECT_TRUE(sut.flag());
  EXPECT_EQ(&sut.factory(), &m_host.objFactory);
}

/// Makes the fields of a command visible.
template <typename COMMAND>
class Opened : public COMMAND {
 public:
  explicit Opened(core::IObjFactory& factory) : COMMAND(factory) {}
  [[nodiscard]] std::uint64_t hostData() const { return this->m_hostData; }
  [[nodiscard]] bool flag() const { return this->m_bufferedOnly; }
  [[nodiscard]] const core::IObjFactory* factory() const { return &this->m_objFactory; }
};

template <typename COMMAND>
class CommandFieldsTest : public CommandTest {};

using AllCommands =
    testing::Types<CmdSendSignal<core::ObjectType::AXIS, SignalAction::SET>,
                   CmdSendSignal<core::ObjectType::KINEMATICS, SignalAction::SET>,
                   CmdSendSignal<core::ObjectType::AXIS, SignalAction::RESET>,
                   CmdSendSignal<core::ObjectType::KINEMATICS, SignalAction::RESET>,
                   CmdWaitForSignal<core::ObjectType::AXIS>, CmdWaitForSignal<core::ObjectType::KINEMATICS>,
                   CmdWaitForSignalReset<core::ObjectType::AXIS>, CmdWaitForSignalReset<core::ObjectType::KINEMATICS>>;
TYPED_TEST_SUITE(CommandFieldsTest, AllCommands);

TYPED_TEST(CommandFieldsTest, AreFilledByTheConstructor) {
  const Opened<TypeParam> sut(this->m_host.objFactory);
  EXPECT_EQ(sut.hostData(), 0U);
  EXPECT_EQ(sut.getName(), TypeParam::getStaticName());
  EXPECT_TRUE(sut.flag());
  EXPECT_EQ(sut.factory(), &this->m_host.objFactory);
}

TYPED_TEST(CommandFieldsTest, AddOnlyTheCommandsRecord) {
  constexpr std::size_t RECORD = 2 * sizeof(void*);  // a container whose payload has at most eight bytes
  EXPECT_EQ(sizeof(TypeParam), sizeof(CmdGeneric<core::ObjectType::AXIS>) + RECORD);
}

}  // namespace
}  // namespace motion::kavo::cmd
