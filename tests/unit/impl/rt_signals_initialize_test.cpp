// How the real-time memories of the signals come and go.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "impl/rt_signals.h"
#include "impl_fixture.h"
#include "schemas/datalayer/memory_map_generated.h"

namespace motion::kavo::rt_data {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::uint32_t REFUSAL = 0x80010004;
const std::string IN_ADDRESS = "motion/state/functions/kavo/rt-data/signals_in";
const std::string OUT_ADDRESS = "motion/state/functions/kavo/rt-data/signals_out";

const std::vector<std::string> INITIALIZE_CALLS = {
    "dataLayer.createProvider(inproc:///tmp/datalayer/backend)",
    "dataLayer.createMemorySync(" + IN_ADDRESS + ", 100, 1)",
    "dataLayer.createMemorySync(" + OUT_ADDRESS + ", 100, 2)",
    "memory.setMemoryMap signals_in()",
    "memory.setMemoryMap signals_out()",
    "memory.beginAccess signals_in(0)",
    "memory.endAccess signals_in()",
    "provider.start()",
};
const std::vector<std::string> TERMINATE_CALLS = {
    "dataLayer.deleteMemorySync(signals_out)",
    "dataLayer.deleteMemorySync(signals_in)",
    "provider.stop()",
    "provider.destroyed()",
};

/// What a provider that was never started answers to a stop.
const std::string NOT_STARTED = "Error rt_signals terminate: Stopping provider failed with: DL_FAILED";

class RtSignalsInitializeTest : public ImplTest {
 protected:
  /// The field at that place, counted in pointers.
  template <typename FIELD>
  [[nodiscard]] static const FIELD& fieldOf(const RtSignals& sut, std::size_t place) {
    return *reinterpret_cast<const FIELD*>(reinterpret_cast<const std::byte*>(&sut) + place * sizeof(void*));
  }
  [[nodiscard]] static const void* factoryOf(const RtSignals& sut) { return fieldOf<const void*>(sut, 1); }
  [[nodiscard]] const test::FakeMemoryState& memory(const std::string& address) const {
    return *m_host.dataLayer.m_memories.at(address);
  }
};

TEST_F(RtSignalsInitializeTest, HasHundredSignals) {
  EXPECT_EQ(RtSignals::getNrOfSignals(), 100U);
  EXPECT_TRUE(RtSignals::isValidId(0));
  EXPECT_TRUE(RtSignals::isValidId(99));
  EXPECT_FALSE(RtSignals::isValidId(100));
  EXPECT_FALSE(RtSignals::isValidId(0xFFFFFFFF));
}

TEST_F(RtSignalsInitializeTest, IsOneInstance) {
  EXPECT_EQ(&RtSignals::getInstance(), &RtSignals::getInstance());
}

TEST_F(RtSignalsInitializeTest, MakesDescribesClearsAndPublishesTheMemories) {
  RtSignals sut;
  EXPECT_TRUE(sut.initialize(m_host.dataLayer));
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(INITIALIZE_CALLS));
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_EQ(m_host.dataLayer.m_memoryProvider, m_host.dataLayer.m_lastProvider);
  EXPECT_TRUE(m_host.dataLayer.m_lastProvider->isStarted());
  EXPECT_EQ(memory(IN_ADDRESS).openAccesses, 0);
}

TEST_F(RtSignalsInitializeTest, FillsOnlyTheInputMemory) {
  m_host.dataLayer.m_initialByte = 0xA5;
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  EXPECT_EQ(memory(IN_ADDRESS).bytes.size(), 100U);
  EXPECT_EQ(memory(OUT_ADDRESS).bytes.size(), 100U);
  EXPECT_THAT(memory(IN_ADDRESS).bytes, Each(0));
  EXPECT_THAT(memory(OUT_ADDRESS).bytes, Each(0xA5));
}

TEST_F(RtSignalsInitializeTest, DescribesEachSignalInTheMemoryMap) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  ASSERT_EQ(memory(IN_ADDRESS).map.getType(), comm::datalayer::VariantType::FLATBUFFERS);
  const auto buffer = memory(IN_ADDRESS).map.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  ASSERT_TRUE(comm::datalayer::VerifyMemoryMapBuffer(verifier));
  const auto* const map = comm::datalayer::GetMemoryMap(buffer.data());
  ASSERT_NE(map->variables(), nullptr);
  ASSERT_EQ(map->variables()->size(), 100U);
  for (std::uint32_t i = 0; i < 100; ++i) {
    const auto* const variable = map->variables()->Get(i);
    EXPECT_EQ(variable->name()->str(), fmt::format("signal_{:02}", i));
    EXPECT_EQ(variable->bitoffset(), 8 * i);
    EXPECT_EQ(variable->bitsize(), 8U);
    EXPECT_EQ(variable->type()->str(), "types/datalayer/uint8");
  }
}

TEST_F(RtSignalsInitializeTest, StoresNoDefaultsInTheMemoryMap) {
  constexpr flatbuffers::voffset_t VARIABLES = 4;
  constexpr flatbuffers::voffset_t REVISION = 6;
  constexpr flatbuffers::voffset_t BIT_OFFSET = 6;
  constexpr flatbuffers::voffset_t BIT_SIZE = 8;
  using Tables = flatbuffers::Vector<flatbuffers::Offset<flatbuffers::Table>>;
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  const auto* const map = flatbuffers::GetRoot<flatbuffers::Table>(memory(IN_ADDRESS).map.getFlatBuffer().data());
  EXPECT_FALSE(map->CheckField(REVISION));
  const auto* const variables = map->GetPointer<const Tables*>(VARIABLES);
  ASSERT_EQ(variables->size(), 100U);
  EXPECT_FALSE(variables->Get(0)->CheckField(BIT_OFFSET));
  EXPECT_TRUE(variables->Get(1)->CheckField(BIT_OFFSET));
  EXPECT_TRUE(variables->Get(0)->CheckField(BIT_SIZE));
}

TEST_F(RtSignalsInitializeTest, GivesBothMemoriesTheSameMap) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  const auto in = memory(IN_ADDRESS).map.getFlatBuffer();
  const auto out = memory(OUT_ADDRESS).map.getFlatBuffer();
  ASSERT_FALSE(in.empty());
  EXPECT_TRUE(std::equal(in.begin(), in.end(), out.begin(), out.end()));
}

TEST_F(RtSignalsInitializeTest, RefusesASecondTime) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  ASSERT_TRUE(sut.set(5));
  forget();
  EXPECT_FALSE(sut.initialize(m_host.dataLayer));
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals initialize: Already initialized"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_EQ(memory(IN_ADDRESS).bytes[5], 1);
}

TEST_F(RtSignalsInitializeTest, TakesEverythingBack) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  forget();
  sut.terminate();
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TERMINATE_CALLS));
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());
  sut.terminate();
  EXPECT_EQ(m_host.calls.all().size(), TERMINATE_CALLS.size()) << "the second time there is nothing left to do";
}

TEST_F(RtSignalsInitializeTest, DoesNothingWhenTerminatedBeforeItWasInitialised) {
  RtSignals sut;
  sut.terminate();
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RtSignalsInitializeTest, TerminatesWhenDestroyed) {
  {
    RtSignals sut;
    ASSERT_TRUE(sut.initialize(m_host.dataLayer));
    forget();
  }
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TERMINATE_CALLS));
}

TEST_F(RtSignalsInitializeTest, CanBeInitialisedAgain) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  ASSERT_TRUE(sut.set(5));
  sut.terminate();
  forget();
  EXPECT_TRUE(sut.initialize(m_host.dataLayer));
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(INITIALIZE_CALLS));
  EXPECT_EQ(memory(IN_ADDRESS).bytes[5], 0);
}

TEST_F(RtSignalsInitializeTest, TracesAMissingProvider) {
  m_host.calls.fail("dataLayer.createProvider", 0, 1);
  RtSignals sut;
  EXPECT_FALSE(sut.initialize(m_host.dataLayer));
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals initialize: Failed to create a provider"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_host.calls.all(), ElementsAre("dataLayer.createProvider(inproc:///tmp/datalayer/backend)"));
  EXPECT_EQ(factoryOf(sut), &m_host.dataLayer) << "the factory stays remembered";
  EXPECT_TRUE(sut.initialize(m_host.dataLayer)) << "a later attempt starts from a clean state";
}

TEST_F(RtSignalsInitializeTest, HasItsFieldsInOrder) {
  constexpr std::size_t IN_MEMORY = 3;
  constexpr std::size_t OUT_MEMORY = 5;
  RtSignals sut;
  EXPECT_EQ(sizeof(sut), 7 * sizeof(void*));
  EXPECT_EQ(factoryOf(sut), nullptr);
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  EXPECT_EQ(factoryOf(sut), &m_host.dataLayer);
  EXPECT_EQ(fieldOf<const void*>(sut, 2), m_host.dataLayer.m_lastProvider);
  for (const auto& [place, address] : {std::pair(IN_MEMORY, IN_ADDRESS), std::pair(OUT_MEMORY, OUT_ADDRESS)}) {
    const auto owner = fieldOf<std::shared_ptr<comm::datalayer::IMemoryOwner>>(sut, place);
    std::uint8_t* data = nullptr;
    ASSERT_EQ(owner->beginAccess(data, 0), comm::datalayer::DL_OK);
    EXPECT_EQ(data, memory(address).bytes.data());
    EXPECT_EQ(owner->endAccess(), comm::datalayer::DL_OK);
  }
  sut.terminate();
  for (std::size_t place = 1; place < 7; ++place) {
    EXPECT_EQ(fieldOf<const void*>(sut, place), nullptr) << "everything is forgotten: " << place;
  }
}

struct FailureCase {
  std::string operation;
  int nth;
  std::string format;
  std::size_t callsBefore;  ///< calls up to and with the one that fails
  std::vector<std::string> cleanUp;
};

class RtSignalsFailureTest : public RtSignalsInitializeTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(RtSignalsFailureTest, TracesTheFailureAndCleansUp) {
  m_host.calls.fail(GetParam().operation, REFUSAL, GetParam().nth);
  RtSignals sut;
  EXPECT_FALSE(sut.initialize(m_host.dataLayer));
  ASSERT_EQ(m_host.traceSink.entries().size(), 2U);
  EXPECT_EQ(m_host.traceSink.entries()[0].format, GetParam().format);
  const auto text = GetParam().format.substr(0, GetParam().format.size() - 2) + "DL_LIMIT_MIN";
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals initialize: " + text, NOT_STARTED));
  auto expected = std::vector<std::string>(INITIALIZE_CALLS.begin(),
                                           INITIALIZE_CALLS.begin() + static_cast<std::ptrdiff_t>(GetParam().callsBefore));
  expected.insert(expected.end(), GetParam().cleanUp.begin(), GetParam().cleanUp.end());
  EXPECT_EQ(m_host.calls.all(), expected);
  EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty());

  m_host.calls.failNothing();
  forget();
  EXPECT_TRUE(sut.initialize(m_host.dataLayer)) << "a later attempt starts from a clean state";
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(INITIALIZE_CALLS));
}

const std::vector<std::string> PROVIDER_ONLY(TERMINATE_CALLS.begin() + 2, TERMINATE_CALLS.end());
const std::vector<std::string> INPUT_AND_PROVIDER(TERMINATE_CALLS.begin() + 1, TERMINATE_CALLS.end());

INSTANTIATE_TEST_SUITE_P(
    All, RtSignalsFailureTest,
    testing::Values(FailureCase{"dataLayer.createMemorySync", 1, "createMemorySync failed with: %s", 2, PROVIDER_ONLY},
                    FailureCase{"dataLayer.createMemorySync", 2, "createMemorySync failed with: %s", 3, INPUT_AND_PROVIDER},
                    FailureCase{"memory.setMemoryMap signals_in", 1, "setMemoryMap failed with: %s", 4, TERMINATE_CALLS},
                    FailureCase{"memory.setMemoryMap signals_out", 1, "setMemoryMap failed with: %s", 5, TERMINATE_CALLS},
                    FailureCase{"memory.beginAccess signals_in", 1, "fill memory failed with: %s", 6, TERMINATE_CALLS},
                    FailureCase{"provider.start", 1, "Starting provider failed with: %s", 8, TERMINATE_CALLS}));

TEST_F(RtSignalsInitializeTest, NamesAnUnlistedResultUnknown) {
  m_host.calls.fail("provider.start", 0x80010008);
  RtSignals sut;
  EXPECT_FALSE(sut.initialize(m_host.dataLayer));
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals initialize: Starting provider failed with: unknown", NOT_STARTED));
}

TEST_F(RtSignalsInitializeTest, IgnoresAFailureToEndTheAccess) {
  m_host.calls.fail("memory.endAccess signals_in", REFUSAL);
  RtSignals sut;
  EXPECT_TRUE(sut.initialize(m_host.dataLayer));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RtSignalsInitializeTest, TracesEachFailureToTakeBackAndGoesOn) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  forget();
  m_host.calls.fail("dataLayer.deleteMemorySync", 0x80010004, 1);
  m_host.calls.fail("dataLayer.deleteMemorySync", 0x80010005, 2);
  m_host.calls.fail("provider.stop", 0x80000001, 1);
  sut.terminate();
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals terminate: Cannot delete input memory: DL_LIMIT_MIN",
                                    "Error rt_signals terminate: Cannot delete input memory: DL_LIMIT_MAX",
                                    "Error rt_signals terminate: Stopping provider failed with: DL_FAILED"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Cannot delete input memory: %s");
  EXPECT_EQ(m_host.traceSink.entries()[2].format, "Stopping provider failed with: %s");
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TERMINATE_CALLS));
  EXPECT_TRUE(sut.initialize(m_host.dataLayer)) << "the handles are released in any case";
}

TEST_F(RtSignalsInitializeTest, TakesEachExceptionForAFailureToTakeBackAndGoesOn) {
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(m_host.dataLayer));
  forget();
  m_host.calls.fail("dataLayer.deleteMemorySync", test::FakeCalls::THROW);
  m_host.calls.fail("provider.stop", test::FakeCalls::THROW);
  sut.terminate();
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals terminate: Cannot delete input memory: DL_FAILED",
                                    "Error rt_signals terminate: Cannot delete input memory: DL_FAILED",
                                    "Error rt_signals terminate: Stopping provider failed with: DL_FAILED"));
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TERMINATE_CALLS));
  EXPECT_TRUE(sut.initialize(m_host.dataLayer)) << "the handles are released in any case";
  m_host.calls.failNothing();
}

TEST_F(RtSignalsInitializeTest, SurvivesAnExceptionOfTheDataLayer) {
  for (const char* operation :
       {"dataLayer.createProvider", "dataLayer.createMemorySync", "memory.setMemoryMap signals_out", "provider.start"}) {
    RtSignals sut;
    m_host.calls.fail(operation, test::FakeCalls::THROW, 1);
    EXPECT_FALSE(sut.initialize(m_host.dataLayer)) << operation;
    m_host.calls.failNothing();
    sut.terminate();
    EXPECT_THAT(m_host.dataLayer.m_memories, IsEmpty()) << operation;
  }
}

TEST_F(RtSignalsInitializeTest, SurvivesEachFailureToAllocate) {
  RtSignals sut;
  bool isDone = false;
  const int failures = withEachAllocationFailing([&] { isDone = sut.initialize(m_host.dataLayer); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(isDone, !hasFailed);
                                                   EXPECT_EQ(m_host.dataLayer.m_memories.size(), isDone ? 2U : 0U);
                                                 });
  EXPECT_GT(failures, 3) << "addresses and memory map take memory";
}

}  // namespace
}  // namespace motion::kavo::rt_data
