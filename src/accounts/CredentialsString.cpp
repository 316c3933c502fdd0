#include "accounts/CredentialsString.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

constexpr std::size_t kIdSize = 8;
constexpr std::size_t kSecretSize = 16;
constexpr std::size_t kPayloadSize = 1 + kIdSize + kSecretSize + 2;
constexpr unsigned char kVersion = 1;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

// The value of a Base64url character, or -1 for one outside the alphabet. Padding is handled apart.
int SextetOf(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '-') return 62;
  if (c == '_') return 63;
  return -1;
}

bool IsAsciiWhitespace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

std::vector<unsigned char> DecodeBase64url(std::string text) {
  switch (text.size() % 4) {
    case 1: throw std::runtime_error("Invalid Base64url length");
    case 2: text += "=="; break;
    case 3: text += "="; break;
    default: break;
  }
  std::vector<unsigned char> bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t group = 0; group < text.size(); group += 4) {
    std::uint32_t bits = 0;
    int padding = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      char const c = text[group + i];
      int value = 0;
      if (c == '=') {
        ++padding;
      } else {
        value = SextetOf(c);
        if (value < 0) {
          throw std::runtime_error("Invalid Base64url character");
        }
      }
      bits = (bits << 6) | static_cast<std::uint32_t>(value);
    }
    if (padding > 2) {
      throw std::runtime_error("Invalid Base64url padding");
    }
    bytes.push_back(static_cast<unsigned char>(bits >> 16));
    if (text[group + 2] != '=') {
      bytes.push_back(static_cast<unsigned char>(bits >> 8));
    }
    if (text[group + 3] != '=') {
      bytes.push_back(static_cast<unsigned char>(bits));
    }
  }
  return bytes;
}

}  // namespace

void RemoveAsciiWhitespaceInPlace(std::string& text) {
  std::erase_if(text, IsAsciiWhitespace);
}

std::uint16_t CredentialsCrc16(unsigned char const* data, std::size_t size) {
  std::uint16_t crc = 0xFFFF;
  for (std::size_t i = 0; i < size; ++i) {
    crc = static_cast<std::uint16_t>(crc ^ (static_cast<std::uint16_t>(data[i]) << 8));
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 0x8000) != 0 ? static_cast<std::uint16_t>((crc << 1) ^ 0x1021) : static_cast<std::uint16_t>(crc << 1);
    }
  }
  return crc;
}

Credentials DecodeCredentialsString(std::string const& text) {
  std::string compact = text;
  RemoveAsciiWhitespaceInPlace(compact);
  std::vector<unsigned char> const payload = DecodeBase64url(std::move(compact));
  if (payload.size() != kPayloadSize) {
    throw std::runtime_error("Decoded payload has unexpected length");
  }
  if (payload[0] != kVersion) {
    throw std::runtime_error("Unsupported credential version");
  }
  std::uint16_t const stored = static_cast<std::uint16_t>((payload[kPayloadSize - 2] << 8) | payload[kPayloadSize - 1]);
  if (CredentialsCrc16(payload.data(), kPayloadSize - 2) != stored) {
    throw std::runtime_error("Credential checksum mismatch");
  }
  Credentials credentials;
  credentials.playerId.assign(payload.begin() + 1, payload.begin() + 1 + kIdSize);
  credentials.secret.assign(payload.begin() + 1 + kIdSize, payload.begin() + 1 + kIdSize + kSecretSize);
  return credentials;
}

std::string EncodeCredentialsString(Credentials const& credentials) {
  if (credentials.playerId.size() != kIdSize || credentials.secret.size() != kSecretSize) {
    throw std::invalid_argument("Credentials to encode need an 8-byte player id and a 16-byte secret");
  }
  std::array<unsigned char, kPayloadSize> payload{};
  payload[0] = kVersion;
  std::copy(credentials.playerId.begin(), credentials.playerId.end(), payload.begin() + 1);
  std::copy(credentials.secret.begin(), credentials.secret.end(), payload.begin() + 1 + kIdSize);
  std::uint16_t const crc = CredentialsCrc16(payload.data(), kPayloadSize - 2);
  payload[kPayloadSize - 2] = static_cast<unsigned char>(crc >> 8);
  payload[kPayloadSize - 1] = static_cast<unsigned char>(crc);

  // 27 bytes are nine whole groups of three, so the text needs no padding.
  std::string text;
  text.reserve(kPayloadSize / 3 * 4);
  for (std::size_t i = 0; i < kPayloadSize; i += 3) {
    std::uint32_t const bits = (std::uint32_t{payload[i]} << 16) | (std::uint32_t{payload[i + 1]} << 8) | payload[i + 2];
    for (int shift = 18; shift >= 0; shift -= 6) {
      text += kAlphabet[(bits >> shift) & 63];
    }
  }
  return text;
}
