// The trace path up to the journal client allocates nothing. This program replaces the client, which allocates on its own
// account, and counts what the C library's allocator is asked for.
#include "log_trace/log_buffered3.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

#include "log_trace/outputs_lib.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Declared here, because the compiler does not bring the header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*mallocHook)(const volatile void*, std::size_t),
                                                         void (*freeHook)(const volatile void*));
#define KAVO_SANITIZER_ALLOCATOR 1
#else
#define KAVO_SANITIZER_ALLOCATOR 0
#endif

namespace {
// Volatile: the compiler takes it for granted that an allocator looks at no variable of ours.
thread_local volatile bool t_isCounting = false;
thread_local volatile int t_allocations = 0;
thread_local int t_journalEntries = 0;

void count() {
  if (t_isCounting) {
    t_allocations = t_allocations + 1;
  }
}
}  // namespace

// Preempts the journal client's function of the same name.
extern "C" int sd_journal_send(const char* /*format*/, ...) {
  ++t_journalEntries;
  return 0;
}

#if KAVO_SANITIZER_ALLOCATOR
namespace {
const int g_hooks = __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { count(); },
                                                              [](const volatile void*) {});
}
#else
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t number, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);

extern "C" void* malloc(std::size_t size) {
  count();
  return __libc_malloc(size);
}
extern "C" void* calloc(std::size_t number, std::size_t size) {
  count();
  return __libc_calloc(number, size);
}
extern "C" void* realloc(void* block, std::size_t size) {
  count();
  return __libc_realloc(block, size);
}
#endif

namespace common::log::trace {
namespace {

/// Allocations of this thread during an action.
template <typename Action>
int allocationsDuring(Action&& action) {
  t_allocations = 0;
  t_isCounting = true;
  action();
  t_isCounting = false;
  return t_allocations;
}

class LogBuffered3AllocationTest : public testing::Test {
 protected:
  LogBuffered3AllocationTest() {
    m_record.entity = m_record.origin = m_record.fileName = m_record.functionName = "name";
    m_record.line = 5;
    m_record.format = "%s %d";
    t_journalEntries = 0;
  }

  LogBuffered3 m_sut{"unit", true};
  LogParametersExtended m_record;
};

TEST_F(LogBuffered3AllocationTest, GuardSeesAnAllocation) {
#if KAVO_SANITIZER_ALLOCATOR
  ASSERT_GT(g_hooks, 0);
#endif
  void* volatile block = nullptr;
  EXPECT_EQ(allocationsDuring([&block] { block = std::malloc(10); }), 1);
  std::free(block);
  std::unique_ptr<std::string> text;
  EXPECT_EQ(allocationsDuring([&text] { text = std::make_unique<std::string>(100, 'x'); }), 2);
}

TEST_F(LogBuffered3AllocationTest, TraceAllocatesNothing) {
  auto& sut = m_sut;
  TraceResult result{};
  EXPECT_EQ(allocationsDuring([&] { result = sut.logRealTime(0x090A0FFC, &m_record, "text", 5); }), 0);
  EXPECT_EQ(result, TraceResult::Ok);
  EXPECT_EQ(t_journalEntries, 1);
}

TEST_F(LogBuffered3AllocationTest, TroubleAllocatesNothing) {
  auto& sut = m_sut;
  static int s_reports = 0;
  setOutputHook([](const char*, unsigned int, const char*, const char*, void*) noexcept { ++s_reports; }, nullptr);
  const std::string tooLong(1000, 'x');
  m_record.entity = m_record.origin = m_record.fileName = m_record.functionName = tooLong.c_str();
  TraceResult result{};
  EXPECT_EQ(allocationsDuring([&] { result = sut.logRealTime(0x09050FFC, &m_record, tooLong.c_str(), 5); }), 0);
  EXPECT_EQ(result, TraceResult::InvalidParameter);
  EXPECT_EQ(t_journalEntries, 1 + 3) << "the internal error and three parts";
  EXPECT_EQ(s_reports, 5);
  EXPECT_EQ(allocationsDuring([&] { result = sut.logRealTime(0x09050FFC, nullptr); }), 0);
  EXPECT_EQ(result, TraceResult::InvalidParameter);
  setOutputHook(nullptr, nullptr);
}

TEST_F(LogBuffered3AllocationTest, ReportOnStandardErrorAllocatesNothing) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(allocationsDuring([] { outputFunction("ERR", 1, "f", "message %d", 5); }), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERR: f (line 1): message 5\n");
}

TEST_F(LogBuffered3AllocationTest, DisabledSinkAllocatesNothing) {
  LogBuffered3 sut("unit", false);
  TraceResult result{};
  EXPECT_EQ(allocationsDuring([&] { result = sut.logRealTime(0x090A0FFC, &m_record, "text", 5); }), 0);
  EXPECT_EQ(result, TraceResult::Disabled);
  EXPECT_EQ(t_journalEntries, 0);
}

}  // namespace
}  // namespace common::log::trace
