#pragma once

#include <cstdint>

#include "Canvas.h"
#include "MapLayout.h"

// Shapes for the eye only, drawn on a layout's scenery in world coordinates (y up). Where the terrain
// is solid the terrain wins; elsewhere the painter keeps their alpha below that of ground.

// A vertical wash of colour over the rectangle, from `bottom` colour to `top` colour.
void SkyGradient(MapLayout& map, float x0, float y0, float x1, float y1, Colour bottom, Colour top);
void Stars(MapLayout& map, std::uint64_t seed, int count, float x0, float y0, float x1, float y1);
// A silhouette of rolling hills along y = baseY, to the bottom of the rectangle.
void Hills(MapLayout& map, std::uint64_t seed, float x0, float x1, float bottom, float baseY, float amplitude,
           Colour colour);
// Blades of grass on the open side of every ground surface that faces up.
void GrassTufts(MapLayout& map, std::uint64_t seed, Colour colour, float density);
// A leafy clump, dense enough to pass for ground at a glance.
void Foliage(MapLayout& map, std::uint64_t seed, float cx, float cy, float rx, float ry, Colour light, Colour dark);
void Crystal(MapLayout& map, float x, float y, float height, float lean, Colour colour);
// Icicle-like drips hanging under every surface that faces down, within the rectangle.
void Drips(MapLayout& map, std::uint64_t seed, Colour colour, float x0, float y0, float x1, float y1);
void Nebula(MapLayout& map, std::uint64_t seed, float cx, float cy, float r, Colour colour);
