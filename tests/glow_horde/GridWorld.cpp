#include "glow_horde/GridWorld.h"

#include "glow_horde/Lemming.h"

GridWorld::GridWorld(int width, int height, bool wrapX, bool wrapY)
    : width_(width), height_(height), wrapX_(wrapX), wrapY_(wrapY),
      cells_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), Cell::Empty) {}

GridWorld GridWorld::FromArt(std::vector<std::string> const& rows, bool wrapX, bool wrapY) {
  int const height = static_cast<int>(rows.size());
  int const width = height == 0 ? 0 : static_cast<int>(rows.front().size());
  GridWorld world(width, height, wrapX, wrapY);
  for (int r = 0; r < height; ++r) {
    for (int x = 0; x < width && x < static_cast<int>(rows[r].size()); ++x) {
      char const c = rows[r][x];
      world.set(x, height - 1 - r, c == '#' ? Cell::Ground : c == '@' ? Cell::Rock : Cell::Empty);
    }
  }
  return world;
}

void GridWorld::wrap(int& x, int& y) const {
  if (wrapX_) {
    if (x < 0) {
      x += width_;
    } else if (x >= width_) {
      x -= width_;
    }
  }
  if (wrapY_) {
    if (y < 0) {
      y += height_;
    } else if (y >= height_) {
      y -= height_;
    }
  }
}

bool GridWorld::is_ground(int x, int y) const {
  wrap(x, y);
  if (!inside(x, y)) {
    return true;
  }
  return cell(x, y) != Cell::Empty;
}

bool GridWorld::queueable(int& x, int& y) const {
  wrap(x, y);
  return inside(x, y) && cell(x, y) != Cell::Rock;
}

void GridWorld::add_ground(int x, int y) {
  if (queueable(x, y)) {
    adds_.push_back({x, y});
    ++queuedAdds_;
  }
}

void GridWorld::remove_ground(int x, int y) {
  if (queueable(x, y)) {
    removes_.push_back({x, y});
    ++queuedRemoves_;
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

void StepFrame(Lemming& lemming, GridWorld& world) {
  lemming.update(world);
  world.endFrame();
}

void StepFrames(Lemming& lemming, GridWorld& world, int frames) {
  for (int i = 0; i < frames; ++i) {
    StepFrame(lemming, world);
  }
}
