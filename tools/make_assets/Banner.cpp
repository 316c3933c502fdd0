#include "Banner.h"

#include <SDL3/SDL.h>
#include <SDL3_ttf/SDL_ttf.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "Random.h"

namespace {

constexpr int kWidth = 720;
constexpr int kHeight = 180;

// Coverage of a text line, rendered white by SDL_ttf, as one float per pixel.
struct TextMask {
  int width = 0;
  int height = 0;
  std::vector<float> coverage;

  float at(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) {
      return 0.0f;
    }
    return coverage[static_cast<std::size_t>(y) * width + x];
  }
};

TextMask RenderText(std::string const& fontPath, char const* text, int maxWidth) {
  if (!TTF_WasInit() && !TTF_Init()) {
    throw std::runtime_error(std::string("Failed to initialise SDL_ttf: ") + SDL_GetError());
  }
  // Find the largest size that fits the width.
  float size = 80.0f;
  TTF_Font* font = nullptr;
  for (;;) {
    font = TTF_OpenFont(fontPath.c_str(), size);
    if (font == nullptr) {
      throw std::runtime_error("Failed to open font '" + fontPath + "': " + SDL_GetError());
    }
    int w = 0, h = 0;
    TTF_GetStringSize(font, text, 0, &w, &h);
    if (w <= maxWidth || size <= 20.0f) {
      break;
    }
    TTF_CloseFont(font);
    size -= 2.0f;
  }
  SDL_Surface* rendered = TTF_RenderText_Blended(font, text, 0, SDL_Color{255, 255, 255, 255});
  TTF_CloseFont(font);
  if (rendered == nullptr) {
    throw std::runtime_error(std::string("Failed to render the banner text: ") + SDL_GetError());
  }
  SDL_Surface* argb = SDL_ConvertSurface(rendered, SDL_PIXELFORMAT_ARGB8888);
  SDL_DestroySurface(rendered);
  if (argb == nullptr) {
    throw std::runtime_error(std::string("Failed to convert the banner text: ") + SDL_GetError());
  }
  TextMask mask;
  mask.width = argb->w;
  mask.height = argb->h;
  mask.coverage.resize(static_cast<std::size_t>(mask.width) * mask.height);
  for (int y = 0; y < argb->h; ++y) {
    auto const* row = reinterpret_cast<std::uint32_t const*>(static_cast<std::uint8_t const*>(argb->pixels) +
                                                             static_cast<std::ptrdiff_t>(y) * argb->pitch);
    for (int x = 0; x < argb->w; ++x) {
      mask.coverage[static_cast<std::size_t>(y) * mask.width + x] = static_cast<float>(row[x] >> 24) / 255.0f;
    }
  }
  SDL_DestroySurface(argb);
  return mask;
}

// The largest coverage within a disc of the given radius: the text grown outward.
TextMask Grow(TextMask const& mask, float radius, int margin) {
  TextMask grown;
  grown.width = mask.width + 2 * margin;
  grown.height = mask.height + 2 * margin;
  grown.coverage.assign(static_cast<std::size_t>(grown.width) * grown.height, 0.0f);
  int const r = static_cast<int>(std::ceil(radius));
  for (int y = 0; y < grown.height; ++y) {
    for (int x = 0; x < grown.width; ++x) {
      float best = 0.0f;
      for (int dy = -r; dy <= r; ++dy) {
        for (int dx = -r; dx <= r; ++dx) {
          float const d = std::hypot(static_cast<float>(dx), static_cast<float>(dy));
          float const weight = std::clamp(radius + 0.5f - d, 0.0f, 1.0f);
          if (weight > 0.0f) {
            best = std::max(best, weight * mask.at(x - margin + dx, y - margin + dy));
          }
        }
      }
      grown.coverage[static_cast<std::size_t>(y) * grown.width + x] = best;
    }
  }
  return grown;
}

// A small walker of the games, in the manner of the in-game sprite: head, body, legs mid-stride.
void DrawWalker(Canvas& c, float x, float baseY, Colour colour, float stride) {
  Colour const glow{colour.r, colour.g, colour.b, 0.25f};
  c.fillCircle(x, baseY - 9, 9, glow);
  c.line(x - 2.5f * stride, baseY, x, baseY - 6, 2.2f, colour);
  c.line(x + 2.5f * stride, baseY, x, baseY - 6, 2.2f, colour);
  c.fillRoundedRect(x - 2.6f, baseY - 13, x + 2.6f, baseY - 5, 2.0f, colour);
  c.fillCircle(x, baseY - 16, 3.2f, Mix(colour, Colour{1, 1, 1, 1}, 0.35f));
}

}  // namespace

Canvas MakeBanner(std::string const& fontPath) {
  Canvas banner(kWidth, kHeight);
  FixedRandom random(0xBA22E2);

  // The plaque: a night scene inside a rounded golden frame. The scene is drawn on its own canvas and
  // then cut to the frame's inner shape.
  float const left = 6, top = 6, right = kWidth - 6.0f, bottom = kHeight - 6.0f;
  auto plaque = [&](float x, float y) {
    float const radius = 22;
    float const cx = (left + right) / 2, cy = (top + bottom) / 2;
    float const hx = (right - left) / 2 - radius, hy = (bottom - top) / 2 - radius;
    float const qx = std::fabs(x - cx) - hx, qy = std::fabs(y - cy) - hy;
    return std::hypot(std::max(qx, 0.0f), std::max(qy, 0.0f)) + std::min(std::max(qx, qy), 0.0f) - radius;
  };
  banner.fillRoundedRect(left - 3, top - 3, right + 3, bottom + 3, 25, Rgb(214, 170, 76, 0.95f));
  Canvas scene(kWidth, kHeight);
  scene.fillDistance(0, 0, kWidth, kHeight, [](float, float) { return -1.0f; }, [&](float, float y) {
    return Mix(Rgb(18, 22, 58, 0.94f), Rgb(70, 32, 90, 0.94f), (y - top) / (bottom - top));
  });
  for (int i = 0; i < 90; ++i) {
    float const x = static_cast<float>(random.range(left + 16, right - 16));
    float const y = static_cast<float>(random.range(top + 10, bottom - 50));
    float const r = static_cast<float>(random.range(0.5, 1.5));
    scene.fillCircle(x, y, r, Rgb(255, 250, 220, static_cast<float>(random.range(0.35, 0.9))));
  }

  // Rolling hills along the bottom, two layers.
  auto hillY = [](float x, float baseY, float amplitude, float phase) {
    return baseY - amplitude * (0.5f + 0.5f * std::sin(x * 0.021f + phase)) -
           amplitude * 0.4f * std::sin(x * 0.047f + 2 * phase);
  };
  auto hills = [&](float baseY, float amplitude, float phase, Colour colour) {
    std::vector<Point> outline;
    for (float x = 0; x <= kWidth; x += 4) {
      outline.push_back({x, hillY(x, baseY, amplitude, phase)});
    }
    outline.push_back({static_cast<float>(kWidth), static_cast<float>(kHeight)});
    outline.push_back({0, static_cast<float>(kHeight)});
    scene.fillPolygon(outline, colour);
  };
  hills(bottom - 30, 14, 1.3f, Rgb(44, 34, 88));
  hills(bottom - 14, 8, 0.2f, Rgb(28, 58, 52));
  // A row of walkers in the four player colours, crossing the foreground.
  Colour const players[] = {Rgb(0, 255, 127), Rgb(0, 127, 255), Rgb(229, 221, 68), Rgb(155, 61, 147)};
  float x = 70;
  for (int i = 0; i < 9; ++i) {
    DrawWalker(scene, x, hillY(x, bottom - 14, 8, 0.2f) + 1, players[i % 4], (i % 2 == 0) ? 1.0f : -0.6f);
    x += 26 + static_cast<float>(random.range(0, 14));
  }

  // A ship with its trail, sweeping over the right of the sky.
  std::vector<Point> trail;
  for (int i = 0; i <= 40; ++i) {
    float const t = static_cast<float>(i) / 40.0f;
    trail.push_back({470 + 200 * t, 120 - 70 * t + 18 * std::sin(t * 6.0f)});
  }
  for (std::size_t i = 1; i < trail.size(); ++i) {
    float const t = static_cast<float>(i) / static_cast<float>(trail.size());
    scene.line(trail[i - 1].x, trail[i - 1].y, trail[i].x, trail[i].y, 1.5f + 4.5f * t, Rgb(255, 150, 60, 0.15f + 0.6f * t));
  }
  Point const tip = trail.back();
  float const angle = std::atan2(trail.back().y - trail[trail.size() - 3].y, trail.back().x - trail[trail.size() - 3].x);
  auto rotate = [&](float fx, float fy) {
    return Point{tip.x + fx * std::cos(angle) - fy * std::sin(angle), tip.y + fx * std::sin(angle) + fy * std::cos(angle)};
  };
  scene.fillPolygon({rotate(10, 0), rotate(-8, -7), rotate(-4, 0), rotate(-8, 7)}, Rgb(236, 240, 255));

  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      float const inside = std::clamp(0.5f - plaque(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f), 0.0f, 1.0f);
      banner.blend(x, y, scene.at(x, y), inside);
    }
  }

  // The title: warm gradient, dark outline, soft glow, centred a little above the middle.
  TextMask const text = RenderText(fontPath, "Tandem Parlour", kWidth - 120);
  int const margin = 8;
  TextMask const outline = Grow(text, 3.5f, margin);
  TextMask const glow = Grow(text, 8.0f, margin);
  int const ox = (kWidth - text.width) / 2 - margin;
  int const oy = (kHeight - text.height) / 2 - 14 - margin;
  for (int y = 0; y < glow.height; ++y) {
    for (int x = 0; x < glow.width; ++x) {
      banner.blend(ox + x, oy + y, Rgb(255, 190, 90), 0.35f * glow.at(x, y));
      banner.blend(ox + x, oy + y, Rgb(40, 16, 30), outline.at(x, y));
      float const t = static_cast<float>(y - margin) / static_cast<float>(text.height);
      Colour const fill = Mix(Rgb(255, 244, 170), Rgb(255, 128, 46), std::clamp(t * 1.2f - 0.1f, 0.0f, 1.0f));
      banner.blend(ox + x, oy + y, fill, text.at(x - margin, y - margin));
    }
  }
  return banner;
}
