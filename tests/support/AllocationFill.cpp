#include "support/AllocationFill.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

thread_local int t_fill = -1;

void* Allocate(std::size_t size) {
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  if (t_fill >= 0) {
    std::memset(memory, t_fill, size);
  }
  return memory;
}

}  // namespace

namespace testing_support {

void SetAllocationFill(int byte) { t_fill = byte; }

ScopedAllocationFill::ScopedAllocationFill(int byte) : previous_(t_fill) { t_fill = byte; }
ScopedAllocationFill::~ScopedAllocationFill() { t_fill = previous_; }

}  // namespace testing_support

// The replaceable allocation functions of the test executable. Over-aligned forms are left to the
// library.
void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
  try {
    return Allocate(size);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
  try {
    return Allocate(size);
  } catch (...) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
