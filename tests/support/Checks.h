#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

#include "sim/XXHashHasher.h"

namespace testing_support {

// The text of the std::runtime_error that action raises, or "no error".
inline std::string ErrorText(std::function<void()> const& action) {
  try {
    action();
  } catch (std::runtime_error const& error) {
    return error.what();
  }
  return "no error";
}

// The digest of what an object feeds to a hasher through hash(hasher).
template <typename T>
std::uint64_t DigestOf(T const& object) {
  XXHashHasher hasher;
  object.hash(hasher);
  return hasher.digest();
}

// The same through hashLocalBase(hasher), for a chunk or a world.
template <typename T>
std::uint64_t LocalBaseDigest(T const& world) {
  XXHashHasher hasher;
  world.hashLocalBase(hasher);
  return hasher.digest();
}

}  // namespace testing_support
