#pragma once

#include <cstdint>
#include <deque>

#include "aviators/AviatorCoord.h"
#include "aviators/IntegerSqrt.h"

// The trail behind a head: a polyline in 1/256 pixel, newest point at the front. It grows at the head
// and is cut back at the far end to its target length. Integer arithmetic only.
//
// Crossing tests must stay cheap on tails of tens of thousands of points, since every head tests
// every tail every frame. Each point gets a running number (the front has the highest), and the numbers
// are cut into blocks on two levels, of 64 and of 8 points. Each block keeps a box that holds its
// points and the first point of the next block, so it holds every segment whose older end lies in the
// block. A query skips a block whose box lies wholly on one side of the query's line: no segment there
// can pass the crossing test, which needs a segment to touch that line. The boxes only ever grow while
// their block lives, so they never miss a point.
class Tail {
public:
  explicit Tail(Vec2<AviatorCoord> start);

  // The head has moved to here.
  void update(Vec2<AviatorCoord> head);
  // Cuts the far end back to the target length.
  void trimToLength();
  void setLength(int n);

  bool checkCollision_Internal(Vec2<AviatorCoord> from, Vec2<AviatorCoord> to, bool skipFirstSegment) const;
  bool checkCollision(Vec2<AviatorCoord> from, Vec2<AviatorCoord> to) const {
    return checkCollision_Internal(from, to, false);
  }
  // The step of the head from the front point to `to`, against this tail.
  bool checkSelfCollision(Vec2<AviatorCoord> to) const;

  std::deque<Vec2<AviatorCoord>> const& points() const { return points_; }
  Vec2<AviatorCoord> front() const { return points_.front(); }
  std::int32_t length() const { return length_; }
  std::int32_t currentLength() const { return currentLength_; }

private:
  struct Box {
    std::int32_t minX = INT32_MAX;
    std::int32_t minY = INT32_MAX;
    std::int32_t maxX = INT32_MIN;
    std::int32_t maxY = INT32_MIN;
    void add(Vec2<AviatorCoord> p);
  };
  // The boxes of one level: block b numbers the points (b << shift) to ((b + 1) << shift) - 1.
  struct BoxLevel {
    int shift = 0;
    std::deque<Box> boxes;  // boxes[i] belongs to block back + i
    std::int64_t back = 0;

    // A new point at the front: into its block, and into the block before if it opens its own.
    void addFront(std::int64_t id, Vec2<AviatorCoord> p);
    // A point that moved: into the block that it is in.
    void addTo(std::int64_t id, Vec2<AviatorCoord> p) { boxes[static_cast<std::size_t>((id >> shift) - back)].add(p); }
    // Drops the blocks that hold no segment from the point numbered backId on.
    void dropBefore(std::int64_t backId);
    Box const& box(std::int64_t block) const { return boxes[static_cast<std::size_t>(block - back)]; }
  };
  static constexpr int kFineShift = 3;
  static constexpr int kCoarseShift = 6;

  void pushFront(Vec2<AviatorCoord> p);
  void popFront();
  void popBack();
  void moveBack(Vec2<AviatorCoord> p);
  std::int64_t backId() const { return frontId_ - static_cast<std::int64_t>(points_.size()) + 1; }

  std::deque<Vec2<AviatorCoord>> points_;
  std::int32_t length_ = 0;
  std::int32_t currentLength_ = 0;

  // points_[k] has the number frontId_ - k.
  std::int64_t frontId_ = 0;
  BoxLevel fine_{kFineShift, {}, 0};
  BoxLevel coarse_{kCoarseShift, {}, 0};
};
