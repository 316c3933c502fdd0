#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "net/WireReader.h"
#include "net/WireWriter.h"

// The byte encoding of records: a plain concatenation of fields, little-endian integers, 8-byte
// counts in front of strings and vectors, one byte for each bool, one flag byte in front of an
// optional value and one index byte in front of a variant.
//
// ToBytes(value, out) appends to out and cannot fail.
// FromBytes(cursor, remaining, value) reads at cursor with remaining bytes left, advances both as it
// consumes and returns false when the bytes don't hold the value. It never throws on malformed input
// and restores nothing: on false the target holds what was read so far. A vector target is resized
// to the new count, and an absent optional clears the old value.
//
// This header holds the strings and containers; the records are in GameRecordsWire.h and
// LobbyRecordsWire.h.

void ToBytes(std::string const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<unsigned char> const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<bool> const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<unsigned short> const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<short> const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<std::string> const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<std::vector<unsigned char>> const& value, std::vector<unsigned char>& out);
void ToBytes(std::vector<std::vector<long long>> const& value, std::vector<unsigned char>& out);
void ToBytes(std::optional<unsigned short> const& value, std::vector<unsigned char>& out);

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::string& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<unsigned char>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<bool>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<unsigned short>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<short>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<std::string>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<std::vector<unsigned char>>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<std::vector<long long>>& value);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<unsigned short>& value);

// The bounded read of a counted vector, for the record readers: the 8-byte count, its comparison
// with the bytes left (before any allocation), the resize, then each element by readElement, which
// makes its own width check. Elements wider than a byte are thus stopped one by one.
// maxCount bounds vectors whose elements take far more memory than their shortest encoding (an
// absent optional room is one byte on the wire and hundreds in memory): a count above it fails
// before the resize, like a count above the bytes left.
template <class Element, class ReadElement>
bool FromBytesCounted(unsigned char const*& cursor, std::size_t& remaining, std::vector<Element>& value,
                      ReadElement&& readElement, std::size_t maxCount = static_cast<std::size_t>(-1)) {
  std::size_t count = 0;
  if (!WireReader(cursor, remaining).count(count) || count > maxCount) {
    return false;
  }
  value.resize(count);
  for (Element& element : value) {
    if (!readElement(element)) {
      return false;
    }
  }
  return true;
}

// The 8-byte count, then each element by writeElement.
template <class Element, class WriteElement>
void ToBytesCounted(std::vector<Element> const& value, std::vector<unsigned char>& out, WriteElement&& writeElement) {
  WireWriter(out).count(value.size());
  for (Element const& element : value) {
    writeElement(element);
  }
}

// An optional: a flag byte (0 absent, anything else present), then the value if present. A present
// value is read over the target's old value, if it had one.
template <class Value, class ReadValue>
bool FromBytesOptional(unsigned char const*& cursor, std::size_t& remaining, std::optional<Value>& value,
                       ReadValue&& readValue) {
  bool present = false;
  if (!WireReader(cursor, remaining).boolean(present)) {
    return false;
  }
  if (!present) {
    value.reset();
    return true;
  }
  if (!value.has_value()) {
    value.emplace();
  }
  return readValue(*value);
}

template <class Value, class WriteValue>
void ToBytesOptional(std::optional<Value> const& value, std::vector<unsigned char>& out, WriteValue&& writeValue) {
  WireWriter(out).boolean(value.has_value());
  if (value.has_value()) {
    writeValue(*value);
  }
}
