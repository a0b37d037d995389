// CRC-32 over what an image build has: a register file, a main image, a LUT file. Every path that this processor has,
// and the one that the library takes.
#include <benchmark/benchmark.h>
#include <isa-l.h>
#include <libdeflate.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bytes/crc32.h"
#include "bytes/crc32_paths.h"

namespace {

std::uint32_t by_zlib(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  return static_cast<std::uint32_t>(crc32_z(initial, data, length));
}

std::uint32_t by_libdeflate(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  return libdeflate_crc32(initial, data, length);
}

std::uint32_t by_isal(std::uint32_t initial, const std::uint8_t* data, std::size_t length) {
  return crc32_gzip_refl(initial, data, length);
}

using vq3900::Crc32Function;

void checksum(benchmark::State& state, Crc32Function* crc) {
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::uint8_t>(i * 167 >> 3);
  if (crc(0, bytes.data(), bytes.size()) != by_zlib(0, bytes.data(), bytes.size())) {
    state.SkipWithError("another checksum than zlib's");
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(crc(0, bytes.data(), bytes.size()));
}

void add(const std::string& name, Crc32Function* crc) {
  benchmark::RegisterBenchmark(("crc32/" + name).c_str(), checksum, crc)->Arg(928)->Arg(20480)->Arg(716800);
}

[[maybe_unused]] const bool registered = [] {
  add("ours", vq3900::crc32);
  for (const auto& path : vq3900::crc32_paths()) {
    if (path.supported()) add(path.name, path.run);
  }
  add("zlib", by_zlib);
  add("libdeflate", by_libdeflate);
  add("isal", by_isal);
  return true;
}();

}  // namespace
