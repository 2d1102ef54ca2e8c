// What command options do alike with their parameters: let a job object check them, and hand them to the jobs of commands.
#include "impl/command/cmd_option.h"

#include "impl_fixture.h"
#include "option_cases.h"

namespace motion::kavo::cmd {
namespace {

using core::cmd::CmdResult;
using core::job::IJobObject;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto REFUSED = static_cast<JobResult>(0xF0000016);

/// What a job object answers, and what it was asked.
struct Answers {
  JobResult check = JobResult::NoEffect;
  JobResult set = JobResult::NoEffect;
  bool throws = false;
  int alive = 0;
  std::vector<core::DataID> checked;
  std::vector<core::DataID> given;
  const core::dia::IDia* dia = nullptr;
};

class AnsweringJob : public core::job::JobObjectBase {
 public:
  AnsweringJob(std::string name, Answers& answers) : m_name(std::move(name)), m_answers(answers) { ++m_answers.alive; }
  ~AnsweringJob() override { --m_answers.alive; }

  core::IAmCreatable* createNew() const override { return new AnsweringJob(m_name, m_answers); }
  const char* getID() const override { return m_name.c_str(); }
  JobResult addJobsToJoblist(core::job::IJobList*, core::job::JobListTypes) override { return JobResult::NoEffect; }
  std::string getJobString() const override { return m_name; }
  JobResult setJobData(const core::IContainer* data) override {
    const test::AllocationPause pause;
    m_answers.given.push_back(data->getID());
    return answer(m_answers.set);
  }
  JobResult checkParameter(const core::IContainer* data, core::dia::IDia* dia) const override {
    const test::AllocationPause pause;
    m_answers.checked.push_back(data->getID());
    m_answers.dia = dia;
    return answer(m_answers.check);
  }

 private:
  [[nodiscard]] JobResult answer(JobResult result) const {
    return m_answers.throws ? throw std::runtime_error("no answer now") : result;
  }

  std::string m_name;
  Answers& m_answers;
};

/// A factory that lies: it fails and makes an object nonetheless, or makes none and does not fail.
class LyingFactory : public core::IObjFactory {
 public:
  explicit LyingFactory(IJobObject* made, core::ObjFactoryResult result) : m_made(made), m_result(result) {}
  core::ObjFactoryResult registerObj(std::unique_ptr<core::IAmCreatable>&, std::uint32_t) override { return m_result; }
  core::ObjFactoryResult createObj(const char*, std::uint32_t, IJobObject*& out) override {
    out = m_made;
    return m_result;
  }
  core::ObjFactoryResult unregisterObj(const char*, std::uint32_t) override { return m_result; }
  core::IAmCreatable* getHelper(const char*) override { return nullptr; }

 private:
  IJobObject* m_made;
  core::ObjFactoryResult m_result;
};

class CmdOptionTest : public CommandTest, public testing::WithParamInterface<OptionCase> {
 protected:
  CmdOptionTest() {
    m_host.objFactory.m_prototypes[GetParam().job()] = std::make_unique<AnsweringJob>(GetParam().job(), m_answers);
    forget();
  }
  ~CmdOptionTest() override {
    for (const auto* job : m_jobs) {
      delete job;
    }
    EXPECT_EQ(m_answers.alive, 1) << "only the prototype is left";
  }

  [[nodiscard]] CmdResult setParameter() { return m_sut->setParameter(m_parameters.get(), m_host.objFactory, m_obj, m_dia); }
  [[nodiscard]] std::size_t createJobs() {
    const auto jobs = m_sut->createJobs(m_host.objFactory);
    m_jobs.insert(m_jobs.end(), jobs.begin(), jobs.end());
    return jobs.size();
  }
  [[nodiscard]] std::string createCall() const { return "objFactory.createObj(" + GetParam().job() + ", 0)"; }
  [[nodiscard]] static std::string error(const std::string& function, const std::string& text) {
    return "Error " + GetParam().unit + " " + function + ": " + text;
  }
  [[nodiscard]] static std::string number(std::uint32_t code) { return std::to_string(static_cast<std::int32_t>(code)); }

  Answers m_answers;
  test::FakeObj m_obj{m_host.calls};
  std::unique_ptr<core::IContainer> m_parameters = GetParam().parameters();
  std::unique_ptr<core::cmd::GenericCmdOption> m_sut = GetParam().make();
  std::vector<IJobObject*> m_jobs;
};

TEST_P(CmdOptionTest, LetsATemporaryJobCheckItsParameters) {
  EXPECT_EQ(core::toCode(setParameter()), 0x00110000U);
  EXPECT_THAT(m_host.calls.of({"objFactory."}), ElementsAre(createCall()));
  EXPECT_EQ(m_answers.checked.size(), 1U);
  EXPECT_EQ(m_answers.dia, &m_dia);
  EXPECT_THAT(m_answers.given, IsEmpty());
  EXPECT_EQ(m_answers.alive, 1) << "the temporary job is gone";
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionTest, RefusesNoParametersAndThoseOfAnotherType) {
  const job::SendSignalJobPars other(job::SendSignalJobParsT{1, false});
  for (const core::IContainer* values :
       {static_cast<const core::IContainer*>(nullptr), static_cast<const core::IContainer*>(&other)}) {
    forget();
    EXPECT_EQ(core::toCode(m_sut->setParameter(values, m_host.objFactory, m_obj, m_dia)), 0xF011000EU);
    EXPECT_THAT(traces(), ElementsAre(error("setParameter", GetParam().wrongContainer)));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
    EXPECT_THAT(m_host.calls.all(), IsEmpty()) << "no job is made for that";
  }
}

TEST_P(CmdOptionTest, RefusesParametersWhenTheJobCannotBeMade) {
  for (const std::uint32_t code : {0xF0150001U, 0xF0150004U}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("objFactory.createObj", code);
    EXPECT_EQ(core::toCode(setParameter()), 0xF0110004U);
    EXPECT_THAT(traces(), ElementsAre(error("setParameter", "jobObjFactory.createObj() failed: " + number(code))));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "jobObjFactory.createObj() failed: %d");
    EXPECT_THAT(m_answers.checked, IsEmpty());
  }
}

TEST_P(CmdOptionTest, RefusesParametersThatTheJobRefuses) {
  for (const std::uint32_t code : {0xF0000016U, 0xF0000004U}) {
    forget();
    m_answers.check = static_cast<JobResult>(code);
    EXPECT_EQ(core::toCode(setParameter()), 0xF011001DU);
    EXPECT_THAT(traces(), ElementsAre(error("setParameter", "jobObj->checkParameter() failed: " + number(code))));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "jobObj->checkParameter() failed: %d");
    EXPECT_EQ(m_answers.alive, 1) << "the temporary job is gone";
  }
}

TEST_P(CmdOptionTest, AcceptsWhatTheJobDoesNotCallAFailure) {
  m_answers.check = JobResult::Busy;
  EXPECT_EQ(setParameter(), CmdResult::Okay);
  m_answers.set = JobResult::Busy;
  EXPECT_EQ(createJobs(), 1U);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionTest, MakesOneJobForEachAccompaniedCommand) {
  ASSERT_EQ(setParameter(), CmdResult::Okay);
  for (int accompanied = 1; accompanied <= 3; ++accompanied) {
    forget();
    EXPECT_EQ(createJobs(), 1U);
    EXPECT_STREQ(m_jobs.back()->getID(), GetParam().job().c_str());
    EXPECT_THAT(m_host.calls.of({"objFactory."}), ElementsAre(createCall()));
    EXPECT_EQ(m_answers.given.size(), static_cast<std::size_t>(accompanied));
    EXPECT_EQ(m_answers.alive, 1 + accompanied) << "the host owns them";
  }
  EXPECT_EQ(m_answers.checked.size(), 1U) << "what was checked once is good for all";
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(CmdOptionTest, MakesNoJobWhenTheFactoryFails) {
  m_host.calls.fail("objFactory.createObj", 0xF0150001);
  EXPECT_EQ(createJobs(), 0U);
  EXPECT_THAT(traces(), ElementsAre(error("createJobs", "jobObjFactory.createObj() failed: " + number(0xF0150001))));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "jobObjFactory.createObj() failed: %d");
}

TEST_P(CmdOptionTest, MakesNoJobThatDoesNotTakeItsData) {
  m_answers.set = REFUSED;
  EXPECT_EQ(createJobs(), 0U);
  EXPECT_THAT(traces(), ElementsAre(error("createJobs", "jobObj->setJobData() failed: " + number(0xF0000016))));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "jobObj->setJobData() failed: %d");
  EXPECT_EQ(m_answers.alive, 1);
}

TEST_P(CmdOptionTest, BelievesNoFactoryThatLies) {
  LyingFactory makesAndFails(new AnsweringJob("a job", m_answers), core::ObjFactoryResult::CreationFailed);
  EXPECT_EQ(core::toCode(m_sut->setParameter(m_parameters.get(), makesAndFails, m_obj, m_dia)), 0xF0110004U);
  EXPECT_EQ(m_answers.alive, 1);
  LyingFactory makesNone(nullptr, core::ObjFactoryResult::Okay);
  EXPECT_EQ(core::toCode(m_sut->setParameter(m_parameters.get(), makesNone, m_obj, m_dia)), 0xF0110004U);
  EXPECT_THAT(m_sut->createJobs(makesNone), IsEmpty());
  EXPECT_EQ(traces().size(), 3U);
}

TEST_P(CmdOptionTest, AnswersExceptionsOfTheHostWithFailures) {
  m_host.calls.fail("objFactory.createObj", test::FakeCalls::THROW);
  EXPECT_EQ(core::toCode(setParameter()), 0xF0110004U);
  EXPECT_EQ(createJobs(), 0U);
  m_host.calls.failNothing();
  m_answers.throws = true;
  EXPECT_EQ(core::toCode(setParameter()), 0xF011001DU);
  EXPECT_EQ(createJobs(), 0U);
  EXPECT_EQ(traces().size(), 4U);
  EXPECT_EQ(m_answers.alive, 1);
}

TEST_P(CmdOptionTest, LeavesNoJobBehindWhenAnAllocationFails) {
  CmdResult result{};
  const int checks = withEachAllocationFailing([&] { result = setParameter(); },
                                               [&](bool hasFailed) {
                                                 EXPECT_EQ(core::isFailure(result), hasFailed);
                                                 EXPECT_EQ(m_answers.alive, 1);
                                               });
  EXPECT_GT(checks, 0);
  std::vector<IJobObject*> jobs;
  const int creations = withEachAllocationFailing([&] { jobs = m_sut->createJobs(m_host.objFactory); },
                                                  [&](bool hasFailed) {
                                                    EXPECT_EQ(jobs.empty(), hasFailed);
                                                    EXPECT_EQ(m_answers.alive, hasFailed ? 1 : 2);
                                                  });
  EXPECT_GT(creations, 1);
  ASSERT_EQ(jobs.size(), 1U);
  m_jobs.push_back(jobs[0]);
}

TEST_P(CmdOptionTest, LastsAsLongAsItsPermanenceSays) {
  using core::cmd::CmdOptDuration;
  for (const auto& [permType, expected] : {std::pair(0U, 1U), std::pair(1U, 3U), std::pair(2U, 0U)}) {
    auto duration = static_cast<CmdOptDuration>(77);
    EXPECT_EQ((callSlot<CmdResult, std::uint32_t, CmdOptDuration&>(m_sut.get(), 2, permType, duration)), CmdResult::Okay);
    EXPECT_EQ(static_cast<std::uint32_t>(duration), expected);
  }
  auto duration = CmdOptDuration::NONE;
  EXPECT_EQ(core::toCode(callSlot<CmdResult, std::uint32_t, CmdOptDuration&>(m_sut.get(), 2, 3U, duration)), 0xF011001AU);
}

TEST_P(CmdOptionTest, HasTheOperationsOfAnOptionInOrder) {
  const core::IContainer* const values = m_parameters.get();
  EXPECT_EQ((callSlot<CmdResult, const core::IContainer*, core::IObjFactory&, const core::IObj&, core::dia::IDia&>(
                m_sut.get(), 4, values, m_host.objFactory, m_obj, m_dia)),
            CmdResult::Okay);
  EXPECT_EQ(m_answers.checked.size(), 1U);

  const auto jobs = callSlot<std::vector<IJobObject*>, core::IObjFactory&>(m_sut.get(), 6, m_host.objFactory);
  ASSERT_EQ(jobs.size(), 1U);
  m_jobs.push_back(jobs[0]);
  EXPECT_EQ(m_answers.given.size(), 1U);

  EXPECT_EQ((callSlot<core::IContainer*, core::IObj&>(m_sut.get(), 7, m_obj)), nullptr);
  EXPECT_EQ(callSlot<std::uint32_t>(m_sut.get(), 8), 0U);
  callSlot<void>(m_sut.release(), 1);  // a leak check would see that the second destructor frees the memory
}

INSTANTIATE_TEST_SUITE_P(All, CmdOptionTest, testing::ValuesIn(optionCases()), optionCaseName);

}  // namespace
}  // namespace motion::kavo::cmd
