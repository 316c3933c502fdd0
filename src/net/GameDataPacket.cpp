#include "net/GameDataPacket.h"

#include "net/WireReader.h"
#include "net/WireWriter.h"

namespace Datagram {

std::array<unsigned char, kSessionRequestSize> EncodeSessionRequest(std::uint64_t token) {
  std::array<unsigned char, kSessionRequestSize> datagram{};
  datagram[0] = kSessionRequest;
  for (std::size_t i = 0; i < 8; ++i) {
    datagram[1 + i] = static_cast<unsigned char>(token >> (8 * i));
  }
  return datagram;
}

bool DecodeSessionRequest(unsigned char const* data, std::size_t length, std::uint64_t& token) {
  if (length != kSessionRequestSize || data[0] != kSessionRequest) {
    return false;
  }
  unsigned char const* cursor = data + 1;
  std::size_t remaining = length - 1;
  return WireReader(cursor, remaining).integer(token);
}

std::array<unsigned char, 1> EncodeSessionConfirmation() { return {kSessionConfirmation}; }

bool IsSessionConfirmation(unsigned char const* data, std::size_t length) {
  return length >= 1 && data[0] == kSessionConfirmation;
}

}  // namespace Datagram

void GameDataPacket::to_wire(std::vector<unsigned char>& out) const {
  WireWriter writer(out);
  out.push_back(Datagram::kGameData);
  writer.integer(newest_tick);
  writer.integer(received_before);
  out.push_back(static_cast<unsigned char>(updates.size()));
  for (std::vector<unsigned char> const& update : updates) {
    out.push_back(static_cast<unsigned char>(update.size()));
    writer.bytes(update.data(), update.size());
  }
}

std::optional<GameDataPacket> GameDataPacket::from_wire(unsigned char const*& cursor, std::size_t& remaining) {
  unsigned char const* at = cursor;
  std::size_t left = remaining;
  if (left < kHeaderSize) {
    return std::nullopt;
  }
  ++at;
  --left;  // the type byte
  GameDataPacket packet;
  WireReader reader(at, left);
  std::uint8_t count = 0;
  if (!reader.integer(packet.newest_tick) || !reader.integer(packet.received_before) || !reader.integer(count)) {
    return std::nullopt;
  }
  packet.updates.resize(count);
  for (std::vector<unsigned char>& update : packet.updates) {
    std::uint8_t length = 0;
    if (!reader.integer(length) || left < length) {
      return std::nullopt;
    }
    update.resize(length);
    reader.bytes(update.data(), length);
  }
  cursor = at;
  remaining = left;
  return packet;
}
