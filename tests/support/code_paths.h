// Tests over every implementation of an inner loop. What the machine lacks is skipped.
#ifndef VQ3900_TESTS_SUPPORT_CODE_PATHS_H
#define VQ3900_TESTS_SUPPORT_CODE_PATHS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "platform/cpu.h"

#if defined(__unix__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace vq3900 {

template <typename Function>
void PrintTo(const CodePath<Function>& path, std::ostream* stream) {
  *stream << path.name;
}

}  // namespace vq3900

namespace vq3900::test {

template <typename Function>
class CodePathTest : public testing::TestWithParam<CodePath<Function>> {
 protected:
  void SetUp() override {
    if (!this->GetParam().supported()) GTEST_SKIP() << "this machine has no " << this->GetParam().name;
  }

  static Function* path() { return testing::TestWithParam<CodePath<Function>>::GetParam().run; }
};

inline constexpr auto kPathName = [](const auto& test) { return std::string(test.param.name); };

// The portable path stands last and runs everywhere; the others have names of their own.
template <typename Function>
void expect_portable_last(std::span<const CodePath<Function>> paths) {
  ASSERT_FALSE(paths.empty());
  EXPECT_STREQ(paths.back().name, "portable");
  EXPECT_TRUE(paths.back().supported());
  for (std::size_t i = 0; i + 1 < paths.size(); ++i) {
    EXPECT_STRNE(paths[i].name, "portable");
    EXPECT_NE(paths[i].run, paths.back().run) << paths[i].name;
  }
}

// Elements between memory that cannot be touched: at the very end of what can be, or at its very start.
template <typename Element>
class FencedArray {
 public:
  enum class Side { kStart, kEnd };

  FencedArray(const FencedArray&) = delete;
  FencedArray& operator=(const FencedArray&) = delete;

  std::span<Element> span() { return {elements_, count_}; }
  Element* data() { return elements_; }

#if defined(__unix__)
  FencedArray(std::size_t count, Side side) : count_(count) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t bytes = count * sizeof(Element);
    const std::size_t open = (bytes / page + 1) * page;
    mapped_ = open + 2 * page;
    void* const start = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) throw std::bad_alloc();
    start_ = static_cast<std::byte*>(start);
    EXPECT_EQ(mprotect(start_, page, PROT_NONE), 0);
    EXPECT_EQ(mprotect(start_ + page + open, page, PROT_NONE), 0);
    void* const first = start_ + page + (side == Side::kEnd ? open - bytes : 0);
    elements_ = static_cast<Element*>(first);
  }
  ~FencedArray() {
    munmap(start_, mapped_);
  }

 private:
  std::byte* start_ = nullptr;
  std::size_t mapped_ = 0;
#else
  FencedArray(std::size_t count, Side) : heap_(count), count_(count) {
    elements_ = heap_.data();
  }

 private:
  std::vector<Element> heap_;
#endif
  std::size_t count_;
  Element* elements_ = nullptr;
};

}  // namespace vq3900::test

#endif
