// Messages for digests and checksums: random ones, and ones behind whose last byte no memory is to be read.
#ifndef VQ3900_TESTS_SUPPORT_BYTE_STRINGS_H
#define VQ3900_TESTS_SUPPORT_BYTE_STRINGS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <vector>

#include "support/numbers.h"

#if defined(__unix__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace vq3900::test {

using ByteVector = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

inline ByteVector random_bytes(std::size_t count, std::uint32_t seed) {
  Random random(seed);
  ByteVector bytes(count);
  std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<std::uint8_t>(random.word() >> 24); });
  return bytes;
}

inline ByteVector bytes_of_text(std::string_view text) {
  return {text.begin(), text.end()};
}

// A copy of the bytes whose end is the end of readable memory.
class GuardedBytes {
 public:
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  ByteSpan bytes() const { return {data_, size_}; }

#if defined(__unix__)
  explicit GuardedBytes(ByteSpan bytes) : size_(bytes.size()) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t readable = (bytes.size() / page + 1) * page;
    mapped_ = readable + page;
    start_ = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start_ == MAP_FAILED) throw std::bad_alloc();
    auto* const guard = static_cast<std::uint8_t*>(start_) + readable;
    EXPECT_EQ(mprotect(guard, page, PROT_NONE), 0);
    data_ = guard - size_;
    std::copy(bytes.begin(), bytes.end(), data_);
  }
  ~GuardedBytes() {
    munmap(start_, mapped_);
  }

 private:
  void* start_ = nullptr;
  std::size_t mapped_ = 0;
#else
  // A block of the heap of just that size: what checks memory accesses sees a read behind it.
  explicit GuardedBytes(ByteSpan bytes) : size_(bytes.size()), heap_(new std::uint8_t[bytes.size()]) {
    data_ = heap_.get();
    std::copy(bytes.begin(), bytes.end(), data_);
  }

 private:
#endif
  std::size_t size_ = 0;
  std::uint8_t* data_ = nullptr;
#if !defined(__unix__)
  std::unique_ptr<std::uint8_t[]> heap_;
#endif
};

}  // namespace vq3900::test

#endif
