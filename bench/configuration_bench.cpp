// Loading the sample configuration from a warm file, and applying it.
#include "vq3900_depth_engine.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "config/de_input.h"
#include "support/allocations.h"
#include "support/inih_document.h"

namespace {

using vq3900::KeyDescription;
using vq3900::KeyType;

constexpr const char* kSample = VQ3900_EXAMPLES "/stereo_1280x800.ini";

void load(benchmark::State& state) {
  for (auto _ : state) {
    if (load_de_input_configs(kSample) != 0) state.SkipWithError("the sample does not load");
  }
}

// --- the same by inih

// Room for the widest value.
struct Converted {
  std::array<double, 16> numbers{};
  std::array<long long, 16> integers{};
  std::string text;
};

void convert_list(const std::string& text, bool real, Converted& value) {
  const char* at = text.c_str() + 1;  // behind the brace
  for (std::size_t i = 0; i < value.numbers.size() && *at != '\0'; ++i) {
    char* end = nullptr;
    if (real) {
      value.numbers[i] = std::strtod(at, &end);
    } else {
      value.integers[i] = std::strtoll(at, &end, 0);
    }
    at = *end == '\0' ? end : end + 1;  // behind the comma or brace
  }
}

void convert(const KeyDescription& key, const std::string& text, Converted& value) {
  switch (key.type) {
    case KeyType::kText:
    case KeyType::kVersion:
      value.text = text;
      break;
    case KeyType::kBool:
      value.integers[0] = text == "true" || text == "1" ? 1 : 0;
      break;
    case KeyType::kFloat:
      value.numbers[0] = static_cast<double>(std::strtof(text.c_str(), nullptr));
      break;
    case KeyType::kUint16List:
    case KeyType::kInt32List:
    case KeyType::kDoubleList:
      convert_list(text, key.type == KeyType::kDoubleList, value);
      break;
    default:
      value.integers[0] = std::strtoll(text.c_str(), nullptr, 0);
  }
}

void load_by_inih(benchmark::State& state) {
  const std::vector<KeyDescription> keys = vq3900::de_input_keys();
  Converted value;
  for (auto _ : state) {
    vq3900::bench::InihDocument document;
    if (ini_parse(kSample, vq3900::bench::keep_field, &document) != 0) state.SkipWithError("the sample does not load");
    for (const KeyDescription& key : keys) {
      const auto section = document.find(key.section);
      if (section == document.end()) continue;
      const auto field = section->second.find(key.name);
      if (field != section->second.end()) convert(key, field->second, value);
      benchmark::DoNotOptimize(value);
    }
  }
}

void apply(benchmark::State& state) {
  load_de_input_configs(kSample);
  const std::size_t before = vq3900::bench::allocations();
  for (auto _ : state) {
    if (set_depth_engine_config() != 0) state.SkipWithError("the sample cannot be applied");
  }
  state.counters["allocations"] = static_cast<double>(vq3900::bench::allocations() - before);
}

BENCHMARK(load)->Name("load/ours");
BENCHMARK(load_by_inih)->Name("load/inih");
BENCHMARK(apply)->Name("apply/ours");

}  // namespace
