#include "accounts/CredentialsFile.h"

#include <cstdint>
#include <fstream>
#include <istream>
#include <stdexcept>

namespace {

constexpr std::uint32_t kMaxNameSize = 30;
constexpr std::uint32_t kMaxIdSize = 32;
constexpr std::uint32_t kMaxSecretSize = 64;
constexpr std::size_t kIdSize = 8;
constexpr std::size_t kSecretSize = 16;

[[noreturn]] void ThrowShortRead() {
  throw std::runtime_error("Failed to read complete credentials from file");
}

void ReadExactly(std::istream& in, unsigned char* data, std::size_t size) {
  if (size == 0) {
    return;
  }
  in.read(reinterpret_cast<char*>(data), static_cast<std::streamsize>(size));
  if (static_cast<std::size_t>(in.gcount()) != size) {
    ThrowShortRead();
  }
}

// A length field, checked against its limit before anything is allocated for the field.
std::uint32_t ReadLength(std::istream& in, std::uint32_t limit) {
  unsigned char bytes[4];
  ReadExactly(in, bytes, sizeof bytes);
  std::uint32_t const length = std::uint32_t{bytes[0]} | (std::uint32_t{bytes[1]} << 8) |
                               (std::uint32_t{bytes[2]} << 16) | (std::uint32_t{bytes[3]} << 24);
  if (length > limit) {
    throw std::runtime_error("Unexpected data format in credentials file");
  }
  return length;
}

std::vector<unsigned char> ReadField(std::istream& in, std::uint32_t limit) {
  std::vector<unsigned char> field(ReadLength(in, limit));
  ReadExactly(in, field.data(), field.size());
  return field;
}

void AppendField(std::vector<unsigned char>& out, unsigned char const* data, std::size_t size) {
  std::uint32_t const length = static_cast<std::uint32_t>(size);
  for (int shift = 0; shift < 32; shift += 8) {
    out.push_back(static_cast<unsigned char>(length >> shift));
  }
  out.insert(out.end(), data, data + size);
}

}  // namespace

Credentials ReadCredentials(std::istream& in) {
  ReadField(in, kMaxNameSize);  // the name is not used
  Credentials credentials;
  credentials.playerId = ReadField(in, kMaxIdSize);
  credentials.secret = ReadField(in, kMaxSecretSize);
  if (in.peek() != std::istream::traits_type::eof()) {
    throw std::runtime_error("Unexpected trailing data in credentials file");
  }
  credentials.playerId.resize(kIdSize, 0);
  credentials.secret.resize(kSecretSize, 0);
  return credentials;
}

Credentials LoadCredentials(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in.is_open()) {
    throw std::runtime_error("Failed to open file: " + path);
  }
  return ReadCredentials(in);
}

std::vector<unsigned char> CredentialsFileBytes(Credentials const& credentials) {
  static constexpr unsigned char kName[] = {'A', 'n', 'o', 'n'};
  std::vector<unsigned char> bytes;
  bytes.reserve(12 + sizeof kName + credentials.playerId.size() + credentials.secret.size());
  AppendField(bytes, kName, sizeof kName);
  AppendField(bytes, credentials.playerId.data(), credentials.playerId.size());
  AppendField(bytes, credentials.secret.data(), credentials.secret.size());
  return bytes;
}

void SaveCredentials(Credentials const& credentials, std::string const& path) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out.is_open()) {
    throw std::runtime_error("Failed to open file for writing: " + path);
  }
  std::vector<unsigned char> const bytes = CredentialsFileBytes(credentials);
  out.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (out.fail()) {
    throw std::runtime_error("Failed to write credentials to file");
  }
}
