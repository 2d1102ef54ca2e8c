// How each command option registers with the host and leaves it.
#include "impl/command/cmd_option.h"

#include "impl_fixture.h"
#include "option_cases.h"

namespace motion::kavo::cmd {
namespace {

using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string SCHEMA_DIR = "/a bundle/bfbs/";
const std::string MISSING = "extIf.getObjFactory() or extIf.getGenericCmdOptionFactory() failed";

class CmdOptionRegistrationTest : public ImplTest, public testing::WithParamInterface<OptionCase> {
 protected:
  [[nodiscard]] CmdResult registerOption() const { return GetParam().registerCmdOption(m_host.ext, SCHEMA_DIR); }
  [[nodiscard]] CmdResult unregisterOption() const { return GetParam().unregisterCmdOption(m_host.ext); }
  [[nodiscard]] std::vector<std::string> factoryCalls() const {
    return m_host.calls.of({"objFactory.registerObj", "objFactory.unregisterObj", "optionFactory.", "cmdFactory."});
  }
  [[nodiscard]] static std::string error(const std::string& function, const std::string& text) {
    return "Error " + GetParam().unit + " " + function + ": " + text;
  }
  [[nodiscard]] static std::string objCall(const std::string& operation) {
    return "objFactory." + operation + "(" + GetParam().job() + ", 0)";
  }
  [[nodiscard]] static std::string registerOperation() {
    return GetParam().expected.front().as == RegisteredAs::OPTION ? "optionFactory.registerCmdOption"
                                                                  : "optionFactory.registerCmdOptionWithSlots";
  }
  /// The call for the job, and then that for each type of object.
  [[nodiscard]] static std::vector<std::string> calls(const std::string& objOperation, const std::string& operation) {
    std::vector<std::string> result = {objCall(objOperation)};
    for (const auto& registration : GetParam().expected) {
      result.push_back(operation + "(" + test::toText(registration.id) + ")");
    }
    return result;
  }
};

TEST_P(CmdOptionRegistrationTest, HasItsIdentityForEachType) {
  for (const std::uint32_t type : {0U, 1U, 2U}) {
    const auto id = GetParam().getCmdId(static_cast<core::ObjectType>(type));
    EXPECT_EQ(static_cast<std::uint32_t>(id.objectType), type);
    EXPECT_EQ(id.name, nameOf(GetParam().expected));
  }
}

TEST_P(CmdOptionRegistrationTest, RegistersTheJobAndThenTheOption) {
  EXPECT_EQ(registerOption(), CmdResult::Okay);
  EXPECT_THAT(factoryCalls(), ElementsAreArray(calls("registerObj", registerOperation())));
  ASSERT_EQ(m_host.cmdOptionFactory.m_options.size(), GetParam().expected.size());
  for (const auto& expected : GetParam().expected) {
    const auto& registered = m_host.cmdOptionFactory.m_options.at(expected.id);
    EXPECT_EQ(registered.groups, expected.groups);
    EXPECT_EQ(registered.schemaPath, SCHEMA_DIR + expected.schemaFile);
    EXPECT_EQ(registered.description, expected.description);
    EXPECT_EQ(registered.helpUrl, "");
    if (expected.as == RegisteredAs::OPTION_WITH_SLOTS) {
      EXPECT_THAT(registered.slots, testing::Optional(ElementsAre(0U)));
    } else {
      EXPECT_EQ(registered.slots, std::nullopt);
    }
  }
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionRegistrationTest, RegistersFunctionsThatMakeItsOptions) {
  ASSERT_EQ(registerOption(), CmdResult::Okay);
  for (const auto& expected : GetParam().expected) {
    const auto& registered = m_host.cmdOptionFactory.m_options.at(expected.id);
    core::cmd::GenericCmdOption* made = nullptr;
    std::string errText = "old text";
    ASSERT_EQ(registered.onCreate(made, errText), CmdResult::Okay);
    const std::unique_ptr<core::cmd::GenericCmdOption> option(made);
    EXPECT_NE(option, nullptr);
    EXPECT_EQ(errText, "");

    core::IContainer* container = nullptr;
    auto permType = core::cmd::CmdOptPermType::ONCE;
    test::FakeDiagCollector collector(m_host.calls);
    const auto data = GetParam().table("PermOn");
    ASSERT_EQ(registered.onMarshal(&data, container, permType, collector), CmdResult::Okay);
    const std::unique_ptr<core::IContainer> values(container);
    EXPECT_EQ(values->getID(), GetParam().parametersID());
    EXPECT_EQ(permType, core::cmd::CmdOptPermType::PERM_ON);
  }
}

TEST_P(CmdOptionRegistrationTest, RegistersAJobThatTheFactoryCanMake) {
  ASSERT_EQ(registerOption(), CmdResult::Okay);
  core::job::IJobObject* made = nullptr;
  ASSERT_EQ(m_host.objFactory.createObj(GetParam().job().c_str(), 0, made), core::ObjFactoryResult::Okay);
  const std::unique_ptr<core::job::IJobObject> job(made);
  EXPECT_STREQ(job->getID(), GetParam().job().c_str());
}

TEST_P(CmdOptionRegistrationTest, AcceptsAJobThatIsKnownAlready) {
  m_host.calls.fail("objFactory.registerObj", 0xF0150003);
  EXPECT_EQ(registerOption(), CmdResult::Okay);
  EXPECT_THAT(factoryCalls(), ElementsAreArray(calls("registerObj", registerOperation())));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionRegistrationTest, StopsWhenTheJobIsRefused) {
  for (const std::uint32_t code : {0xF0150001U, 0xF0150002U, 0xF0150004U}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("objFactory.registerObj", code);
    EXPECT_EQ(core::toCode(registerOption()), 0xF0110007U);
    EXPECT_THAT(factoryCalls(), ElementsAre(objCall("registerObj")));
    EXPECT_THAT(traces(), ElementsAre(error("registerCmdOption", "objFactory->registerObj() failed: " +
                                                                     std::to_string(static_cast<std::int32_t>(code)))));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "objFactory->registerObj() failed: %d");
  }
}

TEST_P(CmdOptionRegistrationTest, ReturnsTheResultOfTheFactoryAndStopsAtAFailure) {
  const auto count = GetParam().expected.size();
  for (std::size_t failing = 0; failing < count; ++failing) {
    forget();
    m_host.calls.failNothing();
    m_host.cmdOptionFactory.m_options.clear();
    m_host.calls.fail(registerOperation(), 0xF0110022, static_cast<int>(failing) + 1);
    EXPECT_EQ(core::toCode(registerOption()), 0xF0110022U);
    EXPECT_EQ(m_host.calls.count(registerOperation()), static_cast<int>(failing) + 1);
    EXPECT_THAT(traces(), IsEmpty());
  }
  m_host.calls.failNothing();
  m_host.cmdOptionFactory.m_options.clear();
  m_host.calls.fail(registerOperation(), 0x00110001);
  EXPECT_EQ(core::toCode(registerOption()), 0x00110001U);
}

TEST_P(CmdOptionRegistrationTest, NeedsBothFactories) {
  for (const auto& [withObjects, withOptions] : {std::pair(false, true), std::pair(true, false), std::pair(false, false)}) {
    forget();
    m_host.parts.objFactory = withObjects ? &m_host.objFactory : nullptr;
    m_host.parts.genericCmdOptionFactory = withOptions ? &m_host.cmdOptionFactory : nullptr;
    EXPECT_EQ(core::toCode(registerOption()), 0xF0110011U);
    EXPECT_EQ(core::toCode(unregisterOption()), 0xF0110011U);
    EXPECT_THAT(traces(), ElementsAre(error("registerCmdOption", MISSING), error("unregisterCmdOption", MISSING)));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
    EXPECT_THAT(factoryCalls(), IsEmpty());
  }
}

TEST_P(CmdOptionRegistrationTest, NeedsNoFactoryOfCommands) {
  m_host.parts.genericCmdFactory = nullptr;
  EXPECT_EQ(registerOption(), CmdResult::Okay);
  EXPECT_EQ(unregisterOption(), CmdResult::Okay);
}

TEST_P(CmdOptionRegistrationTest, UnregistersTheJobAndThenTheOption) {
  ASSERT_EQ(registerOption(), CmdResult::Okay);
  forget();
  EXPECT_EQ(unregisterOption(), CmdResult::Okay);
  EXPECT_THAT(factoryCalls(), ElementsAreArray(calls("unregisterObj", "optionFactory.unregisterCmdOption")));
  EXPECT_THAT(m_host.objFactory.m_prototypes, IsEmpty());
  EXPECT_THAT(m_host.cmdOptionFactory.m_options, IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionRegistrationTest, ReturnsTheLastResultOfUnregistering) {
  const auto count = static_cast<int>(GetParam().expected.size());
  for (int failing = 1; failing <= count; ++failing) {
    ASSERT_EQ(registerOption(), CmdResult::Okay);
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("objFactory.unregisterObj", 0xF0150001);
    m_host.calls.fail("optionFactory.unregisterCmdOption", 0xF0110022, failing);
    EXPECT_EQ(core::toCode(unregisterOption()), failing == count ? 0xF0110022U : 0x00110000U);
    EXPECT_EQ(m_host.calls.count("optionFactory.unregisterCmdOption"), count);
    EXPECT_THAT(traces(), IsEmpty());
    m_host.cmdOptionFactory.m_options.clear();
    m_host.objFactory.m_prototypes.clear();
  }
}

TEST_P(CmdOptionRegistrationTest, SurvivesEachFailureToAllocate) {
  CmdResult result{};
  const int failures = withEachAllocationFailing([&] { result = registerOption(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(core::isFailure(result), hasFailed);
                                                   m_host.cmdOptionFactory.m_options.clear();
                                                   m_host.objFactory.m_prototypes.clear();
                                                 });
  EXPECT_GT(failures, 3);
  ASSERT_EQ(registerOption(), CmdResult::Okay);
  withEachAllocationFailing([&] { result = unregisterOption(); }, [&](bool hasFailed) { EXPECT_FALSE(hasFailed); });
  EXPECT_EQ(result, CmdResult::Okay) << "leaving takes no memory";
}

TEST_P(CmdOptionRegistrationTest, AnswersAnExceptionOfTheHostWithAFailure) {
  for (const std::string& operation : {std::string("ext.getObjFactory"), std::string("ext.getGenericCmdOptionFactory"),
                                       std::string("objFactory.registerObj"), registerOperation()}) {
    m_host.calls.failNothing();
    m_host.calls.fail(operation, test::FakeCalls::THROW);
    EXPECT_TRUE(core::isFailure(registerOption())) << operation;
  }
  m_host.calls.failNothing();
  m_host.calls.fail("optionFactory.unregisterCmdOption", test::FakeCalls::THROW);
  m_host.calls.fail("objFactory.unregisterObj", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(unregisterOption()));
  EXPECT_EQ(m_host.calls.count("optionFactory.unregisterCmdOption"), static_cast<int>(GetParam().expected.size()));
}

TEST_P(CmdOptionRegistrationTest, IsNotMadeWithoutMemory) {
  core::cmd::GenericCmdOption* made = nullptr;
  std::string errText = "old text";
  CmdResult result{};
  const int failures = withEachAllocationFailing([&] { result = GetParam().onCreate(made, errText); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(core::toCode(result), hasFailed ? 0xF0110010U : 0x00110000U);
                                                   EXPECT_EQ(made == nullptr, hasFailed);
                                                 });
  delete made;
  EXPECT_EQ(failures, 1);
}

INSTANTIATE_TEST_SUITE_P(All, CmdOptionRegistrationTest, testing::ValuesIn(optionCases()), optionCaseName);

/// What the option that needs the host's unit helper does about it.
class UnitHelperRegistrationTest : public ImplTest {};

TEST_F(UnitHelperRegistrationTest, IsFetchedBetweenTheFactoriesAndTheJob) {
  ASSERT_EQ(CmdOptionSwitchOnPath::registerCmdOption(m_host.ext, SCHEMA_DIR), CmdResult::Okay);
  EXPECT_THAT(m_host.calls.of({"objFactory."}), ElementsAre("objFactory.getHelper(motion::core::UnitHelperT)",
                                                            "objFactory.registerObj(JobObjSwitchOnPath, 0)"));
}

TEST_F(UnitHelperRegistrationTest, FailsWithoutIt) {
  for (const std::uint32_t code : {0U, test::FakeCalls::THROW}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("objFactory.getHelper", code);
    EXPECT_EQ(core::toCode(CmdOptionSwitchOnPath::registerCmdOption(m_host.ext, SCHEMA_DIR)), 0xF0110011U);
    EXPECT_THAT(traces(), ElementsAre("Error cmd_option_switch_on_path registerCmdOption: Failed to get UNITHELPER_T_ID "
                                      "from objFactory"));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
    EXPECT_THAT(m_host.calls.of({"objFactory.registerObj", "optionFactory."}), IsEmpty());
  }
}

TEST_F(UnitHelperRegistrationTest, IsNoConcernOfTheOtherOption) {
  EXPECT_EQ(CmdOptionSetSignal::registerCmdOption(m_host.ext, SCHEMA_DIR), CmdResult::Okay);
  EXPECT_EQ(m_host.calls.count("objFactory.getHelper"), 0);
}

}  // namespace
}  // namespace motion::kavo::cmd
