#include "glow_horde/GridWorld.h"

#include "glow_horde/Lemming.h"

GridWorld::GridWorld(int width, int height, bool wrapX, bool wrapY)
    : width_(width), height_(height), wrapX_(wrapX), wrapY_(wrapY),
      cells_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), Cell::Empty) {}

// One period at most: units step a pixel or a few at a time.
void GridWorld::wrap(int& x, int& y) const {
  x += wrapX_ ? (x < 0 ? width_ : x >= width_ ? -width_ : 0) : 0;
  y += wrapY_ ? (y < 0 ? height_ : y >= height_ ? -height_ : 0) : 0;
}

bool GridWorld::is_ground(int x, int y) const {
  wrap(x, y);
  return !inside(x, y) || cell(x, y) != Cell::Empty;
}

void GridWorld::add_ground(int x, int y) { queue(adds_, queuedAdds_, x, y); }
void GridWorld::remove_ground(int x, int y) { queue(removes_, queuedRemoves_, x, y); }

void GridWorld::queue(std::vector<Pixel>& changes, int& count, int x, int y) {
  wrap(x, y);
  if (inside(x, y) && cell(x, y) != Cell::Rock) {
    changes.push_back({x, y});
    ++count;
  }
}

void GridWorld::endFrame() {
  for (Pixel const& p : adds_) {
    set(p.x, p.y, Cell::Ground);
  }
  for (Pixel const& p : removes_) {
    set(p.x, p.y, Cell::Empty);
  }
  adds_.clear();
  removes_.clear();
}

void GridWorld::set(int x, int y, Cell cell) {
  cells_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)] = cell;
}

void GridWorld::fill(int x0, int y0, int x1, int y1, Cell cell) {
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      set(x, y, cell);
    }
  }
}

GridWorld::Cell GridWorld::cell(int x, int y) const {
  return cells_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
}

void StepFrames(Lemming& lemming, GridWorld& world, int frames) {
  for (int i = 0; i < frames; ++i) {
    lemming.update(world);
    world.endFrame();
  }
}
