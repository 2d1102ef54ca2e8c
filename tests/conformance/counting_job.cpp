// A job object in place of one of the component's: counts its instances and answers as it is told.
#include "conformance/counting_job.h"

#include <memory>
#include <utility>

#include "conformance/records.h"
#include "motion/core/job/job_object_base.h"

namespace motion::conformance {
namespace {

using core::job::JobResult;

class CountingJob : public core::job::JobObjectBase {
 public:
  CountingJob(std::string name, JobCounts& counts, bool isClone)
      : m_name(std::move(name)), m_counts(counts), m_isClone(isClone) {
    if (m_isClone) {
      ++m_counts.made;
      ++m_counts.alive;
    }
  }
  ~CountingJob() override {
    if (m_isClone) {
      --m_counts.alive;
    }
  }
  CountingJob(const CountingJob&) = delete;
  CountingJob& operator=(const CountingJob&) = delete;

  [[nodiscard]] core::IAmCreatable* createNew() const override { return new CountingJob(m_name, m_counts, true); }
  [[nodiscard]] const char* getID() const override { return m_name.c_str(); }
  JobResult addJobsToJoblist(core::job::IJobList* /*list*/, core::job::JobListTypes /*type*/) override {
    return JobResult::ListTypeNotServed;
  }
  JobResult setJobData(const core::IContainer* data) override {
    m_counts.data.push_back(describe(data));
    return m_counts.resultOfSetJobData;
  }
  JobResult checkParameter(const core::IContainer* data, core::dia::IDia* /*dia*/) const override {
    m_counts.checked.push_back(describe(data));
    return m_counts.resultOfCheck;
  }
  [[nodiscard]] std::string getJobString() const override { return "counting"; }

 private:
  std::string m_name;
  JobCounts& m_counts;
  bool m_isClone;
};

}  // namespace

void replaceJob(Subject& subject, const std::string& name, JobCounts& counts) {
  subject.host.objFactory.m_prototypes[name] = std::make_unique<CountingJob>(name, counts, false);
}

}  // namespace motion::conformance
