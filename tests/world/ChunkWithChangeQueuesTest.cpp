#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

#include "world/ChunkWithChangeQueues.h"
#include "support/Checks.h"
#include "support/Lockstep.h"
#include "support/ReferenceChunk.h"

using testing_support::ClientLog;
using testing_support::DigestOf;
using testing_support::LocalBaseDigest;
using testing_support::ReferenceChunk;
using testing_support::Workload;

namespace {

constexpr std::uint32_t kGround = 0xFE804020u;
constexpr std::uint32_t kRock = 0xFF808080u;
constexpr std::uint32_t kSky = 0x00000000u;
constexpr std::uint32_t kScenery = 0x40102030u;

Chunk ChunkOf(std::vector<std::uint32_t> const& pixels) {
  Chunk chunk;
  std::memcpy(chunk.mutablePixels(), pixels.data(), pixels.size() * sizeof(std::uint32_t));
  return chunk;
}

// A chunk of one kind of pixel, with another kind placed at a few pixels.
Chunk Filled(std::uint32_t fill, std::initializer_list<std::pair<int, int>> at = {}, std::uint32_t placed = 0) {
  Chunk chunk = ChunkOf(std::vector<std::uint32_t>(Chunk::kPixels, fill));
  for (auto [x, y] : at) chunk.writePixel(static_cast<unsigned char>(x), static_cast<unsigned char>(y), placed);
  return chunk;
}

std::vector<std::uint32_t> Copy(Chunk const& chunk) { return {chunk.pixels(), chunk.pixels() + Chunk::kPixels}; }

// Terrain with every kind of pixel: ground, rock, sky and coloured scenery.
std::vector<std::uint32_t> MixedTerrain(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint32_t> pixels(Chunk::kPixels);
  for (auto& pixel : pixels) {
    switch (random() % 8) {
      case 0: pixel = kRock; break;
      case 1: case 2: pixel = kSky; break;
      case 3: pixel = kScenery; break;
      default: pixel = kGround;
    }
  }
  return pixels;
}

// A chunk and the plain model side by side: every answer and every copy must agree.
struct CheckedChunk {
  ChunkWithChangeQueues real;
  ReferenceChunk model;

  CheckedChunk(std::vector<std::uint32_t> const& pixels, int players, int local, int delay)
      : real(ChunkOf(pixels), players, local, delay), model(pixels, players, local, delay) {}

  bool isGround(int player, int x, int y) {
    auto const ux = static_cast<unsigned char>(x), uy = static_cast<unsigned char>(y);
    bool const answer = real.isGround(player, ux, uy);
    EXPECT_EQ(answer, model.isGround(player, ux, uy)) << "player " << player << " at " << x << "," << y;
    return answer;
  }
  void queueAddPixel(int player, int x, int y) { queue(player, x, y, true); }
  void queueRemovePixel(int player, int x, int y) { queue(player, x, y, false); }
  // The preview is written at once, not only when the frame advances.
  void queue(int player, int x, int y, bool add) {
    auto const ux = static_cast<unsigned char>(x), uy = static_cast<unsigned char>(y);
    add ? real.queueAddPixel(player, ux, uy) : real.queueRemovePixel(player, ux, uy);
    model.queue(player, ux, uy, add);
    auto const at = static_cast<std::size_t>(ReferenceChunk::Index(ux, uy));
    EXPECT_EQ(real.display().readPixel(ux, uy), model.display()[at]) << "display at " << x << "," << y;
  }
  void frameAdvance() {
    real.frameAdvance();
    model.frameAdvance();
    ASSERT_EQ(Copy(real.base()), model.base());
    ASSERT_EQ(Copy(real.localBase()), model.localBase());
    ASSERT_EQ(Copy(real.display()), model.display());
  }
};

}  // namespace

TEST(ChunkWithChangeQueues, AddAndRemoveInOneFrameLeaveThePixelEmptyWhoeverMadeThem) {
  constexpr int kDelay = 2;
  // Same player, then two players in both orders.
  for (auto [adder, remover] : {std::pair{0, 0}, std::pair{0, 1}, std::pair{1, 0}}) {
    ChunkWithChangeQueues chunk(Filled(kSky), 2, 0, kDelay);
    // Each player changes the pixel in its update 0: the local player at frame 0, the other at frame D.
    for (int frame = 0; frame < 5 * kDelay; ++frame) {
      for (int player : {0, 1}) {
        int const update = player == 0 ? frame : frame - kDelay;
        if (update == 0 && player == remover) chunk.queueRemovePixel(player, 7, 7);
        if (update == 0 && player == adder) chunk.queueAddPixel(player, 7, 7);
      }
      chunk.frameAdvance();
    }
    EXPECT_EQ(std::pair(chunk.base().readPixel(7, 7), chunk.localBase().readPixel(7, 7)), std::pair(0u, 0u))
        << adder << " adds, " << remover << " removes";
  }
}

TEST(ChunkWithChangeQueues, RemoveThenAddNextFrameEndsAsGroundSeenFromTheFollowingFrames) {
  constexpr int kDelay = 3;
  for (int local : {0, 1}) {  // the same unit on its own client and on the other player's
    ChunkWithChangeQueues chunk(Filled(kGround), 2, local, kDelay);
    int const offset = local == 1 ? 0 : kDelay;  // player 1's updates run this many frames late
    for (int frame = 0; frame < 4 * kDelay + 4; ++frame) {
      // Update 5 removes, update 6 adds: empty only in update 6, ground before and from update 7 on.
      int const update = frame - offset;
      if (update >= 0) {
        EXPECT_EQ(chunk.isGround(1, 3, 3), update != 6) << "update " << update << " on client of player " << local;
      }
      if (update == 5) chunk.queueRemovePixel(1, 3, 3);
      if (update == 6) chunk.queueAddPixel(1, 3, 3);
      chunk.frameAdvance();
    }
    EXPECT_EQ(chunk.base().readPixel(3, 3), ChunkWithChangeQueues::kAddedPixel);
    EXPECT_EQ(chunk.localBase().readPixel(3, 3), ChunkWithChangeQueues::kAddedPixel);
  }
}

TEST(ChunkWithChangeQueues, IndestructiblePixelsTakeNoChangeAnywhere) {
  ChunkWithChangeQueues chunk(Filled(kSky, {{9, 4}}, kRock), 3, 1, 2);
  for (int player = 0; player < 3; ++player) {
    chunk.queueRemovePixel(player, 9, 4);
    chunk.queueAddPixel(player, 9, 4);
    EXPECT_FALSE(chunk.queue(player).isPending(9, 4)) << player;
  }
  EXPECT_FALSE(chunk.hasLocalChangesQueued());
  for (int frame = 0; frame < 6; ++frame) {
    chunk.frameAdvance();
    for (Chunk const* copy : {&chunk.base(), &chunk.localBase(), &chunk.display()}) {
      EXPECT_EQ(copy->readPixel(9, 4), kRock) << frame;
    }
  }
}

TEST(ChunkWithChangeQueues, LocalChangesArePreviewedAtOnceOthersOnlyOnceInBase) {
  constexpr int kDelay = 4;
  ChunkWithChangeQueues chunk(Filled(kSky, {{1, 0}, {2, 0}}, kGround), 2, 0, kDelay);

  chunk.queueAddPixel(0, 0, 0);     // local add on sky
  chunk.queueRemovePixel(0, 1, 0);  // local remove on ground
  chunk.queueRemovePixel(0, 5, 5);  // local remove on nothing
  chunk.queueRemovePixel(1, 2, 0);  // the other player's remove
  EXPECT_EQ(chunk.display().readPixel(0, 0), 0x88FFFFFFu);
  EXPECT_EQ(chunk.display().readPixel(1, 0), (kGround & 0xFFFFFFu) | 0x88000000u);
  EXPECT_EQ(chunk.display().readPixel(5, 5), 0u);
  EXPECT_EQ(chunk.display().readPixel(2, 0), kGround);
  EXPECT_TRUE(chunk.hasLocalChangesQueued());

  // The local changes reach localBase after D frames and base after 2D; the preview lasts until then.
  // The other player's change is already D frames old when it arrives, so it reaches base after D.
  for (int frame = 1; frame <= 2 * kDelay + 1; ++frame) {
    chunk.frameAdvance();
    bool const inLocalBase = frame >= kDelay + 1;
    bool const inBase = frame >= 2 * kDelay + 1;
    EXPECT_EQ(chunk.localBase().readPixel(0, 0), inLocalBase ? ChunkWithChangeQueues::kAddedPixel : kSky) << frame;
    EXPECT_EQ(chunk.base().readPixel(0, 0), inBase ? ChunkWithChangeQueues::kAddedPixel : kSky) << frame;
    EXPECT_EQ(chunk.display().readPixel(0, 0), inBase ? ChunkWithChangeQueues::kAddedPixel : 0x88FFFFFFu) << frame;
    EXPECT_EQ(chunk.display().readPixel(1, 0), inBase ? 0u : (kGround & 0xFFFFFFu) | 0x88000000u) << frame;
    EXPECT_EQ(chunk.hasLocalChangesQueued(), frame < kDelay) << frame;
    EXPECT_EQ(chunk.display().readPixel(2, 0), frame >= kDelay + 1 ? 0u : kGround) << frame;
  }
}

TEST(ChunkWithChangeQueues, AddedAndRemovedInTheLocalQueueShowsTheMixedPreview) {
  ChunkWithChangeQueues chunk(Filled(kGround), 1, 0, 2);
  chunk.queueAddPixel(0, 4, 4);
  chunk.frameAdvance();
  chunk.queueRemovePixel(0, 4, 4);
  EXPECT_EQ(chunk.display().readPixel(4, 4), 0x66FFFFFFu);
  chunk.queueAddPixel(0, 4, 4);  // an add after the remove, in the same slot: the remove still wins there
  EXPECT_EQ(chunk.display().readPixel(4, 4), 0x66FFFFFFu);
  for (int frame = 0; frame < 4; ++frame) chunk.frameAdvance();
  EXPECT_EQ(chunk.display().readPixel(4, 4), 0x66FFFFFFu);  // one frame short of reaching base
  EXPECT_EQ(chunk.base().readPixel(4, 4), ChunkWithChangeQueues::kAddedPixel);
  chunk.frameAdvance();
  EXPECT_EQ(chunk.display().readPixel(4, 4), 0u);
  EXPECT_EQ(chunk.base().readPixel(4, 4), 0u);
}

// Random workloads on every client of a game at once; each client's chunk is also checked, call by
// call, against the plain model.
struct LockstepCase {
  int players;
  int delay;
};

class ChunkLockstep : public ::testing::TestWithParam<LockstepCase> {};

TEST_P(ChunkLockstep, EveryClientSeesTheSameTerrainForEachPlayer) {
  auto const [players, delay] = GetParam();
  Workload work;
  work.seed = static_cast<unsigned>(players * 100 + delay);
  work.players = players;
  work.delay = delay;
  work.updates = 90;
  work.unitsPerPlayer = 25;
  work.minX = 100, work.maxX = 140, work.minY = 60, work.maxY = 90;
  std::vector<std::uint32_t> const terrain = MixedTerrain(work.seed);

  // Each client's log, its digests of localBase, base and display frame by frame, its final localBase.
  struct Client {
    ClientLog log;
    std::vector<std::uint64_t> localBase, base, display;
    std::vector<std::uint32_t> finalLocalBase;
  };
  std::vector<Client> clients(static_cast<std::size_t>(players));
  for (int local = 0; local < players; ++local) {
    Client& c = clients[static_cast<std::size_t>(local)];
    auto chunk = std::make_unique<CheckedChunk>(terrain, players, local, delay);
    c.log = testing_support::RunClient(*chunk, work, local, [&](int) {
      c.localBase.push_back(LocalBaseDigest(chunk->real));
      c.base.push_back(DigestOf(chunk->real.base()));
      c.display.push_back(DigestOf(chunk->real.display()));
    });
    c.finalLocalBase = Copy(chunk->real.localBase());
    ASSERT_FALSE(HasFailure()) << "client of player " << local << " differs from the plain model";
  }
  Client const& first = clients[0];
  for (int local = 1; local < players; ++local) {
    Client const& c = clients[static_cast<std::size_t>(local)];
    for (int player = 0; player < players; ++player) {
      for (int update = 0; update < work.updates; ++update) {
        ASSERT_EQ(c.log[player][update], first.log[player][update])
            << "player " << player << " update " << update << " on the clients of players 0 and " << local;
      }
    }
    EXPECT_EQ(c.localBase, first.localBase);
    EXPECT_EQ(c.finalLocalBase, first.finalLocalBase);
    // base holds every player's updates up to F - 2D on every client, so it agrees too; display
    // shows each client's own player's pending changes and doesn't.
    EXPECT_EQ(c.base, first.base);
    EXPECT_NE(c.display, first.display);
  }

  // And the answers are the ones the visibility rule gives, with localBase frame by frame.
  std::vector<std::vector<std::uint32_t>> committed;
  auto const locate = [](int x, int y) -> std::optional<int> { return ReferenceChunk::Index(x & 255, y & 255); };
  EXPECT_EQ(testing_support::CheckAgainstVisibilityRule(first.log, work, terrain, locate, &committed), std::nullopt);
  ASSERT_EQ(committed.size(), static_cast<std::size_t>(work.updates));
  EXPECT_EQ(first.finalLocalBase, committed.back());

  // The workload must actually have dug and built for the comparisons to mean anything.
  int changes[2] = {0, 0};  // removes, adds
  for (auto const& playerLog : first.log) {
    for (auto const& update : playerLog) {
      for (auto const& change : update.changes) ++changes[change.add ? 1 : 0];
    }
  }
  EXPECT_GT(changes[0], 500);
  EXPECT_GT(changes[1], 200);
}

INSTANTIATE_TEST_SUITE_P(PlayersAndDelays, ChunkLockstep,
                         ::testing::Values(LockstepCase{2, 1}, LockstepCase{2, 3}, LockstepCase{3, 2},
                                           LockstepCase{3, 7}, LockstepCase{4, 15}),
                         [](auto const& info) {
                           return std::to_string(info.param.players) + "Players_Delay" +
                                  std::to_string(info.param.delay);
                         });
