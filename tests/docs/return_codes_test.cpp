// The codes that docs/errors.md lists for each function are those of the public header.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file.h"

namespace vq3900::test {
namespace {

using Codes = std::set<std::string>;
using CodesOf = std::map<std::string, Codes>;

std::string text_of(const char* path) {
  const std::optional<std::string> text = read_file(path);
  EXPECT_TRUE(text) << path;
  return text.value_or("");
}

std::vector<std::string> pieces(std::string_view text, std::string_view separator) {
  std::vector<std::string> result;
  for (;;) {
    const std::size_t at = text.find(separator);
    result.emplace_back(text.substr(0, at));
    if (at == std::string_view::npos) return result;
    text.remove_prefix(at + separator.size());
  }
}

bool is_name_character(char character) {
  constexpr std::string_view kOthers = "_0123456789";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         kOthers.find(character) != std::string_view::npos;
}

// The @retval codes of every exported function; "other" for what it passes on.
CodesOf codes_of_the_header() {
  const std::string header = text_of(VQ3900_HEADER);
  constexpr std::string_view kMark = "\nVQ3900_API ";
  CodesOf codes_of;
  for (std::size_t at = header.find(kMark); at != std::string::npos; at = header.find(kMark, at + 1)) {
    const std::size_t end = header.find('(', at);
    std::size_t begin = end;
    while (is_name_character(header[begin - 1]))
      --begin;
    Codes& codes = codes_of[header.substr(begin, end - begin)];
    const std::size_t comment = header.rfind("/**", at);
    const std::string text = header.substr(comment, at - comment);
    const std::vector<std::string> values = pieces(text, "@retval ");
    for (auto value = std::next(values.begin()); value != values.end(); ++value) {
      for (const std::string& code : pieces(value->substr(0, value->find(' ')), ","))
        codes.insert(code);
    }
    if (text.find("@return Otherwise") != std::string::npos) codes.insert("other");
  }
  return codes_of;
}

bool is_code(const std::string& text) {
  static const Codes kWords{"true", "false", "other"};
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  return kWords.contains(text) ||
         (text.size() > sign && text.find_first_not_of("0123456789", sign) == std::string::npos);
}

// The same of the rows "| `name`, `name` | code, code | ..." in the tables of all functions.
CodesOf codes_of_the_page() {
  const std::string page = text_of(VQ3900_DOCS "/errors.md");
  const std::size_t begin = page.find("\n## Every function\n");
  const std::size_t end = page.find("\n## Texts on standard error\n");
  EXPECT_LT(begin, end);
  CodesOf codes_of;
  for (const std::string& line : pieces(std::string_view(page).substr(begin, end - begin), "\n")) {
    if (!line.starts_with("| `")) continue;
    const std::vector<std::string> columns = pieces(line, " | ");
    const std::vector<std::string> names = pieces(columns[0], "`");
    Codes codes;
    for (const std::string& code : pieces(columns.at(1), ", ")) {
      if (is_code(code)) codes.insert(code);
    }
    for (std::size_t i = 1; i < names.size(); i += 2) {
      EXPECT_FALSE(codes_of.contains(names[i])) << names[i] << " stands there twice";
      codes_of[names[i]] = codes;
    }
  }
  return codes_of;
}

TEST(ReturnCodes, OfEveryFunctionAreExplained) {
  const CodesOf header = codes_of_the_header();
  const CodesOf page = codes_of_the_page();
  EXPECT_GT(header.size(), 150U);
  for (const auto& [name, codes] : header) {
    const auto at = page.find(name);
    if (at == page.end()) {
      ADD_FAILURE() << "docs/errors.md does not have " << name;
      continue;
    }
    EXPECT_EQ(at->second, codes) << name;
  }
  for (const auto& [name, codes] : page)
    EXPECT_TRUE(header.contains(name)) << name << " is no function";
}

TEST(ReturnCodes, ExportedFunctionsAreDocumentedInTheHeader) {
  const CodesOf header = codes_of_the_header();
  for (const std::string& name : pieces(text_of(VQ3900_EXPORTED_NAMES), "\n")) {
    EXPECT_TRUE(name.empty() || header.contains(name)) << name;
  }
}

}  // namespace
}  // namespace vq3900::test
