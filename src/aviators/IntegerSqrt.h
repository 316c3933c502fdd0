#pragma once

#include <cstdint>

// The floor of the square root of n; 0 for 0.
std::uint64_t IntegerSqrt(std::uint64_t n);
