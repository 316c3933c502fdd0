#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "world/Position.h"

// One map of a game's catalogue.
struct MapSettings {
  std::string name;
  std::string imageFile;           // under "data/"
  std::uint64_t imageChecksum = 0; // digest of the stored image; 0 means no check
  std::uint16_t maxPlayers = 1;
  std::int32_t repeatX = 1;
  std::int32_t repeatY = 1;
  bool mirrorX = false;
  bool mirrorY = false;
  bool rotateFourWays = false;
  bool wrapX = false;
  bool wrapY = false;
  bool cameraWrapX = false;
  bool cameraWrapY = false;
  bool selectable = false;
  std::vector<Position> starts;          // by player slot; negative counts from the far edge
  std::vector<bool> startFacesRight;     // by player slot
  std::vector<Position> exits;           // by team
  std::vector<int> playerTeams;          // by player slot
  std::vector<std::uint16_t> startRotations;  // by player slot, 65536 to a turn
};
