// The maps of the multiplayer games and the co-op challenge.
#include <cmath>

#include "MapDesigns.h"
#include "Random.h"
#include "Scenery.h"

MapDesign MakeLedges() {
  // The left half of a world mirrored across x = 1024. Each half is a zig-zag of ledges of ground, each
  // with a rock stop at one end, that funnels its units down to a floor (surface y 300) crossing the
  // middle of the world; walking on, a unit reaches the far half's basin (surface y 159), which holds
  // the exit of the team that started on the other side: (400, 159) here, (1647, 159) in the mirror.
  // Without orders every unit takes the long way; dug holes, bridges and blocks make it a race.
  MapLayout map(1024, 1024);
  SkyGradient(map, 0, 0, 1024, 1024, Rgb(70, 110, 160, 0.45f), Rgb(24, 30, 80, 0.7f));
  Stars(map, 51, 160, 0, 700, 1024, 1024);
  Hills(map, 52, 0, 1024, 0, 520, 220, Rgb(60, 70, 120, 0.35f));
  Hills(map, 53, 0, 1024, 0, 330, 160, Rgb(40, 60, 90, 0.45f));

  map.fillRect(0, 0, 1024, 40, Material::Rock);  // bedrock
  // The spawn ledge (surface y 930), stopped at the right.
  map.fillRect(300, 914, 980, 930, Material::Ground);
  map.fillRect(980, 900, 1000, 1000, Material::Rock);
  // Second ledge (surface y 800), stopped at the left.
  map.fillRect(120, 782, 760, 800, Material::Ground);
  map.fillRect(100, 770, 120, 860, Material::Rock);
  // Third ledge (surface y 650), stopped at the right by a pillar on the middle of the world.
  map.fillRect(400, 632, 1000, 650, Material::Ground);
  map.fillRect(1000, 620, 1024, 720, Material::Rock);
  // Fourth ledge (surface y 480), stopped at the left.
  map.fillRect(100, 462, 640, 480, Material::Ground);
  map.fillRect(80, 450, 100, 540, Material::Rock);
  // The crossing floor (surface y 300), over a sump closed off from the basin.
  map.fillRect(560, 280, 1024, 300, Material::Ground);
  map.fillRect(560, 40, 580, 280, Material::Rock);
  // The basin with the exit, walled on the left.
  map.fillRect(250, 40, 560, 140, Material::Rock);
  map.fillRect(250, 140, 560, 159, Material::Ground);
  map.fillRect(200, 40, 250, 360, Material::Rock);
  // A rock spine along the wrapping edge of the world.
  map.fillRect(0, 40, 24, 860, Material::Rock);

  GrassTufts(map, 54, Rgb(120, 210, 90, 0.9f), 0.45f);
  for (auto [x, y] : {std::pair{520.0f, 930.0f}, {300.0f, 800.0f}, {700.0f, 650.0f}, {330.0f, 480.0f}, {800.0f, 300.0f}}) {
    // Small trees standing on the ledges, for the eye only.
    Point const a = map.image(x, y), b = map.image(x, y + 26);
    map.scenery().line(a.x, a.y, b.x, b.y, 3.0f, Rgb(90, 60, 40, 0.9f));
    Foliage(map, static_cast<std::uint64_t>(x * 7 + y), x, y + 34, 14, 12, Rgb(90, 180, 80), Rgb(40, 110, 50));
  }
  Drips(map, 55, Rgb(60, 120, 60, 0.7f), 0, 40, 1024, 1024);
  Crystal(map, 300, 159, 24, -3, Rgb(255, 220, 120, 0.7f));
  Crystal(map, 520, 159, 18, 3, Rgb(255, 220, 120, 0.7f));
  return {"world.png",
          std::move(map),
          {Rgb(158, 118, 72), Rgb(100, 70, 44), Rgb(96, 176, 70), Rgb(110, 112, 128), Rgb(44, 46, 58),
           Rgb(170, 176, 200), 505}};
}

MapDesign MakeCauldrons() {
  // One of three side-by-side tiles (512 wide). Units drop at (166, 514) onto a ledge (surface y 470).
  // Walking right they fall into this tile's cauldron, whose floor (surface y 208) holds the exit at
  // (341, 208) of the player on the left; walking left they fall into the gutter between cauldrons
  // (surface y 100). A player's own exit lies in the next cauldron to the right: reaching it means
  // bridging across this cauldron and the next gutter to the next ledge.
  MapLayout map(512, 768);
  SkyGradient(map, 0, 0, 512, 768, Rgb(90, 30, 30, 0.5f), Rgb(20, 10, 30, 0.75f));
  Stars(map, 61, 50, 0, 560, 512, 768);
  Hills(map, 62, 0, 512, 0, 300, 120, Rgb(60, 24, 40, 0.45f));

  map.fillRect(0, 0, 512, 100, Material::Rock);          // bedrock and the gutter's floor
  map.fillRect(170, 100, 512, 150, Material::Rock);      // under the cauldron
  map.fillRect(170, 150, 512, 208, Material::Ground);    // the cauldron's floor
  map.fillRect(170, 208, 200, 440, Material::Ground);    // its left wall
  map.fillRect(480, 208, 512, 440, Material::Ground);    // its right wall
  map.fillRect(178, 208, 192, 420, Material::Rock);      // iron bands inside the walls
  map.fillRect(488, 208, 502, 420, Material::Rock);
  map.fillRect(60, 456, 240, 470, Material::Ground);     // the spawn ledge

  // Glow of the brew and steam, for the eye only.
  SkyGradient(map, 200, 208, 480, 300, Rgb(255, 120, 40, 0.35f), Rgb(255, 80, 20, 0.0f));
  FixedRandom random(63);
  for (int i = 0; i < 14; ++i) {
    float const x = static_cast<float>(random.range(215, 465));
    float const y = static_cast<float>(random.range(215, 280));
    Point const p = map.image(x, y);
    map.scenery().strokeCircle(p.x, p.y, static_cast<float>(random.range(2, 6)), 1.2f, Rgb(255, 200, 120, 0.6f));
  }
  for (int i = 0; i < 5; ++i) {
    float const x = 40 + 26.0f * static_cast<float>(i);
    Crystal(map, x, 100, 10 + 4.0f * static_cast<float>(i % 3), (i % 2) ? 2.0f : -2.0f, Rgb(180, 255, 140, 0.7f));
  }
  GrassTufts(map, 64, Rgb(200, 120, 60, 0.8f), 0.35f);
  return {"world2.png",
          std::move(map),
          {Rgb(120, 84, 70), Rgb(70, 44, 40), Rgb(150, 110, 80), Rgb(84, 80, 90), Rgb(30, 28, 34), Rgb(200, 110, 60),
           606}};
}

MapDesign MakeAstralSteps() {
  // Floating stairs climbing from the start floor (surface y 150) to the exit at (200, 638):
  // five steps of 22 pixels going right (a bridge each), a wall of ground to dig upwards through
  // (84 pixels), six steps going left, a second wall (80), a long platform, a third wall (82) and the
  // exit platform (surface y 638). Eleven bridges and three upward digs in all, and a horizontal
  // bridge to lid each tunnel's mouth, which the digger would otherwise walk back into after turning.
  int const w = 768, h = 768;
  MapLayout map(w, h);
  SkyGradient(map, 0, 0, w, h, Rgb(30, 10, 60, 0.6f), Rgb(6, 6, 24, 0.8f));
  Nebula(map, 71, 560, 560, 200, Rgb(160, 60, 200, 0.5f));
  Nebula(map, 72, 180, 300, 160, Rgb(40, 120, 200, 0.45f));
  Stars(map, 73, 260, 0, 0, w, h);

  map.fillRect(0, 110, w, 130, Material::Rock);
  map.fillRect(0, 130, w, 150, Material::Ground);
  // First flight, rising to the right.
  for (int i = 0; i < 5; ++i) {
    map.fillRect(250 + 100 * i, 150, w, 150 + 22 * (i + 1), Material::Ground);
  }
  map.fillRect(700, 150, w, 344, Material::Ground);      // first wall, dug upwards from its left foot
  // Second flight, rising to the left, a floating mass above the first.
  map.fillRect(620, 324, 700, 344, Material::Ground);
  for (int i = 0; i < 6; ++i) {
    int const right = 620 - 90 * i;
    map.fillRect(right - 90, 324, right, 366 + 22 * i, Material::Ground);
  }
  map.fillRect(20, 324, 80, 556, Material::Ground);      // second wall, dug upwards from its right foot
  map.fillRect(20, 324, 80, 340, Material::Rock);
  map.fillRect(0, 536, 520, 556, Material::Ground);      // the long platform
  map.fillRect(520, 536, 580, 638, Material::Ground);    // third wall, dug upwards from its left foot
  map.fillRect(120, 618, 580, 638, Material::Ground);    // the exit platform
  map.fillRect(580, 618, 600, 700, Material::Rock);      // its stop
  map.fillRect(0, 324, 20, 600, Material::Rock);         // a rock edge on the left

  for (int i = 0; i < 8; ++i) {
    Crystal(map, 260.0f + 55.0f * static_cast<float>(i), 638, 10.0f + static_cast<float>(i % 3) * 5.0f,
            (i % 2) ? 2.0f : -2.0f, Rgb(140, 220, 255, 0.6f));
  }
  GrassTufts(map, 74, Rgb(200, 160, 255, 0.7f), 0.3f);
  return {"coop.png",
          std::move(map),
          {Rgb(130, 120, 190), Rgb(70, 60, 120), Rgb(200, 180, 255), Rgb(90, 90, 120), Rgb(30, 30, 48),
           Rgb(150, 220, 255), 707}};
}

MapDesign MakeShipArena() {
  // The bottom left quarter of a world mirrored on both axes (1024 by 1024). Ships start 400 pixels
  // from each corner, pointing at the centre, where a hub sits inside a broken ring; a few asteroids
  // drift in each quarter. All obstacles are rock.
  MapLayout map(512, 512);
  SkyGradient(map, 0, 0, 512, 512, Rgb(8, 10, 30, 0.75f), Rgb(14, 12, 40, 0.75f));
  Nebula(map, 81, 200, 260, 180, Rgb(60, 40, 140, 0.45f));
  Stars(map, 82, 200, 0, 0, 512, 512);

  auto asteroid = [&](float cx, float cy, float r, std::uint64_t seed) {
    map.fillWhere(
        [&](int x, int y) {
          float const dx = static_cast<float>(x) + 0.5f - cx, dy = static_cast<float>(y) + 0.5f - cy;
          float const a = std::atan2(dy, dx);
          float const wobble = 0.8f + 0.35f * ValueNoise(std::cos(a) * 30 + 100, std::sin(a) * 30 + 100, 12, seed);
          return std::hypot(dx, dy) < r * wobble;
        },
        Material::Rock);
  };
  asteroid(150, 300, 42, 83);
  asteroid(300, 140, 36, 84);
  asteroid(80, 110, 24, 85);
  asteroid(430, 230, 18, 86);
  asteroid(230, 440, 18, 87);
  // The hub at the centre of the world, and the ring, open along the diagonals.
  map.fillCircle(512, 512, 44, Material::Rock);
  map.fillWhere(
      [](int x, int y) {
        float const dx = static_cast<float>(x) + 0.5f - 512, dy = static_cast<float>(y) + 0.5f - 512;
        float const d = std::hypot(dx, dy);
        float const a = std::atan2(-dy, -dx);  // 0.785 is the diagonal towards the start
        return d > 112 && d < 126 && std::fabs(a - 0.785398f) > 0.32f;
      },
      Material::Rock);
  // A jagged rim along the outer edges.
  map.fillWhere([](int x, int y) { return y < 6 + 8 * ValueNoise(static_cast<float>(x), 0, 20, 88); }, Material::Rock);
  map.fillWhere([](int x, int y) { return x < 6 + 8 * ValueNoise(0, static_cast<float>(y), 20, 89); }, Material::Rock);
  return {"aviators.png",
          std::move(map),
          {Rgb(120, 120, 140), Rgb(70, 70, 90), Rgb(140, 140, 160), Rgb(110, 104, 120), Rgb(40, 38, 50),
           Rgb(200, 170, 255), 808}};
}
