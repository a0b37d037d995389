#include "regs/snapshot.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/file.h"
#include "state/engine.h"
#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/little_endian_memory.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

// A path that nothing has, and whatever was put there is gone afterwards.
class NewPath {
 public:
  ~NewPath() { std::remove(path_.c_str()); }
  const char* get() const { return path_.c_str(); }

 private:
  std::string path_ = TempFile::unused_path();
};

Bytes file_bytes(const char* path) {
  const std::optional<std::string> text = read_file(path);
  EXPECT_TRUE(text.has_value()) << path;
  return text ? Bytes(text->begin(), text->end()) : Bytes();
}

Outcome export_to(const char* path) {
  return outcome_of([path] { return de_export_config_params_to_file(path); });
}

Outcome import_from(const char* path) {
  return outcome_of([path] { return de_import_config_params_from_file(path); });
}

Bytes exported() {
  const NewPath path;
  EXPECT_EQ(export_to(path.get()), silent_success());
  return file_bytes(path.get());
}

Outcome import_bytes(const Bytes& bytes) {
  const TempFile file({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  return import_from(file.path());
}

// --- records with a value in every field

void fill(DeBasicParams_S& basic) {
  basic.baseline = -2.5F;
  basic.focal_length_pix = 50.1F;
  basic.cam_mode = 0x01020304;
  basic.depth_mode = 0x11;
  basic.ref_plane_dist = 1000;
  basic.upsample_enable = 0x12;
  basic.pbf = 0.5F;
  basic.upsample_aux_en = 0x13;
  basic.upsample_main_en = 0x14;
  basic.scale_mode = 0x05060708;
  basic.in_ir_width = 0x0A09;
  basic.in_ir_height = 0x0C0B;
  basic.sbg2r_rotate = 0x100F0E0D;
}

void fill(DeExtendChopParams_S& params) {
  for (int i = 0; i < 4; ++i) {
    params.extend_ref[i] = -2 - i;
    params.chop[i] = 0x01010100 + i;
    params.extend_tar[i] = 0x20 + i;
  }
}

// The words between are 0x1003, 0x1004, ... in the order of the record.
void fill(DeDispCalcParams_S& params) {
  params.win_size = 0x1001;
  params.min_disparity = -8;
  std::uint32_t next = 0x1003;
  for (std::uint32_t* const word : {&params.cost_strong_t,
                                    &params.cost_weak_t,
                                    &params.conf_region_t,
                                    &params.conf_strong_t,
                                    &params.conf_grow_t,
                                    &params.grow_disp_diff_thr,
                                    &params.shadow_win_size,
                                    &params.shadow_smooth_size,
                                    &params.shadow_tex_thresh,
                                    &params.shadow_diff_per,
                                    &params.shadow_edge_preserving,
                                    &params.cost_shadow1_t,
                                    &params.cost_shadow2_t,
                                    &params.arm_len,
                                    &params.arm_short_en,
                                    &params.arm_short_mask,
                                    &params.tile_width,
                                    &params.tile_overlap_x,
                                    &params.tile_overlap_x_fast,
                                    &params.tile_overlap_y_traverse,
                                    &params.lrc_en,
                                    &params.lrc_thresh,
                                    &params.max_see_num,
                                    &params.max_seed_try_num,
                                    &params.max_seed_valid_try_num}) {
    *word = next++;
  }
  params.shadow_en = 0x21;
  params.shadow_ring_base = 0x22;
  params.smooth_enable = 0x23;
  params.smooth_win_size = 0x24;
  params.smooth_enable_flag = 0x25;
  const double coefficients[] = {1.0, -2.5, 0.1, 0.0};
  std::memcpy(params.sp_coef, coefficients, sizeof coefficients);
}

void fill(DeGpmParams_S& gpm) {
  gpm.enable = 0x31;
  gpm.enable_mirror = 0x32;
  for (int i = 0; i < 16; ++i) {
    gpm.x_coordinate[i] = 0x2000 + i;
    gpm.y_coordinate[i] = -0x3000 - i;
    gpm.enable_bits_per_row[i] = static_cast<std::uint16_t>(0x8000 + i);
    gpm.gp_col_enabled[i] = static_cast<std::uint8_t>(0x60 + i);
  }
  gpm.gp_enabled_cols = 0x33;
  gpm.texture_t0 = 0x4001;
  gpm.texture_t1 = 0x4002;
  gpm.active_t = 0x4003;
  gpm.ncost_t = 0x4004;
  gpm.hist_dy_dist = 0x4005;
  gpm.gp_ref_dy_t_neg = -66;
  gpm.gp_ref_dy_t = 66;
  gpm.gpm_config_flag = 0x34;
}

void fill_every_field() {
  fill(engine().basic);
  engine().prefilter.params = {9, 0x41};
  fill(engine().extend_chop.params);
  fill(engine().disparity);
  fill(engine().gpm.params);
}

// --- the file that they make, by offset

// Little-endian numbers put into a file of zeros. No two may meet.
class FileBytes {
 public:
  FileBytes& u8(std::size_t at, std::uint32_t value) { return put(at, 1, value); }
  FileBytes& u16(std::size_t at, std::uint32_t value) { return put(at, 2, value); }
  FileBytes& u32(std::size_t at, std::uint32_t value) { return put(at, 4, value); }
  FileBytes& u64(std::size_t at, std::uint64_t value) { return put(at, 8, value); }

  // Words in a row: from, from + 1, ...
  FileBytes& words(std::size_t at, int count, std::uint32_t from) {
    for (int i = 0; i < count; ++i)
      u32(at + 4 * static_cast<std::size_t>(i), from + static_cast<std::uint32_t>(i));
    return *this;
  }

  const Bytes& bytes() const { return bytes_; }

  // Offsets that nothing was put to.
  std::vector<std::size_t> gaps() const {
    std::vector<std::size_t> gaps;
    for (std::size_t at = 0; at < kSnapshotSize; ++at) {
      if (!taken_[at]) gaps.push_back(at);
    }
    return gaps;
  }

 private:
  FileBytes& put(std::size_t at, std::size_t size, std::uint64_t value) {
    for (std::size_t i = at; i < at + size; ++i, value >>= 8) {
      EXPECT_FALSE(taken_.at(i)) << i;
      taken_[i] = true;
      bytes_[i] = static_cast<unsigned char>(value & 0xFF);
    }
    return *this;
  }

  Bytes bytes_ = Bytes(kSnapshotSize);
  std::vector<bool> taken_ = std::vector<bool>(kSnapshotSize);
};

FileBytes every_field() {
  FileBytes file;
  // basic
  file.u32(0, 0xC0200000).u32(4, 0x42486666).u32(8, 0x01020304).u8(12, 0x11).u32(16, 0x447A0000).u8(20, 0x12);
  file.u32(24, 0x3F000000).u8(28, 0x13).u8(29, 0x14).u32(32, 0x05060708).u16(36, 0x0A09).u16(38, 0x0C0B);
  file.u32(40, 0x100F0E0D);
  // prefilter
  file.u8(44, 9).u8(45, 0x41);
  // extend-chop: extend_ref -2 to -5, chop, extend_tar
  file.u32(46, 0xFFFFFFFE).u32(50, 0xFFFFFFFD).u32(54, 0xFFFFFFFC).u32(58, 0xFFFFFFFB);
  file.words(62, 4, 0x01010100).words(78, 4, 0x20);
  // disparity
  file.u32(94, 0x1001).u32(98, 0xFFFFFFF8).words(102, 6, 0x1003).u8(126, 0x21).u8(127, 0x22);
  file.words(130, 7, 0x1009).words(158, 3, 0x1010).words(170, 4, 0x1013).words(186, 2, 0x1017).words(194, 3, 0x1019);
  file.u8(206, 0x23).u8(207, 0x24).u8(208, 0x25);
  file.u64(214, 0x3FF0000000000000).u64(222, 0xC004000000000000).u64(230, 0x3FB999999999999A).u64(238, 0);
  // global points: y_coordinate is -0x3000, -0x3001, ...
  file.u8(246, 0x31).u8(247, 0x32).words(250, 16, 0x2000);
  for (std::uint32_t i = 0; i < 16; ++i)
    file.u32(314 + 4 * i, 0xFFFFD000 - i).u16(378 + 2 * i, 0x8000 + i).u8(411 + i, 0x60 + i);
  file.u8(410, 0x33).words(430, 5, 0x4001).u32(450, 0xFFFFFFBE).u32(454, 66).u8(458, 0x34);
  return file;
}

// Every byte of the five records counts up, padding included: those of a little-endian machine's memory.
template <typename Record, std::int32_t (*Update)(const Record*)>
Bytes store_counting(unsigned char first) {
  Bytes bytes(sizeof(Record));
  for (unsigned char& byte : bytes)
    byte = first++;
  Record record;
  fill_from_little_endian(record, bytes);
  EXPECT_EQ(Update(&record), 0);
  return bytes;
}

// What they come to in the file.
Bytes store_counting_records() {
  const Bytes basic = store_counting<DeBasicParams_S, de_update_basic_params>(0x01);
  const Bytes prefilter = store_counting<DePrefilterParams_S, de_update_prefilter_params>(0xB1);
  const Bytes extend_chop = store_counting<DeExtendChopParams_S, de_update_extend_chop_params>(0xC2);
  const Bytes disparity = store_counting<DeDispCalcParams_S, de_update_disp_calc_params>(0x35);
  const Bytes gpm = store_counting<DeGpmParams_S, de_update_gpm_params>(0x13);
  return basic + prefilter + extend_chop + disparity + gpm;
}

class SnapshotFile : public EngineTest {
 protected:
  static void expect_refused_untouched(const char* path, const std::string& text) {
    store_counting_records();
    const Bytes before = state_bytes();
    EXPECT_EQ(import_from(path), prints_out(-2, text));
    EXPECT_EQ(state_bytes(), before);
    EXPECT_EQ(de_get_error_str(), nullptr);
  }
};

// --- the bytes

TEST_F(SnapshotFile, EveryFieldLiesAtItsOffsetAndPaddingIsZero) {
  fill_every_field();
  const Bytes bytes = exported();
  EXPECT_EQ(bytes.size(), 462U);
  EXPECT_EQ(bytes, every_field().bytes());
}

TEST_F(SnapshotFile, OffsetsWithoutAFieldAreThePadding) {
  EXPECT_EQ(every_field().gaps(), (std::vector<std::size_t>{13,  14,  15,  21,  22,  23,  30,  31,  128, 129, 209, 210,
                                                            211, 212, 213, 248, 249, 427, 428, 429, 459, 460, 461}));
}

TEST_F(SnapshotFile, EveryFieldIsReadFromItsOffset) {
  EXPECT_EQ(import_bytes(every_field().bytes()), silent_success());
  const Bytes imported = state_bytes();
  reset_engine();
  fill_every_field();
  EXPECT_EQ(imported, state_bytes());
}

TEST_F(SnapshotFile, RecordsLieBackToBackWithTheirPadding) {
  const Bytes expected = store_counting_records();
  EXPECT_EQ(exported(), expected);
}

// --- round trip

TEST_F(SnapshotFile, ExportAndImportOnAFreshLibraryRestoreTheRecordsByteForByte) {
  store_counting_records();
  const Bytes before = state_bytes();
  const NewPath path;
  EXPECT_EQ(export_to(path.get()), silent_success());
  EXPECT_EQ(state_bytes(), before);  // exporting changes nothing
  const Bytes first = file_bytes(path.get());
  reset_engine();
  EXPECT_EQ(import_from(path.get()), silent_success());
  EXPECT_EQ(state_bytes(), before);
  EXPECT_EQ(exported(), first);
  EXPECT_EQ(file_bytes(path.get()), first);  // importing leaves the file
}

TEST_F(SnapshotFile, CopyOutAnswersTheImportedRecords) {
  const Bytes file = store_counting_records();
  reset_engine();
  EXPECT_EQ(import_bytes(file), silent_success());
  DeBasicParams_S basic;
  DePrefilterParams_S prefilter;
  DeExtendChopParams_S extend_chop;
  DeDispCalcParams_S disparity;
  DeGpmParams_S gpm;
  de_copy_basic_params(&basic);
  de_copy_prefilter_params(&prefilter);
  de_copy_extend_chop_params(&extend_chop);
  de_copy_disp_calc_params(&disparity);
  get_gpm_params(&gpm);
  EXPECT_EQ(little_endian_bytes_of(basic) + little_endian_bytes_of(prefilter) + little_endian_bytes_of(extend_chop) +
                little_endian_bytes_of(disparity) + little_endian_bytes_of(gpm),
            file);
}

TEST_F(SnapshotFile, ContentsAreNotCheckedAndEachImportReplacesTheLast) {
  for (const int byte : {0xFF, 0x7F, 0x80, 0x00}) {
    const Bytes file(462, static_cast<unsigned char>(byte));
    EXPECT_EQ(import_bytes(file), silent_success());
    EXPECT_EQ(exported(), file);
  }
}

TEST_F(SnapshotFile, PrefilterSizeOf6IsAcceptedAndKeepsTheCoefficientsAtTheNextConversion) {
  EXPECT_EQ(set_prefilter_size_speckleTh(7, 1), 0);
  EXPECT_EQ(convert_prefilter_float_to_registers(), 0);
  const auto before = engine().registers.prefilter;
  Bytes file(462);
  file[44] = 6;
  EXPECT_EQ(import_bytes(file), silent_success());
  EXPECT_EQ(convert_prefilter_float_to_registers(), 0);
  EXPECT_EQ(value_at(engine().registers.prefilter, 0x50001080), 0x124603A0U);  // 36, 6; the size code stays
  for (std::uint32_t address = 0x50001084; address <= 0x500010BC; address += 4)
    EXPECT_EQ(value_at(engine().registers.prefilter, address), value_at(before, address)) << address;
}

// --- what stays

TEST_F(SnapshotFile, ImportReplacesTheFiveRecordsAlone) {
  std::memset(static_cast<void*>(&engine().prefilter), 0x5A, sizeof(PrefilterState));
  std::memset(static_cast<void*>(&engine().extend_chop), 0x5A, sizeof(ExtendChopState));
  std::memset(static_cast<void*>(&engine().gpm), 0x5A, sizeof(GpmState));
  std::memset(static_cast<void*>(&engine().d2c), 0x5A, sizeof(D2cState));
  std::memset(static_cast<void*>(&engine().d2d), 0x5A, sizeof(D2dConfig));
  engine().rectify.en0 = {0x5A, 0x5A};
  fill_all_registers(0x5A5A5A5A);
  Bytes expected = state_bytes();
  for (const auto& [at, size] : std::initializer_list<std::pair<std::size_t, std::size_t>>{
           {offsetof(Engine, basic), 44},
           {offsetof(Engine, disparity), 152},
           {offsetof(Engine, prefilter) + offsetof(PrefilterState, params), 2},
           {offsetof(Engine, extend_chop) + offsetof(ExtendChopState, params), 48},
           {offsetof(Engine, gpm) + offsetof(GpmState, params), 216}}) {
    std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(at), size, static_cast<unsigned char>(0x11));
  }
  EXPECT_EQ(import_bytes(Bytes(462, 0x11)), silent_success());
  EXPECT_EQ(state_bytes(), expected);
}

TEST_F(SnapshotFile, NeitherDirectionCallsTheCallbacksOrNeedsThem) {
  int calls = 0;
  const auto count_call = [](DeRegElement_S*, std::uint32_t, void* user) -> std::int32_t {
    ++*static_cast<int*>(user);
    return 0;
  };
  EXPECT_EQ(de_register_read_write_functon(count_call, count_call, &calls), 0);
  EXPECT_EQ(exported().size(), 462U);
  EXPECT_EQ(import_bytes(Bytes(462, 1)), silent_success());
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(de_register_read_write_functon(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(import_bytes(Bytes(462, 2)), silent_success());
  EXPECT_EQ(exported(), Bytes(462, 2));
  EXPECT_EQ(de_get_error_str(), nullptr);
}

// --- refusals

TEST_F(SnapshotFile, FilesOfAnotherSizeAreRefusedAndLeaveTheRecords) {
  for (const std::size_t size : {461U, 463U, 0U, 1U, 44U, 924U, 100000U}) {
    SCOPED_TRACE(size);
    const TempFile file(std::string(size, '\x01'));
    expect_refused_untouched(file.path(), "error: file size\n");
  }
}

TEST_F(SnapshotFile, CameraModeIsThatFromBeforeARefusedFile) {
  EXPECT_EQ(set_camera_mode(1, 0), 0);
  for (const std::size_t size : {461U, 463U}) {
    EXPECT_EQ(import_bytes(Bytes(size)), prints_out(-2, "error: file size\n"));
    std::uint32_t mode = 0;
    EXPECT_EQ(get_camera_mode(&mode), 0);
    EXPECT_EQ(mode, 1U);
  }
}

TEST_F(SnapshotFile, WhatCannotBeOpenedForReadingIsNamed) {
  for (const std::string& path :
       {TempFile::unused_path(), TempFile::unused_path() + "/%s%n", testing::TempDir(), std::string()}) {
    SCOPED_TRACE(path);
    expect_refused_untouched(path.c_str(), "error: read file failed, path=" + path + " \n");
  }
}

TEST_F(SnapshotFile, WhatCannotBeCreatedIsNamed) {
  store_counting_records();
  const Bytes before = state_bytes();
  for (const std::string& path : {TempFile::unused_path() + "/%s%n", testing::TempDir(), std::string()}) {
    EXPECT_EQ(export_to(path.c_str()), prints_out(-2, "error: create or open file failed, path=" + path + " \n"));
  }
  EXPECT_EQ(state_bytes(), before);
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_F(SnapshotFile, NullPathIsRefused) {
  store_counting_records();
  const Bytes before = state_bytes();
  EXPECT_EQ(export_to(nullptr).code, -2);
  EXPECT_EQ(import_from(nullptr).code, -2);
  EXPECT_EQ(export_to(nullptr).err + import_from(nullptr).err, "");
  EXPECT_EQ(state_bytes(), before);
}

// --- the destination

TEST_F(SnapshotFile, LongerFileIsReplacedAndFreshLibraryWritesZeros) {
  const TempFile file(std::string(5000, 'x'));
  const Bytes expected = store_counting_records();
  EXPECT_EQ(export_to(file.path()), silent_success());
  EXPECT_EQ(file_bytes(file.path()), expected);
  reset_engine();
  EXPECT_EQ(export_to(file.path()), silent_success());
  EXPECT_EQ(file_bytes(file.path()), Bytes(462));
}

#if defined(__linux__)
TEST_F(SnapshotFile, FullDiskGoesUnseen) {
  if (std::FILE* const full = std::fopen("/dev/full", "r+b")) {
    std::fclose(full);
  } else {
    GTEST_SKIP() << "no /dev/full";
  }
  EXPECT_EQ(export_to("/dev/full"), silent_success());
}
#endif

}  // namespace
}  // namespace vq3900::test
