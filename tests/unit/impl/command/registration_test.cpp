// How each command registers with the host and leaves it, and how records are announced.
#include "impl/command/registration.h"

#include "command_cases.h"
#include "impl_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string SCHEMA_DIR = "/a bundle/bfbs/";

class RegistrationTest : public ImplTest, public testing::WithParamInterface<CommandCase> {
 protected:
  [[nodiscard]] CmdResult registerCmd() const { return GetParam().registerCmd(m_host.ext, SCHEMA_DIR); }
  [[nodiscard]] CmdResult unregisterCmd() const { return GetParam().unregisterCmd(m_host.ext); }
  [[nodiscard]] std::vector<std::string> factoryCalls() const { return m_host.calls.of({"objFactory.", "cmdFactory."}); }
  [[nodiscard]] static std::string error(const std::string& function, const std::string& text) {
    return "Error " + GetParam().unit + " " + function + ": " + text;
  }
  [[nodiscard]] static std::string objCall(const std::string& operation) {
    return "objFactory." + operation + "(" + GetParam().expected.job + ", 0)";
  }
  [[nodiscard]] static std::string cmdCall(const std::string& operation) {
    return "cmdFactory." + operation + "(" + test::toText(GetParam().expected.id) + ")";
  }
};

TEST_P(RegistrationTest, HasItsIdentity) {
  const auto& sut = GetParam();
  EXPECT_EQ(sut.getCmdId(), sut.expected.id);
  EXPECT_EQ(sut.getStaticName(), sut.expected.id.name);
}

TEST_P(RegistrationTest, RegistersTheJobAndThenTheCommand) {
  EXPECT_EQ(registerCmd(), CmdResult::Okay);
  EXPECT_THAT(factoryCalls(), ElementsAre(objCall("registerObj"), cmdCall("registerCmd")));
  ASSERT_EQ(m_host.cmdFactory.m_commands.size(), 1U);
  const auto& registered = m_host.cmdFactory.m_commands.at(GetParam().expected.id);
  EXPECT_EQ(registered.onCreateAxis != nullptr, GetParam().isAxis());
  EXPECT_EQ(registered.onCreateKin != nullptr, !GetParam().isAxis());
  EXPECT_NE(registered.onMarshal, nullptr);
  EXPECT_TRUE(registered.visible);
  EXPECT_EQ(registered.groups, GetParam().expected.groups);
  EXPECT_EQ(registered.schemaPath, SCHEMA_DIR + GetParam().expected.schemaFile);
  EXPECT_EQ(registered.description, GetParam().expected.description);
  EXPECT_EQ(registered.helpUrl, "");
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(RegistrationTest, RegistersFunctionsThatMakeItsCommands) {
  ASSERT_EQ(registerCmd(), CmdResult::Okay);
  const auto& registered = m_host.cmdFactory.m_commands.at(GetParam().expected.id);
  std::string errText = "old text";
  std::unique_ptr<core::cmd::ICmdGeneric> cmd;
  if (GetParam().isAxis()) {
    core::cmd::CmdGeneric<core::ObjectType::AXIS>* made = nullptr;
    ASSERT_EQ(registered.onCreateAxis(m_host.objFactory, true, made, errText), CmdResult::Okay);
    EXPECT_EQ(made->getName(), GetParam().expected.id.name);
    cmd.reset(made);
  } else {
    core::cmd::CmdGeneric<core::ObjectType::KINEMATICS>* made = nullptr;
    ASSERT_EQ(registered.onCreateKin(m_host.objFactory, true, made, errText), CmdResult::Okay);
    EXPECT_EQ(made->getName(), GetParam().expected.id.name);
    cmd.reset(made);
  }
  EXPECT_THAT(cmd->getJobNames(), ElementsAre(GetParam().expected.job));
  core::IContainer* container = nullptr;
  bool owned = false;
  EXPECT_EQ(registered.onMarshal(nullptr, container, owned), CmdResult::NullPointer);
}

TEST_P(RegistrationTest, AcceptsAJobThatIsKnownAlready) {
  ASSERT_EQ(registerCmd(), CmdResult::Okay);
  ASSERT_EQ(m_host.cmdFactory.unregisterCmd(GetParam().expected.id), CmdResult::Okay);
  forget();
  EXPECT_EQ(registerCmd(), CmdResult::Okay) << "a prototype that was not taken is destroyed, which a leak check would see";
  EXPECT_THAT(factoryCalls(), ElementsAre(objCall("registerObj"), cmdCall("registerCmd")));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(RegistrationTest, StopsWhenTheJobIsRefused) {
  for (const std::uint32_t code : {0xF0150001U, 0xF0150002U, 0xF0150004U}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("objFactory.registerObj", code);
    EXPECT_EQ(core::toCode(registerCmd()), 0xF0110007U);
    EXPECT_THAT(factoryCalls(), ElementsAre(objCall("registerObj")));
    ASSERT_EQ(traces().size(), 1U);
    const auto& format = GetParam().refusedJob;
    const auto number =
        format.ends_with("%d") ? fmt::format("{}", static_cast<std::int32_t>(code)) : fmt::format("[0x{:08X}].", code);
    EXPECT_EQ(traces()[0], error("registerCmd", format.substr(0, format.find_first_of("[%")) + number));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, format);
  }
}

TEST_P(RegistrationTest, PassesTheResultOfTheCommandFactoryOn) {
  for (const std::uint32_t code : {0xF0110020U, 0xF0110022U, 0x00110001U}) {
    m_host.calls.failNothing();
    m_host.calls.fail("cmdFactory.registerCmd", code);
    EXPECT_EQ(core::toCode(registerCmd()), code);
  }
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(RegistrationTest, NeedsAnObjectFactory) {
  m_host.parts.objFactory = nullptr;
  EXPECT_EQ(core::toCode(registerCmd()), 0xF0110011U);
  EXPECT_EQ(core::toCode(unregisterCmd()), 0xF0110011U);
  EXPECT_THAT(traces(), ElementsAre(error("registerCmd", GetParam().missingObjFactory),
                                    error("unregisterCmd", GetParam().missingObjFactory)));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(factoryCalls(), IsEmpty());
}

TEST_P(RegistrationTest, NeedsACommandFactory) {
  m_host.parts.genericCmdFactory = nullptr;
  EXPECT_EQ(core::toCode(registerCmd()), 0xF0110011U);
  EXPECT_EQ(core::toCode(unregisterCmd()), 0xF0110011U);
  EXPECT_THAT(traces(), ElementsAre(error("registerCmd", GetParam().missingCmdFactory),
                                    error("unregisterCmd", GetParam().missingCmdFactory)));
  EXPECT_THAT(factoryCalls(), IsEmpty());
}

TEST_P(RegistrationTest, TracesOnceWhenBothFactoriesAreMissing) {
  m_host.parts.objFactory = nullptr;
  m_host.parts.genericCmdFactory = nullptr;
  EXPECT_EQ(core::toCode(registerCmd()), 0xF0110011U);
  EXPECT_THAT(traces(), ElementsAre(error("registerCmd", GetParam().missingObjFactory)));
}

TEST_P(RegistrationTest, UnregistersTheJobAndThenTheCommand) {
  ASSERT_EQ(registerCmd(), CmdResult::Okay);
  forget();
  EXPECT_EQ(unregisterCmd(), CmdResult::Okay);
  EXPECT_THAT(factoryCalls(), ElementsAre(objCall("unregisterObj"), cmdCall("unregisterCmd")));
  EXPECT_THAT(m_host.objFactory.m_prototypes, IsEmpty());
  EXPECT_THAT(m_host.cmdFactory.m_commands, IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(RegistrationTest, IgnoresAJobThatCannotBeUnregistered) {
  ASSERT_EQ(registerCmd(), CmdResult::Okay);
  m_host.calls.fail("objFactory.unregisterObj", 0xF0150001);
  EXPECT_EQ(unregisterCmd(), CmdResult::Okay);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(RegistrationTest, PassesTheResultOfUnregisteringOn) {
  EXPECT_EQ(core::toCode(unregisterCmd()), 0xF0110021U);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(RegistrationTest, SurvivesEachFailureToAllocate) {
  ASSERT_EQ(GetParam().getCmdId().name, GetParam().expected.id.name);  // made once
  CmdResult result{};
  const int failures = withEachAllocationFailing([&] { result = registerCmd(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(core::isFailure(result), hasFailed);
                                                   EXPECT_EQ(m_host.cmdFactory.m_commands.empty(), hasFailed);
                                                   m_host.objFactory.m_prototypes.clear();
                                                 });
  EXPECT_GT(failures, 3);
}

TEST_P(RegistrationTest, AnswersAnExceptionOfTheHostWithAFailure) {
  for (const char* operation :
       {"ext.getObjFactory", "ext.getGenericCmdFactory", "objFactory.registerObj", "cmdFactory.registerCmd"}) {
    m_host.calls.failNothing();
    m_host.calls.fail(operation, test::FakeCalls::THROW);
    EXPECT_TRUE(core::isFailure(registerCmd())) << operation;
  }
  for (const char* operation : {"objFactory.unregisterObj", "cmdFactory.unregisterCmd"}) {
    m_host.calls.failNothing();
    m_host.calls.fail(operation, test::FakeCalls::THROW);
    EXPECT_TRUE(core::isFailure(unregisterCmd())) << operation;
  }
}

TEST_P(RegistrationTest, TakesAnExceptionForTheFactoryThatIsMissing) {
  for (const auto& [getter, text] : {std::pair("ext.getObjFactory", GetParam().missingObjFactory),
                                     std::pair("ext.getGenericCmdFactory", GetParam().missingCmdFactory)}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail(getter, test::FakeCalls::THROW);
    EXPECT_EQ(core::toCode(registerCmd()), 0xF0110011U);
    EXPECT_EQ(core::toCode(unregisterCmd()), 0xF0110011U);
    EXPECT_THAT(traces(), ElementsAre(error("registerCmd", text), error("unregisterCmd", text)));
    EXPECT_THAT(factoryCalls(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(All, RegistrationTest, testing::ValuesIn(commandCases()), caseName);

class DataTypeTest : public ImplTest {};

TEST_F(DataTypeTest, AnnouncesTheNameOfARecord) {
  registerDataType({"src/impl/a_unit", "aFunction", 3}, m_host.jobDataIDMgr, 77, "ARecord");
  EXPECT_STREQ(m_host.jobDataIDMgr.getName(77), "ARecord");
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(ARecord)"));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(DataTypeTest, WarnsOfARecordThatIsKnown) {
  registerDataType({"src/impl/a_unit", "aFunction", 3}, m_host.jobDataIDMgr, 77, "ARecord");
  registerDataType({"src/impl/a_unit", "aFunction", 3}, m_host.jobDataIDMgr, 77, "ARecord");
  EXPECT_THAT(traces(), ElementsAre("Warning a_unit aFunction: ARecord was already registered"));
}

TEST_F(DataTypeTest, SurvivesAnExceptionOfTheHost) {
  m_host.calls.fail("idMgr.addID", test::FakeCalls::THROW);
  registerDataType({"src/impl/a_unit", "aFunction", 3}, m_host.jobDataIDMgr, 77, "ARecord");
  EXPECT_EQ(m_host.jobDataIDMgr.getName(77), nullptr);
  EXPECT_THAT(traces(), ElementsAre("Error a_unit aFunction: ARecord could not be registered"));
}

}  // namespace
}  // namespace motion::kavo::cmd
