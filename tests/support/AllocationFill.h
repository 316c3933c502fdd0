#pragma once

// The test executable's operator new fills every fresh allocation with a byte chosen by the test while a
// fill is in force, so that memory that is read before it is written holds different values on different
// clients of one lockstep game, in every build (under the sanitizers too, whose own fill is one byte).
namespace testing_support {

// Sets the fill of allocations made from now on by this thread; -1 for none (the default).
void SetAllocationFill(int byte);

class ScopedAllocationFill {
public:
  explicit ScopedAllocationFill(int byte);
  ~ScopedAllocationFill();
  ScopedAllocationFill(ScopedAllocationFill const&) = delete;
  ScopedAllocationFill& operator=(ScopedAllocationFill const&) = delete;

private:
  int previous_;
};

}  // namespace testing_support
