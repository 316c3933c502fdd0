#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/IHasher.h"
#include "sim/MapSettings.h"

// A map image in memory: ARGB8888 pixels (0xAARRGGBB in a 32-bit integer), row 0 at the top, rows
// one after the other without padding.
struct MapImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;

  MapImage() = default;
  MapImage(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
  std::uint32_t* row(int y) { return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
  std::uint32_t const* row(int y) const {
    return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
};

// Decodes a PNG file into ARGB8888 (images without alpha become opaque). Raises std::runtime_error with
// the decoder's reason if the file can't be read or isn't a PNG image.
MapImage LoadMapImage(std::string const& path);

// Feeds the image's rows, then its width and height as 32-bit integers, to the hasher.
void CalculateImageChecksum(MapImage const& image, IHasher* hasher);

// Tiles, mirrors and rotates a map image as its settings ask, into a new image. Raises
// std::runtime_error if the image is to be rotated four ways but isn't square by then.
MapImage ApplyMapTransformations(MapImage const& source, MapSettings const& map);
