#include <fmt/format.h>

#include <string>
#include <vector>

#include "calib/calib_keys.h"
#include "commands.h"
#include "config_kinds.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

const char* type_text(KeyType type) {
  switch (type) {
    case KeyType::kBool:
      return "switch";
    case KeyType::kUint8:
    case KeyType::kInt8:
    case KeyType::kInt:
    case KeyType::kInt32:
    case KeyType::kUint32:
      return "integer";
    case KeyType::kFloat:
      return "number";
    case KeyType::kText:
      return "text";
    case KeyType::kVersion:
      return "version";
    case KeyType::kUint16List:
    case KeyType::kInt32List:
      return "list of integers";
    case KeyType::kDoubleList:
      return "list of numbers";
  }
  return "";
}

std::string need_text(const KeyDescription& key, const CalibKeyNote* note) {
  if (note != nullptr && !key.required) return fmt::format("else {}", note->absent);
  if (key.beside != nullptr) return fmt::format("beside {}", key.beside);
  return key.required ? "required" : "optional";
}

std::string accepted_text(const KeyDescription& key, const AcceptedOf& accepted) {
  switch (key.type) {
    case KeyType::kBool:
      return "true, false, 1, 0";
    case KeyType::kText:
      return fmt::format("up to {} characters", key.count);
    case KeyType::kVersion:
      return "parts between dots";
    default:
      break;
  }
  std::string values = accepted(key, 0).text;
  if (key.count == 1) return values;
  std::string text = fmt::format("{} elements, each {}", key.count, values);
  for (std::size_t i = 1; i < key.count; ++i) {
    const std::string own = accepted(key, i).text;
    if (own != values && key.type == KeyType::kDoubleList) text += fmt::format("; element {} {}", i, own);
  }
  return text;
}

// One key in words; those of calibration inputs have a meaning too.
struct KeyRow {
  std::string section;
  std::string name;
  std::string type;
  std::string need;
  std::string accepted;
  std::string meaning;
};

std::vector<KeyRow> key_rows(ConfigKind kind) {
  const AcceptedOf accepted = accepted_of(kind);
  std::vector<KeyRow> rows;
  for (const KeyDescription& key : keys_of(kind)) {
    const CalibKeyNote* const note = kind == ConfigKind::kCalib ? find_calib_key_note(key) : nullptr;
    rows.push_back({key.section,
                    key.name,
                    type_text(key.type),
                    need_text(key, note),
                    accepted_text(key, accepted),
                    note == nullptr ? "" : std::string(note->meaning)});
  }
  return rows;
}

void print_markdown(const std::vector<KeyRow>& rows, bool with_meaning) {
  fmt::print("| section | key | type | needed | accepted |{}\n|---|---|---|---|---|{}\n",
             with_meaning ? " meaning |" : "",
             with_meaning ? "---|" : "");
  for (const KeyRow& row : rows) {
    fmt::print("| {} | `{}` | {} | {} | {} |{}\n",
               row.section,
               row.name,
               row.type,
               row.need,
               row.accepted,
               with_meaning ? fmt::format(" {} |", row.meaning) : "");
  }
}

}  // namespace

int keys_command(const std::string& kind, bool markdown) {
  const std::vector<KeyRow> rows = key_rows(config_kind(kind));
  const bool with_meaning = config_kind(kind) == ConfigKind::kCalib;
  if (markdown) {
    print_markdown(rows, with_meaning);
    return kDone;
  }
  for (const KeyRow& row : rows) {
    if (with_meaning) {
      fmt::print(
          "{:<8} {:<24} {:<8} {:<10} {}; {}\n", row.section, row.name, row.type, row.need, row.accepted, row.meaning);
    } else {
      fmt::print("{:<12} {:<26} {:<17} {:<24} {}\n", row.section, row.name, row.type, row.need, row.accepted);
    }
  }
  return kDone;
}

}  // namespace vq3900::tool
