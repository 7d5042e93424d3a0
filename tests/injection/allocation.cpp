#include "tests/injection/allocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> countdown{0};  // at 1 the next allocation fails, at 0 none does

std::atomic<bool> isCounted{false};

bool mustFail() {
  if (!isCounted || countdown.load() <= 0) return false;
  return countdown.fetch_sub(1) == 1;
}

}  // namespace

namespace test {

void failAllocation(long n) { countdown = n; }

tCountedAllocations::tCountedAllocations() { isCounted = true; }

tCountedAllocations::~tCountedAllocations() { isCounted = false; }

bool allocationFailed() { return countdown.exchange(0) <= 0; }

}  // namespace test

extern "C" void* __real_malloc(std::size_t size);

extern "C" void* __wrap_malloc(std::size_t size) {
  return mustFail() ? nullptr : __real_malloc(size);
}

void* operator new(std::size_t size) {
  void* const memory = mustFail() ? nullptr : __real_malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return mustFail() ? nullptr : __real_malloc(size ? size : 1);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
