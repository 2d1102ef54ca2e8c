// Announcement of the record of switching conditions.
#include "impl/switch_on_path/job_data_switch_on_path.h"

#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class JobDataSwitchOnPathTest : public ImplTest {};

TEST_F(JobDataSwitchOnPathTest, AnnouncesTheRecordUnderItsFullName) {
  registerOptionSwitchOnPathDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(::motion::kavo::SwitchOnPathParsList)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("::motion::kavo::SwitchOnPathParsList"), SwitchOnPathParsList::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobDataSwitchOnPathTest, WarnsUnderTheNameOfTheOptionsParameters) {
  registerOptionSwitchOnPathDataTypes(m_host.jobDataIDMgr);
  registerOptionSwitchOnPathDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(traces(), ElementsAre("Warning job_data_switch_on_path registerOptionSwitchOnPathDataTypes: "
                                    "CmdOptionSwitchOnPathPars was already registered"));
}

}  // namespace
}  // namespace motion::kavo
