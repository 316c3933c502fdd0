#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <memory>
#include <thread>
#include <vector>

#include "SoundSystem.h"
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

// A mono 16-bit PCM WAV file of the given length, a plain square wave.
void WriteWav(std::string const& path, int milliseconds) {
  int const rate = 22050;
  int const samples = rate * milliseconds / 1000;
  std::vector<std::int16_t> data(static_cast<std::size_t>(samples));
  for (int i = 0; i < samples; ++i) data[static_cast<std::size_t>(i)] = (i / 25) % 2 == 0 ? 4000 : -4000;
  auto const u32 = [](std::ofstream& out, std::uint32_t v) { out.write(reinterpret_cast<char const*>(&v), 4); };
  auto const u16 = [](std::ofstream& out, std::uint16_t v) { out.write(reinterpret_cast<char const*>(&v), 2); };
  std::ofstream out(path, std::ios::binary);
  std::uint32_t const bytes = static_cast<std::uint32_t>(samples * 2);
  out.write("RIFF", 4);
  u32(out, 36 + bytes);
  out.write("WAVEfmt ", 8);
  u32(out, 16);
  u16(out, 1);  // PCM
  u16(out, 1);  // mono
  u32(out, rate);
  u32(out, rate * 2);
  u16(out, 2);
  u16(out, 16);
  out.write("data", 4);
  u32(out, bytes);
  out.write(reinterpret_cast<char const*>(data.data()), bytes);
}

}  // namespace

TEST(SoundSystem, PentatonicOffsetsClimbAndFallByTheScale) {
  EXPECT_EQ(SoundSystem::PentatonicOffsets(0, 0), (std::vector<int>{0}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(1, 1), (std::vector<int>{0, 2, -3}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(0, 6), (std::vector<int>{0, 2, 4, 7, 9, 12, 14}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(6, 0), (std::vector<int>{0, -3, -5, -8, -10, -12, -15}));
  EXPECT_EQ(SoundSystem::PentatonicOffsets(0, 5).back(), 12);
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
  testing_support::ScopedDataDirectory directory;
  WriteWav("data/blip.wav", 30);
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
