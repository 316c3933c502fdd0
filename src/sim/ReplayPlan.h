#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/GameResult.h"
#include "sim/GameSettings.h"
#include "sim/GameSpec.h"

class IGame;
class IOrderSource;
class IRunningGame;
class Recording;

// What a replay of a recording needs, read from the recording's own records and checked against the
// game's tables: the settings and players of the session, and the end and result that its players
// agreed on (none if no report was made or the reports disagree). The client's replay page and the
// programs that verify recordings without a window all replay through this one plan.
struct ReplayPlan {
  GameSpec spec;
  GameSettings settings;
  std::vector<unsigned short> players;
  bool hasExpectedEnd = false;
  std::uint32_t expectedEndFrame = 0;
  std::optional<std::vector<unsigned char>> expectedResult;  // the bytes of the agreed GameResult
};

// Why a game, recorded or started by a server, can't be played by this program, or nothing if it can:
// its GameSpec names settings that the game's tables don't have, a map it doesn't know, values outside
// the schema, or players whose slots aren't the map's.
std::optional<std::string> GameSpecProblem(IGame const& game, GameSpec const& spec,
                                           std::vector<std::uint16_t> const& players);

// The plan of a replay of recording, whose GameSpec is `spec` and names game. Raises std::runtime_error
// with a sentence when the recording can't be replayed. Recordings come from files and the network, so
// everything is checked here, nothing assumed.
ReplayPlan PlanReplay(IGame const& game, GameSpec const& spec, Recording const& recording);

// One frame of a replay: with an expected end, brings the session's end to the frame where the players'
// games ended; then steps it once as any game is stepped. Returns whether it stepped (false once the
// game has ended).
bool StepReplay(IRunningGame& game, IOrderSource& source, int& stalledFrames, bool hasExpectedEnd,
                std::uint32_t expectedEndFrame, std::uint8_t delayFrames);

// Whether the result that a replay arrived at is the agreed one: endFrame, every row value by value and
// the end state checksum. Bytes that don't hold a result never match.
bool ReplayMatches(std::vector<unsigned char> const& expectedResult, GameResult const& actual);
