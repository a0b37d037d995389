#include "bytes/layout.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

#include "support/byte_strings.h"
#include "support/little_endian_memory.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

// A structure that exists only here, with a member of every type.
struct Probe {
  struct Port {
    std::uint16_t number = 0;  // two bytes of padding behind it
    std::uint32_t speed = 0;
    std::uint8_t lanes[2] = {};  // two more
  };

  std::uint8_t u8 = 0;
  std::int8_t i8 = 0;
  std::uint16_t u16 = 0;
  std::int16_t i16 = 0;
  std::uint32_t u32 = 0;
  std::int32_t i32 = 0;
  std::uint64_t u64 = 0;
  std::int64_t i64 = 0;
  float real = 0;
  double wide = 0;
  char text[6] = {};
  std::int16_t list[3] = {};
  std::array<double, 2> curve{};
  std::array<DeRegElement_S, 2> registers{};
  DeRegElement_S element{};
  Port port;
};
static_assert(sizeof(Probe::Port) == 12 && offsetof(Probe::Port, speed) == 4);

using Port = Probe::Port;

NumberRuns numbers_of(const Port* /*type*/) {
  return {{1, 2}, {2, 1}, {1, 4}, {4, 1}};
}

// In another order than the record's, and not aligned.
constexpr auto kRows = std::to_array<LayoutRow<Probe>>({
    field_at<&Probe::u8>(0, "u8"),
    field_at<&Probe::u64>(1, "u64"),
    field_at<&Probe::i64>(9, "i64"),
    field_at<&Probe::i8>(17, "i8"),
    field_at<&Probe::u16>(18, "u16"),
    field_at<&Probe::i16>(20, "i16"),
    field_at<&Probe::u32>(22, "u32"),
    field_at<&Probe::i32>(26, "i32"),
    filler_at<Probe>(30, 3),
    field_at<&Probe::real>(33, "real"),
    field_at<&Probe::wide>(37, "wide"),
    field_at<&Probe::text>(45, "text"),
    field_at<&Probe::list>(51, "list"),
    field_at<&Probe::curve>(57, "curve"),
    field_at<&Probe::registers>(73, "registers"),
    field_at<&Probe::element>(97, "element"),
    field_at<&Probe::port, &Port::number>(109, "port.number"),
    padding_at<2, 2, &Probe::port>(111),
    field_at<&Probe::port, &Port::speed>(113, "port.speed"),
    field_at<&Probe::port, &Port::lanes, 1>(117, "port.lanes[1]"),
    padding_at<10, 2, &Probe::port>(118),
});
constexpr std::size_t kSize = 120;
static_assert(complete(kRows, kSize));

// The record is filled in place: its padding is part of what is written.
void fill(Probe& probe) {
  probe.u8 = 0xFE;
  probe.i8 = -3;
  probe.u16 = 0x1234;
  probe.i16 = -2;
  probe.u32 = 0x89ABCDEF;
  probe.i32 = -257;
  probe.u64 = 0x0123456789ABCDEF;
  probe.i64 = -2;
  probe.real = -2.5F;
  probe.wide = 1.0;
  std::memcpy(probe.text, "ab\0\xC3", 4);
  probe.list[0] = 1;
  probe.list[1] = -1;
  probe.list[2] = 0x0203;
  probe.curve = {0.5, -0.25};
  probe.registers = {{{0x50001000, 0x00013030, 0x11223344}, {4, 5, 6}}};
  probe.element = {0x52080000, 0xFFFFFFFF, 1};
  fill_from_little_endian(probe.port, {0x21, 0x43, 0xAA, 0xBB, 0x04, 0x03, 0x02, 0x01, 0x55, 0x66, 0xCC, 0xDD});
}

const ByteVector kBytes = {
    0xFE,                                                                                            // u8
    0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01,                                                  // u64
    0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,                                                  // i64
    0xFD,                                                                                            // i8
    0x34, 0x12,                                                                                      // u16
    0xFE, 0xFF,                                                                                      // i16
    0xEF, 0xCD, 0xAB, 0x89,                                                                          // u32
    0xFF, 0xFE, 0xFF, 0xFF,                                                                          // i32
    0xFF, 0xFF, 0xFF,                                                                                // filler
    0x00, 0x00, 0x20, 0xC0,                                                                          // real
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F,                                                  // wide
    'a',  'b',  0x00, 0xC3, 0x00, 0x00,                                                              // text
    0x01, 0x00, 0xFF, 0xFF, 0x03, 0x02,                                                              // list
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xE0, 0x3F,                                                  // curve
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xD0, 0xBF, 0x00, 0x10, 0x00, 0x50, 0x30, 0x30, 0x01, 0x00,  // registers
    0x44, 0x33, 0x22, 0x11,                                                                          //   value
    0x04, 0x00, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x52,
    0xFF, 0xFF, 0xFF, 0xFF,              // element
    0x01, 0x00, 0x00, 0x00, 0x21, 0x43,  // port.number
    0xAA, 0xBB,                          // padding
    0x04, 0x03, 0x02, 0x01,              // port.speed
    0x66,                                // port.lanes[1]
    0xCC, 0xDD,                          // padding
};

// --- writing and reading

TEST(Layout, EveryTypeIsWrittenLittleEndianAtItsOffset) {
  Probe probe;
  fill(probe);
  ByteVector bytes(kSize, 0x77);
  write_record(kRows, probe, bytes);
  EXPECT_EQ(bytes, kBytes);
}

TEST(Layout, BytesBehindTheStructureStay) {
  Probe probe;
  fill(probe);
  ByteVector bytes(kSize + 5, 0x77);
  write_record(kRows, probe, bytes);
  ByteVector expected = kBytes;
  expected.insert(expected.end(), 5, 0x77);
  EXPECT_EQ(bytes, expected);
}

TEST(Layout, EveryTypeIsReadBack) {
  Probe probe;
  read_record(kRows, ByteSpan(kBytes), probe);
  EXPECT_EQ(probe.u8, 0xFE);
  EXPECT_EQ(probe.i8, -3);
  EXPECT_EQ(probe.u16, 0x1234);
  EXPECT_EQ(probe.i16, -2);
  EXPECT_EQ(probe.u32, 0x89ABCDEFU);
  EXPECT_EQ(probe.i32, -257);
  EXPECT_EQ(probe.u64, 0x0123456789ABCDEFU);
  EXPECT_EQ(probe.i64, -2);
  EXPECT_EQ(probe.real, -2.5F);
  EXPECT_EQ(probe.wide, 1.0);
  EXPECT_EQ(std::string(probe.text, sizeof probe.text), std::string("ab\0\xC3\0\0", 6));
  EXPECT_EQ(probe.list[0], 1);
  EXPECT_EQ(probe.list[1], -1);
  EXPECT_EQ(probe.list[2], 0x0203);
  EXPECT_EQ(probe.curve, (std::array{0.5, -0.25}));
  EXPECT_EQ(probe.registers[0], (DeRegElement_S{0x50001000, 0x00013030, 0x11223344}));
  EXPECT_EQ(probe.registers[1], (DeRegElement_S{4, 5, 6}));
  EXPECT_EQ(probe.element, (DeRegElement_S{0x52080000, 0xFFFFFFFF, 1}));
}

TEST(Layout, PaddingTravelsIntoTheRecord) {
  Probe probe;
  std::memset(static_cast<void*>(&probe.port), 0x99, sizeof probe.port);
  read_record(kRows, ByteSpan(kBytes), probe);
  EXPECT_EQ(little_endian_bytes_of(probe.port),
            (ByteVector{0x21, 0x43, 0xAA, 0xBB, 0x04, 0x03, 0x02, 0x01, 0x99, 0x66, 0xCC, 0xDD}));
}

TEST(Layout, FillerIsReadAsNothing) {
  ByteVector bytes = kBytes;
  bytes[30] = bytes[31] = bytes[32] = 0;
  Probe probe;
  read_record(kRows, ByteSpan(bytes), probe);
  ByteVector written(kSize);
  write_record(kRows, probe, written);
  EXPECT_EQ(written, kBytes);
}

TEST(Layout, EveryByteOutsideFillersComesBackWhateverItIs) {
  ByteVector bytes = random_bytes(kSize, 21);
  std::fill_n(bytes.begin() + 30, 3, std::uint8_t{0xFF});
  Probe probe;
  read_record(kRows, ByteSpan(bytes), probe);
  ByteVector written(kSize);
  write_record(kRows, probe, written);
  EXPECT_EQ(written, bytes);
}

TEST(Layout, MembersWithoutARowStay) {
  constexpr auto kOne = std::to_array<LayoutRow<Probe>>({field_at<&Probe::list, 1>(1, "list[1]")});
  Probe probe;
  fill(probe);
  const auto before = probe.list[0];
  read_record(kOne, ByteSpan(kBytes), probe);  // bytes 1 and 2
  EXPECT_EQ(probe.list[0], before);
  EXPECT_EQ(probe.list[1], static_cast<std::int16_t>(0xCDEF));
  EXPECT_EQ(probe.list[2], 0x0203);
  EXPECT_EQ(probe.u8, 0xFE);
}

// --- what the rows tell of themselves

TEST(Layout, RowsNameOffsetSizeTypeAndCount) {
  const FieldLayout expected[] = {
      {0, 1, "u8", FieldType::kUint8, 1},
      {1, 8, "u64", FieldType::kUint64, 1},
      {9, 8, "i64", FieldType::kInt64, 1},
      {17, 1, "i8", FieldType::kInt8, 1},
      {18, 2, "u16", FieldType::kUint16, 1},
      {20, 2, "i16", FieldType::kInt16, 1},
      {22, 4, "u32", FieldType::kUint32, 1},
      {26, 4, "i32", FieldType::kInt32, 1},
      {30, 3, "filler", FieldType::kFiller, 3},
      {33, 4, "real", FieldType::kFloat, 1},
      {37, 8, "wide", FieldType::kDouble, 1},
      {45, 6, "text", FieldType::kText, 6},
      {51, 6, "list", FieldType::kInt16, 3},
      {57, 16, "curve", FieldType::kDouble, 2},
      {73, 24, "registers", FieldType::kRegisters, 2},
      {97, 12, "element", FieldType::kRegisters, 1},
      {109, 2, "port.number", FieldType::kUint16, 1},
      {111, 2, "padding", FieldType::kPadding, 2},
      {113, 4, "port.speed", FieldType::kUint32, 1},
      {117, 1, "port.lanes[1]", FieldType::kUint8, 1},
      {118, 2, "padding", FieldType::kPadding, 2},
  };
  ASSERT_EQ(std::size(expected), kRows.size());
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    SCOPED_TRACE(expected[i].name);
    EXPECT_EQ(kRows[i].offset, expected[i].offset);
    EXPECT_EQ(kRows[i].size, expected[i].size);
    EXPECT_STREQ(kRows[i].name, expected[i].name);
    EXPECT_EQ(kRows[i].type, expected[i].type);
    EXPECT_EQ(kRows[i].count, expected[i].count);
  }
}

// --- which structures count as complete

struct Pair {
  std::uint16_t first = 0;
  std::uint16_t second = 0;
};

template <std::uint32_t FirstOffset, std::uint32_t SecondOffset>
constexpr auto kPairAt = std::to_array<LayoutRow<Pair>>({field_at<&Pair::first>(FirstOffset, "first"),
                                                         field_at<&Pair::second>(SecondOffset, "second")});

static_assert(complete(kPairAt<0, 2>, 4));
static_assert(!complete(kPairAt<0, 3>, 5), "a gap between two fields");
static_assert(!complete(kPairAt<0, 3>, 4), "a gap between two fields, whatever their sizes add up to");
static_assert(!complete(kPairAt<1, 3>, 5), "a gap before the first field");
static_assert(!complete(kPairAt<1, 3>, 4), "a gap before the first field, whatever the sizes add up to");
static_assert(!complete(kPairAt<0, 1>, 3), "two fields that overlap");
static_assert(!complete(kPairAt<0, 1>, 4), "two fields that overlap, whatever their sizes add up to");
static_assert(!complete(kPairAt<0, 0>, 4), "two fields in one place");
static_assert(!complete(kPairAt<2, 0>, 4), "fields in another order");
static_assert(!complete(kPairAt<0, 2>, 5), "a structure that goes on behind its last field");
static_assert(!complete(kPairAt<0, 2>, 3), "a structure that ends before its last field does");
static_assert(!complete(kPairAt<0, 2>, 0));

constexpr auto kPairWithFiller = std::to_array<LayoutRow<Pair>>(
    {field_at<&Pair::first>(0, "first"), filler_at<Pair>(2, 3), field_at<&Pair::second>(5, "second")});
static_assert(complete(kPairWithFiller, 7));
static_assert(!complete(kPairWithFiller, 4), "fillers count");

}  // namespace
}  // namespace vq3900::test
