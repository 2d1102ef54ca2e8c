// The command option SetSignal: what it reads, checks and hands to its jobs.
#include "impl/send_signal/cmd_option_set_signal.h"

#include <memory>
#include <span>
#include <stdexcept>
#include <utility>

#include "impl/send_signal/job_obj_send_signal.h"
#include "impl_fixture.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "option_cases.h"

namespace motion::kavo::cmd {
namespace {

using comm::datalayer::Variant;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using core::job::IJobObject;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

using OptionJob = job::JobObjSendSignal<job::JobObjSendSignalUser::COMMAND_OPTION>;

class CmdOptionSetSignalTest : public CommandTest {
 protected:
  CmdOptionSetSignalTest() {
    m_host.objFactory.m_prototypes["ext_job_send_signal_cmd_opt"] = std::make_unique<OptionJob>();
    forget();
  }

  [[nodiscard]] CmdResult set(std::uint32_t signalId) {
    const CmdOptionSetSignalPars values(CmdOptionSetSignalParsT{signalId});
    return m_sut.setParameter(&values, m_host.objFactory, m_obj, m_dia);
  }
  /// The job for one accompanied command.
  [[nodiscard]] std::unique_ptr<IJobObject> createJob() {
    const auto jobs = m_sut.createJobs(m_host.objFactory);
    EXPECT_EQ(jobs.size(), 1U);
    return std::unique_ptr<IJobObject>(jobs.empty() ? nullptr : jobs.front());
  }
  [[nodiscard]] std::string textOfNewJob() {
    const auto job = createJob();
    return job != nullptr ? job->getJobString() : "no job";
  }
  [[nodiscard]] std::uint32_t unmarshal(const Variant& data) {
    core::IContainer* container = nullptr;
    auto permType = CmdOptPermType::PERM_OFF;
    EXPECT_EQ(CmdOptionSetSignal::onMarshall(&data, container, permType, m_collector), CmdResult::Okay);
    const std::unique_ptr<core::IContainer> owned(container);
    const auto* const record = CmdOptionSetSignalPars::safeCast(container);
    EXPECT_NE(record, nullptr);
    return record != nullptr ? record->get().signalId : 0xEEEEEEEE;
  }

  test::FakeObj m_obj{m_host.calls};
  test::FakeDiagCollector m_collector{m_host.calls};
  CmdOptionSetSignal m_sut;
};

TEST_F(CmdOptionSetSignalTest, ReadsTheSignalFromTheSecondField) {
  for (const std::uint32_t id : {0U, 7U, 99U, 100U, 0xFFFFFFFFU}) {
    EXPECT_EQ(unmarshal(OptionTable("Once").with<std::uint32_t>(6, id).finish()), id)
        << "whether the signal exists is not asked here";
  }
  EXPECT_EQ(unmarshal(OptionTable("Once").finish()), 0U);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSetSignalTest, RefusesASignalOfTheWrongSize) {
  // One byte of four stands in the buffer; it is the last one.
  flatbuffers::FlatBufferBuilder builder;
  const auto text = builder.CreateString("Once");
  const auto start = builder.StartTable();
  builder.AddOffset(4, text);
  builder.AddElement<std::uint8_t>(6, 7, 0);
  builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
  const auto buffer = std::span<const std::uint8_t>(builder.GetBufferPointer(), builder.GetSize());
  core::IContainer* container = nullptr;
  auto permType = CmdOptPermType::ONCE;
  for (std::size_t drop = 0; drop < 16; ++drop) {
    const auto data = Variant::fromFlatBuffer(buffer.first(buffer.size() - drop));
    if (core::isFailure(CmdOptionSetSignal::onMarshall(&data, container, permType, m_collector))) {
      EXPECT_EQ(container, nullptr);
      EXPECT_EQ(traces().back(), "Error cmd_option_set_signal onMarshall: Invalid FlatBuffer structure");
      return;
    }
    std::unique_ptr<core::IContainer>(std::exchange(container, nullptr)).reset();
  }
  ADD_FAILURE() << "every truncated buffer was accepted";
}

TEST_F(CmdOptionSetSignalTest, AcceptsASignalThatExists) {
  EXPECT_EQ(set(0), CmdResult::Okay);
  EXPECT_EQ(set(99), CmdResult::Okay);
  EXPECT_THAT(m_dia.m_reports, IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSetSignalTest, ReportsASignalThatDoesNotExistAndKeepsTheOneBefore) {
  ASSERT_EQ(set(42), CmdResult::Okay);
  EXPECT_EQ(core::toCode(set(100)), 0xF011001DU);
  EXPECT_THAT(traces(), ElementsAre("Error cmd_option_set_signal setParameter: jobObj->checkParameter() failed: " +
                                    std::to_string(static_cast<std::int32_t>(0xF0000016))));
  ASSERT_EQ(m_dia.m_reports.size(), 1U);
  EXPECT_EQ(m_dia.m_reports[0].mainCode, 0x090F0FFFU);
  EXPECT_EQ(m_dia.m_reports[0].detailCode, 0x0C570101U);
  EXPECT_EQ(m_dia.m_reports[0].text, "jobData->signalId: 100");
  EXPECT_TRUE(m_dia.m_reports[0].isClosed);
  EXPECT_EQ(textOfNewJob(), "setSignal(42)");
}

TEST_F(CmdOptionSetSignalTest, KeepsTheOldSignalWhenTheJobCannotBeMade) {
  ASSERT_EQ(set(42), CmdResult::Okay);
  m_host.calls.fail("objFactory.createObj", 0xF0150001, 1);
  EXPECT_EQ(core::toCode(set(7)), 0xF0110004U);
  EXPECT_EQ(textOfNewJob(), "setSignal(42)");
}

TEST_F(CmdOptionSetSignalTest, HandsItsSignalToEachJob) {
  EXPECT_EQ(textOfNewJob(), "setSignal(0)") << "before it is given any";
  ASSERT_EQ(set(42), CmdResult::Okay);
  const auto first = createJob();
  ASSERT_EQ(set(7), CmdResult::Okay);
  const auto second = createJob();
  EXPECT_EQ(first->getJobString(), "setSignal(42)");
  EXPECT_EQ(second->getJobString(), "setSignal(7)");
  EXPECT_NE(dynamic_cast<OptionJob*>(first.get()), nullptr);
}

TEST_F(CmdOptionSetSignalTest, SetsTheSignalOncePerAccompaniedCommandAndHoldsNoneOfThem) {
  ASSERT_EQ(set(42), CmdResult::Okay);
  for (int accompanied = 1; accompanied <= 3; ++accompanied) {
    const auto object = createJob();
    ASSERT_EQ(object->registerInputs(&m_handler), JobResult::NoEffect);
    ASSERT_EQ(object->addJobsToJoblist(&m_jobList, core::job::JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
    EXPECT_EQ(m_jobList.m_jobs.back().name, "ext_job_send_signal_cmd_opt");
    EXPECT_EQ(m_jobList.m_jobs.back().section, cmdDataSection());
    for (int cycle = 0; cycle < 3; ++cycle) {
      EXPECT_EQ(m_jobList.m_jobs.back().job(), JobResult::NoEffect);
      EXPECT_EQ(in(42), accompanied);
    }
  }
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSetSignalTest, NamesItsJob) {
  EXPECT_STREQ(CmdOptionSetSignal::getJobName(), "ext_job_send_signal_cmd_opt");
}

class NoOptions : public core::cmd::ICmdOptHandler {
 public:
  CmdResult getDataOfOption(const core::cmd::CmdId&, const core::IContainer*&) const override {
    throw std::runtime_error("nobody asks");
  }
};

TEST_F(CmdOptionSetSignalTest, StacksNothingAndGivesNoParametersBack) {
  CmdOptionSetSignalPars values(CmdOptionSetSignalParsT{42});
  const NoOptions handler;
  auto permType = CmdOptPermType::PERM_ON;
  EXPECT_EQ(
      (core::toCode(callSlot<CmdResult, core::IObj&, const core::cmd::ICmdOptHandler&, core::IContainer*, CmdOptPermType&,
                             const core::dia::CmdSourceInfo&>(&m_sut, 3, m_obj, handler, &values, permType, m_source))),
      0x00110000U);
  EXPECT_EQ(values.get().signalId, 42U);
  const core::IContainer* kept = nullptr;
  EXPECT_EQ((core::toCode(callSlot<CmdResult, const core::IContainer*&>(&m_sut, 5, kept))), 0xF011001AU);
  EXPECT_EQ(kept, nullptr);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(CmdOptionSetSignalTest, HoldsTheRecordOfItsJobAndNothingElse) {
  EXPECT_EQ(sizeof(CmdOptionSetSignal), sizeof(core::cmd::GenericCmdOption) + sizeof(job::SendSignalJobPars));
}

}  // namespace
}  // namespace motion::kavo::cmd
