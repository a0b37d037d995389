#include "staged_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/file.h"

namespace vq3900::tool {

namespace {

namespace fs = std::filesystem;

// Where the file goes. A link is followed: what it points to is replaced, not the link.
fs::path place_of(const fs::path& target) {
  std::error_code fault;
  if (!fs::is_symlink(target, fault)) return target;
  const fs::path place = fs::weakly_canonical(target, fault);
  return fault ? target : place;
}

// A name beside the file that nothing has.
std::string free_name(const fs::path& target) {
  std::error_code fault;
  const std::string base = place_of(target).string();
  std::string name = base + ".part";
  for (int i = 2; fs::exists(fs::symlink_status(name, fault)); ++i)
    name = fmt::format("{}.part{}", base, i);
  return name;
}

bool is_special(const fs::path& path) {
  std::error_code fault;
  const fs::file_status status = fs::status(path, fault);
  return fs::exists(status) && !fs::is_regular_file(status);
}

}  // namespace

StagedFile::StagedFile(std::string target)
    : target_(std::move(target)), path_(is_special(target_) ? target_ : free_name(target_)) {}

StagedFile::~StagedFile() {
  if (placed_ || path_ == target_) return;
  std::error_code fault;
  fs::remove(path_, fault);
}

bool StagedFile::write(std::span<const std::uint8_t> bytes) const {
  OutputFile file(path_.c_str());
  if (!file.is_open()) {
    fmt::print(stderr, "vq3900-tool: {}: cannot be written\n", target_);
    return false;
  }
  const bool written = file.write(bytes);
  const bool closed = file.close();
  return has_size(bytes.size()) && written && closed;
}

bool StagedFile::has_size(std::size_t expected) const {
  std::error_code fault;
  std::uintmax_t size = fs::file_size(path_, fault);
  if (fault) size = 0;
  if (size == expected) return true;
  fmt::print(stderr,
             "vq3900-tool: {}: {} of {} bytes are on the disk; {}\n",
             target_,
             size,
             expected,
             size == 0 ? "the image could not be built, or the disk may be full" : "the disk may be full");
  return false;
}

bool StagedFile::commit() {
  if (path_ == target_) return true;
  std::error_code fault;
  const fs::perms old = fs::status(target_, fault).permissions();
  if (!fault && old != fs::perms::unknown) fs::permissions(path_, old, fault);
  fs::rename(path_, place_of(target_), fault);
  placed_ = !fault;
  if (fault) fmt::print(stderr, "vq3900-tool: {}: cannot be replaced\n", target_);
  return placed_;
}

bool is_input(const std::string& output, std::span<const std::string> inputs) {
  const auto same = [&](const std::string& input) {
    std::error_code fault;
    return fs::equivalent(output, input, fault) && !fault;
  };
  const auto found = std::find_if(inputs.begin(), inputs.end(), same);
  if (found == inputs.end()) return false;
  fmt::print(stderr, "vq3900-tool: {}: is one of the inputs; name another output\n", output);
  return true;
}

}  // namespace vq3900::tool
