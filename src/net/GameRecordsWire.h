#pragma once

#include <cstddef>
#include <vector>

#include "sim/GameResult.h"
#include "sim/GameSettings.h"
#include "sim/GameSpec.h"
#include "net/WireEncoding.h"

// The bytes of the game records (conventions in WireEncoding.h).

// GameSettings: a 2-byte entry count and the string entries, then a 2-byte count and the integer
// entries, each map in ascending byte order of its keys, so that equal settings give equal bytes
// whatever the order inside the hash tables. The reader empties both maps first, accepts any order,
// and keeps the last value of a key that comes twice.
void ToBytes(GameSettings const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameSettings& value);

// The settings variant: one index byte (0 challenge, 1 ranked match, 2 custom settings), then the
// alternative. An index above 2 fails without touching the target.
void ToBytes(GameSpecSettings const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameSpecSettings& value);

// GameSpec: game (2 bytes), settings, delayFrames (1 byte), minPlayers and maxPlayers (2 bytes each).
void ToBytes(GameSpec const& value, std::vector<unsigned char>& out);

// The tolerant GameSpec reader: it starts from the defaults and takes each field while the bytes
// suffice, so a short record keeps the defaults of the fields that it lacks. There is no failure:
// a failed settings variant keeps what it read and the three trailing fields keep their defaults.
GameSpec ParseGameSpec(unsigned char const* data, std::size_t size);
GameSpec ParseGameSpec(std::vector<unsigned char> const& bytes);

// GameResult: endFrame (4 bytes), results (rows of 8-byte values), endStateChecksum (8 bytes).
// The reader fails with fewer than 4 bytes or when the rows don't parse; the checksum is taken only
// if 8 bytes are left after the rows, and keeps the target's value otherwise.
void ToBytes(GameResult const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameResult& value);
