// Configuration groups of both kinds: a sample group as text, what each of its keys makes of the record, what the
// getters hand out, and the fixture of the tests that hold for both.
#ifndef VQ3900_TESTS_SUPPORT_GROUP_SAMPLES_H
#define VQ3900_TESTS_SUPPORT_GROUP_SAMPLES_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "config/groups.h"
#include "state/engine.h"
#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/little_endian_memory.h"

namespace vq3900::test {

// A key of a group: the text it has in the sample, what that makes of the record, and another text with its bytes.
struct GroupKey {
  const char* name;
  KeyType type;
  std::uint8_t count;
  const char* text;
  std::size_t offset;  // in the record
  Bytes bytes;
  const char* other_text;
  Bytes other_bytes;
  bool required = true;
  const char* beside = nullptr;

  bool is_list() const { return type == KeyType::kInt32List || type == KeyType::kUint16List; }
};

inline Bytes zero_padded(std::string_view text) {
  Bytes bytes(text.begin(), text.end());
  bytes.resize(16);
  return bytes;
}

// Bytes of the sample's unit and switches are those after all their keys were read.
inline const std::vector<GroupKey> kD2cSample = {
    {"desc",
     KeyType::kText,
     16,
     "640x480 to 1080p",
     16,
     zero_padded("640x480 to 1080p"),
     "upright",
     zero_padded("upright")},
    {"res_chop_out", KeyType::kInt32List, 2, "{1264,792}", 32, {0xF0, 4, 0x18, 3}, "{-1,65536}", {0xFF, 0xFF, 0, 0}},
    {"res_d2c_in", KeyType::kInt32List, 2, "{1280,800}", 52, {0, 5, 0x20, 3}, "{65535,-65535}", {0xFF, 0xFF, 1, 0}},
    {"res_d2c_valid", KeyType::kInt32List, 2, "{1272,796}", 56, {0xF8, 4, 0x1C, 3}, "{0x10,010}", {16, 0, 8, 0}},
    {"res_depth", KeyType::kInt32List, 2, "{640,480}", 36, {0x80, 2, 0xE0, 1}, "{4294967297,-32768}", {1, 0, 0, 0x80}},
    {"res_rgb", KeyType::kInt32List, 2, "{1920,1080}", 40, {0x80, 7, 0x38, 4}, "{ 7,8x}", {7, 0, 8, 0}},
    {"scale", KeyType::kFloat, 1, "1.5", 60, {0, 0, 0xC0, 0x3F}, "-0.25", {0, 0, 0x80, 0xBE}},
    {"extend",
     KeyType::kInt32List,
     4,
     "{1,2,3,4}",
     64,
     {1, 0, 2, 0, 3, 0, 4, 0},
     "{,5,,-6,7,8,}",
     {5, 0, 0xFA, 0xFF, 7, 0, 8, 0}},
    {"d2d_params_unit", KeyType::kFloat, 1, "0.5", 44, {50, 0, 0, 0}, "1.234", {123, 0, 0, 0}, false},
    {"d2d_params_unit_in_R_en",
     KeyType::kUint8,
     1,
     "1",
     44,
     {50, 0, 0, 0},
     "0",
     {0, 0, 0, 0},
     false,
     "d2d_params_unit"},
    {"mipi_channel_status", KeyType::kUint8, 1, "255", 48, {1, 0, 0, 0}, "254", {0, 0, 0, 0}, false},
};

inline const std::vector<GroupKey> kIrPreSample = {
    {"dpu_desc",
     KeyType::kText,
     16,
     "bright room, 2 m",
     16,
     zero_padded("bright room, 2 m"),
     "dark",
     zero_padded("dark")},
    {"exp_time_range",
     KeyType::kInt32List,
     4,
     "{1,-2,300,70000}",
     36,
     {1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0x2C, 1, 0, 0, 0x70, 0x11, 1, 0},
     "{-2147483648,2147483647,4294967295,0x10}",
     {0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 16, 0, 0, 0}},
    {"gain_range",
     KeyType::kInt32List,
     4,
     "{5,6,7,8}",
     52,
     {5, 0, 0, 0, 6, 0, 0, 0, 7, 0, 0, 0, 8, 0, 0, 0},
     "{9,8,7,6}",
     {9, 0, 0, 0, 8, 0, 0, 0, 7, 0, 0, 0, 6, 0, 0, 0}},
    {"laser_current_range",
     KeyType::kInt32List,
     4,
     "{21,22,23,24}",
     68,
     {21, 0, 0, 0, 22, 0, 0, 0, 23, 0, 0, 0, 24, 0, 0, 0},
     "{-1,0,0,1}",
     {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}},
    {"target_brightness", KeyType::kUint32, 1, "101", 84, {101, 0, 0, 0}, "4294967295", {0xFF, 0xFF, 0xFF, 0xFF}},
    {"target_th", KeyType::kUint32, 1, "102", 88, {102, 0, 0, 0}, "0x12345678", {0x78, 0x56, 0x34, 0x12}},
    {"center_weight", KeyType::kUint32, 1, "103", 92, {103, 0, 0, 0}, "010", {8, 0, 0, 0}},
    {"skip_frame", KeyType::kUint32, 1, "104", 96, {104, 0, 0, 0}, "65536", {0, 0, 1, 0}},
    {"smooth_steps", KeyType::kUint32, 1, "105", 100, {105, 0, 0, 0}, "65537", {1, 0, 1, 0}},
    {"delay_ms", KeyType::kUint32, 1, "106", 104, {106, 0, 0, 0}, "65538", {2, 0, 1, 0}},
    {"meter_method", KeyType::kUint32, 1, "107", 108, {107, 0, 0, 0}, "65539", {3, 0, 1, 0}},
    {"exp_en", KeyType::kUint32, 1, "3", 112, {5, 0, 0, 0}, "4294967294", {4, 0, 0, 0}},
    {"gain_en", KeyType::kUint32, 1, "0", 112, {5, 0, 0, 0}, "1", {7, 0, 0, 0}},
    {"ldm_power_en", KeyType::kUint32, 1, "1", 112, {5, 0, 0, 0}, "2", {1, 0, 0, 0}},
    {"roi_size", KeyType::kUint16List, 2, "{320,240}", 116, {0x40, 1, 0xF0, 0}, "{-1,65536}", {0xFF, 0xFF, 0, 0}},
    {"box_cnt", KeyType::kUint16List, 2, "{4,5}", 120, {4, 0, 5, 0}, "{9223372036854775808,65537}", {0, 0, 1, 0}},
    {"box_weight_16",
     KeyType::kUint16List,
     16,
     "{1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16}",
     124,
     {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8, 0, 9, 0, 10, 0, 11, 0, 12, 0, 13, 0, 14, 0, 15, 0, 16, 0},
     "{0x8000,0,0,0,0,0,0,0,0,0,0,0,0,0,0,258}",
     {0, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 1}},
};

// The sample group, of which a test replaces and removes what it looks at.
class GroupText {
 public:
  explicit GroupText(const std::vector<GroupKey>& keys) {
    for (const GroupKey& key : keys)
      fields_.push_back({key.name, key.text});
  }

  GroupText& set(std::string_view key, std::string_view value) {
    at(key)->value = value;
    return *this;
  }

  GroupText& remove(std::string_view key) {
    fields_.erase(at(key));
    return *this;
  }

  std::string text(int number) const {
    std::string text = "[group" + std::to_string(number) + "]\n";
    for (const Field& field : fields_)
      text += field.key + " = " + field.value + "\n";
    return text;
  }

 private:
  struct Field {
    std::string key;
    std::string value;
  };

  std::vector<Field>::iterator at(std::string_view key) {
    return std::find_if(fields_.begin(), fields_.end(), [key](const Field& field) { return field.key == key; });
  }

  std::vector<Field> fields_;
};

inline std::string basic_text(const std::string& num, const std::string& version = "2.1") {
  return "[basic]\nnum = " + num + "\nversion = " + version + "\n";
}

inline constexpr unsigned kCallersVersion = 0x77777777;

// What a getter hands out, with all the array's records, beyond the count too, their numbers little-endian.
struct HandedOut {
  int count = -1;
  unsigned version = kCallersVersion;
  std::vector<Bytes> items;
  bool operator==(const HandedOut&) const = default;
};

template <typename Item, std::size_t Most, void (*Get)(Item*&, int&, unsigned int&)>
HandedOut handed_out() {
  HandedOut out;
  Item* items = nullptr;
  Get(items, out.count, out.version);
  for (std::size_t i = 0; i < Most; ++i)
    out.items.push_back(little_endian_bytes_of(items[i]));
  return out;
}

// Fills the array that the getter hands out, as a caller can.
template <typename Item, std::size_t Most, void (*Get)(Item*&, int&, unsigned int&)>
void scribble(unsigned char byte) {
  Item* items = nullptr;
  int count = 0;
  unsigned version = 0;
  Get(items, count, version);
  std::memset(static_cast<void*>(items), byte, Most * sizeof(Item));
}

// The two kinds of groups.
struct Kind {
  const char* name;
  int most;
  std::size_t size;
  const char* description;  // the key of the text
  const std::vector<GroupKey>* sample;
  std::int32_t (*load)(const char*);
  HandedOut (*get)();
  void (*scribble)(unsigned char);
  std::vector<KeyDescription> (*keys)();
  std::size_t offset_of_state;
  std::size_t size_of_state;
};

inline void PrintTo(const Kind& kind, std::ostream* stream) {
  *stream << kind.name;
}

inline const Kind kD2c{"D2c",
                       100,
                       72,
                       "desc",
                       &kD2cSample,
                       load_d2c_configs,
                       handed_out<d2c_cfg_item, 100, de_get_d2c_config>,
                       scribble<d2c_cfg_item, 100, de_get_d2c_config>,
                       d2c_group_keys,
                       offsetof(Engine, d2c_groups),
                       sizeof(D2cGroups)};
inline const Kind kIrPre{"IrPre",
                         10,
                         156,
                         "dpu_desc",
                         &kIrPreSample,
                         load_ir_pre_configs,
                         handed_out<ir_pre_cfg_item, 10, de_get_ir_pre_config>,
                         scribble<ir_pre_cfg_item, 10, de_get_ir_pre_config>,
                         ir_pre_group_keys,
                         offsetof(Engine, ir_pre_groups),
                         sizeof(IrPreGroups)};

// All keys of the sample, in their order; the bytes of a changed key come last.
inline Bytes sample_bytes(const Kind& kind, const GroupKey* changed = nullptr) {
  Bytes bytes(kind.size);
  for (const GroupKey& key : *kind.sample)
    std::copy(key.bytes.begin(), key.bytes.end(), bytes.begin() + static_cast<std::ptrdiff_t>(key.offset));
  if (changed != nullptr) {
    std::copy(changed->other_bytes.begin(),
              changed->other_bytes.end(),
              bytes.begin() + static_cast<std::ptrdiff_t>(changed->offset));
  }
  return bytes;
}

// Loads a file of those bytes.
inline Outcome load_bytes(const Kind& kind, const std::string& bytes) {
  const TempFile file(bytes);
  return outcome_of([&] { return kind.load(file.path()); });
}

inline Outcome load_one(const Kind& kind, const GroupText& group) {
  return load_bytes(kind, basic_text("1") + group.text(1));
}

// A test of what both kinds share.
class AnyGroups : public EngineTest, public testing::WithParamInterface<Kind> {
 protected:
  static GroupText sample() { return GroupText(*GetParam().sample); }
  static HandedOut now() { return GetParam().get(); }

  static Outcome load(const std::string& bytes) { return load_bytes(GetParam(), bytes); }
  static Outcome load_group(const GroupText& group) { return load_one(GetParam(), group); }

  // Groups with a description each: the prefix and their number.
  static std::string groups(int count, const std::string& prefix) {
    std::string text;
    for (int i = 1; i <= count; ++i)
      text += sample().set(GetParam().description, prefix + std::to_string(i)).text(i);
    return text;
  }

  static Outcome load_groups(int count, const std::string& prefix, const std::string& version = "2.1") {
    return load(basic_text(std::to_string(count), version) + groups(count, prefix));
  }

  // Descriptions of the first records of the array.
  static std::vector<std::string> descriptions(std::size_t count) {
    std::vector<std::string> texts;
    for (const Bytes& item : now().items) {
      if (texts.size() == count) break;
      const std::string text(item.begin() + 16, item.begin() + 32);
      texts.push_back(text.substr(0, text.find('\0')));
    }
    return texts;
  }

  static Bytes state_beside_the_groups() {
    Bytes bytes = state_bytes();
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(GetParam().offset_of_state),
                GetParam().size_of_state,
                static_cast<unsigned char>(0));
    return bytes;
  }

  // Nothing of an earlier load changes, and the next load works.
  static void expect_refused_untouched(const std::string& bytes, const Outcome& outcome) {
    ASSERT_EQ(load_groups(2, "old "), silent_success());
    const HandedOut before = now();
    EXPECT_EQ(load(bytes), outcome);
    EXPECT_EQ(now(), before);
    EXPECT_EQ(load_groups(1, "next "), silent_success());
    EXPECT_EQ(descriptions(2), (std::vector<std::string>{"next 1", "old 2"}));
  }
};

}  // namespace vq3900::test

#endif
