#include "sim/XXHashHasher.h"

#include <xxhash.h>

XXHashHasher::XXHashHasher() : state_(XXH3_createState()) {
  if (state_ != nullptr) {
    XXH3_64bits_reset(state_);
  }
}

XXHashHasher::~XXHashHasher() {
  if (state_ != nullptr) {
    XXH3_freeState(state_);
  }
}

void XXHashHasher::update(void const* data, unsigned long size) {
  if (state_ != nullptr) {
    XXH3_64bits_update(state_, data, size);
  }
}

std::uint64_t XXHashHasher::digest() const {
  return state_ != nullptr ? XXH3_64bits_digest(state_) : 0;
}
