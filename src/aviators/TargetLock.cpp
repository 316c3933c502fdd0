#include "aviators/TargetLock.h"

#include "aviators/FixedTrig.h"

std::optional<std::uint16_t> TargetLock(std::uint16_t self, Vec2<AviatorCoord> origin, std::uint16_t rotation,
                                        std::vector<Vec2<AviatorCoord>> const& positions, std::vector<bool> const& dead,
                                        Vec2<AviatorCoord>& aimPoint) {
  constexpr std::int32_t k_aheadDistance = 102400;          // 400 pixels
  constexpr std::int64_t k_maximumSquared = 5898240000;     // (300 pixels)²
  aimPoint = origin + DirectionVector(rotation, k_aheadDistance);
  std::optional<std::uint16_t> best;
  std::int64_t bestSquared = 0;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (i == self || (i < dead.size() && dead[i])) {
      continue;
    }
    std::int64_t const dx = std::int64_t{positions[i].x} - aimPoint.x;
    std::int64_t const dy = std::int64_t{positions[i].y} - aimPoint.y;
    std::int64_t const squared = dx * dx + dy * dy;
    if (!best.has_value() || squared < bestSquared) {
      best = static_cast<std::uint16_t>(i);
      bestSquared = squared;
    }
  }
  if (best.has_value() && bestSquared <= k_maximumSquared) {
    return best;
  }
  return std::nullopt;
}
