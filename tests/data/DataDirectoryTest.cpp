// Every file that the program asks for in data/ is there and can be read the way the program reads it.
#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector<unsigned char> ReadFile(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::uint32_t Le32(std::vector<unsigned char> const& b, std::size_t at) {
  return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (static_cast<std::uint32_t>(b[at + 3]) << 24);
}

std::uint16_t Le16(std::vector<unsigned char> const& b, std::size_t at) {
  return static_cast<std::uint16_t>(b[at] | (b[at + 1] << 8));
}

struct ImageSize {
  int width = 0;
  int height = 0;
};

ImageSize LoadImageSize(std::string const& file) {
  SDL_Surface* surface = IMG_Load(("data/" + file).c_str());
  if (surface == nullptr) {
    ADD_FAILURE() << file << " does not load: " << SDL_GetError();
    return {};
  }
  ImageSize const size{surface->w, surface->h};
  SDL_DestroySurface(surface);
  return size;
}

// Reads a WAV file's chunks and returns the description of its first problem, or an empty string.
std::string WavProblem(std::vector<unsigned char> const& b) {
  auto const text = [&](std::size_t at) { return std::string(b.begin() + at, b.begin() + at + 4); };
  if (b.size() < 12 || text(0) != "RIFF" || text(8) != "WAVE") return "not a RIFF WAVE file";
  if (Le32(b, 4) + 8 != b.size()) return "RIFF size does not match the file size";
  std::uint16_t blockAlign = 0;  // until the format chunk is read
  for (std::size_t at = 12; at + 8 <= b.size(); at += 8 + Le32(b, at + 4) + (Le32(b, at + 4) & 1)) {
    std::string const id = text(at);
    std::uint32_t const size = Le32(b, at + 4);
    if (at + 8 + size > b.size()) return "chunk '" + id + "' runs past the end";
    if (id == "fmt ") {
      if (size < 16 || Le16(b, at + 8) != 1 || Le16(b, at + 22) != 16) return "format is not 16-bit PCM";
      std::uint16_t const channels = Le16(b, at + 10);
      std::uint32_t const rate = Le32(b, at + 12);
      blockAlign = Le16(b, at + 20);
      if (channels < 1 || channels > 2 || rate < 8000 || rate > 48000 || blockAlign != channels * 2 ||
          Le32(b, at + 16) != rate * blockAlign) {
        return "inconsistent format chunk";
      }
    } else if (id == "data") {
      if (blockAlign == 0) return "data before format";
      if (size == 0 || size % blockAlign != 0) return "empty or ragged data";
      // A short effect: up to two seconds, and not silent.
      if (size > 2u * 48000 * blockAlign) return "longer than two seconds";
      int loudest = 0;
      for (std::size_t i = 0; i + 1 < size; i += 2) {
        loudest = std::max(loudest, std::abs(static_cast<int>(static_cast<std::int16_t>(Le16(b, at + 8 + i)))));
      }
      return loudest > 1000 ? "" : "silent";
    }
  }
  return "no data chunk";
}

using DataDirectory = ::testing::Test;

}  // namespace

TEST_F(DataDirectory, EveryImageLoadsAtASizeThatSuitsItsPlace) {
  for (char const* file :
       {"world.png", "world2.png", "coop.png", "tutorial_dig_down.png", "tutorial_dig_sideways.png", "tutorial_bridge.png",
        "tutorial_pit.png", "aviators.png", "entry.png", "exit.png", "hordeling.png", "selection_brackets.png",
        "circle.png", "circle_cross_section.png", "ship.png", "ring.png", "star.png", "banner.png", "immediate_icon.png",
        "blocked_icon.png", "falling_icon.png", "turned_icon.png", "cursor.png", "cursor_left.png", "cursor_right.png"}) {
    ImageSize const size = LoadImageSize(file);
    EXPECT_TRUE(size.width > 0 && size.height > 0) << file;
  }
  auto const squareWithin = [](char const* file, int least, int most) {
    ImageSize const size = LoadImageSize(file);
    EXPECT_TRUE(size.width >= least && size.width <= most && size.width == size.height)
        << file << " is " << size.width << " by " << size.height;
  };
  // Trigger icons are drawn at their own size over units, in 20 by 20 selector cells and over cursors.
  for (char const* file : {"immediate_icon.png", "blocked_icon.png", "falling_icon.png", "turned_icon.png"}) {
    squareWithin(file, 16, 24);
  }
  for (char const* file : {"cursor.png", "cursor_left.png", "cursor_right.png"}) squareWithin(file, 24, 64);
  // The ship is drawn at 32/63 of its size, so that it spans 32 world pixels.
  squareWithin("ship.png", 63, 63);
}

TEST_F(DataDirectory, ColourImagesHaveTransparency) {
  for (char const* file : {"banner.png", "cursor.png", "blocked_icon.png", "immediate_icon.png"}) {
    SDL_Surface* loaded = IMG_Load((std::string("data/") + file).c_str());
    ASSERT_NE(loaded, nullptr) << file;
    SDL_Surface* surface = SDL_ConvertSurface(loaded, SDL_PIXELFORMAT_ARGB8888);
    SDL_DestroySurface(loaded);
    ASSERT_NE(surface, nullptr);
    auto const* pixels = static_cast<std::uint32_t const*>(surface->pixels);
    std::uint32_t const corner = pixels[static_cast<std::ptrdiff_t>(surface->h - 1) * (surface->pitch / 4) + surface->w - 1];
    EXPECT_EQ(corner >> 24, 0u) << file << ": the bottom right corner should be see-through";
    EXPECT_TRUE(std::any_of(pixels, pixels + surface->w * surface->h, [](std::uint32_t p) { return p >> 24 == 255; }))
        << file << " has no opaque pixel";
    SDL_DestroySurface(surface);
  }
}

TEST_F(DataDirectory, EverySoundIsAShortPcmWave) {
  for (char const* file : {"order_given.wav", "exit.wav", "small_hit.wav", "explosion.wav", "target_lock_succeeded.wav",
                           "target_lock_failed.wav", "fire_missile.wav", "cannot_fire_missile.wav"}) {
    std::vector<unsigned char> const bytes = ReadFile(std::string("data/") + file);
    ASSERT_FALSE(bytes.empty()) << file << " is missing";
    EXPECT_EQ(WavProblem(bytes), "") << file;
  }
}

TEST(WavReader, FindsTheFaultsItLooksFor) {
  // A valid 4-sample file, then damaged copies: the reader above must not pass a broken sound.
  std::vector<unsigned char> good = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 16, 0, 0, 0,
                                     1,   0,   1,   0,   0x22, 0x56, 0, 0, 0x44, 0xAC, 0, 0, 2, 0, 16, 0,
                                     'd', 'a', 't', 'a', 8, 0, 0, 0, 0, 0x40, 0, 0xC0, 0, 0x20, 0, 0};
  good[4] = static_cast<unsigned char>(good.size() - 8);
  EXPECT_EQ(WavProblem(good), "");
  auto const damaged = [&](auto const& change) {
    std::vector<unsigned char> copy = good;
    change(copy);
    return WavProblem(copy);
  };
  EXPECT_NE(damaged([](auto& b) { b.resize(b.size() - 2); }), "");
  EXPECT_EQ(damaged([](auto& b) { b[34] = 8; }), "format is not 16-bit PCM");
  EXPECT_EQ(damaged([](auto& b) { std::fill(b.begin() + 44, b.end(), 0); }), "silent");
  EXPECT_EQ(damaged([](auto& b) { b[8] = 'X'; }), "not a RIFF WAVE file");
}
