// Replaces the program's operator new by one that fails when it is told to. For one source of a program.
#ifndef VQ3900_TESTS_SUPPORT_FAILING_NEW_H
#define VQ3900_TESTS_SUPPORT_FAILING_NEW_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace vq3900::test {

inline long allocations_until_failure = -1;  // negative: none fails
inline bool allocation_failed = false;

inline void* allocate_or_null(std::size_t size) noexcept {
  if (allocations_until_failure == 0) {
    allocation_failed = true;
    return nullptr;
  }
  if (allocations_until_failure > 0) --allocations_until_failure;
  return std::malloc(size == 0 ? 1 : size);
}

inline void* allocate_or_throw(std::size_t size) {
  void* const memory = allocate_or_null(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

// Lets that many allocations of its scope succeed, and none after them.
class FailingNew {
 public:
  explicit FailingNew(long successes) {
    allocation_failed = false;
    allocations_until_failure = successes;
  }
  ~FailingNew() { allocations_until_failure = -1; }
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
};

}  // namespace vq3900::test

// Not inlined: a compiler that sees one of a pair but not the other takes them for mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
  return vq3900::test::allocate_or_throw(size);
}

[[gnu::noinline]] void* operator new[](std::size_t size) {
  return vq3900::test::allocate_or_throw(size);
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return vq3900::test::allocate_or_null(size);
}

[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return vq3900::test::allocate_or_null(size);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}

#endif
