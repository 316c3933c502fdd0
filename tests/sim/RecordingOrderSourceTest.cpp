#include <gtest/gtest.h>

#include <deque>
#include <memory>

#include "sim/Games.h"
#include "sim/LocalOnlyOrderSource.h"
#include "sim/Recording.h"
#include "sim/RecordingOrderSource.h"
#include "sim/ReplayOrderSource.h"
#include "sim/UpdateSimulation.h"
#include "support/FakeRunningGame.h"

namespace {

// A local game played through the recording source and its recording replayed through the replay
// source give the session exactly the same steps: the same orders of each frame and the same own order.
TEST(RecordingOrderSourceTest, ARecordedLocalGameReplaysStepForStep) {
  static Games const games;
  constexpr unsigned kDelay = 3;
  constexpr unsigned kEnd = 12;
  FakeRunningGame played(games.refGame(Game::GlowHorde), kDelay, kEnd);
  RecordingOrderSource recorder(std::make_unique<LocalOnlyOrderSource>(1, 0, kDelay), kDelay);
  int stalled = 0;
  while (UpdateSimulation(played, recorder, stalled)) {
  }
  // The orders {1} .. {9} were given on the steps from the session's first frame to its local end;
  // each update is a length byte and the order.
  ASSERT_EQ(recorder.updates().size(), kEnd - kDelay);
  EXPECT_EQ(recorder.updates().front(), (std::vector<unsigned char>{1, 1}));
  EXPECT_EQ(recorder.updates().back(), (std::vector<unsigned char>{1, 9}));

  GameResults results;
  results.playerSlots = {0};
  std::deque<std::vector<unsigned char>> const newestFirst(recorder.updates().rbegin(), recorder.updates().rend());
  Recording const recording(newestFirst, results);
  FakeRunningGame replayed(games.refGame(Game::GlowHorde), kDelay, kEnd);
  ReplayOrderSource replay(recording, 0, 1, kDelay);
  while (UpdateSimulation(replayed, replay, stalled)) {
  }
  EXPECT_EQ(replayed.steps, played.steps);
}

}  // namespace
