#include "platform/file.h"

#include <cstddef>
#include <cstdio>
#include <memory>

namespace vq3900 {

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace

std::optional<std::string> read_file(const char* path) {
  if (path == nullptr) return std::nullopt;
  const File file{std::fopen(path, "rb")};
  if (!file) return std::nullopt;
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // the text is the buffer

  std::string text(std::size_t{16} * 1024, '\0');
  std::size_t size = 0;
  for (;;) {
    const std::size_t room = text.size() - size;
    const std::size_t got = std::fread(text.data() + size, 1, room, file.get());
    size += got;
    if (got < room) break;
    text.resize(2 * text.size());
  }
  // Some systems open a directory as a file and fail at the first read.
  if (std::ferror(file.get()) != 0) return std::nullopt;
  text.resize(size);
  return text;
}

}  // namespace vq3900
