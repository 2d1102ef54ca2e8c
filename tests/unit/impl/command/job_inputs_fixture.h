// A job object that reads what a command offers.
#pragma once

#include "impl/send_signal/send_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::job {

/// How JOB_OBJECT, which reads a RECORD, answers a host that has none for it.
template <typename JOB_OBJECT, typename RECORD>
class JobInputsTest : public CommandTest {
 protected:
  using RecordT = decltype(RECORD().get());

  /// Offers parameters as a command does.
  void offer(RecordT record) {
    m_offered.set(record);
    publish(&m_offered);
  }
  void publish(core::IContainer* container) { m_handler.m_published[{RECORD::getMyID(), cmdDataSection()}] = container; }
  [[nodiscard]] core::job::Job addedJob(JOB_OBJECT& object) {
    EXPECT_EQ(object.addJobsToJoblist(&m_jobList, core::job::JobListTypes::CYCLIC_EXECUTION),
              core::job::JobResult::NoEffect);
    return m_jobList.m_jobs.back().job;
  }

  void expectOneRead() {
    EXPECT_EQ(m_sut.registerInputs(&m_handler), core::job::JobResult::NoEffect);
    EXPECT_THAT(m_host.calls.all(), testing::ElementsAre(fmt::format("handler.registerRead({}, {}, 1, registerInputs)",
                                                                     RECORD::getMyID(), cmdDataSection())));
    EXPECT_THAT(traces(), testing::IsEmpty());
  }
  /// `format` is that of the trace, with one "%d" for the host's result.
  void expectFailuresPassedOn(const std::string& unit, const std::string& format) {
    for (const std::uint32_t code : {0xF0000020U, 0xF0000022U}) {
      forget();
      m_host.calls.failNothing();
      m_host.calls.fail("handler.registerRead", code);
      EXPECT_EQ(core::toCode(m_sut.registerInputs(&m_handler)), code);
      std::string text = format;
      text.replace(text.find("%d"), 2, std::to_string(static_cast<std::int32_t>(code)));
      EXPECT_THAT(traces(), testing::ElementsAre("Error " + unit + " registerInputs: " + text));
      EXPECT_EQ(m_host.traceSink.entries()[0].format, format);
    }
  }
  /// Each time nothing is taken over: the object describes itself as before.
  void expectOtherRecordsAndNoneRefused(const std::string& description) {
    cmd::CmdSendSignalPars other(cmd::CmdSendSignalParsT{1});
    for (core::IContainer* offered : {static_cast<core::IContainer*>(&other), static_cast<core::IContainer*>(nullptr)}) {
      publish(offered);
      EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
      EXPECT_EQ(m_sut.getJobString(), description);
    }
  }
  void expectFailureOnException() {
    m_host.calls.fail("handler.registerRead", test::FakeCalls::THROW);
    EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
  }

  RECORD m_offered;
  JOB_OBJECT m_sut;
};

}  // namespace motion::kavo::job
