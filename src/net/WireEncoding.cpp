#include "net/WireEncoding.h"

namespace {

// Strings and byte vectors: the count check guarantees that the bytes are there.
template <class ByteContainer>
bool ReadByteContainer(unsigned char const*& cursor, std::size_t& remaining, ByteContainer& value) {
  WireReader reader(cursor, remaining);
  std::size_t count = 0;
  if (!reader.count(count)) {
    return false;
  }
  value.resize(count);
  return reader.bytes(reinterpret_cast<unsigned char*>(value.data()), count);
}

template <class ByteContainer>
void WriteByteContainer(ByteContainer const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  writer.count(value.size());
  writer.bytes(reinterpret_cast<unsigned char const*>(value.data()), value.size());
}

template <class Integer>
bool ReadIntegers(unsigned char const*& cursor, std::size_t& remaining, std::vector<Integer>& value) {
  WireReader reader(cursor, remaining);
  return FromBytesCounted(cursor, remaining, value, [&](Integer& element) { return reader.integer(element); });
}

template <class Integer>
void WriteIntegers(std::vector<Integer> const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  ToBytesCounted(value, out, [&](Integer element) { writer.integer(element); });
}

}  // namespace

void ToBytes(std::string const& value, std::vector<unsigned char>& out) { WriteByteContainer(value, out); }

void ToBytes(std::vector<unsigned char> const& value, std::vector<unsigned char>& out) {
  WriteByteContainer(value, out);
}

void ToBytes(std::vector<bool> const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  writer.count(value.size());
  for (bool const element : value) {
    writer.boolean(element);
  }
}

void ToBytes(std::vector<unsigned short> const& value, std::vector<unsigned char>& out) { WriteIntegers(value, out); }

void ToBytes(std::vector<short> const& value, std::vector<unsigned char>& out) { WriteIntegers(value, out); }

void ToBytes(std::vector<std::string> const& value, std::vector<unsigned char>& out) {
  ToBytesCounted(value, out, [&](std::string const& element) { ToBytes(element, out); });
}

void ToBytes(std::vector<std::vector<unsigned char>> const& value, std::vector<unsigned char>& out) {
  ToBytesCounted(value, out, [&](std::vector<unsigned char> const& element) { ToBytes(element, out); });
}

void ToBytes(std::vector<std::vector<long long>> const& value, std::vector<unsigned char>& out) {
  ToBytesCounted(value, out, [&](std::vector<long long> const& row) { WriteIntegers(row, out); });
}

void ToBytes(std::optional<unsigned short> const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  ToBytesOptional(value, out, [&](unsigned short element) { writer.integer(element); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::string& value) {
  return ReadByteContainer(cursor, remaining, value);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<unsigned char>& value) {
  return ReadByteContainer(cursor, remaining, value);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<bool>& value) {
  WireReader reader(cursor, remaining);
  std::size_t count = 0;
  if (!reader.count(count)) {
    return false;
  }
  value.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    bool element = false;
    if (!reader.boolean(element)) {
      return false;
    }
    value[i] = element;
  }
  return true;
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<unsigned short>& value) {
  return ReadIntegers(cursor, remaining, value);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<short>& value) {
  return ReadIntegers(cursor, remaining, value);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<std::string>& value) {
  return FromBytesCounted(cursor, remaining, value,
                          [&](std::string& element) { return FromBytes(cursor, remaining, element); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<std::vector<unsigned char>>& value) {
  return FromBytesCounted(cursor, remaining, value,
                          [&](std::vector<unsigned char>& element) { return FromBytes(cursor, remaining, element); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::vector<std::vector<long long>>& value) {
  return FromBytesCounted(cursor, remaining, value,
                          [&](std::vector<long long>& row) { return ReadIntegers(cursor, remaining, row); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<unsigned short>& value) {
  WireReader reader(cursor, remaining);
  return FromBytesOptional(cursor, remaining, value, [&](unsigned short& element) { return reader.integer(element); });
}
