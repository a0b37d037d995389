// Changes to calibration images that are there: baseline and focal length. Everything is computed before the
// destination is touched.
#include <algorithm>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/c_locale.h"
#include "flash/image_update.h"
#include "modules/basic.h"
#include "modules/fixed_point.h"
#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "platform/file.h"

namespace {

using vq3900::D2dRecord;
using vq3900::fixed_text;
using vq3900::FocalBaseline;
using vq3900::print_out;
using vq3900::put_out;
using vq3900::SectionRecords;

using Bytes = std::vector<uint8_t>;

constexpr int32_t kCannotOpen = -1;
constexpr std::size_t kPbfElement = 1;  // of the D2D register table

int32_t refuse(const char* text) {
  put_out(text);
  return VQ3900_ERROR_ARGUMENT;
}

int32_t cannot_open(const char* path) {
  print_out("Open file error: %s\n", vq3900::printable(path));
  return kCannotOpen;
}

bool is_image_size(std::size_t size) {
  return size == vq3900::kCalibImageSize || size == vq3900::kCalibImageWithAlignmentSize;
}

// Reads a whole file: 0, or -1, which is said.
int32_t read_source(const char* path, Bytes& bytes) {
  const std::optional<std::string> text = vq3900::read_file(path, vq3900::kCalibImageWithAlignmentSize);
  if (!text) return cannot_open(path);
  bytes.assign(text->begin(), text->end());
  return VQ3900_OK;
}

int32_t write_destination(const char* path, std::span<const uint8_t> bytes) {
  vq3900::OutputFile file{path};
  if (!file.is_open() || !file.write(bytes) || !file.close()) return cannot_open(path);
  return VQ3900_OK;
}

// Brings the register value that depends on baseline and focal length up to date: 0, or the overflow.
int32_t encode_pbf(D2dRecord& record) {
  const float pbf = vq3900::pixel_baseline_factor(record.depth.baseline, record.depth.focal_length);
  const uint32_t field = de_float_to_fixed(vq3900::widen(pbf), 32, 40, "PBF");
  if (field == vq3900::kOverflowed) {
    print_out("Convert to fixed point error\n");
    return VQ3900_FIXED_POINT_OVERFLOW;
  }
  DeRegElement_S& element = record.d2d_params[kPbfElement];
  element.value = de_set_reg_field(field, element.value, element.mask);
  return VQ3900_OK;
}

void print_original(const D2dRecord& record) {
  print_out("Original baseline: %s , f= %s\n",
            fixed_text(record.depth.baseline).c_str(),
            fixed_text(record.depth.focal_length).c_str());
}

void print_updated(const D2dRecord& record) {
  print_out("updated baseline: %s , f= %s\n",
            fixed_text(record.depth.baseline).c_str(),
            fixed_text(record.depth.focal_length).c_str());
}

// Changes the D2D section of a file and writes that section alone.
template <typename Change>
int32_t update_d2d_file(const char* source, const char* destination, const Change& change) {
  Bytes bytes;
  if (const int32_t code = read_source(source, bytes); code != VQ3900_OK) return code;
  if (is_image_size(bytes.size())) {
    bytes.erase(bytes.begin(), bytes.begin() + vq3900::kCalibD2dSection.offset);
    bytes.resize(vq3900::kCalibD2dSection.room);
  }
  if (bytes.size() != vq3900::kCalibD2dSection.room) return refuse("Unknown file size.");
  const auto records = SectionRecords::find(bytes, vq3900::kLeastD2dRecord);
  if (!records) return refuse("invalid section header\n");
  records->clear_rest();
  if (const int32_t code = change(*records); code != VQ3900_OK) return code;
  records->restamp(static_cast<uint32_t>(vq3900::calendar_time()));
  return write_destination(destination, bytes);
}

int32_t set_baseline(const SectionRecords& records, float baseline, int index) {
  for (std::size_t i = 0; i < records.count(); ++i) {
    if (index >= 0 && static_cast<std::size_t>(index) != i) continue;
    D2dRecord record = vq3900::read_d2d_record(records[i]);
    print_out("Original baseline: %s\n", fixed_text(record.depth.baseline).c_str());
    record.depth.baseline = baseline;
    if (const int32_t code = encode_pbf(record); code != VQ3900_OK) return code;
    vq3900::write_d2d_record(record, records[i]);
  }
  return VQ3900_OK;
}

// Every record takes the baseline of its pair.
int32_t set_baselines(const SectionRecords& records, std::span<const FocalBaseline> pairs) {
  if (pairs.empty()) return refuse("input fb_set error\n");
  for (std::size_t i = 0; i < records.count(); ++i) {
    D2dRecord record = vq3900::read_d2d_record(records[i]);
    print_original(record);
    const FocalBaseline* const pair = vq3900::find_pair(pairs, record.depth.focal_length);
    if (pair == nullptr) return refuse("input fb_set error\n");
    record.depth.baseline = pair->baseline;
    print_updated(record);
    if (const int32_t code = encode_pbf(record); code != VQ3900_OK) return code;
    vq3900::write_d2d_record(record, records[i]);
  }
  return VQ3900_OK;
}

// The pair's focal length goes into the first D2C record that is near it.
int32_t set_d2c_focal_length(const SectionRecords& records, const FocalBaseline& pair) {
  for (std::size_t i = 0; i < records.count(); ++i) {
    const float f = vq3900::d2c_focal_length(records[i]);
    print_out("fx =  %s \n", fixed_text(f).c_str());
    if (!vq3900::matches(f, pair.f, vq3900::kRecordTolerance)) continue;
    vq3900::set_d2c_focal_length(pair.f, records[i]);
    print_out("updated  f= %s\n", fixed_text(pair.f).c_str());
    return VQ3900_OK;
  }
  return refuse("input fb_set error\n");
}

// Both of the pair go into the first D2D record that is near it.
int32_t set_d2d_pair(const SectionRecords& records, const FocalBaseline& pair) {
  for (std::size_t i = 0; i < records.count(); ++i) {
    D2dRecord record = vq3900::read_d2d_record(records[i]);
    print_original(record);
    if (!vq3900::matches(record.depth.focal_length, pair.f, vq3900::kRecordTolerance)) continue;
    record.depth.baseline = pair.baseline;
    record.depth.focal_length = pair.f;
    print_updated(record);
    if (const int32_t code = encode_pbf(record); code != VQ3900_OK) return code;
    vq3900::write_d2d_record(record, records[i]);
    return VQ3900_OK;
  }
  return refuse("input fb_set error\n");
}

template <typename Set>
int32_t for_each_pair(std::span<const FocalBaseline> pairs, const SectionRecords& records, const Set& set) {
  for (const FocalBaseline& pair : pairs) {
    if (const int32_t code = set(records, pair); code != VQ3900_OK) return code;
  }
  return VQ3900_OK;
}

int32_t update_pairs(const char* source, std::span<const FocalBaseline> pairs, const char* destination) {
  Bytes image;
  if (const int32_t code = read_source(source, image); code != VQ3900_OK) return code;
  if (!is_image_size(image.size())) return refuse("Unknown file size.");
  const auto section = [&](const vq3900::CalibSection& kind, uint32_t least_record_size) {
    return SectionRecords::find(std::span{image}.subspan(kind.offset, kind.room), least_record_size);
  };
  const auto d2c = section(vq3900::kCalibD2cSection, vq3900::kLeastD2cRecord);
  const auto d2d = section(vq3900::kCalibD2dSection, vq3900::kLeastD2dRecord);
  if (!d2c || !d2d) return refuse("invalid section header\n");
  const auto now = static_cast<uint32_t>(vq3900::calendar_time());
  if (const int32_t code = for_each_pair(pairs, *d2c, set_d2c_focal_length); code != VQ3900_OK) return code;
  d2c->restamp(now);
  if (const int32_t code = for_each_pair(pairs, *d2d, set_d2d_pair); code != VQ3900_OK) return code;
  d2d->restamp(now);
  return write_destination(destination, image);
}

std::vector<FocalBaseline> pairs_of(const float* fb_set, int fb_count) {
  std::vector<FocalBaseline> pairs;
  for (int i = 0; i < fb_count; ++i, fb_set += 2)
    pairs.push_back({fb_set[0], fb_set[1]});
  return pairs;
}

}  // namespace

int32_t update_baseline_de(const char* src_path, float baseline, const char* dst_path, int index) try {
  return update_d2d_file(
      src_path, dst_path, [&](const SectionRecords& records) { return set_baseline(records, baseline, index); });
} catch (const std::exception&) {  // no memory
  return VQ3900_ERROR_ARGUMENT;
}

int32_t update_multi_baseline_de(const char* src_path, const float* fb_set, int fb_count, const char* dst_path) try {
  if (fb_set == nullptr) return VQ3900_ERROR_ARGUMENT;
  const std::vector<FocalBaseline> pairs = pairs_of(fb_set, fb_count);
  return update_d2d_file(
      src_path, dst_path, [&](const SectionRecords& records) { return set_baselines(records, pairs); });
} catch (const std::exception&) {  // no memory
  return VQ3900_ERROR_ARGUMENT;
}

int32_t update_multi_fb_d2c_de(const char* src_path, const float* fb_set, int fb_count, const char* dst_path) try {
  return fb_set == nullptr ? VQ3900_ERROR_ARGUMENT : update_pairs(src_path, pairs_of(fb_set, fb_count), dst_path);
} catch (const std::exception&) {  // no memory
  return VQ3900_ERROR_ARGUMENT;
}
