#pragma once

#include <deque>
#include <iosfwd>
#include <string>
#include <vector>

#include "sim/GameResults.h"

// The complete input of one played game: what the server relayed on each step, and the game's
// results. Since the simulation is deterministic, this is all that a replay needs.
//
// File format, all integers little-endian:
//   8 bytes headerSize, then the header:
//     8 bytes magic length (4), the magic "GRUF", 4 bytes format version (1), the GameResults record;
//     whatever follows the GameResults inside the header is ignored;
//   8 bytes chunkCount, then chunkCount chunks, each 8 bytes of size and the update of one step.
// An update is the collated form that SplitServerData reads.
class Recording {
public:
  static constexpr char kMagic[4] = {'G', 'R', 'U', 'F'};
  static constexpr unsigned kFormatVersion = 1;

  // From updates given newest first, as the side that makes recordings collects them: they are
  // copied and stored oldest first.
  Recording(std::deque<std::vector<unsigned char>> const& updatesNewestFirst, GameResults const& results);

  // Loads a recording file. Raises std::runtime_error, whose text says what was wrong, on any failure.
  explicit Recording(std::string const& path);

  // Loads the bytes of a recording file from a stream, with the same checks and texts as loading a
  // file after it has been opened.
  explicit Recording(std::istream& in);

  // Writes the file format. Raises std::runtime_error on failure.
  void save(std::string const& path) const;
  void save(std::ostream& out) const;

  // The number of players: the size of results.playerSlots.
  int players() const;

  // One byte string for each player: the split update of step frame, or empty strings at or past the
  // end of the recording (and before its start).
  std::vector<std::vector<unsigned char>> allUpdatesOnFrame(int frame) const;

  // Element player of allUpdatesOnFrame(frame); empty for a player that the recording doesn't have.
  std::vector<unsigned char> playerUpdateOnFrame(int frame, int player) const;

  friend bool operator==(Recording const&, Recording const&) = default;

  // Element k is what the server relayed for step k, counted from 0.
  std::deque<std::vector<unsigned char>> updates;
  GameResults results;

private:
  void load(std::istream& in);
};
