// INI texts into documents: one like a depth-engine configuration, and one much larger.
#define SI_NO_CONVERSION

#include <SimpleIni.h>
#include <benchmark/benchmark.h>

#include <array>
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <cstddef>
#include <sstream>
#include <string>

#include "config/ini_document.h"
#include "support/inih_document.h"

namespace {

std::string ini_text(std::size_t keys, std::size_t sections) {
  constexpr std::array kValues{"1280", "0.666", "{160,480,800,1120}", "true", "0x00320000", "-4", "stereo_1280x800"};
  std::string text;
  std::size_t key = 0;
  for (std::size_t section = 0; section < sections; ++section) {
    text += "; settings of this block\n[section_" + std::to_string(section) + "]\n";
    for (; key < keys * (section + 1) / sections; ++key) {
      text += "param_" + std::to_string(key * 7919 % 10007) + " = " + kValues[key % kValues.size()] + "\n";
    }
    text += "\n";
  }
  return text;
}

std::size_t by_us(const std::string& text) {
  vq3900::IniDocument document;
  document.parse(text);
  return document.section_names().size();
}

std::size_t by_inih(const std::string& text) {
  vq3900::bench::InihDocument document;
  ini_parse_string(text.c_str(), vq3900::bench::keep_field, &document);
  return document.size();
}

std::size_t by_simpleini(const std::string& text) {
  CSimpleIniCaseA document;
  document.LoadData(text);
  CSimpleIniCaseA::TNamesDepend names;
  document.GetAllSections(names);
  return names.size();
}

std::size_t by_property_tree(const std::string& text) {
  std::istringstream stream{text};
  boost::property_tree::ptree document;
  boost::property_tree::ini_parser::read_ini(stream, document);
  return document.size();
}

template <auto Parse>
void parse_ini(benchmark::State& state) {
  const auto sections = static_cast<std::size_t>(state.range(1));
  const std::string text = ini_text(static_cast<std::size_t>(state.range(0)), sections);
  if (Parse(text) != sections) state.SkipWithError("another number of sections than were given");
  for (auto _ : state)
    benchmark::DoNotOptimize(Parse(text));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Args({130, 6})->Args({2000, 100});
}

BENCHMARK(parse_ini<by_us>)->Name("ini/ours")->Apply(sizes);
BENCHMARK(parse_ini<by_inih>)->Name("ini/inih")->Apply(sizes);
BENCHMARK(parse_ini<by_simpleini>)->Name("ini/simpleini")->Apply(sizes);
BENCHMARK(parse_ini<by_property_tree>)->Name("ini/property_tree")->Apply(sizes);

}  // namespace
