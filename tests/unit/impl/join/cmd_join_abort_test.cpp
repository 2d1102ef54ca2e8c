// The command Join passes an abort on to its job.
#include <stdexcept>

#include "impl/join/cmd_join.h"
#include "join_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::ObjectType;
using core::cmd::CmdState;
using job::JobObjJoin;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::initializer_list<CmdState> ALL_STATES = {CmdState::CREATED, CmdState::BUFFERED, CmdState::PREPARED,
                                                        CmdState::ACTIVE,  CmdState::DONE,     CmdState::ABORTED,
                                                        CmdState::FAILED};

/// A frame in some state, with one job object.
class FakeFrame : public core::cmd::ICmdFrame, public core::job::IJobHandler {
 public:
  std::uint64_t getCmdID() const override { return 11; }
  CmdState getCmdState() const override { return m_state; }
  const core::job::IJobHandler& getJobHandler() const override { return *this; }
  core::job::IJobObject* findJobObject(const char* name) const override {
    m_asked.emplace_back(name);
    if (m_throws) {
      throw std::runtime_error("planned failure of findJobObject");
    }
    return m_jobObject;
  }

  CmdState m_state = CmdState::CREATED;
  core::job::IJobObject* m_jobObject = nullptr;
  bool m_throws = false;
  mutable std::vector<std::string> m_asked;
};

template <typename COMMAND>
class CmdJoinAbortTest : public job::JoinTest {
 protected:
  CmdJoinAbortTest() {
    m_member = prepared(m_a, 11, m_ab);
    m_frame.m_jobObject = &m_member->m_job;
    forget();
  }

  std::unique_ptr<job::JoinMember> m_member;
  FakeFrame m_frame;
  COMMAND m_sut{m_host.objFactory};
};

using Commands = testing::Types<CmdJoin<ObjectType::AXIS>, CmdJoin<ObjectType::KINEMATICS>>;
TYPED_TEST_SUITE(CmdJoinAbortTest, Commands);

TYPED_TEST(CmdJoinAbortTest, TellsTheJobOfAnAbort) {
  this->m_frame.m_state = CmdState::ABORTED;
  this->m_sut.onCmdStateChanged(this->m_frame, CmdState::ABORTED);
  EXPECT_THAT(this->m_frame.m_asked, ElementsAre("kavo_job_join"));
  EXPECT_TRUE(this->m_member->m_job.getContext()->isAborted(0));
  EXPECT_THAT(this->traces(), ElementsAre("Warning job_obj_join onAbort: A: joinCmd seq=1: ABORTED"));
}

TYPED_TEST(CmdJoinAbortTest, IgnoresEveryOtherState) {
  for (const auto state : ALL_STATES) {
    if (state != CmdState::ABORTED) {
      this->m_frame.m_state = state;
      this->m_sut.onCmdStateChanged(this->m_frame, state);
    }
  }
  EXPECT_FALSE(this->m_member->m_job.getContext()->isAborted());
  EXPECT_THAT(this->m_frame.m_asked, IsEmpty());
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinAbortTest, BelievesTheFrame) {
  this->m_frame.m_state = CmdState::ACTIVE;
  this->m_sut.onCmdStateChanged(this->m_frame, CmdState::ABORTED);
  EXPECT_FALSE(this->m_member->m_job.getContext()->isAborted());
  this->m_frame.m_state = CmdState::ABORTED;
  this->m_sut.onCmdStateChanged(this->m_frame, CmdState::DONE);
  EXPECT_TRUE(this->m_member->m_job.getContext()->isAborted());
}

TYPED_TEST(CmdJoinAbortTest, ManagesWithoutAJob) {
  this->m_frame.m_state = CmdState::ABORTED;
  this->m_frame.m_jobObject = nullptr;
  this->m_sut.onCmdStateChanged(this->m_frame, CmdState::ABORTED);
  EXPECT_THAT(this->m_frame.m_asked, ElementsAre("kavo_job_join"));
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinAbortTest, ManagesWithAJobThatIsNotPrepared) {
  JobObjJoin fresh;
  this->m_frame.m_state = CmdState::ABORTED;
  this->m_frame.m_jobObject = &fresh;
  this->m_sut.onCmdStateChanged(this->m_frame, CmdState::ABORTED);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdJoinAbortTest, SurvivesAnExceptionOfTheHost) {
  this->m_frame.m_state = CmdState::ABORTED;
  this->m_frame.m_throws = true;
  EXPECT_NO_THROW(this->m_sut.onCmdStateChanged(this->m_frame, CmdState::ABORTED));
  EXPECT_FALSE(this->m_member->m_job.getContext()->isAborted());
}

TYPED_TEST(CmdJoinAbortTest, HasItsPlaceAmongTheOperations) {
  this->m_frame.m_state = CmdState::ABORTED;
  callSlot<void, const core::cmd::ICmdFrame&, CmdState>(&this->m_sut, 7, this->m_frame, CmdState::ABORTED);
  EXPECT_TRUE(this->m_member->m_job.getContext()->isAborted());
}

}  // namespace
}  // namespace motion::kavo::cmd
