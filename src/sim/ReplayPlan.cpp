#include "sim/ReplayPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "net/GameRecordsWire.h"
#include "sim/IGame.h"
#include "sim/IRunningGame.h"
#include "sim/KeyLookup.h"
#include "sim/Recording.h"
#include "sim/ResultConsensus.h"
#include "sim/UpdateSimulation.h"

std::optional<std::string> GameSpecProblem(IGame const& game, GameSpec const& spec,
                                           std::vector<std::uint16_t> const& players) {
  GameSettings const* settings = nullptr;
  if (auto const* coop = std::get_if<CoopChallengeIndex>(&spec.settings)) {
    if (coop->index >= game.lookup.coopChallenges.size()) return "it names a challenge that this client doesn't know";
    settings = &game.lookup.coopChallenges[coop->index].settings;
  } else if (auto const* ranked = std::get_if<RankedMatchIndex>(&spec.settings)) {
    if (ranked->index >= game.lookup.rankedMatches.size()) return "it names a ranked match that this client doesn't know";
    settings = &game.lookup.rankedMatches[ranked->index].settings;
  } else {
    settings = &std::get<GameSettings>(spec.settings);
  }
  auto const map = settings->strings.find("map");
  if (map == settings->strings.end() || game.maps.count(map->second) == 0) return "its map is unknown";
  // The catalogue's own entries are this client's and are taken as they stand; custom settings are
  // checked against the schema. A schema row whose minimum lies above its maximum bounds nothing.
  bool const fromCatalogue = !std::holds_alternative<GameSettings>(spec.settings);
  for (SchemaEntry const& entry : game.schema) {
    if (entry.key == "map" || fromCatalogue) continue;
    if (entry.kind == SchemaEntry::Integer) {
      auto const value = settings->ints.find(entry.key);
      bool const bounded = entry.minimum <= entry.maximum;
      if (value == settings->ints.end() ||
          (bounded && (value->second < entry.minimum || value->second > entry.maximum))) {
        return "its setting \"" + entry.key + "\" is missing or out of range";
      }
    } else {
      auto const value = settings->strings.find(entry.key);
      if (value == settings->strings.end() ||
          std::find(entry.choices.begin(), entry.choices.end(), value->second) == entry.choices.end()) {
        return "its setting \"" + entry.key + "\" is missing or not one of its choices";
      }
    }
  }
  std::size_t const slots = game.playerTeamsForMap(map->second).size();
  for (std::uint16_t slot : players) {
    if (slot >= slots) return "a player's slot isn't one of the map's";
  }
  return std::nullopt;
}

ReplayPlan PlanReplay(IGame const& game, GameSpec const& spec, Recording const& recording) {
  if (std::optional<std::string> problem = GameSpecProblem(game, spec, recording.results.playerSlots)) {
    throw std::runtime_error(fmt::format("The recording can't be replayed: {}.", *problem));
  }
  ReplayPlan plan;
  plan.spec = spec;
  plan.settings = game.lookup.settingsFrom(spec.settings);
  plan.players = recording.results.playerSlots;
  // A damaged or crafted file may name any number of players; a session needs one at least, and no
  // more than the map has places for.
  std::uint16_t const places = game.maxPlayersForMap(ValueAt(plan.settings.strings, std::string("map")));
  if (plan.players.empty() || plan.players.size() > places) {
    throw std::runtime_error(
        fmt::format("The recording names {} players, but its map has places for 1 to {}.", plan.players.size(), places));
  }
  if (std::optional<std::vector<unsigned char>> agreed = AgreedResultBytes(recording.results)) {
    GameResult result;
    unsigned char const* cursor = agreed->data();
    std::size_t remaining = agreed->size();
    // A result too short to read gives neither an end nor anything to compare: the replay runs to its
    // own end.
    if (FromBytes(cursor, remaining, result)) {
      plan.hasExpectedEnd = true;
      plan.expectedEndFrame = result.endFrame;
      plan.expectedResult = std::move(agreed);
    }
  }
  return plan;
}

bool StepReplay(IRunningGame& game, IOrderSource& source, int& stalledFrames, bool hasExpectedEnd,
                std::uint32_t expectedEndFrame, std::uint8_t delayFrames) {
  // The replay ends where the players' games ended, even if they ended a game early.
  if (hasExpectedEnd && game.currentFrame() + delayFrames == expectedEndFrame) {
    game.endGameNow();
  }
  return UpdateSimulation(game, source, stalledFrames);
}

bool ReplayMatches(std::vector<unsigned char> const& expectedResult, GameResult const& actual) {
  GameResult expected;
  unsigned char const* cursor = expectedResult.data();
  std::size_t remaining = expectedResult.size();
  return FromBytes(cursor, remaining, expected) && expected == actual;
}
