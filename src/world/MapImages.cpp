#include "world/MapImages.h"

#include <png.h>

#include <fmt/format.h>

#include <stdexcept>

namespace {

// Calls place(x, y, pixel) for every pixel of the source.
template <typename Place>
void ForEachPixel(MapImage const& source, Place&& place) {
  for (int y = 0; y < source.height; ++y) {
    std::uint32_t const* row = source.row(y);
    for (int x = 0; x < source.width; ++x) {
      place(x, y, row[x]);
    }
  }
}

MapImage Tile(MapImage const& source, int repeatX, int repeatY) {
  MapImage result(source.width * repeatX, source.height * repeatY);
  ForEachPixel(source, [&](int x, int y, std::uint32_t pixel) {
    for (int ty = 0; ty < repeatY; ++ty) {
      for (int tx = 0; tx < repeatX; ++tx) {
        result.row(ty * source.height + y)[tx * source.width + x] = pixel;
      }
    }
  });
  return result;
}

MapImage MirrorX(MapImage const& source) {
  int const w = source.width;
  MapImage result(2 * w, source.height);
  ForEachPixel(source, [&](int x, int y, std::uint32_t pixel) {
    result.row(y)[x] = pixel;
    result.row(y)[2 * w - 1 - x] = pixel;
  });
  return result;
}

// The source becomes the bottom half, its mirror image the top.
MapImage MirrorY(MapImage const& source) {
  int const h = source.height;
  MapImage result(source.width, 2 * h);
  ForEachPixel(source, [&](int x, int y, std::uint32_t pixel) {
    result.row(h + y)[x] = pixel;
    result.row(h - 1 - y)[x] = pixel;
  });
  return result;
}

// Four copies turning about the centre; the source is the bottom left quarter.
MapImage RotateFourWays(MapImage const& source) {
  int const w = source.width;
  MapImage result(2 * w, 2 * w);
  ForEachPixel(source, [&](int c, int r, std::uint32_t pixel) {
    result.row(w + r)[c] = pixel;
    result.row(c)[w - 1 - r] = pixel;
    result.row(w - 1 - r)[2 * w - 1 - c] = pixel;
    result.row(2 * w - 1 - c)[w + r] = pixel;
  });
  return result;
}

}  // namespace

MapImage LoadMapImage(std::string const& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&png, path.c_str()) == 0) {
    std::string const reason = png.message;
    png_image_free(&png);
    throw std::runtime_error(reason);
  }
  // Blue, green, red, alpha in memory: an ARGB8888 integer on a little-endian machine. Without a
  // gamma conversion, so that the bytes are those of the file.
  png.format = PNG_FORMAT_BGRA;
  if (png.width == 0 || png.height == 0 || png.width > 16384 || png.height > 16384) {
    png_image_free(&png);
    throw std::runtime_error(fmt::format("the image is {} by {} pixels", png.width, png.height));
  }
  MapImage image(static_cast<int>(png.width), static_cast<int>(png.height));
  if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) {
    std::string const reason = png.message;
    png_image_free(&png);
    throw std::runtime_error(reason);
  }
  return image;
}

void CalculateImageChecksum(MapImage const& image, IHasher* hasher) {
  hasher->update(image.pixels.data(), image.pixels.size() * sizeof(std::uint32_t));
  std::int32_t const width = image.width;
  std::int32_t const height = image.height;
  hasher->update(&width, sizeof width);
  hasher->update(&height, sizeof height);
}

MapImage ApplyMapTransformations(MapImage const& source, MapSettings const& map) {
  MapImage current = source;
  if (map.repeatX >= 2 || map.repeatY > 1) {
    current = Tile(current, map.repeatX, map.repeatY);
  }
  if (map.mirrorX) {
    current = MirrorX(current);
  }
  if (map.mirrorY) {
    current = MirrorY(current);
  }
  if (map.rotateFourWays) {
    if (current.width != current.height) {
      throw std::runtime_error(fmt::format(
          "A map image rotated four ways must be square before the rotation, but it is {} by {} pixels.",
          current.width, current.height));
    }
    current = RotateFourWays(current);
  }
  return current;
}
