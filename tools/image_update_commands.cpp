// Changing baselines and focal lengths of a calibration image that is there, and showing what changed.
#include "vq3900_depth_engine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "commands.h"
#include "flash/image_update.h"
#include "image_fields.h"
#include "library_output.h"
#include "modules/fixed_point.h"
#include "platform/file.h"
#include "staged_file.h"
#include "stdout_capture.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

using FileBytes = std::vector<std::uint8_t>;

std::optional<FileBytes> read_image_file(const std::string& path) {
  const std::optional<std::string> text = read_file(path.c_str(), kCalibImageWithAlignmentSize);
  if (!text) return std::nullopt;
  return FileBytes(text->begin(), text->end());
}

// The D2D records of a whole image, or of the section alone. None when they are not to be found.
std::vector<D2dRecord> d2d_records(FileBytes file) {
  const bool alone = file.size() == kCalibD2dSection.room;
  const std::size_t offset = alone ? 0 : kCalibD2dSection.offset;
  if (file.size() < offset + kCalibD2dSection.room) return {};
  const auto section = SectionRecords::find(std::span{file}.subspan(offset, kCalibD2dSection.room), kLeastD2dRecord);
  std::vector<D2dRecord> records;
  for (std::size_t i = 0; section && i < section->count(); ++i)
    records.push_back(read_d2d_record((*section)[i]));
  return records;
}

// The focal lengths of the D2C records of a whole image.
std::vector<float> d2c_focal_lengths(FileBytes file) {
  if (file.size() < kCalibD2cSection.offset + kCalibD2cSection.room) return {};
  const auto section =
      SectionRecords::find(std::span{file}.subspan(kCalibD2cSection.offset, kCalibD2cSection.room), kLeastD2cRecord);
  std::vector<float> lengths;
  for (std::size_t i = 0; section && i < section->count(); ++i)
    lengths.push_back(d2c_focal_length((*section)[i]));
  return lengths;
}

// "110.08" when nothing changes, else "110.08 -> 111".
std::string change_text(const std::string& before, const std::string& after) {
  return before == after ? before : fmt::format("{} -> {}", before, after);
}

std::string number_text(float number) {
  return fmt::format("{:.9g}", number);
}

std::string pbf_text(const D2dRecord& record) {
  return fmt::format("0x{:08X}", record.d2d_params[1].value);
}

void print_changes(const FileBytes& before, const FileBytes& after) {
  const std::vector<D2dRecord> was = d2d_records(before);
  const std::vector<D2dRecord> is = d2d_records(after);
  fmt::print("{:<8}{:<32}{:<32}{}\n", "D2D", "f", "baseline", "register 0x50001208");
  for (std::size_t i = 0; i < std::min(was.size(), is.size()); ++i) {
    fmt::print("{:<8}{:<32}{:<32}{}\n",
               i,
               change_text(number_text(was[i].depth.focal_length), number_text(is[i].depth.focal_length)),
               change_text(number_text(was[i].depth.baseline), number_text(is[i].depth.baseline)),
               change_text(pbf_text(was[i]), pbf_text(is[i])));
  }
  const std::vector<float> d2c_was = d2c_focal_lengths(before);
  const std::vector<float> d2c_is = d2c_focal_lengths(after);
  if (d2c_is.empty()) return;
  fmt::print("{:<8}{}\n", "D2C", "f");
  for (std::size_t i = 0; i < std::min(d2c_was.size(), d2c_is.size()); ++i)
    fmt::print("{:<8}{}\n", i, change_text(number_text(d2c_was[i]), number_text(d2c_is[i])));
}

// An update reads one file and writes another one.
using Update = std::function<std::int32_t(const char* source, const char* destination)>;

// What an update writes.
enum class Written : std::uint8_t { kWholeImage, kD2dSection };

int update_image(const std::string& image, const std::string& output, Written written, const Update& update) {
  if (is_input(output, {&image, 1})) return kBadUsage;
  StagedFile file(output);
  StdoutCapture capture;
  const std::int32_t code = update(image.c_str(), file.path().c_str());
  const std::string said = capture.text();
  if (code != VQ3900_OK) {
    pass_on(said, file.path(), output);
    fmt::print(stderr, "vq3900-tool: {}: not changed, code {}\n", image, code);
    return kFailed;
  }
  const FileBytes before = read_image_file(image).value_or(FileBytes{});
  const FileBytes after = read_image_file(file.path()).value_or(FileBytes{});
  const bool alone = written == Written::kD2dSection;
  const std::size_t expected = alone ? kCalibD2dSection.room : before.size();
  if (!file.has_size(expected) || !file.commit()) return kFailed;
  print_changes(before, after);
  fmt::print("{}: {} bytes written{}\n", output, expected, alone ? ", the D2D section alone" : "");
  return kDone;
}

// Whether an image has the record that is to be changed; an image that cannot be read is the library's to refuse.
bool has_record(const SetBaselineInput& input) {
  if (input.index < 0) return true;
  const std::optional<FileBytes> bytes = read_image_file(input.image);
  const std::size_t count = bytes ? d2d_records(*bytes).size() : 0;
  if (count == 0 || static_cast<std::size_t>(input.index) < count) return true;
  fmt::print(stderr, "vq3900-tool: {}: has no D2D record {}; there are {}\n", input.image, input.index, count);
  return false;
}

}  // namespace

int image_set_baseline_command(const SetBaselineInput& input, const std::string& output) {
  if (!has_record(input)) return kFailed;
  return update_image(input.image, output, Written::kD2dSection, [&](const char* source, const char* destination) {
    return update_baseline_de(source, input.baseline, destination, input.index);
  });
}

int image_set_pairs_command(const SetPairsInput& input, const std::string& output) {
  const auto* const pairs = input.pairs.front().data();
  const auto count = static_cast<int>(input.pairs.size());
  const Written written = input.keep_focal_lengths ? Written::kD2dSection : Written::kWholeImage;
  return update_image(input.image, output, written, [&](const char* source, const char* destination) {
    return input.keep_focal_lengths ? update_multi_baseline_de(source, pairs, count, destination)
                                    : update_multi_fb_d2c_de(source, pairs, count, destination);
  });
}

}  // namespace vq3900::tool
