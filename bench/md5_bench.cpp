// MD5 of the short keys that records are known by, of a large message, and with the trace that goes with a digest.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <nettle/md5.h>
#include <openssl/evp.h>
#include <openssl/md5.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <vector>

#include "bytes/md5.h"
#include "bytes/md5_gen_api.h"
#include "support/streams.h"

namespace {

using Bytes = std::span<const std::uint8_t>;
using Digest = vq3900::Md5Digest;

Digest by_openssl(Bytes bytes) {
  Digest digest;
  MD5_CTX context;
  MD5_Init(&context);
  MD5_Update(&context, bytes.data(), bytes.size());
  MD5_Final(digest.data(), &context);
  return digest;
}

// The algorithm is looked up and the context made once, as a program would that takes many digests.
Digest by_openssl_evp(Bytes bytes) {
  static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "MD5", nullptr);
  static EVP_MD_CTX* const context = EVP_MD_CTX_new();
  Digest digest;
  EVP_DigestInit_ex2(context, algorithm, nullptr);
  EVP_DigestUpdate(context, bytes.data(), bytes.size());
  EVP_DigestFinal_ex(context, digest.data(), nullptr);
  return digest;
}

Digest by_nettle(Bytes bytes) {
  Digest digest;
  md5_ctx context;
  md5_init(&context);
  md5_update(&context, bytes.size(), bytes.data());
  md5_digest(&context, digest.size(), digest.data());
  return digest;
}

std::vector<std::uint8_t> message(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<std::uint8_t>(i * 13);
  return bytes;
}

template <Digest (*Md5)(Bytes)>
void md5_of(benchmark::State& state) {
  const std::vector<std::uint8_t> bytes = message(static_cast<std::size_t>(state.range(0)));
  if (Md5(bytes) != by_openssl(bytes)) state.SkipWithError("another digest than OpenSSL's");
  for (auto _ : state) {
    Bytes input = bytes;
    benchmark::DoNotOptimize(input);
    benchmark::DoNotOptimize(Md5(input));
  }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(12)->Arg(16)->Arg(36)->Arg(1048576);
}

BENCHMARK(md5_of<vq3900::md5>)->Name("md5/ours")->Apply(sizes);
BENCHMARK(md5_of<by_openssl>)->Name("md5/openssl")->Apply(sizes);
BENCHMARK(md5_of<by_openssl_evp>)->Name("md5/openssl_evp")->Apply(sizes);
BENCHMARK(md5_of<by_nettle>)->Name("md5/nettle")->Apply(sizes);

// --- with the trace

constexpr std::array kTrace{"Md5_gen step 1!\n",
                            "Md5_gen step 2!\n",
                            "Md5_gen step 3!\n",
                            "Md5_gen step 4!\n",
                            "start MD5Encode!\n",
                            "MD5Encode 1!\n",
                            "MD5Encode 2!\n",
                            "MD5Encode 3!\n",
                            "MD5Encode done!\n",
                            "Md5_gen end!\n"};

void traced_by_us(const std::vector<std::uint8_t>& bytes) {
  Digest digest;
  vq3900::Md5_gen(bytes.data(), digest.data(), static_cast<std::uint32_t>(bytes.size()));
  benchmark::DoNotOptimize(digest);
}

// The text alone, without a digest.
void traced_by_stdio(const std::vector<std::uint8_t>&) {
  for (const char* const line : kTrace)
    std::fputs(line, stdout);
}

template <auto Traced>
void run_traced(benchmark::State& state, int to) {
  const std::vector<std::uint8_t> bytes = message(16);
  const vq3900::bench::Redirected out{stdout, to};
  for (auto _ : state)
    Traced(bytes);
}

template <auto Traced>
void to_nowhere(benchmark::State& state) {
  const int null = open("/dev/null", O_WRONLY);
  run_traced<Traced>(state, null);
  close(null);
}

template <auto Traced>
void to_pipe(benchmark::State& state) {
  const vq3900::bench::DrainedPipe pipe;
  run_traced<Traced>(state, pipe.writing_end());
}

BENCHMARK(to_nowhere<traced_by_us>)->Name("md5_trace/ours/null");
BENCHMARK(to_nowhere<traced_by_stdio>)->Name("md5_trace/stdio/null");
BENCHMARK(to_pipe<traced_by_us>)->Name("md5_trace/ours/pipe");
BENCHMARK(to_pipe<traced_by_stdio>)->Name("md5_trace/stdio/pipe");

}  // namespace
