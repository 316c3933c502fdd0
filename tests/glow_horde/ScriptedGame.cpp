#include "glow_horde/ScriptedGame.h"

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <stdexcept>

#include "sim/Games.h"
#include "glow_horde/TutorialLevelSettings.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/UIOrderText.h"

namespace glow_horde_testing {

namespace {

using Bytes = std::vector<unsigned char>;
using T = LemmingActivityTrigger;

std::vector<T> const k_defaultTriggers = {T::Immediate, T::BeforeFalling, T::Immediate, T::Immediate,
                                          T::Immediate, T::WhenBlocked,   T::WhenBlocked};

IGame const& GlowHorde() {
  static Games const games;
  return games.refGame(Game::GlowHorde);
}

std::int64_t DistanceSquared(Position a, Position b) {
  std::int64_t const dx = a.x - b.x;
  std::int64_t const dy = a.y - b.y;
  return dx * dx + dy * dy;
}

int TotalOut(GlowHordeSimulation const& simulation) {
  return std::accumulate(simulation.exitedCounts().begin(), simulation.exitedCounts().end(), 0);
}

}  // namespace

GameSettings NamedGlowHordeSettings(std::string const& name) {
  for (auto const* list : {&GlowHorde().lookup.coopChallenges, &GlowHorde().lookup.rankedMatches}) {
    for (NamedGameSettings const& named : *list) {
      if (named.name == name) {
        return named.settings;
      }
    }
  }
  throw std::invalid_argument("No challenge or ranked match is called " + name + ".");
}

GameSettings TutorialSettings(int level) { return TutorialLevelSettings(GlowHorde().schema, level); }

ScriptedGame PlayScriptedGame(std::string const& namedSettings, int players, std::vector<ScriptedClick> const& clicks,
                              std::uint8_t delayFrames) {
  return PlayScriptedGame(NamedGlowHordeSettings(namedSettings), players, clicks, delayFrames);
}

ScriptedGame PlayScriptedGame(GameSettings const& settings, int players, std::vector<ScriptedClick> const& clicks,
                              std::uint8_t delayFrames) {
  MapSettings const& map = GlowHorde().maps.at(settings.strings.at("map"));
  auto const count = static_cast<std::size_t>(players);
  std::vector<unsigned short> slots(count);
  std::iota(slots.begin(), slots.end(), static_cast<unsigned short>(0));
  std::vector<std::unique_ptr<GlowHordeSimulation>> clients;
  for (int c = 0; c < players; ++c) {
    clients.push_back(std::make_unique<GlowHordeSimulation>(c, 16666, delayFrames, settings, map, slots));
  }
  GlowHordeSimulation& reference = *clients.front();

  ScriptedGame game;
  game.ordersSent.assign(count, 0);
  game.ordersAccepted.assign(count, 0);
  game.outByExit.assign(reference.exitPositions().size(), std::vector<int>(count, 0));
  game.outFrames.assign(count, {});

  // Each player's clicks in frame order; a later click of the same frame replaces an earlier one.
  std::vector<std::vector<ScriptedClick>> script(count);
  for (ScriptedClick const& click : clicks) {
    script.at(static_cast<std::size_t>(click.player)).push_back(click);
  }
  for (auto& own : script) {
    std::stable_sort(own.begin(), own.end(), [](auto const& a, auto const& b) { return a.frame < b.frame; });
  }
  std::vector<std::size_t> next(count, 0);
  std::map<std::uint32_t, std::vector<Bytes>> sent;  // by frame of giving: each player's order

  while (!reference.gameEnded()) {
    std::uint32_t const frame = reference.frame();
    std::vector<Bytes>& ours = sent[frame];
    ours.resize(count);
    for (std::size_t c = 0; c < count; ++c) {
      while (next[c] < script[c].size() && script[c][next[c]].frame <= frame) {
        ScriptedClick const& click = script[c][next[c]++];
        std::optional<UIOrder> const order = ParseUIOrderText(click.text, k_defaultTriggers);
        if (!order.has_value()) {
          throw std::invalid_argument("Not an order: " + click.text);
        }
        if (!clients[c]->gameEnded_LocalPlayer()) {
          std::optional<Order> const resolved = clients[c]->localPlayerState().resolveUIOrder(*order);
          ours[c] = resolved.has_value() ? resolved->toBytes() : Bytes{};
        }
      }
      game.ordersSent[c] += ours[c].empty() ? 0 : 1;
    }
    auto const relayed = sent.find(frame - delayFrames);
    std::vector<Bytes> const arriving = relayed != sent.end() ? relayed->second : std::vector<Bytes>(count);

    // Client 0 sees which player's units leave, and where: each unit that is gone after the step
    // left at the exit nearest where it stood before it.
    std::vector<std::vector<Lemming>> before;
    for (PlayerState const& player : reference.players()) {
      before.push_back(player.lemmings());
    }
    int const outBefore = TotalOut(reference);
    for (std::size_t c = 0; c < count; ++c) {
      game.ordersAccepted[c] += clients[c]->update(arriving, ours[c]).localOrderAccepted ? 1 : 0;
    }
    for (std::size_t p = 0; p < count && TotalOut(reference) != outBefore; ++p) {
      std::vector<Lemming> const& now = reference.players()[p].lemmings();
      for (Lemming const& unit : before[p]) {
        if (std::any_of(now.begin(), now.end(), [&](Lemming const& u) { return u.id() == unit.id(); })) {
          continue;
        }
        auto const& exits = reference.exitPositions();
        auto const nearest = std::min_element(exits.begin(), exits.end(), [&](Position a, Position b) {
          return DistanceSquared(unit.position(), a) < DistanceSquared(unit.position(), b);
        });
        game.outByExit[static_cast<std::size_t>(nearest - exits.begin())][p] += 1;
        game.outFrames[p].push_back(p == 0 ? frame : frame - delayFrames);
      }
    }
    sent.erase(frame - delayFrames);
  }

  for (auto const& client : clients) {
    game.results.emplace_back();
    client->getGameResult(game.results.back());
  }
  return game;
}

}  // namespace glow_horde_testing
