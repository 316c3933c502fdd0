#pragma once

#include <cstdint>
#include <memory>

// What a change queue remembers about one pixel that has changes pending in it: the two most recent
// frames in which the pixel was changed, with whether each of them removed it, and the two most recent
// frames in which it was added. That is enough to answer any question about slot ranges that reach up
// to the newest slot or the one before it. Frames are counted by the queue modulo 65536, which is far
// more than the number of slots, so differences of frames are exact ages.
struct PendingPixel {
  std::uint16_t latestFrame = 0;
  std::uint16_t previousFrame = 0;
  std::uint16_t latestAddFrame = 0;
  std::uint16_t previousAddFrame = 0;
  bool latestRemoves : 1 = false;
  bool previousRemoves : 1 = false;
  bool hasPrevious : 1 = false;
  bool hasLatestAdd : 1 = false;
  bool hasPreviousAdd : 1 = false;
};

// Open-addressing hash table from a chunk-local pixel index (0 to 65535) to its PendingPixel.
// Linear probing with backward-shift deletion, so erasing leaves no tombstones. It grows when half
// full and never shrinks, so a queue in steady use stops allocating.
class PendingPixelTable {
public:
  PendingPixelTable() = default;
  PendingPixelTable(PendingPixelTable&&) noexcept = default;
  PendingPixelTable& operator=(PendingPixelTable&&) noexcept = default;
  PendingPixelTable(PendingPixelTable const&) = delete;
  PendingPixelTable& operator=(PendingPixelTable const&) = delete;

  PendingPixel* find(std::uint32_t pixel);
  PendingPixel const* find(std::uint32_t pixel) const;
  // The entry for the pixel; a new one is value-initialised and *created is set to true.
  PendingPixel& findOrInsert(std::uint32_t pixel, bool* created);
  void erase(std::uint32_t pixel);

  std::uint32_t size() const { return size_; }
  std::uint32_t capacity() const { return slots_ == nullptr ? 0 : mask_ + 1; }

private:
  // Kept small (14 bytes) so that a crowded table stays in cache.
  struct Slot {
    std::uint16_t key = 0;
    bool used = false;
    PendingPixel value;
  };

  std::uint32_t home(std::uint32_t key) const { return (key * 0x9E3779B1u) >> shift_; }
  std::uint32_t locate(std::uint32_t key) const;
  void grow();

  std::unique_ptr<Slot[]> slots_;
  std::uint32_t mask_ = 0;
  std::uint32_t shift_ = 32;
  std::uint32_t size_ = 0;
};
