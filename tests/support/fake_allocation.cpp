// Replaces the allocator of the whole test program: counts what a thread allocates and what the program holds, and makes one
// allocation fail.
#include "support/fake_allocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace motion::test {
namespace {

// Volatile: the compiler takes it for granted that an allocator looks at no variable of ours.
thread_local volatile int t_allocations = 0;
thread_local volatile int t_untilFailure = 0;  // 0 = none is to fail
thread_local volatile bool t_hasFailed = false;
thread_local volatile int t_pauses = 0;
std::atomic<long> g_live{0};

/// False when the allocation has to fail.
bool admit() noexcept {
  if (t_pauses > 0) {
    return true;
  }
  t_allocations = t_allocations + 1;
  if (t_untilFailure == 0) {
    return true;
  }
  t_untilFailure = t_untilFailure - 1;
  if (t_untilFailure > 0) {
    return true;
  }
  t_hasFailed = true;
  return false;
}

void* allocate(std::size_t size) noexcept {
  void* const block = admit() ? std::malloc(size == 0 ? 1 : size) : nullptr;
  if (block != nullptr) {
    g_live.fetch_add(1, std::memory_order_relaxed);
  }
  return block;
}

void release(void* block) noexcept {
  if (block != nullptr) {
    g_live.fetch_sub(1, std::memory_order_relaxed);
  }
  std::free(block);
}

void* allocateOrThrow(std::size_t size) {
  void* const block = allocate(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

}  // namespace

AllocationCount::AllocationCount() : m_start(t_allocations) {}

int AllocationCount::get() const {
  return t_allocations - m_start;
}

long liveAllocations() noexcept {
  return g_live.load(std::memory_order_relaxed);
}

AllocationFailure::AllocationFailure(int nth) {
  t_hasFailed = false;
  t_untilFailure = nth;
}

AllocationFailure::~AllocationFailure() {
  t_untilFailure = 0;
}

bool AllocationFailure::happened() const {
  return t_hasFailed;
}

AllocationPause::AllocationPause() {
  t_pauses = t_pauses + 1;
}

AllocationPause::~AllocationPause() {
  t_pauses = t_pauses - 1;
}

AllocationResume::AllocationResume() : m_pauses(t_pauses) {
  t_pauses = 0;
}

AllocationResume::~AllocationResume() {
  t_pauses = m_pauses;
}

}  // namespace motion::test

void* operator new(std::size_t size) {
  return motion::test::allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return motion::test::allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return motion::test::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return motion::test::allocate(size);
}
void operator delete(void* block) noexcept {
  motion::test::release(block);
}
void operator delete[](void* block) noexcept {
  motion::test::release(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  motion::test::release(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
  motion::test::release(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
  motion::test::release(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
  motion::test::release(block);
}
