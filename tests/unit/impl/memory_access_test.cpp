// An access to a memory ends with its object.
#include "impl/memory_access.h"

#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::DL_OK;
using testing::ElementsAre;

const std::string BEGIN = "memory.beginAccess memory(0)";
const std::string END = "memory.endAccess memory()";

class MemoryAccessTest : public ImplTest {
 protected:
  MemoryAccessTest() {
    EXPECT_EQ(m_host.dataLayer.createMemorySync(m_memory, "a/memory", nullptr, 2, comm::datalayer::MemoryType::INPUT),
              DL_OK);
    forget();
  }

  std::shared_ptr<comm::datalayer::IMemoryOwner> m_memory;
};

TEST_F(MemoryAccessTest, BeginsAndEndsOnce) {
  {
    const MemoryAccess sut(*m_memory);
    EXPECT_FALSE(sut.hasFailed());
    EXPECT_EQ(sut.result(), DL_OK);
    EXPECT_EQ(sut.data(), m_host.dataLayer.m_memories.at("a/memory")->bytes.data());
    EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN));
  }
  EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN, END));
}

TEST_F(MemoryAccessTest, EndsNothingThatDidNotBegin) {
  m_host.calls.fail("memory.beginAccess memory", 0x80060005);
  {
    const MemoryAccess sut(*m_memory);
    EXPECT_TRUE(sut.hasFailed());
    EXPECT_EQ(sut.result().code(), 0x80060005U);
  }
  EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN));
}

TEST_F(MemoryAccessTest, SurvivesExceptionsOfTheMemory) {
  m_host.calls.fail("memory.endAccess memory", test::FakeCalls::THROW);
  { const MemoryAccess sut(*m_memory); }
  EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN, END));
  m_host.calls.fail("memory.beginAccess memory", test::FakeCalls::THROW);
  const MemoryAccess sut(*m_memory);
  EXPECT_TRUE(sut.hasFailed());
}

}  // namespace
}  // namespace motion::kavo
