#pragma once

#include <cstdint>

#include "sim/IHasher.h"

struct XXH3_state_s;

// Streaming 64-bit XXH3 with seed 0.
class XXHashHasher final : public IHasher {
public:
  XXHashHasher();
  ~XXHashHasher() override;
  XXHashHasher(XXHashHasher const&) = delete;
  XXHashHasher& operator=(XXHashHasher const&) = delete;

  void update(void const* data, unsigned long size) override;
  std::uint64_t digest() const;

private:
  XXH3_state_s* state_ = nullptr;
};
