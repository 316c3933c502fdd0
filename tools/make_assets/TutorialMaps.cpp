// The four tutorial levels. Each is a closed room of rock (alpha 255) so that a level can't be broken
// out of, with ground (alpha 254) only where the lesson needs digging or building on.
#include <cmath>

#include "MapDesigns.h"
#include "Scenery.h"

namespace {

TerrainTheme EarthTheme(std::uint64_t seed) {
  return {Rgb(150, 108, 66), Rgb(96, 64, 38), Rgb(92, 168, 64), Rgb(104, 108, 124), Rgb(46, 48, 60), Rgb(150, 160, 190),
          seed};
}

TerrainTheme CaveTheme(std::uint64_t seed) {
  return {Rgb(176, 128, 84), Rgb(112, 76, 50), Rgb(196, 150, 96), Rgb(92, 92, 116), Rgb(38, 38, 52), Rgb(140, 200, 220),
          seed};
}

Colour const kNightTop = Rgb(16, 20, 48, 0.75f);
Colour const kNightLow = Rgb(58, 44, 96, 0.55f);
Colour const kCaveBack = Rgb(40, 30, 36, 0.85f);

}  // namespace

MapDesign MakeTutorialDigDown() {
  // 1024 by 1024. The unit drops at (784, 703) onto a thin floor of ground (surface y 600) in a walled
  // room; below the floor is a cave whose rock floor (surface y 275) holds the exit at (700, 275).
  MapLayout map(1024, 1024);
  SkyGradient(map, 0, 600, 1024, 1024, kNightLow, kNightTop);
  Stars(map, 11, 140, 0, 780, 1024, 1024);
  Hills(map, 12, 0, 1024, 740, 800, 90, Rgb(40, 34, 80, 0.6f));
  // The cave behind everything.
  SkyGradient(map, 540, 260, 1020, 600, kCaveBack, Rgb(60, 44, 50, 0.85f));

  map.fillRect(0, 0, 1024, 240, Material::Rock);          // bedrock
  map.fillRect(540, 240, 1000, 275, Material::Ground);     // the cave's floor
  map.fillRect(0, 240, 560, 760, Material::Rock);          // left cliff
  map.fillRect(1000, 240, 1024, 760, Material::Rock);      // right wall
  map.fillRect(560, 588, 1000, 600, Material::Ground);     // the floor to dig through: 12 pixels
  // Hills of ground over the left cliff, and a cap of ground on the right wall.
  map.fillWhere([](int x, int y) { return x < 560 && y >= 760 && y < 770 + 30 * std::sin(x * 0.012) + 20; },
                Material::Ground);
  map.fillRect(1000, 760, 1024, 780, Material::Ground);

  GrassTufts(map, 13, Rgb(120, 200, 80, 0.85f), 0.5f);
  Drips(map, 14, Rgb(120, 96, 80, 0.8f), 560, 300, 1000, 600);
  Crystal(map, 620, 275, 26, -3, Rgb(120, 220, 255, 0.7f));
  Crystal(map, 636, 275, 16, 4, Rgb(120, 220, 255, 0.7f));
  Crystal(map, 930, 275, 30, 2, Rgb(220, 140, 255, 0.7f));
  Crystal(map, 950, 275, 18, 5, Rgb(220, 140, 255, 0.7f));
  return {"tutorial_dig_down.png", std::move(map), CaveTheme(101)};
}

MapDesign MakeTutorialDigSideways() {
  // 1024 by 1024. Units drop at (780, 800) into a room with a rock floor (surface y 700). Its left wall
  // is rock; its right wall is 32 pixels of ground (x 880 to 911). Past it the floor ends at x 940 and
  // a drop leads to the lower hall (surface y 400) with the exit at (780, 400).
  MapLayout map(1024, 1024);
  SkyGradient(map, 0, 640, 1024, 1024, kNightLow, kNightTop);
  Stars(map, 21, 120, 0, 900, 1024, 1024);
  SkyGradient(map, 600, 400, 1000, 660, kCaveBack, Rgb(60, 44, 50, 0.85f));

  map.fillRect(0, 0, 1024, 360, Material::Rock);           // bedrock
  map.fillRect(600, 360, 1000, 400, Material::Ground);      // the lower hall's floor
  map.fillRect(0, 360, 600, 900, Material::Rock);           // left cliff, also the upper room's left wall
  map.fillRect(1000, 360, 1024, 900, Material::Rock);       // right wall of both halls
  map.fillRect(600, 660, 940, 700, Material::Rock);         // the upper room's floor, also the hall's ceiling
  map.fillRect(880, 700, 912, 790, Material::Ground);       // the wall to dig through
  map.fillRect(880, 790, 912, 900, Material::Rock);
  map.fillWhere([](int x, int y) { return (x < 600 || x >= 1000) && y >= 900 && y < 915 + 12 * std::sin(x * 0.02); },
                Material::Ground);

  GrassTufts(map, 22, Rgb(120, 200, 80, 0.85f), 0.5f);
  Drips(map, 23, Rgb(120, 96, 80, 0.8f), 600, 400, 1000, 660);
  Crystal(map, 660, 400, 24, -4, Rgb(120, 220, 255, 0.7f));
  Crystal(map, 960, 400, 28, 3, Rgb(255, 200, 120, 0.7f));
  return {"tutorial_dig_sideways.png", std::move(map), CaveTheme(202)};
}

MapDesign MakeTutorialBridge() {
  // 1280 by 768, wrapping vertically. Units drop at (500, 650) onto a cliff (surface y 560) that ends at
  // x 620. The gap beyond is open from the top of the world to the bottom, but for a shelf near the top
  // that catches units falling through the bottom and sends them back to the cliff. The far side (surface
  // y 600, from x 880) carries a crown of foliage reaching back over the gap, and steps down to the exit
  // at (1090, 500).
  MapLayout map(1280, 768);
  SkyGradient(map, 0, 0, 1280, 768, Rgb(40, 90, 140, 0.5f), Rgb(20, 40, 90, 0.7f));
  Hills(map, 31, 0, 1280, 0, 380, 160, Rgb(40, 80, 100, 0.45f));
  Hills(map, 32, 0, 1280, 0, 250, 120, Rgb(30, 64, 70, 0.55f));

  // The cliff: rock core, a thick cap of ground, a rock wall on the far left.
  map.fillRect(0, 0, 620, 520, Material::Rock);
  map.fillRect(40, 520, 620, 560, Material::Ground);
  map.fillRect(0, 520, 40, 720, Material::Rock);
  // The catching shelf near the top, sloping down to the left and ending over the cliff.
  map.fillPolygon({{560, 700}, {980, 744}, {980, 752}, {560, 708}}, Material::Rock);
  map.fillRect(980, 700, 1010, 768, Material::Rock);  // its right stop
  // The far side: ground over rock, a step down to the exit's floor, a rock wall at the right.
  map.fillRect(880, 0, 1280, 400, Material::Rock);
  map.fillRect(880, 400, 1000, 600, Material::Ground);
  map.fillPolygon({{1000, 600}, {1040, 500}, {1040, 400}, {1000, 400}}, Material::Ground);
  map.fillRect(1040, 400, 1200, 500, Material::Ground);
  map.fillRect(1200, 400, 1280, 700, Material::Rock);

  GrassTufts(map, 33, Rgb(110, 200, 90, 0.9f), 0.6f);
  // The foliage that looks like a landing: it is scenery, and units fall through it.
  Foliage(map, 34, 850, 612, 60, 22, Rgb(80, 170, 70), Rgb(40, 100, 40));
  Foliage(map, 35, 800, 604, 36, 14, Rgb(90, 180, 80), Rgb(46, 110, 46));
  Foliage(map, 36, 930, 622, 40, 24, Rgb(80, 170, 70), Rgb(40, 100, 40));
  Foliage(map, 37, 120, 575, 30, 16, Rgb(80, 170, 70), Rgb(40, 100, 40));
  return {"tutorial_bridge.png", std::move(map), EarthTheme(303)};
}

MapDesign MakeTutorialPit() {
  // 1280 by 512, a pit on each side of a central block; each pit is 78 pixels wide inside, its floor
  // (surface y 300) 80 pixels below the rims (surface y 380). Slot 0 drops at (728, 400) into the right
  // pit; its team's exit is at (930, 380) on the right plateau. The left half mirrors the right.
  int const w = 1280, h = 512;
  MapLayout map(w, h);
  SkyGradient(map, 0, 0, w, h, Rgb(60, 30, 70, 0.55f), Rgb(20, 16, 50, 0.75f));
  Stars(map, 41, 120, 0, 420, w, h);
  Hills(map, 42, 0, w, 0, 400, 60, Rgb(50, 30, 80, 0.5f));

  auto mirrored = [&](int x0, int y0, int x1, int y1, Material m) {
    map.fillRect(x0, y0, x1, y1, m);
    map.fillRect(w - x1, y0, w - x0, y1, m);
  };
  map.fillRect(0, 0, w, 200, Material::Rock);
  mirrored(0, 200, 40, 500, Material::Rock);          // outer walls
  mirrored(40, 200, 682, 300, Material::Ground);      // pit floors and the ground under the plateaus
  mirrored(760, 200, 1240, 380, Material::Ground);    // plateau, also the pit's outer wall
  mirrored(598, 300, 682, 380, Material::Ground);     // the central block, also the pits' inner walls
  mirrored(640, 300, 660, 380, Material::Rock);       // a rock core so the two pits stay apart
  GrassTufts(map, 43, Rgb(130, 200, 90, 0.9f), 0.6f);
  Crystal(map, 1100, 380, 22, 3, Rgb(255, 220, 120, 0.7f));
  Crystal(map, 180, 380, 22, -3, Rgb(255, 220, 120, 0.7f));
  return {"tutorial_pit.png", std::move(map), EarthTheme(404)};
}
