#include "glow_horde/ScriptedGame.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

#include "Games.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/UIOrderText.h"

namespace glow_horde_testing {

namespace {

using Bytes = std::vector<unsigned char>;

std::vector<LemmingActivityTrigger> const k_defaultTriggers = {
    LemmingActivityTrigger::Immediate,  LemmingActivityTrigger::BeforeFalling, LemmingActivityTrigger::Immediate,
    LemmingActivityTrigger::Immediate,  LemmingActivityTrigger::Immediate,     LemmingActivityTrigger::WhenBlocked,
    LemmingActivityTrigger::WhenBlocked};

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
  int out = 0;
  for (int n : simulation.exitedCounts()) {
    out += n;
  }
  return out;
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

ScriptedGame PlayScriptedGame(std::string const& namedSettings, int players, std::vector<ScriptedClick> const& clicks,
                              std::uint8_t delayFrames) {
  GameSettings const settings = NamedGlowHordeSettings(namedSettings);
  MapSettings const& map = GlowHorde().maps.at(settings.strings.at("map"));
  auto const count = static_cast<std::size_t>(players);
  std::vector<unsigned short> slots(count);
  for (std::size_t p = 0; p < count; ++p) {
    slots[p] = static_cast<unsigned short>(p);
  }

  std::vector<std::unique_ptr<GlowHordeSimulation>> clients;
  for (int c = 0; c < players; ++c) {
    clients.push_back(std::make_unique<GlowHordeSimulation>(nullptr, c, 16666, delayFrames, settings, map, slots));
  }
  GlowHordeSimulation& reference = *clients.front();

  ScriptedGame game;
  game.ordersSent.assign(count, 0);
  game.ordersAccepted.assign(count, 0);
  game.outByExit.assign(reference.exitPositions().size(), std::vector<int>(count, 0));
  game.firstOutFrame.assign(count, 0);

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
  std::vector<std::vector<std::pair<std::uint16_t, Position>>> before(count);

  while (!reference.gameEnded()) {
    std::uint32_t const frame = reference.frame();
    std::vector<Bytes> ours(count);
    for (std::size_t c = 0; c < count; ++c) {
      GlowHordeSimulation const& client = *clients[c];
      while (next[c] < script[c].size() && script[c][next[c]].frame <= frame) {
        ScriptedClick const& click = script[c][next[c]++];
        std::optional<UIOrder> const order = ParseUIOrderText(click.text, k_defaultTriggers);
        if (!order.has_value()) {
          throw std::invalid_argument("Not an order: " + click.text);
        }
        if (client.gameEnded_LocalPlayer()) {
          continue;
        }
        std::optional<Order> const resolved = client.localPlayerState().resolveUIOrder(*order);
        ours[c] = resolved.has_value() ? resolved->toBytes() : Bytes{};
      }
      game.ordersSent[c] += ours[c].empty() ? 0 : 1;
    }
    sent[frame] = ours;
    auto const relayed = sent.find(frame - delayFrames);
    std::vector<Bytes> const arriving = relayed != sent.end() ? relayed->second : std::vector<Bytes>(count);

    // Client 0 sees which player's units leave, and where: each unit that is gone after the step
    // left at the exit nearest where it stood before it.
    for (std::size_t p = 0; p < count; ++p) {
      before[p].clear();
      for (Lemming const& unit : reference.players()[p].lemmings()) {
        before[p].push_back({unit.id(), unit.position()});
      }
    }
    int const outBefore = TotalOut(reference);
    for (std::size_t c = 0; c < count; ++c) {
      if (clients[c]->update(arriving, ours[c]).localOrderAccepted) {
        game.ordersAccepted[c] += 1;
      }
    }
    if (TotalOut(reference) != outBefore) {
      for (std::size_t p = 0; p < count; ++p) {
        std::vector<Lemming> const& now = reference.players()[p].lemmings();
        for (auto const& [id, position] : before[p]) {
          if (std::any_of(now.begin(), now.end(), [&](Lemming const& unit) { return unit.id() == id; })) {
            continue;
          }
          std::size_t nearest = 0;
          for (std::size_t e = 1; e < reference.exitPositions().size(); ++e) {
            if (DistanceSquared(position, reference.exitPositions()[e]) <
                DistanceSquared(position, reference.exitPositions()[nearest])) {
              nearest = e;
            }
          }
          game.outByExit[nearest][p] += 1;
          if (game.firstOutFrame[p] == 0) {
            game.firstOutFrame[p] = p == 0 ? frame : frame - delayFrames;
          }
        }
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
