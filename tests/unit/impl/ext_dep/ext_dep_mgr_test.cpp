// The host's sections, looked up once.
#include "impl/ext_dep/ext_dep_mgr.h"

#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::array<const char*, 7> NAMES = {"OBJ_DATA",      "CMD_DATA",   "PREEXEC_OPMODE",      "PREEXEC",
                                              "EXEC_DYNAMICS", "EXEC_FINAL", "GEOMETRY_TOOL_OFFSET"};

class ExtDepMgrTest : public ImplTest {
 protected:
  [[nodiscard]] static SectionID id(std::size_t index) { return static_cast<SectionID>(index); }
  /// Are the first `found` sections known and no others?
  static void expectKnown(const ExtDepMgr& sut, const test::FakeSectionMgr& sections, std::size_t found) {
    for (std::size_t i = 0; i < NAMES.size(); ++i) {
      EXPECT_EQ(sut.getSection(id(i)), i < found ? sections.addressOf(NAMES.at(i)) : nullptr) << NAMES.at(i);
      EXPECT_EQ(sut.getSectionValue(id(i)), i < found ? sections.valueOf(NAMES.at(i)) : core::section::INVALID)
          << NAMES.at(i);
    }
  }
};

TEST_F(ExtDepMgrTest, RequiresSevenSectionsInTableOrder) {
  ASSERT_EQ(REQUIRED_SECTIONS.size(), NAMES.size());
  for (std::size_t i = 0; i < NAMES.size(); ++i) {
    EXPECT_EQ(REQUIRED_SECTIONS[i].id, id(i));
    EXPECT_STREQ(REQUIRED_SECTIONS[i].name, NAMES.at(i));
  }
}

TEST_F(ExtDepMgrTest, KnowsNothingAtFirst) {
  const ExtDepMgr sut;
  EXPECT_EQ(sut.getMotionExtIF(), nullptr);
  expectKnown(sut, m_host.sectionMgr, 0);
}

TEST_F(ExtDepMgrTest, IsOneInstance) {
  auto& sut = ExtDepMgr::getInstance();
  EXPECT_EQ(&sut, &ExtDepMgr::getInstance());
  EXPECT_EQ(sut.getSection(SectionID::CMD_DATA), nullptr);
}

TEST_F(ExtDepMgrTest, LooksTheSectionsUpInTableOrder) {
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  EXPECT_EQ(sut.getMotionExtIF(), &m_host.ext);
  std::vector<std::string> expected;
  for (const char* name : NAMES) {
    expected.push_back(fmt::format("sectionMgr.getSection({})", name));
  }
  EXPECT_EQ(m_host.calls.of({"sectionMgr."}), expected);
  expectKnown(sut, m_host.sectionMgr, NAMES.size());
  EXPECT_THAT(traces(), IsEmpty());
}

class ExtDepMgrMissingTest : public ExtDepMgrTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(ExtDepMgrMissingTest, StopsAtTheFirstMissingSection) {
  auto available = std::make_unique<test::FakeSectionMgr>(m_host.calls);
  for (std::size_t i = GetParam(); i < NAMES.size(); i += 2) {
    available->remove(NAMES.at(i));
  }
  m_host.parts.sectionMgr = available.get();
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  for (std::size_t i = 0; i < NAMES.size(); ++i) {
    EXPECT_EQ(sut.getSection(id(i)), i < GetParam() ? available->addressOf(NAMES.at(i)) : nullptr) << NAMES.at(i);
  }
  EXPECT_EQ(m_host.calls.count("sectionMgr.getSection"), static_cast<int>(GetParam()) + 1);
  EXPECT_THAT(traces(),
              ElementsAre(fmt::format("Error ext_dep_mgr getRequiredSectionPointers: section {} could not be found!",
                                      NAMES.at(GetParam()))));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "section %s could not be found!");
}

INSTANTIATE_TEST_SUITE_P(All, ExtDepMgrMissingTest, testing::Range<std::size_t>(0, 7));

TEST_F(ExtDepMgrTest, ForgetsEverythingWithoutATrace) {
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  forget();
  sut.setMotionExtIF(nullptr);
  EXPECT_EQ(sut.getMotionExtIF(), nullptr);
  expectKnown(sut, m_host.sectionMgr, 0);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(ExtDepMgrTest, ClearsBeforeItLooksUpAgain) {
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  m_host.calls.fail("sectionMgr.getSection", 0, 3);
  sut.setMotionExtIF(&m_host.ext);
  expectKnown(sut, m_host.sectionMgr, 2);
}

TEST_F(ExtDepMgrTest, TracesAMissingExtensionInterface) {
  ExtDepMgr sut;
  sut.getRequiredSectionPointers();
  EXPECT_THAT(traces(), ElementsAre("Error ext_dep_mgr getRequiredSectionPointers: get of required sections failed, because "
                                    "motion extension interface is not set"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "get of required sections failed, because %s is not set");
}

TEST_F(ExtDepMgrTest, TracesAMissingSectionManager) {
  m_host.parts.sectionMgr = nullptr;
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  EXPECT_EQ(sut.getMotionExtIF(), &m_host.ext);
  expectKnown(sut, m_host.sectionMgr, 0);
  EXPECT_THAT(traces(), ElementsAre("Error ext_dep_mgr getRequiredSectionPointers: get of required sections failed, because "
                                    "section manager is not set"));
}

TEST_F(ExtDepMgrTest, TakesAnExceptionForAMissingSectionManager) {
  m_host.calls.fail("ext.getSectionMgr", test::FakeCalls::THROW);
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  EXPECT_EQ(sut.getMotionExtIF(), &m_host.ext);
  expectKnown(sut, m_host.sectionMgr, 0);
  EXPECT_THAT(traces(), ElementsAre("Error ext_dep_mgr getRequiredSectionPointers: get of required sections failed, because "
                                    "section manager is not set"));
}

TEST_F(ExtDepMgrTest, TakesAnExceptionForAMissingSection) {
  m_host.calls.fail("sectionMgr.getSection", test::FakeCalls::THROW, 3);
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  expectKnown(sut, m_host.sectionMgr, 2);
  EXPECT_EQ(m_host.calls.count("sectionMgr.getSection"), 3);
  EXPECT_THAT(traces(),
              ElementsAre("Error ext_dep_mgr getRequiredSectionPointers: section PREEXEC_OPMODE could not be found!"));
}

TEST_F(ExtDepMgrTest, ForgetsTheAddressesOnRequest) {
  ExtDepMgr sut;
  sut.setMotionExtIF(&m_host.ext);
  sut.deinitSectionPointers();
  EXPECT_EQ(sut.getMotionExtIF(), &m_host.ext);
  expectKnown(sut, m_host.sectionMgr, 0);
}

}  // namespace
}  // namespace motion::kavo
