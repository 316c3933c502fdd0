#pragma once

// The terrain as one unit sees it. Reads answer for the world as it stood at the start of the
// frame: a change queued with add_ground or remove_ground is never visible in the frame that
// queued it. Coordinates may lie outside the world; the world wraps them or treats them as solid.
class IHordelingWorld {
public:
  virtual ~IHordelingWorld() = default;
  virtual int width() const = 0;
  virtual int height() const = 0;
  virtual bool is_ground(int x, int y) const = 0;
  virtual void add_ground(int x, int y) = 0;
  virtual void remove_ground(int x, int y) = 0;
  // Brings a position into range on the axes where the world wraps.
  virtual void wrap(int& x, int& y) const = 0;
};
