/* Checks of the C host: each failure prints file, line, expression and both values, and is counted. */
#ifndef VQ3900_TESTS_CAPI_CHECKS_H
#define VQ3900_TESTS_CAPI_CHECKS_H

#include <stdint.h>
#include <stdio.h>

extern int failures;

#define EXPECT(condition)                                                                  \
  do {                                                                                     \
    if (!(condition)) {                                                                    \
      fprintf(stderr, "%s:%d: expected to be true: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                                          \
    }                                                                                      \
  } while (0)

#define EXPECT_EQ(actual, expected) expect_equal((int64_t)(actual), (int64_t)(expected), #actual, __FILE__, __LINE__)

static inline void expect_equal(int64_t actual, int64_t expected, const char* expression, const char* file, int line) {
  if (actual == expected) return;
  fprintf(stderr,
          "%s:%d: %s is %lld (0x%llX), expected %lld (0x%llX)\n",
          file,
          line,
          expression,
          (long long)actual,
          (unsigned long long)actual,
          (long long)expected,
          (unsigned long long)expected);
  ++failures;
}

/* Every register block to a small device and back. */
void register_blocks_go_to_the_device_and_back(void);

#endif
