#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// Reads the fixed-width forms of the wire encoding: little-endian integers, one-byte bools, 8-byte
// counts and raw bytes. The cursor and the count of bytes left belong to the caller and advance in
// place, so that record readers built on this class follow the FromBytes convention. Every read
// checks its width first and consumes nothing when too few bytes are left.
class WireReader {
public:
  WireReader(unsigned char const*& cursor, std::size_t& remaining) : cursor_(cursor), remaining_(remaining) {}

  std::size_t remaining() const { return remaining_; }

  template <std::integral T>
    requires(!std::same_as<T, bool>)
  bool integer(T& value) {
    if (remaining_ < sizeof(T)) {
      return false;
    }
    using Bits = std::make_unsigned_t<T>;
    Bits bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
      bits = static_cast<Bits>(bits | static_cast<Bits>(static_cast<Bits>(cursor_[i]) << (8 * i)));
    }
    value = static_cast<T>(bits);
    advance(sizeof(T));
    return true;
  }

  // Any non-zero byte is true.
  bool boolean(bool& value) {
    if (remaining_ < 1) {
      return false;
    }
    value = cursor_[0] != 0;
    advance(1);
    return true;
  }

  // An 8-byte element count. The count is consumed, then compared with the bytes left: a count that
  // promises more elements than there are bytes fails here, before the caller allocates anything.
  bool count(std::size_t& elements) {
    std::uint64_t value = 0;
    if (!integer(value) || value > remaining_) {
      return false;
    }
    elements = static_cast<std::size_t>(value);
    return true;
  }

  bool bytes(unsigned char* out, std::size_t size) {
    if (remaining_ < size) {
      return false;
    }
    if (size != 0) {
      std::memcpy(out, cursor_, size);
    }
    advance(size);
    return true;
  }

private:
  void advance(std::size_t size) {
    cursor_ += size;
    remaining_ -= size;
  }

  unsigned char const*& cursor_;
  std::size_t& remaining_;
};
