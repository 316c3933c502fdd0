#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include "present/SoundSystem.h"
#include "support/TestImages.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

// A sound system on the machine's default device. Libraries that the audio engine opens allocate in
// their static constructors and never free; in sanitizer builds that start-up is kept out of the
// leak report, which still covers everything the sound system itself does afterwards.
std::unique_ptr<SoundSystem> MakeSoundSystem() {
#if defined(__SANITIZE_ADDRESS__)
  __lsan::ScopedDisabler libraryStartUp;
#endif
  return std::make_unique<SoundSystem>();
}

}  // namespace

TEST(SoundSystem, PentatonicOffsetsClimbAndFallByTheScale) {
  EXPECT_EQ(SoundSystem::PentatonicOffsets(0, 0), (std::vector<int>{0}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(1, 1), (std::vector<int>{0, 2, -3}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(0, 6), (std::vector<int>{0, 2, 4, 7, 9, 12, 14}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(6, 0), (std::vector<int>{0, -3, -5, -8, -10, -12, -15}));
}

TEST(SoundSystem, MissingFilesAndMissingDevicesAreSilence) {
  testing_support::ScopedDataDirectory directory;
  auto system = MakeSoundSystem();
  SoundSystem& sound = *system;
  sound.playSound("no_such_effect.wav", 1.0f, 1.0f);
  sound.playSound_WithRandomVariation("no_such_effect.wav", 0.2f, 1, 1, 1.0f, 1.0f);
  sound.preloadSound("no_such_effect.wav");
  EXPECT_EQ(sound.playingCount(), 0u);
  EXPECT_EQ(sound.loadedCount(), 0u);
  sound.update();
  EXPECT_EQ(sound.playingCount(), 0u);
}

TEST(SoundSystem, AnEffectIsDecodedOnceAndItsCopyFreedWhenItEnds) {
  // The shortest of the shipped effects (0.09 s), from the data/ beside the test executable.
  std::filesystem::path const shipped = std::filesystem::absolute("data/order_given.wav");
  testing_support::ScopedDataDirectory directory;
  std::filesystem::copy_file(shipped, "data/blip.wav");
  auto system = MakeSoundSystem();
  SoundSystem& sound = *system;
  sound.preloadSound("blip.wav");
  sound.preloadSound("blip.wav");
  if (!sound.engineReady()) {
    // No audio device at all: nothing is loaded and nothing plays, without any failure.
    EXPECT_EQ(sound.loadedCount(), 0u);
    sound.playSound("blip.wav", 1.0f, 1.0f);
    EXPECT_EQ(sound.playingCount(), 0u);
    GTEST_SKIP() << "no audio engine on this machine; the silent path was checked";
  }
  EXPECT_EQ(sound.loadedCount(), 1u);
  sound.playSound("blip.wav", 1.0f, 1.0f);
  sound.playSound_WithRandomVariation("blip.wav", 0.2f, 2, 2, 1.0f, 1.0f);
  EXPECT_EQ(sound.playingCount(), 2u);
  EXPECT_EQ(sound.loadedCount(), 1u);
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  while (sound.playingCount() > 0 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    sound.update();
  }
  EXPECT_EQ(sound.playingCount(), 0u);
  EXPECT_EQ(sound.loadedCount(), 1u);
}
