// What a call answered and printed. Both streams are caught at their file descriptors, since the library prints
// through C stdio.
#ifndef VQ3900_TESTS_SUPPORT_CAPTURE_H
#define VQ3900_TESTS_SUPPORT_CAPTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>

namespace vq3900::test {

struct Printed {
  std::string out;
  std::string err;
};

// A call's result code with everything it printed; compares whole.
struct Outcome {
  long long code = 0;
  std::string out;
  std::string err;
  bool operator==(const Outcome&) const = default;
};

inline void PrintTo(const Outcome& outcome, std::ostream* stream) {
  *stream << "code " << outcome.code << ", standard output " << testing::PrintToString(outcome.out)
          << ", standard error " << testing::PrintToString(outcome.err);
}

// Runs the call and answers what it printed. On Windows the text streams turn "\n" into "\r\n": undone here.
template <typename Call>
Printed printed_by(Call&& call) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call();
  Printed printed;
  printed.err = testing::internal::GetCapturedStderr();
  printed.out = testing::internal::GetCapturedStdout();
#ifdef _WIN32
  std::erase(printed.out, '\r');
  std::erase(printed.err, '\r');
#endif
  return printed;
}

// Runs a call that answers a number.
template <typename Call>
Outcome outcome_of(Call&& call) {
  Outcome outcome;
  Printed printed = printed_by([&] { outcome.code = static_cast<long long>(call()); });
  outcome.out = std::move(printed.out);
  outcome.err = std::move(printed.err);
  return outcome;
}

// A call that succeeds and prints nothing.
inline Outcome silent_success() {
  return {};
}

inline Outcome silent(long long code) {
  return {code, "", ""};
}

inline Outcome prints_out(long long code, std::string text) {
  return {code, std::move(text), ""};
}

inline Outcome prints_err(long long code, std::string text) {
  return {code, "", std::move(text)};
}

}  // namespace vq3900::test

#endif
