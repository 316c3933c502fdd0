#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <vector>

// Small helpers for tests that read and write the byte encoding.
namespace testbytes {

using Bytes = std::vector<unsigned char>;

inline Bytes Of(std::initializer_list<int> values) {
  Bytes bytes;
  for (int const value : values) {
    bytes.push_back(static_cast<unsigned char>(value));
  }
  return bytes;
}

inline Bytes Concat(std::initializer_list<Bytes> parts) {
  Bytes bytes;
  for (Bytes const& part : parts) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  }
  return bytes;
}

// The 8-byte little-endian count of the encoding.
inline Bytes Count(unsigned long long count) {
  Bytes bytes;
  for (int i = 0; i < 8; ++i) {
    bytes.push_back(static_cast<unsigned char>(count >> (8 * i)));
  }
  return bytes;
}

// Writes value with ToBytes and returns the bytes.
template <class T>
Bytes Encode(T const& value) {
  Bytes out;
  ToBytes(value, out);
  return out;
}

// Runs FromBytes over all of bytes; reports the result and how many bytes were consumed.
struct ReadOutcome {
  bool ok = false;
  std::size_t consumed = 0;
  std::size_t remaining = 0;
};

template <class T>
ReadOutcome Decode(Bytes const& bytes, T& value) {
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  ReadOutcome outcome;
  outcome.ok = FromBytes(cursor, remaining, value);
  outcome.consumed = static_cast<std::size_t>(cursor - bytes.data());
  outcome.remaining = remaining;
  return outcome;
}

// Whether value, written and read back over read (a fresh T unless given), reads whole and equal.
template <class T>
::testing::AssertionResult RoundTrips(T const& value, T read = T{}) {
  ReadOutcome const outcome = Decode(Encode(value), read);
  if (!outcome.ok || outcome.remaining != 0) {
    return ::testing::AssertionFailure() << "not read whole: ok " << outcome.ok << ", " << outcome.remaining << " left";
  }
  if (!(read == value)) {
    return ::testing::AssertionFailure() << "read back as another value";
  }
  return ::testing::AssertionSuccess();
}

}  // namespace testbytes
