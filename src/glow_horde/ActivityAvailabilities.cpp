#include "glow_horde/ActivityAvailabilities.h"

void ActivityAvailabilities::hash(IHasher& hasher) const {
  for (std::int32_t const& count : counts) {
    hasher.update(&count, sizeof count);
  }
}

void ActivityAvailabilities::serialiseHashedData(std::vector<unsigned char>& out) const {
  for (std::int32_t const& count : counts) {
    auto const* bytes = reinterpret_cast<unsigned char const*>(&count);
    out.insert(out.end(), bytes, bytes + sizeof count);
  }
}
