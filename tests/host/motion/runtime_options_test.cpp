// Options through a whole runtime: the command context, and parameters as FlatBuffers values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string_view>

#include "host/motion/runtime.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using comm::datalayer::Variant;
using core::FctResult;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using core::job::JobResult;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

struct RuntimeOptionsTest : testing::Test {
  RuntimeOptionsTest() { world.registerOptions(); }

  /// Parameters of scripted options as "PermOn A"; an empty text cannot be decoded.
  static std::vector<EncodedOption> encoded(const std::vector<std::pair<std::string, std::string>>& given) {
    std::vector<EncodedOption> options;
    for (const auto& [name, text] : given) {
      const auto line = static_cast<std::uint32_t>(20 + options.size());
      options.push_back({name, text.empty() ? Variant(1.5) : Variant(text), {"client", "file", line}});
    }
    return options;
  }
  FctResult issue(const std::vector<EncodedOption>& given) {
    return sut.issue(axis, {"Test", Variant(std::string("A")), world.source, given}, id, world.problem);
  }
  FctResult tryOut(const std::vector<EncodedOption>& given) {
    return sut.tryOut(axis, {"Test", Variant(std::string("A")), world.source, given}, world.problem);
  }
  std::vector<std::string> run() {
    static_cast<void>(world.script.takeJournal());
    world.step(3);
    std::vector<std::string> journal = world.script.takeJournal();
    std::erase_if(journal, [](const std::string& line) { return !line.ends_with("cyclic"); });
    return journal;
  }

  test::World world;
  Runtime& sut = world.runtime;
  MotionObject& axis = world.addAxis("X");
  unsigned long id = 4711;
};

TEST_F(RuntimeOptionsTest, addsAnOptionByNameOfObjectAndOption) {
  test::Labels values({"O"});
  EXPECT_EQ(sut.addCmdOption(world.source, "X", "Plain", CmdOptPermType::PERM_ON, values), FctResult::Okay);
  EXPECT_THAT(world.script.takeJournal(), Contains("O getDuration PermOn"));
  world.issue(axis, "A");
  EXPECT_THAT(run(), ElementsAre("A cyclic", "O cyclic"));
  EXPECT_EQ(sut.addCmdOption(world.source, "Y", "Plain", CmdOptPermType::PERM_ON, values), FctResult::ObjectNotFound);
  EXPECT_EQ(sut.addCmdOption(world.source, nullptr, "Plain", CmdOptPermType::PERM_ON, values), FctResult::ObjectNotFound);
}

TEST_F(RuntimeOptionsTest, decodesOptionsWithTheirCommand) {
  EXPECT_EQ(issue(encoded({{"Plain", "PermOn O"}, {"Stack", "S"}})), FctResult::Okay) << world.problem;
  const auto journal = world.script.takeJournal();
  EXPECT_THAT(journal, Contains("O prepareStackable PermOn of line 20"));
  EXPECT_THAT(journal, Contains("S prepareStackable Once of line 21"));
  EXPECT_THAT(run(), ElementsAre("A cyclic", "O cyclic", "S cyclic"));
}

TEST_F(RuntimeOptionsTest, triesOutWithOptionsAndLeavesNothing) {
  EXPECT_EQ(tryOut(encoded({{"Plain", "PermOn O"}})), FctResult::Okay) << world.problem;
  EXPECT_THAT(axis.options().state(), IsEmpty());
  EXPECT_EQ(world.options.optionsAlive, 0);
}

TEST_F(RuntimeOptionsTest, refusesAnOptionThatTheObjectDoesNotHave) {
  EXPECT_EQ(issue(encoded({{"Plain", "O"}, {"Flat", "P"}})), FctResult::OptionNotSupported);
  EXPECT_EQ(world.problem, "'Flat' is not an option of 'X'");
  EXPECT_EQ(tryOut(encoded({{"Flat", "P"}})), FctResult::OptionNotSupported);
  EXPECT_EQ(id, 4711U);
}

TEST_F(RuntimeOptionsTest, refusesAnOptionThatCannotBeDecodedAndKeepsWhatWasSaidAboutIt) {
  const auto given = encoded({{"Plain", "O"}, {"Plain", ""}});
  EXPECT_EQ(issue(given), FctResult::InvalidParameter);
  const std::string problem =
      "the parameters of option 'Plain' of 'X' could not be decoded (0xF011000F): no text (0x00000011, 0x00000022)";
  EXPECT_EQ(world.problem, problem);
  const auto diagnoses = axis.diaLog().all();
  ASSERT_EQ(diagnoses.size(), 1U);
  EXPECT_EQ(diagnoses[0].mainCode, 0x11U);
  EXPECT_EQ(diagnoses[0].detailCode, 0x22U);
  EXPECT_EQ(diagnoses[0].text, "no text");
  EXPECT_EQ(diagnoses[0].source.client, "client");
  EXPECT_EQ(diagnoses[0].source.line, 21U);
  EXPECT_EQ(tryOut(given), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem, problem);
  EXPECT_EQ(axis.diaLog().count(), 1U) << "trying out tells nobody else";
  EXPECT_THAT(axis.options().state(), IsEmpty()) << "not even the option that could be decoded";
  EXPECT_EQ(axis.bufferedCount(), 0U);
  EXPECT_EQ(id, 4711U);
}

TEST_F(RuntimeOptionsTest, doesNotBlameAnOlderDiagnosis) {
  axis.diaLog().report(1, 1, {}, {}, "an older diagnosis");
  world.script.at = [](std::string_view operation) {
    if (operation == "option.marshal") {
      throw std::runtime_error("no");
    }
  };
  EXPECT_EQ(issue(encoded({{"Plain", "O"}})), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem, "the parameters of option 'Plain' of 'X' could not be decoded (0xF011000F)");
}

/// Parameters that count themselves.
class CountedLabels : public test::Labels {
 public:
  CountedLabels() : test::Labels({"counted"}) { ++s_count; }
  ~CountedLabels() override { --s_count; }
  CountedLabels(const CountedLabels&) = delete;
  CountedLabels& operator=(const CountedLabels&) = delete;

  static inline int s_count = 0;
};

TEST_F(RuntimeOptionsTest, deletesDecodedParametersWhateverBecomesOfThem) {
  CmdResult answer = CmdResult::Okay;
  const core::cmd::CmdId optionID{core::ObjectType::AXIS, "Counted"};
  const CmdOptionEntry entry = test::scriptedOption(world.options, optionID, false, {test::allCommandsOf(axis.type())});
  const core::cmd::CmdOptionMarshalFn marshal = [&answer](const Variant*, core::IContainer*& container, CmdOptPermType&,
                                                          core::dia::IDiagCollector&) {
    container = new CountedLabels;
    return answer;
  };
  ASSERT_EQ(sut.cmdOptionFactory().registerCmdOption(optionID, entry.create, marshal, entry.groups,
                                                     KAVO_TEST_SCHEMA_DIR "/cmdSetSignal.bfbs", "", ""),
            CmdResult::Okay);
  EXPECT_EQ(issue(encoded({{"Counted", "O"}})), FctResult::Okay) << world.problem;
  EXPECT_EQ(CountedLabels::s_count, 0);
  answer = CmdResult::Refused;
  EXPECT_EQ(issue(encoded({{"Counted", "O"}})), FctResult::InvalidParameter);
  EXPECT_EQ(CountedLabels::s_count, 0);
}

}  // namespace
}  // namespace motion::host
