#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "aviators/AviatorCoord.h"

// The ship that a lock from `origin` along `rotation` takes: of all ships but `self` that are not dead,
// the nearest to the point 400 pixels ahead (written to aimPoint in any case), the lowest index on a
// tie, if it is within 300 pixels of that point.
std::optional<std::uint16_t> TargetLock(std::uint16_t self, Vec2<AviatorCoord> origin, std::uint16_t rotation,
                                        std::vector<Vec2<AviatorCoord>> const& positions, std::vector<bool> const& dead,
                                        Vec2<AviatorCoord>& aimPoint);
