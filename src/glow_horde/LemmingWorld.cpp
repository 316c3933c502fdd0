#include "glow_horde/LemmingWorld.h"

#include "world/ChunkedWorld.h"

int LemmingWorld::width() const {
  return world_.width();
}

int LemmingWorld::height() const {
  return world_.height();
}

bool LemmingWorld::is_ground(int x, int y) const {
  return world_.isGround(playerIndex_, x, y);
}

void LemmingWorld::add_ground(int x, int y) {
  world_.queueAddPixel(playerIndex_, x, y);
}

void LemmingWorld::remove_ground(int x, int y) {
  world_.queueRemovePixel(playerIndex_, x, y);
}

void LemmingWorld::wrap(int& x, int& y) const {
  world_.wrap(x, y);
}
