// tandem-match: plays one scripted match of a ship game between several clients in one process, each a
// real session made by the game's catalogue with its own local player, joined by an in-memory relay
// that does what the server does: it gathers every client's order of a step, joins them in player
// order and hands the joined update back delayFrames steps later. The clients must end with the same
// result, byte for byte; the match is then written as a recording with every client's report, which the
// client can replay and check.
//
//   tandem-match --game vipers --players 2 --seed 7 --seconds 30 --out recording1.bin [--tamper]
//
// --tamper changes player 0's order of the first step in the written recording (not in the match), so
// that a replay of it must find a different result. Exit status 0 when the clients agreed and the file was written, 1 when they
// disagreed or the run failed, 2 for wrong options.
#include <argparse/argparse.hpp>
#include <stdlib.h>

#include <cstdio>
#include <deque>
#include <iostream>
#include <memory>
#include <random>

#include "app/ChangeToExecutableDirectory.h"
#include "app/SDL3App.h"
#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "sim/IRunningGame.h"
#include "sim/Recording.h"

namespace {

using Bytes = std::vector<unsigned char>;
constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr unsigned long long kFramePeriod = 16666;

// The order a scripted player gives: now and then new keys (turn, thrust and the fire bit), else none.
Bytes ScriptedOrder(std::mt19937_64& random) {
  if (random() % 12 != 0) {
    return {};
  }
  return {static_cast<unsigned char>(random() % 32)};
}

Bytes Joined(std::vector<Bytes> const& orders) {
  Bytes update;
  for (Bytes const& order : orders) {
    update.push_back(static_cast<unsigned char>(order.size()));
    update.insert(update.end(), order.begin(), order.end());
  }
  return update;
}

}  // namespace

int main(int argc, char* argv[]) {
  argparse::ArgumentParser parser("tandem-match", "1.0");
  parser.add_description("Plays a scripted match of a ship game between clients in one process and writes it as a recording.");
  parser.add_argument("--game").default_value(std::string("vipers")).help("aviators or vipers");
  parser.add_argument("--players").default_value(2).scan<'i', int>().help("2 to 4 clients, in the slots 0, 2, 1, 3");
  parser.add_argument("--seed").default_value(1).scan<'i', int>().help("Seed of the players' scripted keys");
  parser.add_argument("--seconds").default_value(30).scan<'i', int>().help("Game duration, 30 to 600");
  parser.add_argument("--delay").default_value(15).scan<'i', int>().help("Delay frames, 1 to 35");
  parser.add_argument("--out").default_value(std::string()).help("The recording file to write");
  parser.add_argument("--tamper").flag().help("Change one order in the written recording");
  try {
    parser.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::cerr << error.what() << '\n' << parser.usage() << std::endl;
    return kUsage;
  }
  std::string const gameName = parser.get<std::string>("--game");
  int const players = parser.get<int>("--players");
  int const seconds = parser.get<int>("--seconds");
  int const delay = parser.get<int>("--delay");
  std::string const out = parser.get<std::string>("--out");
  if ((gameName != "aviators" && gameName != "vipers") || players < 2 || players > 4 || seconds < 30 ||
      seconds > 600 || delay < 1 || delay > 35 || out.empty()) {
    std::cerr << "Options out of range.\n" << parser.usage() << std::endl;
    return kUsage;
  }
  std::string const outPath = std::filesystem::absolute(out).string();

  try {
    setenv("SDL_VIDEODRIVER", "dummy", 0);
    ChangeToExecutableDirectory();
    auto app = std::make_shared<SDL3App>(320, 240, true);
    Games const games;
    Game const which = gameName == "vipers" ? Game::Vipers : Game::Aviators;
    IGame const& game = games.refGame(which);
    GameSettings settings = DefaultSettingsFromSchema(game.schema);
    settings.ints["duration_seconds"] = seconds;
    constexpr unsigned short kSlotOrder[4] = {0, 2, 1, 3};
    std::vector<unsigned short> const slots(kSlotOrder, kSlotOrder + players);

    std::vector<std::unique_ptr<IRunningGame>> clients;
    for (int c = 0; c < players; ++c) {
      clients.push_back(game.startSession(app, c, kFramePeriod, static_cast<unsigned char>(delay), settings, slots, false));
    }
    std::mt19937_64 random(static_cast<std::uint64_t>(parser.get<int>("--seed")));
    std::vector<Bytes> updates;  // the joined update of each step, oldest first
    int steps = 0;
    while (!clients.front()->gameEnded()) {
      std::vector<Bytes> given(static_cast<std::size_t>(players));
      for (int c = 0; c < players; ++c) {
        if (!clients[static_cast<std::size_t>(c)]->gameEnded_LocalPlayer()) {
          given[static_cast<std::size_t>(c)] = ScriptedOrder(random);
        }
      }
      updates.push_back(Joined(given));
      for (int c = 0; c < players; ++c) {
        IRunningGame& client = *clients[static_cast<std::size_t>(c)];
        if (client.gameEnded()) {
          throw std::runtime_error("A client ended before the others.");
        }
        std::vector<Bytes> orders(static_cast<std::size_t>(players));
        if (steps >= delay) {
          Bytes const& arrived = updates[static_cast<std::size_t>(steps - delay)];
          std::size_t at = 0;
          for (Bytes& order : orders) {
            std::size_t const length = arrived[at++];
            order.assign(arrived.begin() + static_cast<std::ptrdiff_t>(at),
                         arrived.begin() + static_cast<std::ptrdiff_t>(at + length));
            at += length;
          }
        }
        client.update(orders, given[static_cast<std::size_t>(c)]);
      }
      ++steps;
    }

    GameResults results;
    ToBytes(GameSpec{.game = which, .settings = settings, .delayFrames = static_cast<std::uint8_t>(delay),
                     .minPlayers = static_cast<std::uint16_t>(players),
                     .maxPlayers = static_cast<std::uint16_t>(players)},
            results.specBytes);
    results.finished = true;
    results.playerSlots = slots;
    GameResult first;
    clients.front()->getGameResult(first);
    for (int c = 0; c < players; ++c) {
      GameResult result;
      clients[static_cast<std::size_t>(c)]->getGameResult(result);
      if (!clients[static_cast<std::size_t>(c)]->gameEnded() || !(result == first)) {
        std::cerr << "Client " << c << " disagrees with client 0 about the result." << std::endl;
        return kFailed;
      }
      Bytes bytes;
      ToBytes(result, bytes);
      results.reportedResults.push_back(bytes);
      results.playerIds.push_back(Bytes(8, static_cast<unsigned char>(c + 1)));
      results.playerNames.push_back("Client " + std::to_string(c));
    }
    if (parser.get<bool>("--tamper")) {
      // Player 0's order of the first step becomes another one: a hard left turn with thrust, or a right
      // one. It reaches the shared state delayFrames steps later, long before anybody can have died.
      Bytes& update = updates.front();
      Bytes order = update[0] == 1 && update[1] == 5 ? Bytes{6} : Bytes{5};
      Bytes tampered{1, order[0]};
      tampered.insert(tampered.end(), update.begin() + 1 + update[0], update.end());
      update = tampered;
    }
    std::deque<Bytes> newestFirst(updates.rbegin(), updates.rend());
    Recording(newestFirst, results).save(outPath);
    for (int c = 0; c < players; ++c) {
      std::cout << "Player " << c << " (slot " << slots[static_cast<std::size_t>(c)]
                << "): " << game.formatResult(first.results.at(static_cast<std::size_t>(c)), false) << "\n";
    }
    std::cout << "Clients agreed after " << steps << " steps, end frame " << first.endFrame << ", checksum "
              << first.endStateChecksum << std::endl;
  } catch (std::exception const& error) {
    std::cerr << error.what() << std::endl;
    return kFailed;
  }
  return kPassed;
}
