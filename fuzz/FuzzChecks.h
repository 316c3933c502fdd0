#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

// The readers of standard containers must be visible where CheckReader is defined; the records' own
// readers are found by argument-dependent lookup.
#include "net/WireEncoding.h"

// Checks shared by the fuzz targets. A failed check aborts, which libFuzzer reports as a crash and
// saves the input that caused it.
#define FUZZ_REQUIRE(condition)                                                                     \
  do {                                                                                              \
    if (!(condition)) {                                                                             \
      std::fprintf(stderr, "%s:%d: fuzz check failed: %s\n", __FILE__, __LINE__, #condition);       \
      std::abort();                                                                                 \
    }                                                                                               \
  } while (false)

namespace fuzz {

// Reads a T with FromBytes from the whole input, and checks what every reader promises: the cursor
// and the count of bytes left stay consistent, and a value that was read writes back to bytes that
// read to the same value.
template <class T>
void CheckReader(std::uint8_t const* data, std::size_t size) {
  unsigned char const* cursor = data;
  std::size_t remaining = size;
  T value{};
  bool const ok = FromBytes(cursor, remaining, value);
  FUZZ_REQUIRE(cursor >= data && static_cast<std::size_t>(cursor - data) + remaining == size);
  if (!ok) {
    return;
  }
  std::vector<unsigned char> bytes;
  ToBytes(value, bytes);
  unsigned char const* again = bytes.data();
  std::size_t againRemaining = bytes.size();
  T copy{};
  FUZZ_REQUIRE(FromBytes(again, againRemaining, copy));
  FUZZ_REQUIRE(againRemaining == 0);
  FUZZ_REQUIRE(copy == value);
}

}  // namespace fuzz
