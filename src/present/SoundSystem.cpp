#include "present/SoundSystem.h"

#include <miniaudio.h>

#include <cmath>
#include <cstdlib>
#include <string_view>
#include <filesystem>
#include <system_error>

void SoundSystem::SoundDeleter::operator()(ma_sound* sound) const {
  ma_sound_uninit(sound);
  delete sound;
}

SoundSystem::SoundSystem() : engine_(std::make_unique<ma_engine>()) {
  ma_engine_config config = ma_engine_config_init();
  // TANDEM_AUDIO_DRIVER=null plays on miniaudio's silent back end instead of the system's devices, as
  // headless test runs want: no sound server is probed and no third-party audio thread is started.
  char const* driver = std::getenv("TANDEM_AUDIO_DRIVER");
  if (driver != nullptr && std::string_view(driver) == "null") {
    context_ = std::make_unique<ma_context>();
    ma_backend const backends[] = {ma_backend_null};
    if (ma_context_init(backends, 1, nullptr, context_.get()) == MA_SUCCESS) {
      config.pContext = context_.get();
    } else {
      context_.reset();
    }
  }
  engineReady_ = ma_engine_init(&config, engine_.get()) == MA_SUCCESS;
  std::random_device device;
  random_.seed(device());
}

SoundSystem::~SoundSystem() {
  playing_.clear();
  sounds_.clear();
  if (engineReady_) {
    ma_engine_uninit(engine_.get());
  }
  if (context_) {
    ma_context_uninit(context_.get());
  }
}

void SoundSystem::preloadSound(char const* file) {
  std::string path = std::string("data/") + file;
  if (!engineReady_ || sounds_.contains(path)) {
    return;
  }
  // miniaudio 0.11.22 reads freed memory when it fails to open a file, so a missing file is never
  // handed to it. (A file that exists but can't be decoded still goes through that path.)
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    return;
  }
  auto sound = std::make_unique<ma_sound>();
  if (ma_sound_init_from_file(engine_.get(), path.c_str(), MA_SOUND_FLAG_DECODE, nullptr, nullptr, sound.get()) !=
      MA_SUCCESS) {
    return;
  }
  sounds_.emplace(std::move(path), SoundPtr(sound.release()));
}

void SoundSystem::playSound(char const* file, float volume, float pitch) {
  preloadSound(file);
  auto loaded = sounds_.find(std::string("data/") + file);
  if (loaded == sounds_.end()) {
    return;
  }
  auto copy = std::make_unique<ma_sound>();
  if (ma_sound_init_copy(engine_.get(), loaded->second.get(), 0, nullptr, copy.get()) != MA_SUCCESS) {
    return;
  }
  SoundPtr playing(copy.release());
  ma_sound_set_volume(playing.get(), volume);
  if (pitch > 0.0f) {
    ma_sound_set_pitch(playing.get(), pitch);
  }
  ma_sound_start(playing.get());
  playing_.push_back(std::move(playing));
}

std::vector<int> SoundSystem::PentatonicOffsets(int stepsDown, int stepsUp) {
  static constexpr int kScale[5] = {0, 2, 4, 7, 9};
  std::vector<int> offsets{0};
  for (int i = 1; i <= stepsUp; ++i) {
    offsets.push_back(kScale[i % 5] + 12 * (i / 5));
  }
  for (int j = 0; j < stepsDown; ++j) {
    offsets.push_back(kScale[4 - (j % 5)] - 12 * (j / 5) - 12);
  }
  return offsets;
}

void SoundSystem::playSound_WithRandomVariation(char const* file, float volumeVariation, int stepsDown, int stepsUp,
                                                float volume, float pitch) {
  std::vector<int> const offsets = PentatonicOffsets(stepsDown, stepsUp);
  std::uniform_int_distribution<int> pick(0, static_cast<int>(offsets.size()) - 1);
  int const offset = offsets[static_cast<std::size_t>(pick(random_))];
  float const r = std::uniform_real_distribution<float>(0.0f, 1.0f)(random_);
  playSound(file, volume + 2.0f * volumeVariation * r - volumeVariation,
            std::pow(2.0f, static_cast<float>(offset) / 12.0f) * pitch);
}

void SoundSystem::update() {
  for (auto it = playing_.begin(); it != playing_.end();) {
    if (!ma_sound_is_playing(it->get())) {
      it = playing_.erase(it);
    } else {
      ++it;
    }
  }
}
