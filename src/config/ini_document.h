// The one reader of INI texts: a text becomes a document of sections and fields.
//
// The reader knows sections, keys and values, nothing of their meaning. Its dialect is an interface of the library:
//   - a line whose very first character is ';', '#' or '%' is a comment; one with blanks before it is not
//   - "[name]" opens a section, or continues it when it was there before; nothing may stand behind the bracket
//   - "key = value" splits at the first '='; both sides are trimmed; the last value given for a key wins
//   - the key alone is cut at '#', or else at ';', or else at '%': values keep what looks like a comment
#ifndef VQ3900_CONFIG_INI_DOCUMENT_H
#define VQ3900_CONFIG_INI_DOCUMENT_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vq3900 {

struct IniField {
  std::string_view key;
  std::string_view value;
  std::uint32_t line;  // where it stands in the text, from 1
};

// A fault of the grammar. The message is "l", the line number and what is wrong.
class IniError : public std::logic_error {
 public:
  IniError(std::uint32_t line, const std::string& what);
  std::uint32_t line() const { return line_; }

 private:
  std::uint32_t line_;
};

// The fields of one section, short keys first, those of a length by the alphabet. It lives as long as its document.
class IniSection {
 public:
  IniSection() = default;
  explicit IniSection(std::span<const IniField> fields) : fields_(fields) {}

  const IniField* find(std::string_view key) const;
  bool empty() const { return fields_.empty(); }
  std::span<const IniField> fields() const { return fields_; }

 private:
  std::span<const IniField> fields_;
};

class IniDocument {
 public:
  explicit IniDocument(char separator = '=', char comment = ';') : separator_(separator), comment_(comment) {}

  // Fields point into the document's own text.
  IniDocument(const IniDocument&) = delete;
  IniDocument& operator=(const IniDocument&) = delete;

  // Replaces the document by what the text holds. At a fault it throws IniError and keeps what stood before the fault.
  void parse(std::string text);

  // The section of that name; one that is not there reads as an empty one.
  IniSection section(std::string_view name) const;

  // The names of all sections, sorted.
  std::vector<std::string_view> section_names() const;

  // Fields that a later one of the same section and key replaced, for tools that warn of them.
  std::span<const IniField> replaced_fields() const { return replaced_; }

 private:
  using Fields = std::vector<IniField>;

  void parse_lines();
  void parse_line(std::string_view line, std::uint32_t number, Fields*& current);
  void parse_field(std::string_view line, std::uint32_t number, Fields* current) const;
  void sort_fields();

  char separator_;
  char comment_;
  std::string text_;
  std::map<std::string_view, Fields> sections_;  // by name
  std::vector<IniField> replaced_;
};

}  // namespace vq3900

#endif
