// How the command Join comes to the host, how it is made, and how it unmarshals its parameters.
#include <flatbuffers/flatbuffers.h>

#include <memory>
#include <optional>
#include <random>

#include "impl/join/cmd_join.h"
#include "join_fixture.h"

namespace motion::kavo::cmd {
namespace {

using comm::datalayer::Variant;
using core::ObjectType;
using core::cmd::CmdGeneric;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string SCHEMA_DIR = "/a bundle/bfbs/";
constexpr const char* REFUSAL = "this command can not be used as a non - buffered command";
constexpr flatbuffers::voffset_t GROUP = 4;
constexpr flatbuffers::voffset_t SYNC_START_NEXT_CMD = 6;

/// A table as a client would send it, with the fields that are given.
Variant table(const std::optional<std::vector<std::string>>& group, std::optional<std::uint8_t> syncStartNextCmd) {
  flatbuffers::FlatBufferBuilder builder;
  builder.ForceDefaults(true);
  flatbuffers::Offset<flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>>> names;
  if (group) {
    names = builder.CreateVectorOfStrings(*group);
  }
  const auto start = builder.StartTable();
  if (group) {
    builder.AddOffset(GROUP, names);
  }
  if (syncStartNextCmd) {
    builder.AddElement<std::uint8_t>(SYNC_START_NEXT_CMD, *syncStartNextCmd, 0);
  }
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  return Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

template <typename COMMAND>
struct TypeOf;
template <ObjectType OBJECT_TYPE>
struct TypeOf<CmdJoin<OBJECT_TYPE>> {
  static constexpr ObjectType VALUE = OBJECT_TYPE;
  static constexpr bool IS_AXIS = OBJECT_TYPE == ObjectType::AXIS;
};

template <typename COMMAND>
class CmdJoinRegistrationTest : public CommandTest {
 protected:
  using Generic = CmdGeneric<TypeOf<COMMAND>::VALUE>;

  [[nodiscard]] static core::cmd::CmdId id() { return {TypeOf<COMMAND>::VALUE, "Join"}; }
  [[nodiscard]] static std::string idText() { return test::toText(id()); }
  [[nodiscard]] std::vector<std::string> factoryCalls() const { return m_host.calls.of({"objFactory.", "cmdFactory."}); }
  void expectOneError(const std::string& function) {
    ASSERT_EQ(traces().size(), 1U);
    EXPECT_THAT(traces()[0], StartsWith("Error cmd_join " + function + ": "));
  }

  [[nodiscard]] CmdResult unmarshal(const Variant* data) {
    core::IContainer* container = nullptr;
    m_owned = false;
    const auto result = COMMAND::onMarshall(data, container, m_owned);
    m_container.reset(container);
    return result;
  }
  void expectRefused(const Variant* data, std::uint32_t code, const std::string& format, const std::string& text) {
    forget();
    EXPECT_EQ(core::toCode(unmarshal(data)), code);
    EXPECT_EQ(m_container, nullptr);
    EXPECT_FALSE(m_owned);
    EXPECT_THAT(traces(), ElementsAre("Error cmd_join onMarshall: " + text));
    ASSERT_EQ(m_host.traceSink.entries().size(), 1U);
    EXPECT_EQ(m_host.traceSink.entries()[0].format, format);
  }
  void expectInvalid(const Variant& data) { expectRefused(&data, 0xF011000F, "%s", "Invalid FlatBuffer structure"); }
  /// What was unmarshalled last.
  [[nodiscard]] CmdJoinParsT record() const {
    const auto* const pars = CmdJoinPars::safeCast(static_cast<const core::IContainer*>(m_container.get()));
    EXPECT_NE(pars, nullptr);
    return pars != nullptr ? pars->get() : CmdJoinParsT{{"no record"}, false};
  }

  std::unique_ptr<core::IContainer> m_container;
  bool m_owned = false;
};

using Commands = testing::Types<CmdJoin<ObjectType::AXIS>, CmdJoin<ObjectType::KINEMATICS>>;
TYPED_TEST_SUITE(CmdJoinRegistrationTest, Commands);

TYPED_TEST(CmdJoinRegistrationTest, HasItsIdentity) {
  EXPECT_STREQ(TypeParam::getStaticName(), "Join");
  EXPECT_EQ(TypeParam::getCmdId(), this->id());
}

TYPED_TEST(CmdJoinRegistrationTest, RegistersTheJobAndThenTheCommand) {
  EXPECT_EQ(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR), CmdResult::Okay);
  EXPECT_THAT(this->factoryCalls(),
              ElementsAre("objFactory.registerObj(kavo_job_join, 0)", "cmdFactory.registerCmd(" + this->idText() + ")"));
  ASSERT_EQ(this->m_host.cmdFactory.m_commands.size(), 1U);
  const auto& registered = this->m_host.cmdFactory.m_commands.at(this->id());
  EXPECT_EQ(registered.onCreateAxis != nullptr, TypeOf<TypeParam>::IS_AXIS);
  EXPECT_EQ(registered.onCreateKin != nullptr, !TypeOf<TypeParam>::IS_AXIS);
  EXPECT_TRUE(registered.visible);
  EXPECT_THAT(registered.groups, ElementsAre("JoinCmdGroup"));
  EXPECT_EQ(registered.schemaPath, SCHEMA_DIR + "cmdJoin.bfbs");
  EXPECT_EQ(registered.description, "Synchronize start next buffered command on multiple motion objects");
  EXPECT_EQ(registered.helpUrl, "");
  core::IContainer* container = nullptr;
  bool owned = false;
  EXPECT_THAT(this->traces(), IsEmpty());
  EXPECT_EQ(core::toCode(registered.onMarshal(nullptr, container, owned)), 0xF0110011U);
}

TYPED_TEST(CmdJoinRegistrationTest, RegistersAPrototypeOfItsJob) {
  ASSERT_EQ(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR), CmdResult::Okay);
  core::job::IJobObject* made = nullptr;
  ASSERT_EQ(this->m_host.objFactory.createObj("kavo_job_join", 0, made), core::ObjFactoryResult::Okay);
  const std::unique_ptr<core::job::IJobObject> sut(made);
  EXPECT_NE(dynamic_cast<job::JobObjJoin*>(sut.get()), nullptr);
}

TYPED_TEST(CmdJoinRegistrationTest, AcceptsAJobThatIsKnownAlready) {
  this->m_host.calls.fail("objFactory.registerObj", 0xF0150003);
  EXPECT_EQ(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR), CmdResult::Okay);
  EXPECT_EQ(this->m_host.cmdFactory.m_commands.size(), 1U);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, StopsWhenTheJobIsRefused) {
  this->m_host.calls.fail("objFactory.registerObj", 0xF0150002);
  EXPECT_EQ(core::toCode(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR)), 0xF0110007U);
  EXPECT_EQ(this->m_host.calls.count("cmdFactory.registerCmd"), 0);
  this->expectOneError("registerCmd");
}

TYPED_TEST(CmdJoinRegistrationTest, NeedsBothFactories) {
  this->m_host.parts.objFactory = nullptr;
  EXPECT_EQ(core::toCode(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR)), 0xF0110011U);
  this->expectOneError("registerCmd");
  this->forget();
  EXPECT_EQ(core::toCode(TypeParam::unregisterCmd(this->m_host.ext)), 0xF0110011U);
  this->expectOneError("unregisterCmd");
  this->m_host.parts.objFactory = &this->m_host.objFactory;
  this->m_host.parts.genericCmdFactory = nullptr;
  this->forget();
  EXPECT_EQ(core::toCode(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR)), 0xF0110011U);
  this->expectOneError("registerCmd");
  EXPECT_THAT(this->factoryCalls(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, PassesTheResultsOfTheCommandFactoryOn) {
  this->m_host.calls.fail("cmdFactory.registerCmd", 0xF0110020);
  this->m_host.calls.fail("cmdFactory.unregisterCmd", 0xF0110021);
  EXPECT_EQ(core::toCode(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR)), 0xF0110020U);
  EXPECT_EQ(core::toCode(TypeParam::unregisterCmd(this->m_host.ext)), 0xF0110021U);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, UnregistersTheJobAndThenTheCommand) {
  ASSERT_EQ(TypeParam::registerCmd(this->m_host.ext, SCHEMA_DIR), CmdResult::Okay);
  this->forget();
  EXPECT_EQ(TypeParam::unregisterCmd(this->m_host.ext), CmdResult::Okay);
  EXPECT_THAT(this->factoryCalls(),
              ElementsAre("objFactory.unregisterObj(kavo_job_join, 0)", "cmdFactory.unregisterCmd(" + this->idText() + ")"));
  EXPECT_THAT(this->m_host.objFactory.m_prototypes, IsEmpty());
  EXPECT_THAT(this->m_host.cmdFactory.m_commands, IsEmpty());
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, IsMadeForTheBuffer) {
  typename TestFixture::Generic* made = nullptr;
  std::string errText = "old text";
  EXPECT_EQ(TypeParam::onCreate(this->m_host.objFactory, true, made, errText), CmdResult::Okay);
  ASSERT_NE(made, nullptr);
  const std::unique_ptr<core::cmd::ICmdGeneric> sut(made);
  EXPECT_EQ(errText, "");
  EXPECT_EQ(made->getName(), "Join");
  EXPECT_THAT(sut->getJobNames(), ElementsAre("kavo_job_join"));
  EXPECT_EQ(sut->onGetCmdType(), TypeOf<TypeParam>::IS_AXIS ? 0x23U : 0x12U);
  EXPECT_EQ(sut->onGetPlcOpenCmdType(), TypeOf<TypeParam>::IS_AXIS ? 0x27U : 0x100CU);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, RefusesUseOutsideOfTheBuffer) {
  typename TestFixture::Generic* made = nullptr;
  std::string errText = "old text";
  EXPECT_EQ(core::toCode(TypeParam::onCreate(this->m_host.objFactory, false, made, errText)), 0xF011001DU);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(errText, REFUSAL);
  ASSERT_THAT(this->traces(), ElementsAre(std::string("Error cmd_join onCreate: ") + REFUSAL));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%s");
}

TYPED_TEST(CmdJoinRegistrationTest, KeepsItsRecordBehindTheFieldsOfItsBase) {
  TypeParam sut(this->m_host.objFactory);
  core::IObjPtr objPtr;
  this->m_handler.m_published[{core::IObjPtr::getMyID(), this->m_host.sectionMgr.valueOf("OBJ_DATA")}] = &objPtr;
  ASSERT_EQ(sut.onRegisterJobListsInputs(this->m_handler), CmdResult::Okay);
  const void* const record = this->m_handler.m_published.at({job::JoinJobPars::getMyID(), this->cmdDataSection()});
  EXPECT_EQ(static_cast<const std::byte*>(record) - reinterpret_cast<const std::byte*>(&sut),
            static_cast<std::ptrdiff_t>(sizeof(typename TestFixture::Generic)));
}

TYPED_TEST(CmdJoinRegistrationTest, UnmarshalsTheNamesAsTheyWereWritten) {
  const std::vector<std::string> group = {"Z", "A", "", "A", "a name that is too long for a small text"};
  const auto data = table(group, 1);
  EXPECT_EQ(this->unmarshal(&data), CmdResult::Okay);
  EXPECT_TRUE(this->m_owned);
  EXPECT_EQ(this->record().group, group);
  EXPECT_TRUE(this->record().syncStartNextCmd);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, TakesAnAbsentFlagForFalse) {
  for (const auto flag : {std::optional<std::uint8_t>(), std::optional<std::uint8_t>(0)}) {
    const auto data = table(std::vector<std::string>{"A"}, flag);
    EXPECT_EQ(this->unmarshal(&data), CmdResult::Okay);
    EXPECT_FALSE(this->record().syncStartNextCmd);
    EXPECT_THAT(this->record().group, ElementsAre("A"));
  }
  const auto odd = table(std::vector<std::string>{"A"}, 0x80);
  EXPECT_EQ(this->unmarshal(&odd), CmdResult::Okay);
  EXPECT_TRUE(this->record().syncStartNextCmd);
}

TYPED_TEST(CmdJoinRegistrationTest, LetsAnEmptyGroupPass) {
  const auto data = table(std::vector<std::string>{}, 1);
  EXPECT_EQ(this->unmarshal(&data), CmdResult::Okay);
  EXPECT_THAT(this->record().group, IsEmpty());
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinRegistrationTest, RefusesAnAbsentGroup) {
  const auto data = table(std::nullopt, 1);
  this->expectRefused(&data, 0xF011000F, "%s", "No axes defined in group");
  const auto empty = table(std::nullopt, std::nullopt);
  this->expectRefused(&empty, 0xF011000F, "%s", "No axes defined in group");
}

TYPED_TEST(CmdJoinRegistrationTest, RefusesNoDataAndOtherTypes) {
  this->expectRefused(nullptr, 0xF0110011, "%s", "Invalid flatBufferData");
  const auto refuse = [this](const Variant& data, const std::string& number) {
    this->expectRefused(&data, 0xF011000F, "'Variant data type(%d), is not FLATBUFFERS",
                        "'Variant data type(" + number + "), is not FLATBUFFERS");
  };
  refuse(Variant(), "0");
  refuse(Variant(true), "1");
  refuse(Variant(Variant::Strings{"A"}), "24");
}

TYPED_TEST(CmdJoinRegistrationTest, RefusesTruncatedBuffersAndGarbage) {
  const auto data = table(std::vector<std::string>{"A", "B"}, 1);
  const auto buffer = data.getFlatBuffer();
  for (std::size_t size = 0; size + 8 < buffer.size(); ++size) {  // the rest may be the filling behind the last text
    this->expectInvalid(Variant::fromFlatBuffer(buffer.first(size)));
  }
  this->expectInvalid(Variant::fromFlatBuffer(std::vector<std::uint8_t>(64, 0xFF)));
}

TYPED_TEST(CmdJoinRegistrationTest, RefusesAGroupThatIsNoVector) {
  flatbuffers::FlatBufferBuilder builder;
  const auto start = builder.StartTable();
  builder.AddElement<std::uint32_t>(GROUP, 0x7FFFFFF0, 0);
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  this->expectInvalid(Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()}));
}

TYPED_TEST(CmdJoinRegistrationTest, ReadsNoByteOutsideOfADamagedBuffer) {
  std::mt19937 random(4711);
  const auto good = table(std::vector<std::string>{"A", "B"}, 1);
  const auto buffer = good.getFlatBuffer();
  int refused = 0;
  for (int round = 0; round < 500; ++round) {
    std::vector<std::uint8_t> bytes(buffer.begin(), buffer.end());
    bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    const auto data = Variant::fromFlatBuffer(bytes);
    const auto result = this->unmarshal(&data);
    EXPECT_TRUE(result == CmdResult::Okay || core::toCode(result) == 0xF011000F);
    EXPECT_EQ(result == CmdResult::Okay, this->m_container != nullptr);
    refused += result == CmdResult::Okay ? 0 : 1;
  }
  EXPECT_GT(refused, 0);
}

TYPED_TEST(CmdJoinRegistrationTest, AnswersEachFailureToAllocateWithAFailure) {
  const auto data = table(std::vector<std::string>{"a name that is too long for a small text", "B"}, 1);
  CmdResult result{};
  core::IContainer* container = nullptr;
  bool owned = false;
  const int failures = withEachAllocationFailing(
      [&] {
        container = nullptr;
        owned = false;
        result = TypeParam::onMarshall(&data, container, owned);
      },
      [&](bool hasFailed) {
        EXPECT_EQ(core::isFailure(result), hasFailed);
        EXPECT_EQ(container == nullptr, hasFailed);
        EXPECT_EQ(owned, !hasFailed);
        this->m_container.reset(container);
      });
  EXPECT_GT(failures, 2);
}

TYPED_TEST(CmdJoinRegistrationTest, IsNotMadeWithoutMemory) {
  typename TestFixture::Generic* made = nullptr;
  std::string errText;
  CmdResult result{};
  const int failures =
      withEachAllocationFailing([&] { result = TypeParam::onCreate(this->m_host.objFactory, true, made, errText); },
                                [&](bool hasFailed) {
                                  EXPECT_EQ(core::isFailure(result), hasFailed);
                                  EXPECT_EQ(made == nullptr, hasFailed);
                                });
  delete made;
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace motion::kavo::cmd
