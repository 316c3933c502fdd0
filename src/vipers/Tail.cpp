#include "vipers/Tail.h"

#include <algorithm>

namespace {

using Point = Vec2<AviatorCoord>;

std::int64_t SquaredDistance(Point a, Point b) {
  std::int64_t const dx = static_cast<std::int64_t>(b.x) - a.x;
  std::int64_t const dy = static_cast<std::int64_t>(b.y) - a.y;
  return dx * dx + dy * dy;
}

std::int32_t Distance(Point a, Point b) {
  return static_cast<std::int32_t>(IntegerSqrt(static_cast<std::uint64_t>(SquaredDistance(a, b))));
}

// Which side of the directed line s->e the point p lies on: the sign of the cross product.
int Side(Point p, Point s, Point e) {
  std::int64_t const v = (static_cast<std::int64_t>(e.y) - s.y) * (static_cast<std::int64_t>(p.x) - s.x) -
                         (static_cast<std::int64_t>(p.y) - s.y) * (static_cast<std::int64_t>(e.x) - s.x);
  return (v > 0) - (v < 0);
}

}  // namespace

void Tail::Box::add(Point p) {
  minX = std::min(minX, p.x);
  minY = std::min(minY, p.y);
  maxX = std::max(maxX, p.x);
  maxY = std::max(maxY, p.y);
}

void Tail::BoxLevel::addFront(std::int64_t id, Point p) {
  std::int64_t const block = id >> shift;
  while (back + static_cast<std::int64_t>(boxes.size()) <= block) {
    boxes.emplace_back();
  }
  boxes[static_cast<std::size_t>(block - back)].add(p);
  // The first point of a block closes the last segment of the block before.
  if ((id & ((std::int64_t{1} << shift) - 1)) == 0 && block - 1 >= back) {
    boxes[static_cast<std::size_t>(block - 1 - back)].add(p);
  }
}

void Tail::BoxLevel::dropBefore(std::int64_t backId) {
  while (back < (backId >> shift)) {
    boxes.pop_front();
    ++back;
  }
}

Tail::Tail(Point start) {
  points_.push_back(start);
  fine_.addFront(0, start);
  coarse_.addFront(0, start);
}

void Tail::pushFront(Point p) {
  points_.push_front(p);
  ++frontId_;
  fine_.addFront(frontId_, p);
  coarse_.addFront(frontId_, p);
}

void Tail::popFront() {
  // The boxes keep the point's extent: a box may be larger than its points, never smaller.
  points_.pop_front();
  --frontId_;
}

void Tail::popBack() {
  points_.pop_back();
  fine_.dropBefore(backId());
  coarse_.dropBefore(backId());
}

void Tail::moveBack(Point p) {
  points_.back() = p;
  fine_.addTo(backId(), p);
  coarse_.addTo(backId(), p);
}

void Tail::update(Point head) {
  Point const front = points_.front();
  if (head == front) {
    return;
  }
  Point const d = head - front;
  std::int64_t const dx = d.x;
  std::int64_t const dy = d.y;
  currentLength_ += static_cast<std::int32_t>(IntegerSqrt(static_cast<std::uint64_t>(dx * dx + dy * dy)));
  if (points_.size() >= 2) {
    Point const u = front - points_[1];
    std::int64_t const ux = u.x;
    std::int64_t const uy = u.y;
    // On a straight run the front point says nothing: it is dropped and the run keeps its two ends.
    if (dx * uy == dy * ux && dx * -ux < dy * uy) {
      popFront();
    }
  }
  pushFront(head);
  trimToLength();
}

void Tail::trimToLength() {
  if (points_.size() < 2) {
    return;
  }
  while (currentLength_ > length_) {
    std::int64_t const excess = static_cast<std::int64_t>(currentLength_) - length_;
    Point last = points_.back();
    Point const prev = points_[points_.size() - 2];
    std::int32_t const seg = Distance(last, prev);
    if (excess >= seg) {
      popBack();
      currentLength_ -= seg;
      if (points_.size() < 2) {
        return;
      }
      continue;
    }
    // The cut falls inside the last segment: move its far end toward the next point by the excess.
    last.x += static_cast<std::int32_t>((static_cast<std::int64_t>(prev.x) - last.x) * excess / seg);
    last.y += static_cast<std::int32_t>((static_cast<std::int64_t>(prev.y) - last.y) * excess / seg);
    currentLength_ = length_;
    if (last == prev) {
      popBack();
    } else {
      moveBack(last);
    }
    return;
  }
}

void Tail::setLength(int n) {
  length_ = n;
  if (currentLength_ > n) {
    trimToLength();
  }
}

bool Tail::checkCollision_Internal(Point from, Point to, bool skipFirstSegment) const {
  if (from == to) {
    return false;
  }
  std::int64_t const firstK = skipFirstSegment ? 2 : 1;
  std::int64_t const count = static_cast<std::int64_t>(points_.size());
  if (count - 1 < firstK) {
    return false;
  }
  // Segment k joins points_[k - 1] and points_[k]; its older end has the number frontId_ - k.
  std::int64_t const lowestId = backId();
  std::int64_t const highestId = frontId_ - firstK;
  // The query's line: side(p) = a·(p.x - from.x) + b·(p.y - from.y).
  std::int64_t const a = static_cast<std::int64_t>(to.y) - from.y;
  std::int64_t const b = static_cast<std::int64_t>(from.x) - to.x;
  auto const missesLine = [&](Box const& box) {
    std::int64_t const nearX = (a >= 0 ? box.minX : box.maxX) - static_cast<std::int64_t>(from.x);
    std::int64_t const farX = (a >= 0 ? box.maxX : box.minX) - static_cast<std::int64_t>(from.x);
    std::int64_t const nearY = (b >= 0 ? box.minY : box.maxY) - static_cast<std::int64_t>(from.y);
    std::int64_t const farY = (b >= 0 ? box.maxY : box.minY) - static_cast<std::int64_t>(from.y);
    return a * nearX + b * nearY > 0 || a * farX + b * farY < 0;
  };
  std::int64_t const lastCoarse = highestId >> kCoarseShift;
  for (std::int64_t coarse = coarse_.back; coarse <= lastCoarse; ++coarse) {
    if (missesLine(coarse_.box(coarse))) {
      continue;
    }
    std::int64_t const firstFine = std::max(coarse << (kCoarseShift - kFineShift), fine_.back);
    std::int64_t const lastFine = std::min(((coarse + 1) << (kCoarseShift - kFineShift)) - 1, highestId >> kFineShift);
    for (std::int64_t block = firstFine; block <= lastFine; ++block) {
      if (missesLine(fine_.box(block))) {
        continue;
      }
      std::int64_t const first = std::max(block << kFineShift, lowestId);
      std::int64_t const last = std::min(((block + 1) << kFineShift) - 1, highestId);
      // Segments k from frontId_ - last to frontId_ - first, walked from the newer end: each point's
      // side of the query line is taken once.
      auto point = points_.begin() + static_cast<std::ptrdiff_t>(frontId_ - last - 1);
      Point p = *point;
      std::int64_t const side0 =
          a * (static_cast<std::int64_t>(p.x) - from.x) + b * (static_cast<std::int64_t>(p.y) - from.y);
      int sideP = (side0 > 0) - (side0 < 0);
      for (std::int64_t n = last - first; n >= 0; --n) {
        ++point;
        Point const q = *point;
        std::int64_t const v =
            a * (static_cast<std::int64_t>(q.x) - from.x) + b * (static_cast<std::int64_t>(q.y) - from.y);
        int const sideQ = (v > 0) - (v < 0);
        if (sideP * sideQ <= 0 && Side(from, p, q) * Side(to, p, q) <= 0) {
          return true;
        }
        p = q;
        sideP = sideQ;
      }
    }
  }
  return false;
}

bool Tail::checkSelfCollision(Point to) const {
  Point const front = points_.front();
  if (checkCollision_Internal(front, to, true)) {
    return true;
  }
  if (points_.size() < 2) {
    return false;
  }
  Point const u = front - points_[1];
  Point const d = to - front;
  std::int64_t const ux = u.x;
  std::int64_t const uy = u.y;
  std::int64_t const dx = d.x;
  std::int64_t const dy = d.y;
  // Straight back into the first segment, which the test above skipped.
  return dx * uy == dy * ux && dx * ux + dy * uy < 0;
}
