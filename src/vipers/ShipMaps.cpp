#include "vipers/ShipMaps.h"

#include "world/ChunkedWorld.h"

ShipMaps BuildShipMaps(ChunkedWorld const& world, int localPlayer) {
  ShipMaps maps;
  maps.solid = CollisionMap(world.width(), world.height());
  for (int y = 0; y < world.height(); ++y) {
    for (int x = 0; x < world.width(); ++x) {
      if (world.isGround(localPlayer, x, y)) {
        maps.solid.set(x, y, true);
      }
    }
  }
  maps.body = maps.solid.expandByRadius(10);
  return maps;
}
