// The verifier's whole proof of one recording, as tandem-verify runs it: a default four-player game of
// each game (the catalogue's default settings on a map of four places, every player in the seat of its own slot, no orders),
// from the load of its map to its result. The counter x_real_time is the game's length over the
// processor time that its proof took on one core.
#include <benchmark/benchmark.h>

#include <time.h>

#include <deque>
#include <vector>

#include "app/ChangeToExecutableDirectory.h"
#include "net/GameRecordsWire.h"
#include "sim/GameResult.h"
#include "sim/HeadlessGames.h"
#include "sim/Recording.h"
#include "sim/RecordingVerifier.h"

namespace {

double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

HeadlessGames const& TheGames() {
  static HeadlessGames const games = [] {
    ChangeToExecutableDirectory();  // the map images are under data/ beside the executable
    return HeadlessGames();
  }();
  return games;
}

// A four-player game with no orders whose players agreed on the result that a first replay reaches.
Recording DefaultFourPlayerGame(Game which) {
  IGame const& game = TheGames().refGame(which);
  GameSettings settings = DefaultSettingsFromSchema(game.schema);
  // Glow Horde's default map has three places: its four-player ranked map instead, default otherwise.
  if (game.maxPlayersForMap(settings.strings.at("map")) < 4) {
    settings.strings["map"] = "Wrapped Ledges";
  }
  GameResults results;
  ToBytes(GameSpec{which, settings, 15, 4, 4}, results.specBytes);
  results.finished = true;
  results.playerSlots = {0, 1, 2, 3};
  results.playerIds.resize(4);
  results.playerNames.resize(4);
  results.reportedResults.resize(4);
  Recording recording(std::deque<std::vector<unsigned char>>{}, results);
  RecordingVerdict const first = VerifyRecording(TheGames(), recording);
  std::vector<unsigned char> agreed;
  ToBytes(first.run.result, agreed);
  recording.results.reportedResults.assign(4, agreed);
  return recording;
}

void BM_VerifyDefaultFourPlayerGame(benchmark::State& state) {
  auto const which = static_cast<Game>(state.range(0));
  Recording const recording = DefaultFourPlayerGame(which);
  double seconds = 0;
  std::uint64_t frames = 0;
  for (auto _ : state) {
    double const start = ThreadSeconds();
    RecordingVerdict const verdict = VerifyRecording(TheGames(), recording);
    seconds += ThreadSeconds() - start;
    frames += verdict.run.frames;
    if (verdict.outcome != RecordingVerdict::Outcome::Reproduced) {
      state.SkipWithError("the recording was not reproduced");
      return;
    }
  }
  state.counters["frames"] = static_cast<double>(frames) / static_cast<double>(state.iterations());
  state.counters["x_real_time"] = seconds > 0 ? static_cast<double>(frames) / 60.0 / seconds : 0.0;
}
BENCHMARK(BM_VerifyDefaultFourPlayerGame)
    ->ArgName("game")
    ->Arg(static_cast<int>(Game::GlowHorde))
    ->Arg(static_cast<int>(Game::Aviators))
    ->Arg(static_cast<int>(Game::Vipers))
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1.0);

}  // namespace
