#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "sim/MapSettings.h"

// The digest of a map image file exactly as a world computes it when it loads the map: the file
// loaded, converted to ARGB8888, its rows and size fed to XXH3.
std::uint64_t MapFileDigest(std::string const& path);

// Rewrites the header of map digests, by image file name.
void WriteMapDigestsHeader(std::string const& path, std::map<std::string, std::uint64_t> const& digests);

// An upright rendering of a map as the game builds it (transformed, whole chunks) over a dark
// background, with the starts of the slots and the exits of the teams marked in their colours.
void WriteMapPreview(std::string const& imagePath, MapSettings const& map, std::string const& previewPath);
