#include "platform/file.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

#include "support/capture.h"

namespace vq3900::test {
namespace {

// A file in the test's temporary folder, gone with the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& bytes) {
    std::FILE* const file = std::fopen(path(), "wb");
    EXPECT_NE(file, nullptr) << path();
    if (file == nullptr) return;
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
    EXPECT_EQ(std::fclose(file), 0);
  }
  ~TemporaryFile() { std::remove(path()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const char* path() const { return path_.c_str(); }

 private:
  // Cases may run side by side: each has a file of its own.
  std::string path_ =
      testing::TempDir() + "vq3900_file_test_" + testing::UnitTest::GetInstance()->current_test_info()->name();
};

// Bytes that repeat at no power of two.
std::string bytes(std::size_t count) {
  std::string text(count, '\0');
  for (std::size_t i = 0; i < count; ++i)
    text[i] = static_cast<char>(i % 251);
  return text;
}

TEST(ReadFile, GivesTheBytes) {
  const TemporaryFile file("[mode]\nversion = 1.2.3.4\n");
  EXPECT_EQ(read_file(file.path()), "[mode]\nversion = 1.2.3.4\n");
}

TEST(ReadFile, EmptyFileIsAnEmptyTextAndNoFailure) {
  const TemporaryFile file("");
  EXPECT_EQ(read_file(file.path()), std::optional<std::string>(""));
}

TEST(ReadFile, FilesOfEverySizeAroundTheBufferComeWhole) {
  for (const std::size_t size : {1U, 16383U, 16384U, 16385U, 32767U, 32768U, 32769U, 40000U, 65536U}) {
    const TemporaryFile file(bytes(size));
    const std::optional<std::string> text = read_file(file.path());
    ASSERT_TRUE(text.has_value()) << size;
    EXPECT_EQ(text->size(), size);
    EXPECT_TRUE(*text == bytes(size)) << size;
  }
}

TEST(ReadFile, BytesAreNotTranslated) {
  const std::string text("a\0b\r\n\n\r\x1A\xFF\xEF\xBB\xBF z\0", 14);
  const TemporaryFile file(text);
  EXPECT_EQ(read_file(file.path()), text);
}

TEST(ReadFile, SecondReadGivesTheSame) {
  const TemporaryFile file(bytes(20000));
  const std::optional<std::string> first = read_file(file.path());
  EXPECT_EQ(read_file(file.path()), first);
  EXPECT_TRUE(first.has_value());
}

TEST(ReadFile, LimitLetsOneByteMoreThroughAndNoFurther) {
  const TemporaryFile file(bytes(40000));
  for (const std::size_t most : {0U, 1U, 16383U, 16384U, 16385U, 39998U}) {
    EXPECT_TRUE(read_file(file.path(), most) == bytes(most + 1)) << most;
  }
  for (const std::size_t most : {39999U, 40000U, 40001U, 65536U}) {
    EXPECT_TRUE(read_file(file.path(), most) == bytes(40000)) << most;
  }
}

TEST(ReadFile, WhatCannotBeOpenedGivesNothingAndPrintsNothing) {
  const std::string missing = testing::TempDir() + "vq3900_no_such_folder/no_such_file";
  const std::string folder = testing::TempDir();
  for (const char* const path : {missing.c_str(), folder.c_str(), ".", "", static_cast<const char*>(nullptr)}) {
    const Printed printed = printed_by([&] { EXPECT_EQ(read_file(path), std::nullopt); });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
  }
}

TEST(IsReadable, IsAFileThatOpens) {
  const TemporaryFile file("");
  EXPECT_TRUE(is_readable(file.path()));
  const std::string missing = testing::TempDir() + "vq3900_no_such_file";
  const std::string folder = testing::TempDir();
  for (const char* const path : {missing.c_str(), folder.c_str(), "", static_cast<const char*>(nullptr)})
    EXPECT_FALSE(is_readable(path));
}

// Neither a long path nor a line break alone makes a text of it.
TEST(IsReadable, TextsAreNoNamesAndLongPathsAre) {
  const TemporaryFile file("");
  const std::string name = std::string(file.path()).substr(testing::TempDir().size());
  std::string path = testing::TempDir();
  while (path.size() < 300)
    path += "./";
  const bool takes_long_paths = read_file((path + name).c_str()).has_value();
  EXPECT_EQ(is_readable((path + name).c_str()), takes_long_paths);
#ifndef _WIN32
  EXPECT_TRUE(takes_long_paths);
  const std::string odd_name = path + name + "\n";
  ASSERT_EQ(std::rename(file.path(), odd_name.c_str()), 0);
  EXPECT_TRUE(is_readable(odd_name.c_str()));
  ASSERT_EQ(std::rename(odd_name.c_str(), file.path()), 0);
#endif
  EXPECT_FALSE(is_readable((std::string(300, 'x') + "\n").c_str()));
  EXPECT_FALSE(is_readable(("[a]\n" + std::string(251, 'x')).c_str()));
  EXPECT_FALSE(is_readable(("[a]\n" + std::string(252, 'x')).c_str()));
}

// The bytes as the stream takes them.
std::span<const std::uint8_t> as_bytes(const std::string& text) {
  return {static_cast<const std::uint8_t*>(static_cast<const void*>(text.data())), text.size()};
}

TEST(OutputFile, EmptiesTheFileAndWritesOnePieceBehindTheOther) {
  const TemporaryFile file("what was there before is longer");
  {
    OutputFile output(file.path());
    ASSERT_TRUE(output.is_open());
    EXPECT_TRUE(output.write(as_bytes("one\n")));
    EXPECT_TRUE(output.write(as_bytes(bytes(20000))));
  }
  EXPECT_TRUE(read_file(file.path()) == "one\n" + bytes(20000));
}

TEST(OutputFile, OpenedAndLeftAloneIsEmpty) {
  const TemporaryFile file("something");
  EXPECT_TRUE(OutputFile(file.path()).is_open());
  EXPECT_EQ(read_file(file.path()), "");
}

TEST(OutputFile, WhatCannotBeCreatedIsNotOpen) {
  const std::string missing = testing::TempDir() + "vq3900_no_such_folder/file";
  const std::string folder = testing::TempDir();
  for (const char* const path : {missing.c_str(), folder.c_str(), "", static_cast<const char*>(nullptr)}) {
    const Printed printed = printed_by([&] { EXPECT_FALSE(OutputFile(path).is_open()); });
    EXPECT_EQ(printed.out + printed.err, "");
  }
}

}  // namespace
}  // namespace vq3900::test
