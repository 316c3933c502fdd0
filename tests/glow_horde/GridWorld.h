#pragma once

#include <cstdint>
#include <vector>

#include "glow_horde/IHordelingWorld.h"

// A small terrain for unit tests that follows the rules of the real world: a change queued in a
// frame is invisible until endFrame(), adds are applied before removes, rock can't be changed,
// everything outside the world is ground, and wrapping axes join up by one period.
class GridWorld final : public IHordelingWorld {
public:
  enum class Cell : std::uint8_t { Empty, Ground, Rock };

  GridWorld(int width, int height, bool wrapX = false, bool wrapY = false);

  int width() const override { return width_; }
  int height() const override { return height_; }
  bool is_ground(int x, int y) const override;
  void add_ground(int x, int y) override;
  void remove_ground(int x, int y) override;
  void wrap(int& x, int& y) const override;

  // Applies the frame's changes, adds first, then removes.
  void endFrame();

  // Direct access for setting up a scene, bypassing the queue.
  void set(int x, int y, Cell cell);
  void fill(int x0, int y0, int x1, int y1, Cell cell); // inclusive rectangle
  Cell cell(int x, int y) const;

  // Every change ever accepted into the queue, rock refusals excluded.
  int queuedAdds() const { return queuedAdds_; }
  int queuedRemoves() const { return queuedRemoves_; }
  int pendingChanges() const { return static_cast<int>(adds_.size() + removes_.size()); }

private:
  struct Pixel {
    int x, y;
  };
  bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }
  void queue(std::vector<Pixel>& changes, int& count, int x, int y);

  int width_;
  int height_;
  bool wrapX_;
  bool wrapY_;
  std::vector<Cell> cells_;
  std::vector<Pixel> adds_;
  std::vector<Pixel> removes_;
  int queuedAdds_ = 0;
  int queuedRemoves_ = 0;
};

// Frames of one unit as a session runs them: each the update, then the world's end of frame.
class Lemming;
void StepFrames(Lemming& lemming, GridWorld& world, int frames);
inline void StepFrame(Lemming& lemming, GridWorld& world) { StepFrames(lemming, world, 1); }
