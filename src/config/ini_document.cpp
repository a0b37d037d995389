#include "config/ini_document.h"

#include <algorithm>
#include <utility>

#include "config/c_locale.h"

namespace vq3900 {

namespace {

// Few texts have more. Memory is taken ahead for so much and no more, whatever a text is made of.
constexpr std::size_t kUsualSections = 128;
constexpr std::size_t kUsualFields = 24;

// An inline comment ends a key. The three marks are tried in this order, not by position.
std::string_view cut_comment(std::string_view key) {
  for (const char mark : {'#', ';', '%'}) {
    if (const std::size_t at = key.find(mark); at != std::string_view::npos) return key.substr(0, at);
  }
  return key;
}

// The order of keys within a section: by length first, which settles most comparisons.
bool key_before(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

}  // namespace

IniError::IniError(std::uint32_t line, const std::string& what)
    : std::logic_error(std::string("l").append(std::to_string(line)).append(": ini parsing failed, ").append(what)),
      line_(line) {}

const IniField* IniSection::find(std::string_view key) const {
  const auto at = std::ranges::lower_bound(fields_, key, key_before, &IniField::key);
  return at != fields_.end() && at->key == key ? &*at : nullptr;
}

void IniDocument::parse(std::string text) {
  sections_.clear();
  replaced_.clear();
  text_ = std::move(text);
  try {
    parse_lines();
  } catch (const IniError&) {
    sort_fields();
    throw;
  }
  sort_fields();
}

IniSection IniDocument::section(std::string_view name) const {
  const auto at = sections_.find(name);
  return at == sections_.end() ? IniSection{} : IniSection{at->second};
}

std::vector<std::string_view> IniDocument::section_names() const {
  std::vector<std::string_view> names;
  names.reserve(sections_.size());
  for (const auto& [name, fields] : sections_)
    names.push_back(name);
  return names;
}

void IniDocument::parse_lines() {
  Fields* current = nullptr;
  std::uint32_t number = 0;
  for (std::string_view rest = text_; !rest.empty();) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    parse_line(line, ++number, current);
  }
}

void IniDocument::parse_line(std::string_view line, std::uint32_t number, Fields*& current) {
  if (!line.empty()) {
    const char first = line.front();  // of the raw line: blanks before a mark make it a field line
    if (first == comment_ || first == '#' || first == ';' || first == '%') return;
  }
  line = trim(line);
  if (line.empty()) return;
  if (line.front() != '[') {
    parse_field(line, number, current);
    return;
  }
  const std::size_t close = line.find(']');
  if (close == std::string_view::npos) throw IniError(number, "section not closed");
  if (close == 1) throw IniError(number, "section is empty");
  if (close + 1 != line.size()) throw IniError(number, "no end of line after section");
  const auto [section, added] = sections_.try_emplace(line.substr(1, close - 1));
  current = &section->second;
  if (added && sections_.size() <= kUsualSections) current->reserve(kUsualFields);
}

void IniDocument::parse_field(std::string_view line, std::uint32_t number, Fields* current) const {
  if (current == nullptr) throw IniError(number, "field has no section");
  const std::size_t at = line.find(separator_);
  if (at == std::string_view::npos) throw IniError(number, std::string("no '") + separator_ + "' found");
  const std::string_view key = cut_comment(trim(line.substr(0, at)));
  current->push_back({key, trim(line.substr(at + 1)), number});
}

// Sorts every section by key. Of several fields of one key the last in the text stays.
void IniDocument::sort_fields() {
  for (auto& [name, fields] : sections_) {
    std::ranges::stable_sort(fields, key_before, &IniField::key);
    auto kept = fields.begin();
    for (auto field = fields.begin(); field != fields.end(); ++field) {
      const auto next = std::next(field);
      if (next != fields.end() && next->key == field->key) {
        replaced_.push_back(*field);
      } else {
        *kept++ = *field;
      }
    }
    fields.erase(kept, fields.end());
  }
}

}  // namespace vq3900
