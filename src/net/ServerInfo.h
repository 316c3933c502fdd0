#pragma once

#include <cstddef>
#include <vector>

// Two values that the server grants with a session. infoB goes to the lobby client.
struct ServerInfo {
  unsigned short infoA = 11;
  unsigned short infoB = 0;

  void to_wire(std::vector<unsigned char>& out) const;

  // Tolerant: with fewer than 2 bytes left the defaults stand and nothing is consumed; with only
  // infoA present infoB is 0 and only infoA is consumed.
  static ServerInfo from_wire(unsigned char const*& cursor, std::size_t& remaining);

  friend bool operator==(ServerInfo const&, ServerInfo const&) = default;
};
