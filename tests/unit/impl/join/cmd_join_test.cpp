// The command Join: from names to a complete and ordered group, and what it offers its job.
#include "impl/join/cmd_join.h"

#include <algorithm>
#include <optional>

#include "impl/send_signal/send_signal_pars.h"
#include "join_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using job::JoinGroup;
using job::JoinJobPars;
using job::JoinJobParsT;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

template <typename COMMAND>
class CmdJoinTest : public job::JoinTest {
 protected:
  CmdJoinTest() { m_sut.emplace(m_host.objFactory); }

  [[nodiscard]] CmdResult set(const std::vector<std::string>& group, core::IObj* obj, bool syncStartNextCmd = false) {
    const CmdJoinPars values(CmdJoinParsT{group, syncStartNextCmd});
    return m_sut->onSetCmdValues(&values, m_source, obj, false);
  }
  [[nodiscard]] CmdResult validate() { return m_sut->onValidate(m_source, &m_dia); }
  /// Lets the host publish the object on which the command was issued.
  void publishObject(core::IObj* obj) {
    m_objPtr.set(obj);
    m_handler.m_published[{core::IObjPtr::getMyID(), objDataSection()}] = &m_objPtr;
  }
  [[nodiscard]] CmdResult registerInputs() { return m_sut->onRegisterJobListsInputs(m_handler); }
  /// What the command offers its job.
  [[nodiscard]] JoinJobParsT offered() {
    test::FakeJobDataHandler handler(m_host.calls);
    core::IObjPtr nobody;
    handler.m_published[{core::IObjPtr::getMyID(), objDataSection()}] = m_objPtr.get() != nullptr ? &m_objPtr : &nobody;
    EXPECT_EQ(m_sut->onRegisterJobListsInputs(handler), CmdResult::Okay);
    const core::IContainer* const container = handler.m_published.at({JoinJobPars::getMyID(), cmdDataSection()});
    const auto* const record = JoinJobPars::safeCast(container);
    EXPECT_NE(record, nullptr);
    return record != nullptr ? record->get() : JoinJobParsT{{&m_stranger}, false};
  }

  core::IObjPtr m_objPtr;
  std::optional<COMMAND> m_sut;
};

using Commands = testing::Types<CmdJoin<ObjectType::AXIS>, CmdJoin<ObjectType::KINEMATICS>>;
TYPED_TEST_SUITE(CmdJoinTest, Commands);

TYPED_TEST(CmdJoinTest, OffersEmptyParametersAtFirst) {
  EXPECT_THAT(this->offered().group, IsEmpty());
  EXPECT_FALSE(this->offered().syncStartNextCmd);
}

TYPED_TEST(CmdJoinTest, LooksTheNamesUpInOrder) {
  this->forget();
  EXPECT_EQ(this->set({"C", "A", "B", "A"}, &this->m_a, true), CmdResult::Okay);
  EXPECT_THAT(this->m_host.calls.of({"objMgr.findObj"}),
              ElementsAre("objMgr.findObj(C, 0)", "objMgr.findObj(A, 0)", "objMgr.findObj(B, 0)", "objMgr.findObj(A, 0)"));
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_c, &this->m_a, &this->m_b, &this->m_a));
  EXPECT_TRUE(this->offered().syncStartNextCmd);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinTest, TakesTheFlagOver) {
  ASSERT_EQ(this->set({"B"}, &this->m_a, false), CmdResult::Okay);
  EXPECT_FALSE(this->offered().syncStartNextCmd);
}

TYPED_TEST(CmdJoinTest, RefusesNoParametersAndThoseOfAnotherType) {
  const JoinJobPars jobPars(JoinJobParsT{{&this->m_a}, false});
  const CmdSendSignalPars other(CmdSendSignalParsT{1});
  for (const core::IContainer* values :
       {static_cast<const core::IContainer*>(nullptr), static_cast<const core::IContainer*>(&jobPars),
        static_cast<const core::IContainer*>(&other)}) {
    this->forget();
    EXPECT_EQ(core::toCode(this->m_sut->onSetCmdValues(values, this->m_source, &this->m_a, false)), 0xF011000EU);
    EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onSetCmdValues: CmdJoinPars::safeCast(cmdValues) failed"));
    EXPECT_THAT(this->formats(), ElementsAre("%s"));
  }
}

TYPED_TEST(CmdJoinTest, RefusesAnEmptyGroupBeforeItAsksTheHost) {
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  this->forget();
  EXPECT_EQ(core::toCode(this->set({}, &this->m_a, true)), 0xF011001DU);
  EXPECT_THAT(this->traces(),
              ElementsAre("Error cmd_join onSetCmdValues: No motion objects specified for the join command"));
  EXPECT_THAT(this->formats(), ElementsAre("%s"));
  EXPECT_THAT(this->m_host.calls.all(), IsEmpty());
}

TYPED_TEST(CmdJoinTest, CannotLookUpWithoutAnExtensionInterface) {
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  this->forget();
  EXPECT_EQ(core::toCode(this->set({"B"}, &this->m_a, true)), 0xF0110011U);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onSetCmdValues: Invalid motion extended interface"));
  EXPECT_THAT(this->formats(), ElementsAre("%s"));
  ExtDepMgr::getInstance().setMotionExtIF(&this->m_host.ext);
  EXPECT_FALSE(this->offered().syncStartNextCmd) << "the flag is taken over later";
}

TYPED_TEST(CmdJoinTest, CannotLookUpWithoutAnObjectManager) {
  this->m_host.parts.objMgr = nullptr;
  EXPECT_EQ(core::toCode(this->set({"B"}, &this->m_a, true)), 0xF0110011U);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onSetCmdValues: Invalid object manager"));
  EXPECT_THAT(this->formats(), ElementsAre("%s"));
  EXPECT_FALSE(this->offered().syncStartNextCmd);
}

TYPED_TEST(CmdJoinTest, StopsAtTheFirstUnknownNameAndKeepsThoseBefore) {
  this->forget();
  EXPECT_EQ(core::toCode(this->set({"B", "Nobody", "C", "None"}, &this->m_a, true)), 0xF011001DU);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onSetCmdValues: motion object Nobody is not found"));
  EXPECT_THAT(this->formats(), ElementsAre("motion object %s is not found"));
  EXPECT_EQ(this->m_host.calls.count("objMgr.findObj"), 2);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_b));
  EXPECT_TRUE(this->offered().syncStartNextCmd) << "the flag was taken over before";
}

TYPED_TEST(CmdJoinTest, CompletesTheGroupWithItsObjectAndSortsIt) {
  ASSERT_EQ(this->set({"C", "B"}, &this->m_a), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a, &this->m_b, &this->m_c));
  EXPECT_THAT(this->traces(), IsEmpty());
  EXPECT_THAT(this->m_dia.m_reports, IsEmpty());
}

TYPED_TEST(CmdJoinTest, AddsNothingToAGroupThatNamesItsObject) {
  ASSERT_EQ(this->set({"B", "A"}, &this->m_a), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a, &this->m_b));
}

TYPED_TEST(CmdJoinTest, CompletesTheGroupOnlyOnce) {
  ASSERT_EQ(this->set({"B"}, &this->m_a), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a, &this->m_b));
}

TYPED_TEST(CmdJoinTest, KeepsDuplicates) {
  ASSERT_EQ(this->set({"B", "C", "B"}, &this->m_a), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a, &this->m_b, &this->m_b, &this->m_c));
}

TYPED_TEST(CmdJoinTest, AcceptsItsObjectTwice) {
  ASSERT_EQ(this->set({"A", "A"}, &this->m_a), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay) << "entries are counted, not objects";
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a, &this->m_a));
}

TYPED_TEST(CmdJoinTest, SortsByTheBytesOfTheNames) {
  std::vector<std::string> names = {"a", "Z", "Axis10", "Axis2", "\xC3\x84", "_", "0", "Axis"};
  for (const auto& name : names) {
    this->m_host.objMgr.addAxis(name);
  }
  ASSERT_EQ(this->set(names, &this->m_a), CmdResult::Okay);
  ASSERT_EQ(this->validate(), CmdResult::Okay);
  std::vector<std::string> sorted;
  for (const auto* obj : this->offered().group) {
    sorted.emplace_back(this->m_host.objMgr.getObjName(obj));
  }
  EXPECT_THAT(sorted, ElementsAre("0", "A", "Axis", "Axis10", "Axis2", "Z", "_", "a", "\xC3\x84"));
}

TYPED_TEST(CmdJoinTest, EndsWithTheSameGroupOnEveryMember) {
  ASSERT_EQ(this->set({"C", "B"}, &this->m_a), CmdResult::Okay);
  ASSERT_EQ(this->validate(), CmdResult::Okay);
  const auto first = this->offered().group;
  this->m_sut.emplace(this->m_host.objFactory);
  ASSERT_EQ(this->set({"A", "B", "C"}, &this->m_b), CmdResult::Okay);
  ASSERT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_EQ(this->offered().group, first);
}

TYPED_TEST(CmdJoinTest, RefusesToJoinWithNobody) {
  ASSERT_EQ(this->set({"A"}, &this->m_a), CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->validate()), 0xF011001DU);
  EXPECT_EQ(core::toCode(this->m_sut->onValidate(this->m_source, nullptr)), 0xF011001DU);
  const std::string expected = "Error cmd_join onValidate: No motion object(s) specified to join with.";
  EXPECT_THAT(this->traces(), ElementsAre(expected, expected));
  EXPECT_EQ(this->firstFormat(), "%s");
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a)) << "once";
}

TYPED_TEST(CmdJoinTest, CannotValidateWithoutTheHostsParts) {
  ASSERT_EQ(this->set({"C", "B"}, &this->m_a), CmdResult::Okay);
  this->m_host.parts.objMgr = nullptr;
  EXPECT_EQ(core::toCode(this->validate()), 0xF0110011U);
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  EXPECT_EQ(core::toCode(this->validate()), 0xF0110011U);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onValidate: Invalid object manager",
                                          "Error cmd_join onValidate: Invalid motion extended interface"));
  EXPECT_THAT(this->formats(), ElementsAre("%s", "%s"));
  ExtDepMgr::getInstance().setMotionExtIF(&this->m_host.ext);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_c, &this->m_b)) << "as it was";
}

TYPED_TEST(CmdJoinTest, AsksForTheHostsPartsFirst) {
  this->m_host.parts.objMgr = nullptr;
  EXPECT_EQ(core::toCode(this->validate()), 0xF0110011U) << "although the group is empty";
}

TYPED_TEST(CmdJoinTest, KnowsItsObjectFromWhatTheHostPublishes) {
  ASSERT_EQ(this->set({"B"}, nullptr), CmdResult::Okay);
  this->publishObject(&this->m_c);
  ASSERT_EQ(this->registerInputs(), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_b, &this->m_c));
}

TYPED_TEST(CmdJoinTest, PrefersTheObjectThatTheHostPublishes) {
  ASSERT_EQ(this->set({"B"}, &this->m_a), CmdResult::Okay);
  this->publishObject(&this->m_c);
  ASSERT_EQ(this->registerInputs(), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_b, &this->m_c));
}

TYPED_TEST(CmdJoinTest, ShowsInTheOfferedRecordWhatIsValidatedLater) {
  ASSERT_EQ(this->set({"B"}, &this->m_a), CmdResult::Okay);
  this->publishObject(&this->m_a);
  ASSERT_EQ(this->registerInputs(), CmdResult::Okay);
  const core::IContainer* const container = this->m_handler.m_published.at({JoinJobPars::getMyID(), this->cmdDataSection()});
  ASSERT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(JoinJobPars::safeCast(container)->get().group, ElementsAre(&this->m_a, &this->m_b));
}

TYPED_TEST(CmdJoinTest, PutsNoNullIntoTheGroupWhenItsObjectIsUnknown) {
  ASSERT_EQ(this->set({"C", "B"}, nullptr), CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->validate()), 0xF0110011U);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onValidate: Motion object is invalid"));
  const auto group = this->offered().group;
  EXPECT_EQ(std::count(group.begin(), group.end(), nullptr), 0);
  EXPECT_EQ(group.size(), 2U);
}

TYPED_TEST(CmdJoinTest, SurvivesAnObjectWithoutAName) {
  ASSERT_EQ(this->set({"C", "B"}, &this->m_stranger), CmdResult::Okay);
  EXPECT_EQ(this->validate(), CmdResult::Okay);
  EXPECT_THAT(this->offered().group, testing::UnorderedElementsAre(&this->m_stranger, &this->m_b, &this->m_c));
}

TYPED_TEST(CmdJoinTest, OffersItsRecordAndReadsItsObject) {
  this->publishObject(&this->m_a);
  EXPECT_EQ(this->registerInputs(), CmdResult::Okay);
  EXPECT_THAT(this->m_host.calls.of({"handler."}),
              ElementsAre(fmt::format("handler.registerPublish({}, {}, onRegisterJobListsInputs)", JoinJobPars::getMyID(),
                                      this->cmdDataSection()),
                          fmt::format("handler.registerRead({}, {}, 1, onRegisterJobListsInputs)", core::IObjPtr::getMyID(),
                                      this->objDataSection())));
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinTest, FailsWhenItsRecordIsRefused) {
  this->publishObject(&this->m_a);
  this->m_host.calls.fail("handler.registerPublish", 0xF0000021);
  EXPECT_EQ(core::toCode(this->registerInputs()), 0xF011001DU);
  EXPECT_EQ(this->m_host.calls.count("handler.registerRead"), 0);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_join onRegisterJobListsInputs: JoinJobPars::registerPublish failed: "
                                          "[0xF0000021]"));
}

TYPED_TEST(CmdJoinTest, FailsWithoutItsObject) {
  EXPECT_EQ(core::toCode(this->registerInputs()), 0xF011001DU) << "nobody publishes it";
  this->publishObject(&this->m_a);
  this->m_handler.m_published.erase({JoinJobPars::getMyID(), this->cmdDataSection()});
  this->m_host.calls.fail("handler.registerRead", 0xF0ABCDEF);
  EXPECT_EQ(core::toCode(this->registerInputs()), 0xF011001DU);
  const std::string expected = "Error cmd_join onRegisterJobListsInputs: IObjPtr::registerRead failed: ";
  EXPECT_THAT(this->traces(), ElementsAre(expected + "[0xF0000020]", expected + "[0xF0ABCDEF]"));
  EXPECT_THAT(this->formats(), ElementsAre("IObjPtr::registerRead failed: [0x%X]", "IObjPtr::registerRead failed: [0x%X]"));
}

TYPED_TEST(CmdJoinTest, AnswersAnExceptionOfTheHostWithAFailure) {
  this->publishObject(&this->m_a);
  const auto& calls = this->m_host.calls;
  for (const char* operation : {"ext.getObjMgr", "objMgr.findObj", "handler.registerPublish", "handler.registerRead"}) {
    this->m_host.calls.failNothing();
    this->m_host.calls.fail(operation, test::FakeCalls::THROW);
    const bool concernsInputs = std::string(operation).starts_with("handler");
    EXPECT_TRUE(core::isFailure(concernsInputs ? this->registerInputs() : this->set({"B"}, &this->m_a))) << operation;
    EXPECT_GE(calls.count(operation), 1);
    this->m_handler.m_published.erase({JoinJobPars::getMyID(), this->cmdDataSection()});
  }
  this->m_host.calls.failNothing();
  this->m_host.calls.fail("ext.getObjMgr", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(this->validate()));
}

TYPED_TEST(CmdJoinTest, AnswersEachFailureToAllocateWhileItLooksUp) {
  const CmdJoinPars values(CmdJoinParsT{{"B", "C", "A", "B", "C"}, true});
  CmdResult result{};
  const int failures =
      withEachAllocationFailing([&] { result = this->m_sut->onSetCmdValues(&values, this->m_source, &this->m_a, false); },
                                [&](bool hasFailed) {
                                  EXPECT_EQ(core::isFailure(result), hasFailed);
                                  if (hasFailed) {
                                    this->m_sut.emplace(this->m_host.objFactory);
                                  }
                                });
  EXPECT_GT(failures, 0);
  EXPECT_THAT(this->offered().group.size(), 5U);
}

TYPED_TEST(CmdJoinTest, AnswersEachFailureToAllocateWhileItValidates) {
  ASSERT_EQ(this->set({"C", "B"}, &this->m_a), CmdResult::Okay);
  CmdResult result{};
  const int failures = withEachAllocationFailing([&] { result = this->validate(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_TRUE(hasFailed || !core::isFailure(result));
                                                   if (hasFailed) {
                                                     EXPECT_TRUE(core::isFailure(result));
                                                     this->m_sut.emplace(this->m_host.objFactory);
                                                     EXPECT_EQ(this->set({"C", "B"}, &this->m_a), CmdResult::Okay);
                                                   }
                                                 });
  EXPECT_GT(failures, 0);
  EXPECT_THAT(this->offered().group, ElementsAre(&this->m_a, &this->m_b, &this->m_c));
}

}  // namespace
}  // namespace motion::kavo::cmd
