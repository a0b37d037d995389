#include "flash/image_build_api.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <utility>

#include "bytes/md5_gen_api.h"
#include "regs/steps.h"
#include "state/engine.h"

namespace vq3900 {

namespace {

Md5Digest digest_of(std::span<const std::uint8_t> key) {
  Md5Digest digest{};
  Md5_gen(key.data(), digest.data(), static_cast<std::uint32_t>(key.size()));
  return digest;
}

// Writes a record, digests its key and puts the digest before it.
template <typename Record>
Md5Digest write_digested(std::span<const LayoutRow<Record>> layout, Record& record, std::uint32_t key_offset,
                         std::uint32_t key_size, std::span<std::uint8_t> to) {
  write_record(layout, record, to);
  record.md5 = digest_of(to.subspan(key_offset, key_size));
  std::ranges::copy(record.md5, to.subspan(key_offset - record.md5.size()).begin());
  return record.md5;
}

// Places a record unless one with its digest is there.
std::int32_t place(SectionWriter& section, const Md5Digest& digest, std::span<const std::uint8_t> bytes,
                   const BuildLog& log) {
  if (section.has(digest)) return VQ3900_OK;
  const std::span<std::uint8_t> room = section.next(digest);
  if (room.empty()) return too_many_records(log, section.name());
  std::copy(bytes.begin(), bytes.end(), room.begin());
  return VQ3900_OK;
}

template <typename Record>
std::int32_t place_digested(SectionWriter& section, std::span<const LayoutRow<Record>> layout, Record record,
                            std::uint32_t key_size, const BuildLog& log) {
  const FieldLayout& last = layout.back();
  std::vector<std::uint8_t> bytes(last.offset + last.size);
  const Md5Digest digest = write_digested(layout, record, kKeyOffset, key_size, bytes);
  return place(section, digest, bytes, log);
}

}  // namespace

bool has_alignment_section(const CalibFlashInput_S& input) {
  return input.alignment_switch != nullptr && *input.alignment_switch != 0 && engine().flash.alignment_records.held();
}

std::size_t calib_image_size(const CalibFlashInput_S& input) {
  return has_alignment_section(input) ? kCalibImageWithAlignmentSize : kCalibImageSize;
}

HeaderStamp header_stamp(std::int64_t time) {
  return {static_cast<std::uint32_t>(time), engine().flash.serial_number};
}

std::int32_t too_many_records(const BuildLog& log, const char* section) {
  log.say("error: too many records, section=" + std::string{section} + "\n");
  return kTooManyRecords;
}

DigestedRectify digested_rectify(const ConvertedCalibration& converted) {
  DigestedRectify rectify{rectify_record(converted, engine().calib_input, engine().registers)};
  write_digested(rectify_record_layout(), rectify.record, kKeyOffset, kRectifyKeySize, rectify.bytes);
  return rectify;
}

std::int32_t add_lut(const RectifyRecord& rectify, LutFile& luts, const BuildLog& log) {
  if (luts.directory().has(rectify.md5)) return VQ3900_OK;
  const RectifyLutState& state = engine().rectify_lut;
  const std::uint32_t sections = stored_sections(engine().calib_input, state);
  const LutDirectoryRecord entry = lut_directory_record(rectify, state, engine().registers, sections);
  const std::span<std::uint8_t> room = luts.directory().next(rectify.md5);
  if (room.empty()) return too_many_records(log, kLutDirectorySection.name);
  write_record(lut_directory_layout(), entry, room);

  LutDataHeader header = lut_data_header(entry, sections, state.length);
  std::array<std::uint8_t, kLutDataHeaderSize> bytes{};
  write_digested(lut_data_layout(), header, kLutDataKeyOffset, kLutDataKeySize, bytes);
  if (luts.has_data(header.md5)) return VQ3900_OK;
  const bool added = luts.add_data(header, std::span{state.sections}.first(sections));
  return added ? VQ3900_OK : too_many_records(log, kLutDataSection.name);
}

ImageBuild::ImageBuild(const CalibFlashInput_S& input, const BuildLog& log)
    : main_(calib_image_size(input), 0xFF),
      rectify_(main_, kRectifySection),
      d2c_(main_, kCalibD2cSection),
      d2d_(main_, kCalibD2dSection),
      log_(log),
      alignment_(has_alignment_section(input)) {}

std::int32_t ImageBuild::add(const ConvertedCalibration& converted, const std::function<std::int32_t()>& before_lut) {
  const CalibInputConfig& config = engine().calib_input;
  const RegisterTables& tables = engine().registers;
  const DigestedRectify rectify = digested_rectify(converted);
  return run_steps(
      [&] { return place(rectify_, rectify.record.md5, rectify.bytes, log_); },
      [&] { return get_lut_enable_status() ? before_lut() : VQ3900_OK; },
      [&] { return get_lut_enable_status() ? add_lut(rectify.record, luts_, log_) : VQ3900_OK; },
      [&] {
        return place_digested(d2c_, d2c_record_layout(), d2c_record(converted, config, tables), kD2cKeySize, log_);
      },
      [&] {
        return place_digested(d2d_, d2d_record_layout(), d2d_record(converted, config, tables), kD2dKeySize, log_);
      });
}

std::vector<std::uint8_t> ImageBuild::finish_main(const HeaderStamp& stamp) {
  rectify_.close(stamp);
  d2c_.close(stamp);
  d2d_.close(stamp);
  if (alignment_) {
    SectionWriter alignment{main_, kAlignmentSection};
    for (const DeAlignRecord_S& record : engine().flash.alignment_records.span()) {
      std::copy(std::begin(record.data), std::end(record.data), alignment.next({}).begin());
    }
    alignment.close(stamp);
  }
  return std::move(main_);
}

void ImageBuild::finish_luts(const HeaderStamp& stamp, std::span<std::uint8_t> to) {
  if (!luts_.directory().empty()) luts_.finish(stamp, to);
}

}  // namespace vq3900
