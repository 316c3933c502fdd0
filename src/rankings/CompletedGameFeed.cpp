#include "rankings/CompletedGameFeed.h"

#include <type_traits>
#include <variant>

#include "net/GameRecordsWire.h"
#include "sim/ResultConsensus.h"

CompletedGameFeed::Outcome CompletedGameFeed::take(unsigned short gameNumber, GameResults const& game,
                                                   Games const& games, HighScoreTables& highScores,
                                                   PlayerRatings& glowHordeRatings, PlayerRatings& shipRatings) {
  if (taken_[gameNumber]) {
    return Outcome::AlreadyTaken;
  }
  if (!game.finished) {
    return Outcome::NotFinished;
  }
  taken_[gameNumber] = true;

  std::optional<std::vector<unsigned char>> const agreed = AgreedResultBytes(game);
  if (!agreed) {
    return Outcome::NoAgreedResult;
  }
  GameResult result;
  unsigned char const* cursor = agreed->data();
  std::size_t remaining = agreed->size();
  if (!FromBytes(cursor, remaining, result)) {
    return Outcome::UnreadableResult;
  }

  GameSpec const spec = ParseGameSpec(game.specBytes);
  return std::visit(
      [&](auto const& settings) {
        using Settings = std::decay_t<decltype(settings)>;
        if constexpr (std::is_same_v<Settings, CoopChallengeIndex>) {
          // A GameSpec too short to name its game reads as a challenge of the defaults; only a game's own
          // challenges go into its tables.
          if (spec.game != highScores.game()) {
            return Outcome::Refused;
          }
          return highScores.addGame(settings, gameNumber, result) ? Outcome::HighScoreAdded : Outcome::Refused;
        } else if constexpr (std::is_same_v<Settings, RankedMatchIndex>) {
          if (static_cast<std::size_t>(spec.game) >= games.size()) {
            return Outcome::Refused;
          }
          IGame const& catalogue = games.refGame(spec.game);
          if (settings.index >= catalogue.lookup.rankedMatches.size()) {
            return Outcome::Refused;
          }
          auto const& strings = catalogue.lookup.rankedMatches[settings.index].settings.strings;
          auto const map = strings.find("map");
          if (map == strings.end() || !catalogue.maps.contains(map->second)) {
            return Outcome::Refused;
          }
          PlayerRatings& ratings = spec.game == Game::GlowHorde ? glowHordeRatings : shipRatings;
          bool const rated = ratings.updateForCompletedGame(game.playerIds, game.playerSlots,
                                                            catalogue.playerTeamsForMap(map->second), result);
          return rated ? Outcome::RatingsUpdated : Outcome::Refused;
        } else {
          return Outcome::FriendlyGame;
        }
      },
      spec.settings);
}
