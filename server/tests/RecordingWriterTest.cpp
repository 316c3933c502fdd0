#include <gtest/gtest.h>

#include "MemoryStorage.h"
#include "RecordingWriter.h"

namespace {

using Bytes = std::vector<unsigned char>;

// Saves of three games, one of them saved again and again as it grows: after flush the storage holds
// the newest bytes of each, whichever saves the writer's thread skipped.
TEST(RecordingWriter, FlushLeavesTheNewestRecordingOfEachGame) {
  MemoryStorage storage;
  RecordingWriter writer(storage);
  for (unsigned char step = 0; step < 200; ++step) {
    writer.save(7, Bytes(step + 1u, step));
  }
  writer.save(1, Bytes{1});
  writer.save(2, Bytes{2, 2});
  writer.flush();
  EXPECT_EQ(storage.recordingChunks(7), Bytes(200, 199));
  EXPECT_EQ(storage.recordingChunks(1), Bytes{1});
  EXPECT_EQ(storage.recordingChunks(2), (Bytes{2, 2}));
}

// What is handed over just before the writer goes (the server stopping) is stored all the same.
TEST(RecordingWriter, DestructionStoresWhatIsWaiting) {
  MemoryStorage storage;
  {
    RecordingWriter writer(storage);
    for (std::uint32_t game = 0; game < 50; ++game) {
      writer.save(game, Bytes(3, static_cast<unsigned char>(game)));
    }
  }
  for (std::uint32_t game = 0; game < 50; ++game) {
    EXPECT_EQ(storage.recordingChunks(game), Bytes(3, static_cast<unsigned char>(game))) << game;
  }
}

}  // namespace
