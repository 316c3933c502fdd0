#pragma once

// Which units an order may go to, by the way they face.
enum class DirectionFilter : int {
  Any = 0,
  FacingLeft = 1,
  FacingRight = 2,
};

constexpr bool PassesDirectionFilter(DirectionFilter filter, bool facingRight) {
  switch (filter) {
  case DirectionFilter::FacingLeft:
    return !facingRight;
  case DirectionFilter::FacingRight:
    return facingRight;
  case DirectionFilter::Any:
    break;
  }
  return true;
}
