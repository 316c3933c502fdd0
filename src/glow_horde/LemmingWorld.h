#pragma once

#include "glow_horde/IHordelingWorld.h"

class ChunkedWorld;

// The chunked world as the units of one player see it: reads and changes go through that player's
// queues, which is where a unit's changes get tagged with the player who made them.
class LemmingWorld final : public IHordelingWorld {
public:
  LemmingWorld(ChunkedWorld& world, int playerIndex) : world_(world), playerIndex_(playerIndex) {}

  int width() const override;
  int height() const override;
  bool is_ground(int x, int y) const override;
  void add_ground(int x, int y) override;
  void remove_ground(int x, int y) override;
  void wrap(int& x, int& y) const override;

private:
  ChunkedWorld& world_;
  int playerIndex_;
};
