#pragma once

#include <list>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

struct ma_context;
struct ma_engine;
struct ma_sound;

// Short sound effects by file name. Each file is decoded once; each playing is a copy sharing the
// decoded data. Without an audio device or a file it stays silent and never fails.
class SoundSystem {
public:
  SoundSystem();
  ~SoundSystem();
  SoundSystem(SoundSystem const&) = delete;
  SoundSystem& operator=(SoundSystem const&) = delete;

  void preloadSound(char const* file);
  void playSound(char const* file, float volume, float pitch);
  void playSound_WithRandomVariation(char const* file, float volumeVariation, int stepsDown, int stepsUp,
                                     float volume, float pitch);
  // Frees the copies that have finished; once a frame.
  void update();

  // The semitone offsets that the random variation picks from, 0 first.
  static std::vector<int> PentatonicOffsets(int stepsDown, int stepsUp);

  bool engineReady() const { return engineReady_; }
  std::size_t loadedCount() const { return sounds_.size(); }
  std::size_t playingCount() const { return playing_.size(); }

private:
  struct SoundDeleter {
    void operator()(ma_sound* sound) const;
  };
  using SoundPtr = std::unique_ptr<ma_sound, SoundDeleter>;

  std::unique_ptr<ma_context> context_;  // only when a back end is chosen by TANDEM_AUDIO_DRIVER
  std::unique_ptr<ma_engine> engine_;
  bool engineReady_ = false;
  std::unordered_map<std::string, SoundPtr> sounds_;
  std::list<SoundPtr> playing_;
  std::mt19937 random_;
};
