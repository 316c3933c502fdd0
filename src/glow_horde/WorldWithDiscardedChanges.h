#pragma once

#include "glow_horde/IHordelingWorld.h"

// A view of another world that reads through to it and drops every change: a unit can be stepped
// over it to see what it would do, leaving no trace.
class WorldWithDiscardedChanges final : public IHordelingWorld {
public:
  explicit WorldWithDiscardedChanges(IHordelingWorld const& underlying) : underlying_(underlying) {}

  int width() const override;
  int height() const override;
  bool is_ground(int x, int y) const override;
  void add_ground(int x, int y) override;
  void remove_ground(int x, int y) override;
  void wrap(int& x, int& y) const override;

private:
  IHordelingWorld const& underlying_;
};
