#include "aviators/IntegerSqrt.h"

std::uint64_t IntegerSqrt(std::uint64_t n) {
  if (n < 2) {
    return n;
  }
  // Newton's iteration from (n + 1) / 2, written so that n + 1 cannot overflow; the estimate falls
  // monotonically to the floor of the root and stops there.
  std::uint64_t x = n / 2 + (n & 1);
  for (;;) {
    std::uint64_t const next = (x + n / x) / 2;
    if (next >= x) {
      return x;
    }
    x = next;
  }
}
