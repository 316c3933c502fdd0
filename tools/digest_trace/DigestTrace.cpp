// tandem-digest-trace: plays a few seeded random games of each game through the lockstep harness (two
// to four clients, random legal settings, random and malformed orders) and prints client 0's digest
// of every part at every frame, then each game's result. Two builds of the same sources (by different
// compilers, say) that compute the same games print the same bytes; a diff of two traces names the first
// part and frame where they parted.
//
//   tandem-digest-trace [--games 2] [--first-seed 1] [--seconds 40] [--out trace.txt]
//
// --seconds caps each game's duration. Exit status 0 when every game's clients agreed with each other
// and the trace was written, 1 when some disagreed or the run failed, 2 for wrong options.
#include <argparse/argparse.hpp>
#include <fmt/format.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

#include "app/ChangeToExecutableDirectory.h"
#include "app/SDL3App.h"
#include "aviators/AviatorsLockstep.h"
#include "glow_horde/GlowHordeLockstep.h"
#include "sim/Games.h"
#include "support/LockstepHarness.h"
#include "vipers/VipersLockstep.h"

namespace {

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct TracedGame {
  Game game;
  testing_support::LockstepAdapter (*adapter)();
};

constexpr TracedGame kTracedGames[] = {
    {Game::GlowHorde, glow_horde_testing::GlowHordeLockstepAdapter},
    {Game::Aviators, aviators_testing::AviatorsLockstepAdapter},
    {Game::Vipers, vipers_testing::VipersLockstepAdapter},
};

}  // namespace

int main(int argc, char* argv[]) {
  argparse::ArgumentParser parser("tandem-digest-trace", "1.0");
  parser.add_argument("--games").default_value(2).scan<'i', int>().help("Games of each game, 1 to 100");
  parser.add_argument("--first-seed").default_value(1).scan<'i', int>().help("Seed of the first game, 1 or more");
  parser.add_argument("--seconds").default_value(40).scan<'i', int>().help("Longest game duration, 30 to 600");
  parser.add_argument("--out").default_value(std::string()).help("The trace file (standard output without it)");
  try {
    parser.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::cerr << error.what() << '\n' << parser.usage() << std::endl;
    return kUsage;
  }
  int const count = parser.get<int>("--games");
  int const firstSeed = parser.get<int>("--first-seed");
  int const seconds = parser.get<int>("--seconds");
  std::string const out = parser.get<std::string>("--out");
  if (count < 1 || count > 100 || firstSeed < 1 || seconds < 30 || seconds > 600) {
    std::cerr << "Options out of range.\n" << parser.usage() << std::endl;
    return kUsage;
  }

  std::FILE* file = stdout;
  if (!out.empty()) {
    file = std::fopen(out.c_str(), "wb");
    if (file == nullptr) {
      std::cerr << "Can't write " << out << '\n';
      return kFailed;
    }
  }
  int status = kPassed;
  try {
    setenv("SDL_VIDEODRIVER", "dummy", 0);
    setenv("TANDEM_AUDIO_DRIVER", "null", 0);
    ChangeToExecutableDirectory();
    auto app = std::make_shared<SDL3App>(320, 240, true);
    Games const games;
    auto const start = std::chrono::steady_clock::now();
    long long lines = 0;
    for (TracedGame const& traced : kTracedGames) {
      IGame const& game = games.refGame(traced.game);
      testing_support::LockstepAdapter const adapter = traced.adapter();
      for (int i = 0; i < count; ++i) {
        auto const seed = static_cast<std::uint64_t>(firstSeed + i);
        testing_support::LockstepGame settings = testing_support::RandomLockstepGame(game, seed);
        if (auto duration = settings.settings.ints.find("duration_seconds"); duration != settings.settings.ints.end()) {
          duration->second = std::min(duration->second, seconds);
        }
        std::vector<testing_support::LockstepTraceEntry> trace;
        testing_support::LockstepReport const report = TraceLockstepGame(game, adapter, settings, app, trace);
        fmt::print(file, "== {}: {}\n", GameDisplayName(traced.game), report.text);
        for (auto const& entry : trace) {
          fmt::print(file, "{}\t{}\t{}\t{:016x}\n", entry.part, entry.at, entry.frame, entry.digest);
        }
        lines += static_cast<long long>(trace.size());
        if (!report.agreed) {
          std::cerr << GameDisplayName(traced.game) << ": the clients disagreed: " << report.text << '\n';
          status = kFailed;
        }
      }
    }
    double const elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cerr << fmt::format("{} games of each game, {} digests in {:.1f} s\n", count, lines, elapsed);
  } catch (std::exception const& error) {
    std::cerr << "tandem-digest-trace: " << error.what() << '\n';
    status = kFailed;
  }
  if (file != stdout && std::fclose(file) != 0) {
    std::cerr << "Can't write " << out << '\n';
    status = kFailed;
  }
  return status;
}
