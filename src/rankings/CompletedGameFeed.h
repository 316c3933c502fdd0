#pragma once

#include <vector>

#include "rankings/HighScoreTables.h"
#include "rankings/PlayerRatings.h"
#include "sim/GameResults.h"
#include "sim/Games.h"

// Takes the games that the lobby reports finished into the high scores and the two rating tables: each
// game number once, and only a result that every reporting client sent byte for byte the same. A game
// whose reports disagree never reaches a table. Feeding the same games in the same order gives the same
// tables on every client.
class CompletedGameFeed {
public:
  enum class Outcome {
    HighScoreAdded,    // a challenge: its table has the result
    RatingsUpdated,    // a ranked match: its ranking has rated the players
    FriendlyGame,      // custom settings: no table takes these
    NotFinished,       // still running; may be fed again once finished
    AlreadyTaken,      // this number was fed before and is never taken twice
    NoAgreedResult,    // no report, or two that differ
    UnreadableResult,  // the agreed bytes are not a result
    Refused,           // the game doesn't fit the catalogue or its table
  };

  // highScores must be the tables of Glow Horde's challenges; glowHordeRatings takes ranked Glow Horde
  // games and shipRatings the ranked games of the other two.
  Outcome take(unsigned short gameNumber, GameResults const& game, Games const& games, HighScoreTables& highScores,
               PlayerRatings& glowHordeRatings, PlayerRatings& shipRatings);

private:
  std::vector<bool> taken_ = std::vector<bool>(65536, false);
};
