// Replaces the allocator of the whole test program: counts what a thread allocates, and makes one allocation fail.
#include "support/fake_allocation.h"

#include <cstdlib>
#include <new>

namespace motion::test {
namespace {

// Volatile: the compiler takes it for granted that an allocator looks at no variable of ours.
thread_local volatile int t_allocations = 0;
thread_local volatile int t_untilFailure = 0;  // 0 = none is to fail
thread_local volatile bool t_hasFailed = false;
thread_local volatile int t_pauses = 0;

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
  return admit() ? std::malloc(size == 0 ? 1 : size) : nullptr;
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
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
  std::free(block);
}
