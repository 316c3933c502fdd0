#pragma once

#include <deque>

#include "aviators/AviatorCoord.h"

class Renderer;

// Draws a tail as swept circles between neighbouring points (one circle for a single point), in the
// colour that the caller has set.
void RenderTail(std::deque<Vec2<AviatorCoord>> const& points, float radius, Renderer const& renderer);
