// The sample configurations as texts, and the same with one line changed.
#ifndef VQ3900_TESTS_SUPPORT_SAMPLE_TEXTS_H
#define VQ3900_TESTS_SUPPORT_SAMPLE_TEXTS_H

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/file.h"

namespace vq3900::test {

inline std::string sample(const std::string& name) {
  const std::optional<std::string> text = read_file((std::string(VQ3900_EXAMPLES) + "/" + name).c_str());
  EXPECT_TRUE(text) << name;
  return text.value_or("");
}

inline std::string stereo() {
  return sample("stereo_1280x800.ini");
}

// The text with the line of one key replaced; a key that is not there fails the test.
inline std::string with(const std::string& text, const std::string& key, const std::string& line) {
  const std::size_t at = text.find("\n" + key + " = ");
  EXPECT_NE(at, std::string::npos) << key;
  const std::size_t end = text.find('\n', at + 1);
  return text.substr(0, at + 1) + line + text.substr(end);
}

}  // namespace vq3900::test

#endif
