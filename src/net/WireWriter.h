#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

// Appends the fixed-width forms of the wire encoding to a byte vector: little-endian integers,
// bools as 0 or 1, 8-byte counts and raw bytes. Writing cannot fail.
class WireWriter {
public:
  explicit WireWriter(std::vector<unsigned char>& out) : out_(out) {}

  template <std::integral T>
    requires(!std::same_as<T, bool>)
  void integer(T value) {
    auto const bits = static_cast<std::make_unsigned_t<T>>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i) {
      out_.push_back(static_cast<unsigned char>(bits >> (8 * i)));
    }
  }

  void boolean(bool value) { out_.push_back(value ? 1 : 0); }

  void count(std::size_t elements) { integer(static_cast<std::uint64_t>(elements)); }

  void bytes(unsigned char const* data, std::size_t size) { out_.insert(out_.end(), data, data + size); }

private:
  std::vector<unsigned char>& out_;
};
