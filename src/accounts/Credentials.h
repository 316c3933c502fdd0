#pragma once

#include <vector>

// A player's account on the server: the public id (8 bytes) and the secret (16 bytes).
struct Credentials {
  std::vector<unsigned char> playerId;
  std::vector<unsigned char> secret;

  friend bool operator==(Credentials const&, Credentials const&) = default;
};
