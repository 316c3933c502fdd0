#include "world/PendingPixelTable.h"

#include <utility>

#include "app/QZAssert.h"

namespace {
constexpr std::uint32_t kInitialBits = 6;
}  // namespace

std::uint32_t PendingPixelTable::locate(std::uint32_t key) const {
  std::uint32_t i = home(key);
  while (slots_[i].used && slots_[i].key != key) {
    i = (i + 1) & mask_;
  }
  return i;
}

PendingPixel* PendingPixelTable::find(std::uint32_t pixel) {
  if (size_ == 0) {
    return nullptr;
  }
  Slot& slot = slots_[locate(pixel)];
  return slot.used ? &slot.value : nullptr;
}

PendingPixel const* PendingPixelTable::find(std::uint32_t pixel) const {
  return const_cast<PendingPixelTable*>(this)->find(pixel);
}

PendingPixel& PendingPixelTable::findOrInsert(std::uint32_t pixel, bool* created) {
  QZ_ASSERT(pixel < 65536);
  if (slots_ == nullptr || (size_ + 1) * 2 > mask_ + 1) {
    grow();
  }
  Slot& slot = slots_[locate(pixel)];
  *created = !slot.used;
  if (*created) {
    slot.used = true;
    slot.key = static_cast<std::uint16_t>(pixel);
    slot.value = PendingPixel{};
    ++size_;
  }
  return slot.value;
}

void PendingPixelTable::erase(std::uint32_t pixel) {
  if (size_ == 0) {
    return;
  }
  std::uint32_t hole = locate(pixel);
  if (!slots_[hole].used) {
    return;
  }
  // Pull later members of the probe run back into the hole, so that every key stays reachable
  // from its home slot without passing an empty slot.
  std::uint32_t next = hole;
  for (;;) {
    next = (next + 1) & mask_;
    if (!slots_[next].used) {
      break;
    }
    std::uint32_t const wanted = home(slots_[next].key);
    // The entry at `next` may move into the hole unless its home lies cyclically in (hole, next].
    bool const homeAfterHole = ((next - wanted) & mask_) < ((next - hole) & mask_);
    if (!homeAfterHole) {
      slots_[hole] = slots_[next];
      hole = next;
    }
  }
  slots_[hole].used = false;
  --size_;
}

void PendingPixelTable::grow() {
  std::uint32_t const bits = slots_ == nullptr ? kInitialBits : 32 - shift_ + 1;
  std::unique_ptr<Slot[]> old = std::exchange(slots_, std::make_unique<Slot[]>(std::size_t{1} << bits));
  std::uint32_t const oldCapacity = old == nullptr ? 0 : mask_ + 1;
  mask_ = (1u << bits) - 1;
  shift_ = 32 - bits;
  for (std::uint32_t i = 0; i < oldCapacity; ++i) {
    if (old[i].used) {
      slots_[locate(old[i].key)] = old[i];
    }
  }
}
