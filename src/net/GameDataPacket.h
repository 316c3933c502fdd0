#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// The datagrams of a game session. Every datagram starts with its type byte.
namespace Datagram {

inline constexpr unsigned char kSessionRequest = 1;       // client to server: 1, then the 8-byte token
inline constexpr unsigned char kSessionConfirmation = 2;  // server to client: 2, the rest ignored
inline constexpr unsigned char kGameData = 3;             // both ways: a GameDataPacket

inline constexpr std::size_t kSessionRequestSize = 9;

// The largest UDP payload, and so the receive buffer of a datagram socket.
inline constexpr std::size_t kMaxPayload = 65507;

// The session request: type 1, then the token least significant byte first.
std::array<unsigned char, kSessionRequestSize> EncodeSessionRequest(std::uint64_t token);
// True for exactly 9 bytes of type 1.
bool DecodeSessionRequest(unsigned char const* data, std::size_t length, std::uint64_t& token);

// The confirmation is the single byte 2; any datagram whose first byte is 2 counts as one.
std::array<unsigned char, 1> EncodeSessionConfirmation();
bool IsSessionConfirmation(unsigned char const* data, std::size_t length);

}  // namespace Datagram

// The game data datagram: type 3; newest_tick, 8 bytes; received_before, 8 bytes; a 1-byte count of
// updates; each update a length byte and its bytes. Updates run newest first: element i belongs to
// tick newest_tick - i. An update holds at most 255 bytes, a packet at most 255 updates.
struct GameDataPacket {
  static constexpr std::size_t kHeaderSize = 18;
  static constexpr std::size_t kMaxUpdates = 255;
  static constexpr std::size_t kMaxUpdateSize = 255;

  std::uint64_t newest_tick = 0;
  // The sender has received every tick of the receiver's stream below this number.
  std::uint64_t received_before = 0;
  std::vector<std::vector<unsigned char>> updates;

  // Appends the datagram. The count and the lengths are written as their low 8 bits; keeping within
  // the limits is the sender's business.
  void to_wire(std::vector<unsigned char>& out) const;

  // Reads a datagram at cursor, stepping over the type byte without looking at it (callers check the
  // type first). A datagram shorter than its header, or whose updates run past remaining, is refused
  // whole: the result is empty and cursor and remaining stay where they were. On success both are
  // advanced past the packet; bytes after the last update are left for the caller.
  static std::optional<GameDataPacket> from_wire(unsigned char const*& cursor, std::size_t& remaining);

  friend bool operator==(GameDataPacket const&, GameDataPacket const&) = default;
};
