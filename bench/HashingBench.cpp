// Hashing a large state through the streaming hasher, against one call of the library on the same
// bytes (the memory-bound reference).
#include <benchmark/benchmark.h>
#include <xxhash.h>

#include <vector>

#include "sim/XXHashHasher.h"

namespace {

constexpr std::size_t kTotal = 2u << 20;  // 2 MiB: eight chunks of a pixel world
constexpr std::size_t kPiece = 256u << 10;

std::vector<unsigned char> Pixels() {
  std::vector<unsigned char> bytes(kTotal);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<unsigned char>(i * 2654435761u >> 13);
  }
  return bytes;
}

void BM_XXHashHasherIn256KiBUpdates(benchmark::State& state) {
  std::vector<unsigned char> const bytes = Pixels();
  for (auto _ : state) {
    XXHashHasher hasher;
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
      hasher.update(bytes.data() + at, kPiece);
    }
    benchmark::DoNotOptimize(hasher.digest());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kTotal));
}
BENCHMARK(BM_XXHashHasherIn256KiBUpdates);

void BM_XXH3OneShotReference(benchmark::State& state) {
  std::vector<unsigned char> const bytes = Pixels();
  for (auto _ : state) {
    benchmark::DoNotOptimize(XXH3_64bits(bytes.data(), bytes.size()));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kTotal));
}
BENCHMARK(BM_XXH3OneShotReference);

}  // namespace
