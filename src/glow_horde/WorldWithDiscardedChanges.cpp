#include "glow_horde/WorldWithDiscardedChanges.h"

int WorldWithDiscardedChanges::width() const {
  return underlying_.width();
}

int WorldWithDiscardedChanges::height() const {
  return underlying_.height();
}

bool WorldWithDiscardedChanges::is_ground(int x, int y) const {
  return underlying_.is_ground(x, y);
}

void WorldWithDiscardedChanges::add_ground(int, int) {}

void WorldWithDiscardedChanges::remove_ground(int, int) {}

void WorldWithDiscardedChanges::wrap(int& x, int& y) const {
  underlying_.wrap(x, y);
}
