#pragma once

#include <array>
#include <cstdint>

#include "aviators/AviatorCoord.h"

// Integer trigonometry. Angles are unsigned 16-bit, 65536 to a full turn, 0 along +x, 0x4000 along +y.

// Entry i is round(sin(i·π/256)·0x7FFFFFFF) for i from 0 to 128: a quarter turn in 128 steps.
extern std::array<std::int32_t, 129> const k_sine_table;

// The sine scaled by 0x7FFFFFFF. The low seven bits of the angle are dropped: 512 distinct headings.
std::int32_t FixedSine(std::uint16_t angle);
std::int32_t FixedCosine(std::uint16_t angle);

// A vector of the given length along the angle, each component truncated toward zero.
Vec2<AviatorCoord> DirectionVector(std::uint16_t angle, std::int32_t length);
