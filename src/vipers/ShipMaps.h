#pragma once

#include "aviators/CollisionMap.h"

class ChunkedWorld;

// The two collision maps of a ship session, built once from the world as the local player sees it:
// `solid`, a bit for every ground pixel, and `body`, that map grown by the ship's radius of 10 pixels,
// through which a ship is moved as a point. Writes the time the growing took to standard output.
struct ShipMaps {
  CollisionMap solid;
  CollisionMap body;
};

ShipMaps BuildShipMaps(ChunkedWorld const& world, int localPlayer);
