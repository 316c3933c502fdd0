#pragma once

#include <stdexcept>

// The value of a key in an unordered map. A missing key raises std::out_of_range with the one text that
// the program shows for it, "unordered_map::at: key not found", whichever standard library it was
// built with (their own texts for at() differ).
template <class Map, class Key>
auto& ValueAt(Map& map, Key const& key) {
  auto const found = map.find(key);
  if (found == map.end()) {
    throw std::out_of_range("unordered_map::at: key not found");
  }
  return found->second;
}
