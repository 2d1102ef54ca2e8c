// Registering, cloning and forgetting of prototypes and helpers.
#include "host/motion/obj_factory.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "motion/core/job/job_object_base.h"

namespace motion::host {
namespace {

using core::ObjFactoryResult;

class TestJob : public core::job::JobObjectBase {
 public:
  enum class Cloning { WORKS, GIVES_NULL, THROWS };

  explicit TestJob(const char* name, Cloning cloning = Cloning::WORKS) : m_name(name), m_cloning(cloning) {}
  [[nodiscard]] core::IAmCreatable* createNew() const override {
    switch (m_cloning) {
      case Cloning::GIVES_NULL:
        return nullptr;
      case Cloning::THROWS:
        throw std::bad_alloc();
      default:
        return new TestJob(m_name);
    }
  }
  [[nodiscard]] const char* getID() const override { return m_name; }
  core::job::JobResult addJobsToJoblist(core::job::IJobList* /*list*/, core::job::JobListTypes /*type*/) override {
    return core::job::JobResult::ListTypeNotServed;
  }
  [[nodiscard]] std::string getJobString() const override { return "test"; }

 private:
  const char* m_name;
  Cloning m_cloning;
};

class TestHelper : public core::IAmCreatable {
 public:
  [[nodiscard]] core::IAmCreatable* createNew() const override { return new TestHelper; }
  [[nodiscard]] const char* getID() const override { return "helper"; }
  [[nodiscard]] std::uint32_t getType() const override { return static_cast<std::uint32_t>(core::CreatableType::HELPER); }
};

struct ObjFactoryTest : testing::Test {
  ObjFactoryResult add(std::unique_ptr<core::IAmCreatable> prototype) { return sut.registerObj(prototype, 0); }

  core::job::IJobObject* out = nullptr;
  ObjFactory sut;
};

TEST_F(ObjFactoryTest, takesAPrototypeOverAndClonesIt) {
  std::unique_ptr<core::IAmCreatable> prototype = std::make_unique<TestJob>("job");
  const auto* const original = prototype.get();
  EXPECT_EQ(sut.registerObj(prototype, 0), ObjFactoryResult::Okay);
  EXPECT_EQ(prototype, nullptr);
  EXPECT_EQ(sut.size(), 1U);

  ASSERT_EQ(sut.createObj("job", 0, out), ObjFactoryResult::Okay);
  const std::unique_ptr<core::job::IJobObject> clone(out);
  EXPECT_NE(clone.get(), original);
  EXPECT_STREQ(clone->getID(), "job");
}

TEST_F(ObjFactoryTest, leavesASecondPrototypeOfANameWithItsCaller) {
  ASSERT_EQ(add(std::make_unique<TestJob>("job")), ObjFactoryResult::Okay);
  std::unique_ptr<core::IAmCreatable> second = std::make_unique<TestJob>("job", TestJob::Cloning::GIVES_NULL);
  EXPECT_EQ(sut.registerObj(second, 0), ObjFactoryResult::AlreadyKnown);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(sut.size(), 1U);
  EXPECT_EQ(sut.createObj("job", 0, out), ObjFactoryResult::Okay) << "the first one stays";
  delete out;
}

TEST_F(ObjFactoryTest, refusesAPrototypeThatIsMissingOrHasNoName) {
  EXPECT_EQ(add(nullptr), ObjFactoryResult::InvalidArgument);
  EXPECT_EQ(add(std::make_unique<TestJob>(nullptr)), ObjFactoryResult::InvalidArgument);
  EXPECT_EQ(sut.size(), 0U);
}

TEST_F(ObjFactoryTest, clonesKnownJobObjectsOnly) {
  ASSERT_EQ(add(std::make_unique<TestHelper>()), ObjFactoryResult::Okay);
  for (const char* name : {"job", "helper", static_cast<const char*>(nullptr)}) {
    TestJob stale("stale");
    out = &stale;
    EXPECT_EQ(sut.createObj(name, 0, out), ObjFactoryResult::UnknownObject);
    EXPECT_EQ(out, nullptr);
  }
}

TEST_F(ObjFactoryTest, saysWhenCloningFailed) {
  ASSERT_EQ(add(std::make_unique<TestJob>("null", TestJob::Cloning::GIVES_NULL)), ObjFactoryResult::Okay);
  ASSERT_EQ(add(std::make_unique<TestJob>("throws", TestJob::Cloning::THROWS)), ObjFactoryResult::Okay);
  EXPECT_EQ(sut.createObj("null", 0, out), ObjFactoryResult::CreationFailed);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(sut.createObj("throws", 0, out), ObjFactoryResult::CreationFailed);
  EXPECT_EQ(out, nullptr);
}

TEST_F(ObjFactoryTest, forgetsAPrototypeButNotItsClones) {
  ASSERT_EQ(add(std::make_unique<TestJob>("job")), ObjFactoryResult::Okay);
  ASSERT_EQ(sut.createObj("job", 0, out), ObjFactoryResult::Okay);
  const std::unique_ptr<core::job::IJobObject> clone(out);
  EXPECT_EQ(sut.unregisterObj("job", 0), ObjFactoryResult::Okay);
  EXPECT_EQ(clone->getJobString(), "test");
  EXPECT_EQ(sut.createObj("job", 0, out), ObjFactoryResult::UnknownObject);
  EXPECT_EQ(sut.unregisterObj("job", 0), ObjFactoryResult::UnknownObject);
  EXPECT_EQ(sut.unregisterObj(nullptr, 0), ObjFactoryResult::UnknownObject);
  EXPECT_EQ(add(std::make_unique<TestJob>("job")), ObjFactoryResult::Okay) << "the name is free again";
}

TEST_F(ObjFactoryTest, handsHelpersOutAndKeepsThem) {
  std::unique_ptr<core::IAmCreatable> helper = std::make_unique<TestHelper>();
  core::IAmCreatable* const original = helper.get();
  ASSERT_EQ(sut.registerObj(helper, 0), ObjFactoryResult::Okay);
  EXPECT_EQ(sut.getHelper("helper"), original);
  EXPECT_EQ(sut.getHelper("helper"), original);
}

TEST_F(ObjFactoryTest, hasNoHelperOfAnotherNameOrKind) {
  ASSERT_EQ(add(std::make_unique<TestJob>("job")), ObjFactoryResult::Okay);
  EXPECT_EQ(sut.getHelper("job"), nullptr);
  EXPECT_EQ(sut.getHelper("helper"), nullptr);
  EXPECT_EQ(sut.getHelper(nullptr), nullptr);
}

}  // namespace
}  // namespace motion::host
