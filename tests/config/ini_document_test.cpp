#include "config/ini_document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vq3900::test {
namespace {

using namespace std::string_literals;

// All that a document holds: "[section]<key|value><key|value>[section]", in the order of the alphabet.
std::string contents(const IniDocument& document) {
  std::string text;
  for (const std::string_view name : document.section_names()) {
    text.append("[").append(name).append("]");
    const auto fields = document.section(name).fields();
    std::map<std::string_view, std::string_view> sorted;
    for (const IniField& field : fields)
      sorted.emplace(field.key, field.value);
    EXPECT_EQ(sorted.size(), fields.size());  // every key once
    for (const auto& [key, value] : sorted)
      text.append("<").append(key).append("|").append(value).append(">");
  }
  return text;
}

// The message of the fault, or nothing.
std::string fault_of(IniDocument& document, const std::string& text) {
  try {
    document.parse(text);
  } catch (const std::exception& fault) {
    return fault.what();
  }
  return "";
}

std::string value_of(const IniDocument& document, std::string_view section, std::string_view key) {
  const IniField* const field = document.section(section).find(key);
  return field == nullptr ? "(absent)" : std::string(field->value);
}

// --- texts that are taken

struct AcceptedCase {
  const char* name;
  std::string text;
  std::string contents;
};

class AcceptedText : public testing::TestWithParam<AcceptedCase> {};

TEST_P(AcceptedText, GivesTheDocument) {
  IniDocument document;
  EXPECT_EQ(fault_of(document, GetParam().text), "");
  EXPECT_EQ(contents(document), GetParam().contents);
}

const AcceptedCase kAccepted[] = {
    {"EmptyInput", "", ""},
    {"OnlyBlankLines", "\n \n\t\r\n\v\f\n", ""},
    {"OneField", "[basic]\ncam_mode = 1\n", "[basic]<cam_mode|1>"},
    {"NoFinalNewline", "[a]\nk = v", "[a]<k|v>"},
    {"HeaderWithoutFinalNewline", "[a]", "[a]"},
    {"WindowsLineEnds", "[a]\r\nk = v\r\n\r\n# c\r\n[b]\r\n", "[a]<k|v>[b]"},
    {"WindowsFileWithoutFinalNewline", "[a]\r\nk = v\r", "[a]<k|v>"},
    {"EveryWhiteSpaceIsTrimmed", "\v\f\t [a]\f\v\r\n \t\v\fk\f\v\t =\v\f v w \r\t\n", "[a]<k|v w>"},
    {"NoBlanksNeeded", "[a]\nk=v\n", "[a]<k|v>"},
    {"CommentsInColumnOne", "# c\n; c\n% c\n[a]\n#k = v\n;k = v\n%k = v\n;\n", "[a]"},
    {"CommentsBeforeAnyHeaderNeedNoSection", "#k\n;k\n%k", ""},
    {"HeaderWithBlanksAround", "  [a] \n", "[a]"},
    {"BlanksInsideTheBracketsStay", "[ basic ]\nk = 1\n[basic]\nk = 2\n", "[ basic ]<k|1>[basic]<k|2>"},
    {"BlankSectionName", "[ ]\nk = v\n", "[ ]<k|v>"},
    {"HeaderMayHoldAnythingButABracket", "[a=b#c;d%e[f]\n", "[a=b#c;d%e[f]"},
    {"SplitsAtTheFirstSeparator", "[a]\nk = v = w\n", "[a]<k|v = w>"},
    {"KeyIsCutAtItsComment", "[a]\nk#x = 5\n", "[a]<k|5>"},
    {"KeyKeepsTheBlankBeforeItsComment", "[a]\nk ;x = 5\n", "[a]<k |5>"},
    {"HashCutsBeforeSemicolon", "[a]\na;b#c = 1\n", "[a]<a;b|1>"},
    {"HashCutsBeforePercent", "[a]\na%b#c = 1\n", "[a]<a%b|1>"},
    {"SemicolonCutsBeforePercent", "[a]\na%b;c = 1\n", "[a]<a%b|1>"},
    {"PercentCutsLast", "[a]\na%b%c = 1\n", "[a]<a|1>"},
    {"CutsAtTheFirstHash", "[a]\na#b#c = 1\n", "[a]<a|1>"},
    {"IndentedCommentWithSeparatorIsAFieldWithoutKey", "[a]\n  # k = 5\n", "[a]<|5>"},
    {"ValueKeepsWhatLooksLikeAComment",
     "[a]\nk = 40.0 # mm\nl = a;b\nm = %\nn = #\n",
     "[a]<k|40.0 # mm><l|a;b><m|%><n|#>"},
    {"ValueMayLookLikeAHeader", "[a]\nk = [b]\n", "[a]<k|[b]>"},
    {"EmptyValue", "[a]\nk =\nl = \t\n", "[a]<k|><l|>"},
    {"EmptyKey", "[a]\n= v\n", "[a]<|v>"},
    {"OnlyASeparator", "[a]\n=\n", "[a]<|>"},
    {"KeyWithBlanksInside", "[a]\nk l = v\n", "[a]<k l|v>"},
    {"RepeatedSectionContinues", "[a]\nk = 1\n[b]\nl = 2\n[a]\nm = 3\n", "[a]<k|1><m|3>[b]<l|2>"},
    {"LastValueOfAKeyWins", "[a]\nk = 1\nk = 2\nl = 0\nk = 3\n", "[a]<k|3><l|0>"},
    {"LastValueWinsAcrossRepeatedSections", "[a]\nk = 1\n[b]\nk = 9\n[a]\nk = 2\n", "[a]<k|2>[b]<k|9>"},
    {"KeysThatAreEqualAfterTheCutAreOne", "[a]\nk = 1\nk#x = 2\n", "[a]<k|2>"},
    {"NothingIsFolded", "[B]\nK = 1\nk = 2\n[b]\n", "[B]<K|1><k|2>[b]"},
    {"NamesSortAsUnsignedBytes", "[\xC3]\n\xFF = 1\nz = 2\n[z]\n", "[z][\xC3]<z|2><\xFF|1>"},
    {"HeaderOnlySectionStays", "[b]\n[a]\n", "[a][b]"},
    {"LoneCarriageReturnEndsNoLine", "[a]\nk = v\rl = w\n", "[a]<k|v\rl = w>"},
    {"ByteOrderMarkInsideIsText", "[a]\n\xEF\xBB\xBFk = v\n", "[a]<\xEF\xBB\xBFk|v>"},
    {"NulBytesAreText", "[a\0b]\n\0k\0 = \0v\0\n"s, "[a\0b]<\0k\0|\0v\0>"s},
    {"NoBreakSpaceIsNotTrimmed", "[a]\nk = \xA0v\xA0\n", "[a]<k|\xA0v\xA0>"},
};

INSTANTIATE_TEST_SUITE_P(IniDocument, AcceptedText, testing::ValuesIn(kAccepted),
                         [](const auto& test) { return test.param.name; });

// --- texts that are refused

struct RefusedCase {
  const char* name;
  std::string text;
  const char* message;
  std::uint32_t line;
  const char* contents;  // what stays
};

class RefusedText : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedText, NamesTheLineAndKeepsWhatStoodBefore) {
  IniDocument document;
  EXPECT_EQ(fault_of(document, GetParam().text), GetParam().message);
  EXPECT_EQ(contents(document), GetParam().contents);
  try {
    document.parse(GetParam().text);
    ADD_FAILURE() << "no fault";
  } catch (const IniError& fault) {
    EXPECT_EQ(fault.line(), GetParam().line);
  }
}

const RefusedCase kRefused[] = {
    {"SectionNotClosed", "[a", "l1: ini parsing failed, section not closed", 1, ""},
    {"LoneBracket", "\n[\n", "l2: ini parsing failed, section not closed", 2, ""},
    {"ClosedOnTheNextLine", "[a\n]\n", "l1: ini parsing failed, section not closed", 1, ""},
    {"SectionEmpty", "[]", "l1: ini parsing failed, section is empty", 1, ""},
    {"SectionEmptyComesBeforeTheTrailingText", "[]x", "l1: ini parsing failed, section is empty", 1, ""},
    {"SectionEmptyComesBeforeASecondBracket", "[]]", "l1: ini parsing failed, section is empty", 1, ""},
    {"TextAfterTheHeader", "[a]b", "l1: ini parsing failed, no end of line after section", 1, ""},
    {"CommentAfterTheHeader", "[a] # c", "l1: ini parsing failed, no end of line after section", 1, ""},
    {"SecondBracket", "[a]]", "l1: ini parsing failed, no end of line after section", 1, ""},
    {"LoneCarriageReturns", "[a]\rk = v\r", "l1: ini parsing failed, no end of line after section", 1, ""},
    {"FieldBeforeAnyHeader", "k = v\n[a]\n", "l1: ini parsing failed, field has no section", 1, ""},
    {"NoSectionComesBeforeNoSeparator", "total", "l1: ini parsing failed, field has no section", 1, ""},
    {"IndentedCommentBeforeAnyHeader", "  # note", "l1: ini parsing failed, field has no section", 1, ""},
    {"ByteOrderMark", "\xEF\xBB\xBF[basic]\nk = v\n", "l1: ini parsing failed, field has no section", 1, ""},
    {"NulByteIsNoWhiteSpace", "\0\n"s, "l1: ini parsing failed, field has no section", 1, ""},
    {"MissingSeparator", "[a]\nk = v\ntotal\n", "l3: ini parsing failed, no '=' found", 3, "[a]<k|v>"},
    {"IndentedComment", "[a]\n  # note", "l2: ini parsing failed, no '=' found", 2, "[a]"},
    {"IndentedSemicolon", "[a]\n\t; note", "l2: ini parsing failed, no '=' found", 2, "[a]"},
    {"LoneClosingBracket", "[a]\n]", "l2: ini parsing failed, no '=' found", 2, "[a]"},
    {"OtherSeparator", "[a]\nk : v", "l2: ini parsing failed, no '=' found", 2, "[a]"},
    {"BlankAndCommentLinesCount", "\n# c\n\r\n[a]\n;\n%\n \nk\n", "l8: ini parsing failed, no '=' found", 8, "[a]"},
    {"KeepsOtherSectionsAndLastValues",
     "[b]\nk = 1\nk = 2\nj = 3\n[a]\nl = 4\n[",
     "l7: ini parsing failed, section not closed",
     7,
     "[a]<l|4>[b]<j|3><k|2>"},
    {"StopsAtTheFirstFault", "[a]\nk\n[]\n[b]\nl = 1\n", "l2: ini parsing failed, no '=' found", 2, "[a]"},
};

INSTANTIATE_TEST_SUITE_P(IniDocument, RefusedText, testing::ValuesIn(kRefused),
                         [](const auto& test) { return test.param.name; });

// --- the document

TEST(IniDocument, FaultIsALogicErrorWithTheMessage) {
  IniDocument document;
  try {
    document.parse("[a]\n\ntotal");
    FAIL() << "no fault";
  } catch (const std::logic_error& fault) {
    EXPECT_STREQ(fault.what(), "l3: ini parsing failed, no '=' found");
  }
}

TEST(IniDocument, AbsentSectionReadsAsAnEmptyOne) {
  IniDocument document;
  EXPECT_TRUE(document.section("a").empty());
  document.parse("[b]\nk = v\n[d]\n");
  for (const char* const name : {"a", "c", "e", "B", " b", ""}) {
    EXPECT_TRUE(document.section(name).empty()) << name;
    EXPECT_EQ(document.section(name).find("k"), nullptr) << name;
  }
  EXPECT_TRUE(document.section("d").empty());
  EXPECT_FALSE(document.section("b").empty());
}

TEST(IniDocument, FindsKeysExactly) {
  IniDocument document;
  document.parse("[a]\nm = 1\nk = 2\n = 3\nkk = 4\n");
  EXPECT_EQ(value_of(document, "a", "m"), "1");
  EXPECT_EQ(value_of(document, "a", "k"), "2");
  EXPECT_EQ(value_of(document, "a", ""), "3");
  EXPECT_EQ(value_of(document, "a", "kk"), "4");
  for (const char* const key : {"K", "k ", "l", "kkk", "z"})
    EXPECT_EQ(value_of(document, "a", key), "(absent)") << key;
}

TEST(IniDocument, SecondParseReplacesTheFirst) {
  IniDocument document;
  document.parse("[a]\nk = 1\nk = 2\n[b]\nl = 3\n");
  document.parse("[c]\nm = 4\n");
  EXPECT_EQ(contents(document), "[c]<m|4>");
  EXPECT_TRUE(document.replaced_fields().empty());
  document.parse("");
  EXPECT_EQ(contents(document), "");
}

TEST(IniDocument, FailedParseReplacesTheFirstAndAGoodOneTheFailed) {
  IniDocument document;
  document.parse("[a]\nk = 1\n");
  EXPECT_EQ(fault_of(document, "[b]\nl = 2\n[]"), "l3: ini parsing failed, section is empty");
  EXPECT_EQ(contents(document), "[b]<l|2>");
  EXPECT_EQ(fault_of(document, "[c]\nm = 3\n"), "");
  EXPECT_EQ(contents(document), "[c]<m|3>");
}

TEST(IniDocument, FieldsKnowTheirLine) {
  IniDocument document;
  document.parse("# c\n[a]\r\n\r\nk = 1\nl = 2\n[b]\nk = 3\n[a]\nk = 4");
  EXPECT_EQ(document.section("a").find("k")->line, 9U);
  EXPECT_EQ(document.section("a").find("l")->line, 5U);
  EXPECT_EQ(document.section("b").find("k")->line, 7U);
}

TEST(IniDocument, ListsTheFieldsThatLaterOnesReplaced) {
  IniDocument document;
  document.parse("[a]\nk = 1\nl = 2\nk = 3\n[b]\nk = 4\n[a]\nk = 5\nk#x = 6\n");
  ASSERT_EQ(document.replaced_fields().size(), 3U);
  const std::pair<const char*, std::uint32_t> expected[] = {{"1", 2}, {"3", 4}, {"5", 8}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(document.replaced_fields()[i].key, "k");
    EXPECT_EQ(document.replaced_fields()[i].value, expected[i].first);
    EXPECT_EQ(document.replaced_fields()[i].line, expected[i].second);
  }
  EXPECT_EQ(value_of(document, "a", "k"), "6");
}

TEST(IniDocument, SeparatorAndCommentCharacterCanBeChosen) {
  IniDocument document(':', '!');
  document.parse("! c\n# c\n; c\n% c\n[a]\nk=l : v = w\nm!n : o ! p\n");
  EXPECT_EQ(contents(document), "[a]<k=l|v = w><m!n|o ! p>");
  EXPECT_EQ(fault_of(document, "[a]\nk = v"), "l2: ini parsing failed, no ':' found");
  IniDocument by_default;
  EXPECT_EQ(fault_of(by_default, "! c\n"), "l1: ini parsing failed, field has no section");
}

// --- size

TEST(IniDocument, TakesTextsOfSeveralMegabytes) {
  const std::string value(3'000'000, 'v');
  const std::string key(1'000'000, 'k');
  IniDocument document;
  document.parse("[a]\n" + key + " = " + value + "\n#" + value + "\n" + std::string(500'000, '\n') + "l = 1");
  EXPECT_EQ(value_of(document, "a", key), value);
  EXPECT_EQ(document.section("a").find("l")->line, 500'004U);
}

TEST(IniDocument, TakesTenThousandSectionsInAnyOrder) {
  constexpr std::uint32_t kCount = 10'000;
  const auto name = [](std::uint32_t i) { return "s" + std::to_string(i * 7919 % kCount); };
  std::string text;
  for (std::uint32_t i = 0; i < kCount; ++i)
    text += "[" + name(i) + "]\nk = " + std::to_string(i) + "\n";
  IniDocument document;
  document.parse(text);
  ASSERT_EQ(document.section_names().size(), kCount);
  EXPECT_TRUE(std::ranges::is_sorted(document.section_names()));
  for (std::uint32_t i = 0; i < kCount; ++i)
    ASSERT_EQ(value_of(document, name(i), "k"), std::to_string(i));
}

TEST(IniDocument, TakesFiftyThousandKeysOfWhichAThousandStay) {
  std::string text = "[a]\n";
  for (std::uint32_t i = 0; i < 50'000; ++i)
    text += "k" + std::to_string(i % 1000) + " = " + std::to_string(i) + "\n";
  IniDocument document;
  document.parse(text);
  EXPECT_EQ(document.section("a").fields().size(), 1000U);
  EXPECT_EQ(document.replaced_fields().size(), 49'000U);
  EXPECT_EQ(value_of(document, "a", "k17"), "49017");
}

// --- random texts

// The dialect once more, as plainly as it can be written down.
class PlainReader {
 public:
  std::string fault;  // the message, or nothing

  explicit PlainReader(const std::string& text) {
    std::istringstream stream(text);
    std::string line;
    for (int number = 1; fault.empty() && std::getline(stream, line); ++number) {
      const std::string complaint = take(line);
      if (!complaint.empty()) fault = "l" + std::to_string(number) + ": ini parsing failed, " + complaint;
    }
  }

  std::string contents() const {
    std::string text;
    for (const auto& [name, fields] : sections_) {
      text += "[" + name + "]";
      for (const auto& [key, value] : fields)
        text += "<" + key + "|" + value + ">";
    }
    return text;
  }

 private:
  static std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t\n\v\f\r") - first + 1);
  }

  static std::string cut(const std::string& key) {
    if (key.find('#') != std::string::npos) return key.substr(0, key.find('#'));
    if (key.find(';') != std::string::npos) return key.substr(0, key.find(';'));
    return key.substr(0, key.find('%'));
  }

  std::string take(const std::string& raw) {
    if (!raw.empty() && "#;%"s.find(raw[0]) != std::string::npos) return "";
    const std::string line = trimmed(raw);
    if (line.empty()) return "";
    if (line[0] == '[') {
      const std::size_t close = line.find(']');
      if (close == std::string::npos) return "section not closed";
      if (close == 1) return "section is empty";
      if (close != line.size() - 1) return "no end of line after section";
      current_ = &sections_[line.substr(1, close - 1)];
      return "";
    }
    if (current_ == nullptr) return "field has no section";
    const std::size_t separator = line.find('=');
    if (separator == std::string::npos) return "no '=' found";
    (*current_)[cut(trimmed(line.substr(0, separator)))] = trimmed(line.substr(separator + 1));
    return "";
  }

  std::map<std::string, std::map<std::string, std::string>> sections_;
  std::map<std::string, std::string>* current_ = nullptr;
};

// Texts of the characters that the dialect knows, cut into lines that are often right.
std::string random_text(std::mt19937& random) {
  static const std::string kCharacters = "[]==#;% \t\r\n\v\fabk\0\xA0\xFF"s;
  static const std::string kLines[] = {
      "[a]\n", "[b]\r\n", "k = v\n", " k=w \n", "# c\n", "\n", "k#a=\n", "l = 1 = 2\n"};
  std::string text = random() % 4 == 0 ? "" : "[a]\n";
  for (auto parts = random() % 12; parts > 0; --parts) {
    if (random() % 8 != 0) {
      text += kLines[random() % std::size(kLines)];
    } else {
      for (auto i = random() % 8; i > 0; --i)
        text += kCharacters[random() % kCharacters.size()];
    }
  }
  return text;
}

TEST(IniDocument, ReadsRandomTextsAsThePlainReaderDoes) {
  constexpr std::uint32_t kSeed = 31;
  std::mt19937 random(kSeed);
  IniDocument document;
  for (int round = 0; round < 30'000; ++round) {
    const std::string text = random_text(random);
    const PlainReader plain(text);
    ASSERT_EQ(fault_of(document, text), plain.fault) << "seed " << kSeed << ": " << testing::PrintToString(text);
    ASSERT_EQ(contents(document), plain.contents()) << "seed " << kSeed << ": " << testing::PrintToString(text);
  }
}

TEST(IniDocument, BinaryJunkIsParsedOrRefused) {
  constexpr std::uint32_t kSeed = 32;
  std::mt19937 random(kSeed);
  IniDocument document;
  for (int round = 0; round < 300; ++round) {
    std::string text = round % 2 == 0 ? "" : "[a]\n";
    for (auto i = random() % 2000; i > 0; --i)
      text += static_cast<char>(random() & 0xFF);
    const PlainReader plain(text);
    ASSERT_EQ(fault_of(document, text), plain.fault) << "seed " << kSeed << ", round " << round;
    ASSERT_EQ(contents(document), plain.contents()) << "seed " << kSeed << ", round " << round;
  }
}

}  // namespace
}  // namespace vq3900::test
