// Loading of bundles: what a good one gives, and what is said about each bad one.
#include "host/framework/bundle_loader.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include "tests/host/framework/call_record.h"

namespace motion::host::framework {
namespace {

using test::CallRecord;
using test::pluginDirectory;
using testing::ElementsAre;

[[nodiscard]] std::string library(const std::string& name) {
  return (pluginDirectory(name) / LIBRARY_NAME).string();
}

[[nodiscard]] bool isInMemory(const std::string& name) {
  void* handle = ::dlopen(library(name).c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle == nullptr) {
    return false;
  }
  ::dlclose(handle);
  return true;
}

void expectError(const std::filesystem::path& directory, const std::string& text) {
  const LoadResult sut = loadBundle(directory);
  EXPECT_FALSE(sut.bundle.has_value());
  EXPECT_EQ(sut.error, text);
}

TEST(BundleLoaderTest, makesTheComponentAndDeletesItBeforeTheLibrary) {
  const CallRecord record;
  {
    LoadResult result = loadBundle(pluginDirectory("well_behaved"));
    ASSERT_TRUE(result.bundle.has_value()) << result.error;
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.bundle->directory(), pluginDirectory("well_behaved"));
    const LoadedBundle sut = std::move(*result.bundle);
    result.bundle.reset();
    EXPECT_TRUE(isInMemory("well_behaved"));
    EXPECT_EQ(sut.component().init(), 0);
    EXPECT_THAT(record.lines(), ElementsAre("create", "init"));
  }
  EXPECT_THAT(record.lines(), ElementsAre("create", "init", "destroy"));
  EXPECT_FALSE(isInMemory("well_behaved"));
}

TEST(BundleLoaderTest, takesARelativeDirectory) {
  const std::filesystem::path directory = std::filesystem::relative(pluginDirectory("well_behaved"));
  ASSERT_TRUE(directory.is_relative());
  const LoadResult sut = loadBundle(directory);
  EXPECT_TRUE(sut.bundle.has_value()) << sut.error;
}

TEST(BundleLoaderTest, keepsTheNamesOfBundlesApart) {
  const LoadResult first = loadBundle(pluginDirectory("well_behaved"));
  const LoadResult second = loadBundle(pluginDirectory("start_fails"));
  ASSERT_TRUE(first.bundle.has_value() && second.bundle.has_value());
  EXPECT_EQ(::dlsym(RTLD_DEFAULT, core::framework::FACTORY_NAME), nullptr);
  EXPECT_EQ(first.bundle->component().start(), 0);
  EXPECT_EQ(second.bundle->component().start(), 70001);
}

TEST(BundleLoaderTest, missingDirectory) {
  expectError(
      "no/such/place",
      "bundle directory 'no/such/place' does not exist; give the directory that holds libmotion_kavo.so with --bundle");
  expectError("", "bundle directory '' does not exist; give the directory that holds libmotion_kavo.so with --bundle");
}

TEST(BundleLoaderTest, directoryThatCannotBeExamined) {
  const std::string name(5000, 'x');
  expectError(name,
              "bundle directory '" + name +
                  "' cannot be examined: File name too long; give a readable directory that holds libmotion_kavo.so with "
                  "--bundle");
}

TEST(BundleLoaderTest, fileInPlaceOfADirectory) {
  expectError(library("well_behaved"), "bundle '" + library("well_behaved") +
                                           "' is not a directory; give the directory that holds libmotion_kavo.so with "
                                           "--bundle, not a file");
}

TEST(BundleLoaderTest, directoryWithoutLibrary) {
  expectError(pluginDirectory("empty"),
              "bundle directory '" + pluginDirectory("empty").string() +
                  "' holds no libmotion_kavo.so; build the bundle, or give the directory of a built "
                  "one with --bundle");
}

TEST(BundleLoaderTest, fileThatIsNoLibrary) {
  ASSERT_EQ(::dlopen(library("not_a_library").c_str(), RTLD_NOW), nullptr);
  const std::string reason = ::dlerror();
  ASSERT_FALSE(reason.empty());
  expectError(pluginDirectory("not_a_library"),
              "library '" + library("not_a_library") + "' could not be loaded: " + reason +
                  "; give a bundle that was built for this machine, and install the libraries that it needs");
}

TEST(BundleLoaderTest, libraryThatNeedsWhatNobodyHas) {
  expectError(
      pluginDirectory("missing_symbol"),
      "library '" + library("missing_symbol") + "' could not be loaded: " + library("missing_symbol") +
          ": undefined symbol: functionThatNobodyHas; give a bundle that was built for this machine, and install the "
          "libraries that it needs");
}

TEST(BundleLoaderTest, libraryWithoutFactory) {
  expectError(pluginDirectory("no_factory"),
              "library '" + library("no_factory") +
                  "' exports no function 'createMotionKavoCmp'; give a bundle whose library has this factory with --bundle");
  EXPECT_FALSE(isInMemory("no_factory"));
}

TEST(BundleLoaderTest, factoryThatThrows) {
  expectError(pluginDirectory("factory_throws"), "function 'createMotionKavoCmp' of library '" + library("factory_throws") +
                                                     "' threw: no licence for this component; give a bundle whose factory "
                                                     "succeeds with --bundle");
  EXPECT_FALSE(isInMemory("factory_throws"));
}

TEST(BundleLoaderTest, factoryThatMakesNothing) {
  expectError(pluginDirectory("factory_null"), "function 'createMotionKavoCmp' of library '" + library("factory_null") +
                                                   "' returned no component; give a bundle whose factory succeeds with "
                                                   "--bundle");
  EXPECT_FALSE(isInMemory("factory_null"));
}

TEST(BundleLoaderDeathTest, abandonedBundleStaysAsItIs) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const CallRecord record;
  // In a child process, since the component is never deleted.
  const auto abandon = [] {
    {
      LoadResult result = loadBundle(pluginDirectory("well_behaved"));
      result.bundle.value().abandon();
    }
    std::_Exit(isInMemory("well_behaved") ? 0 : 1);
  };
  EXPECT_EXIT(abandon(), testing::ExitedWithCode(0), "");
  EXPECT_THAT(record.lines(), ElementsAre("create"));
}

}  // namespace
}  // namespace motion::host::framework
