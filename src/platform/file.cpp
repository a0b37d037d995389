#include "platform/file.h"

#include <algorithm>
#include <cstring>

namespace vq3900 {

namespace {

// A name of more than 255 characters with a line break among them is more than the file systems of hosts take, and the
// beginning of a text. Asking for it would cost more than to load that.
bool may_name_file(const char* path) {
  constexpr std::size_t kTooLong = 256;
  if (std::memchr(path, '\0', kTooLong) != nullptr) return true;
  const auto has = [path](char character) { return std::memchr(path, character, kTooLong) != nullptr; };
  return !has('\n') || has('/') || has('\\');
}

}  // namespace

std::optional<std::string> read_file(const char* path, std::size_t most) {
  if (path == nullptr) return std::nullopt;
  const FileHandle file{std::fopen(path, "rb")};
  if (!file) return std::nullopt;
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // the text is the buffer

  constexpr std::size_t kFirstRead = std::size_t{16} * 1024;
  std::string text(std::min(kFirstRead, most + 1), '\0');
  std::size_t size = 0;
  for (;;) {
    const std::size_t room = text.size() - size;
    const std::size_t got = std::fread(text.data() + size, 1, room, file.get());
    size += got;
    if (got < room || size > most) break;
    text.resize(std::min(2 * text.size(), most + 1));
  }
  // Some systems open a directory as a file and fail at the first read.
  if (std::ferror(file.get()) != 0) return std::nullopt;
  text.resize(size);
  return text;
}

bool is_readable(const char* path) {
  return path != nullptr && may_name_file(path) && read_file(path, 0).has_value();
}

OutputFile::OutputFile(const char* path) : file_(path == nullptr ? nullptr : std::fopen(path, "wb")) {}

bool OutputFile::write(std::span<const std::uint8_t> bytes) {
  return std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
}

bool OutputFile::close() {
  return std::fclose(file_.release()) == 0;
}

}  // namespace vq3900
