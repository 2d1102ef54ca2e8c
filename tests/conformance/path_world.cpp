// A kinematics on its path, with a job that switches signals on it.
#include "conformance/path_world.h"

#include "conformance/buffered_cmd.h"
#include "conformance/expect.h"

namespace motion::conformance {

using core::job::JobListTypes;
using core::job::JobResult;

Condition sphere(std::uint32_t signalId, const Point& target, double radius, double preTriggerTime,
                 kavo::SwitchOnPathAction action) {
  return std::make_shared<kavo::SwitchOnPathPars>(kavo::SwitchOnPathPars{
      .signalId = signalId, .action = action, .targetPos = target, .radius = radius, .preTriggerTime = preTriggerTime});
}

PathWorld::PathWorld(const Bundle& bundle)
    : subject(bundle), kin(subject.host.objMgr.addKinematics("K")), handler(subject.host.calls), m_objPtr(&kin) {
  const auto& sections = subject.host.sectionMgr;
  handler.m_published[{core::KinPose::getMyID(), sections.valueOf("GEOMETRY_TOOL_OFFSET")}] = &pose;
  handler.m_published[{core::IObjPtr::getMyID(), sections.valueOf("OBJ_DATA")}] = &m_objPtr;
  subject.start();
}

std::unique_ptr<core::job::IJobObject> PathWorld::makeLooseJob() {
  return makeJob(subject, JOB);
}

void PathWorld::arm(const std::vector<Condition>& conditions) {
  m_list = std::make_unique<test::FakeJobList>(subject.host.calls);
  m_job = makeLooseJob();
  const kavo::SwitchOnPathParsList list(conditions);
  expectEqual("result of setJobData", m_job->setJobData(&list), JobResult::NoEffect);
  expectEqual("result of registerInputs", m_job->registerInputs(&handler), JobResult::NoEffect);
  expectEqual("result of addJobsToJoblist", m_job->addJobsToJoblist(m_list.get(), JobListTypes::CYCLIC_EXECUTION),
              JobResult::NoEffect);
  subject.forget();
}

JobResult PathWorld::cycleAt(const Point& point) {
  pose.set({point[0], point[1], point[2], 0.1, 0.2, 0.3});
  return m_list->m_jobs.at(0).job();
}

bool PathWorld::firesAt(const Point& point, std::uint32_t signalId) {
  const auto before = subject.in(signalId);
  expectEqual("result of the job", cycleAt(point), JobResult::NoEffect);
  return subject.in(signalId) != before;
}

}  // namespace motion::conformance
