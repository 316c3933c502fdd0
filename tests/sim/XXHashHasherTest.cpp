#include <gtest/gtest.h>
#include <xxhash.h>

#include <cstdint>
#include <random>
#include <vector>

#include "sim/XXHashHasher.h"

namespace {

std::vector<unsigned char> PatternBytes(std::size_t size) {
  std::vector<unsigned char> bytes(size);
  std::uint32_t state = 12345;
  for (unsigned char& byte : bytes) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<unsigned char>(state >> 24);
  }
  return bytes;
}

}  // namespace

TEST(XXHashHasher, DigestIsIndependentOfHowTheBytesAreCut) {
  // No bytes have a digest of their own, not zero, also after feeding none.
  XXHashHasher empty;
  EXPECT_EQ(empty.digest(), 0x2D06800538D394C2ull);
  empty.update(nullptr, 0);
  EXPECT_EQ(empty.digest(), 0x2D06800538D394C2ull);
  // Sizes on both sides of the library's internal block and buffer sizes.
  for (std::size_t const size : {1u, 3u, 16u, 17u, 128u, 129u, 240u, 241u, 255u, 256u, 1024u, 5000u, 70000u}) {
    std::vector<unsigned char> const bytes = PatternBytes(size);
    std::uint64_t const reference = XXH3_64bits(bytes.data(), bytes.size());

    XXHashHasher whole;
    whole.update(bytes.data(), bytes.size());
    EXPECT_EQ(whole.digest(), reference) << size;

    XXHashHasher byteByByte;
    for (unsigned char const& byte : bytes) byteByByte.update(&byte, 1);
    EXPECT_EQ(byteByByte.digest(), reference) << size;

    // Random pieces, with the digest taken after each: taking it mustn't disturb the feeding.
    std::mt19937 random(static_cast<unsigned>(size));
    XXHashHasher pieces;
    for (std::size_t at = 0; at < bytes.size();) {
      std::size_t const piece = std::min<std::size_t>(bytes.size() - at, random() % 300);
      pieces.update(bytes.data() + at, piece);
      at += piece;
      ASSERT_EQ(pieces.digest(), XXH3_64bits(bytes.data(), at)) << size << " bytes, at " << at;
    }
    EXPECT_EQ(pieces.digest(), reference) << size;
  }
}
