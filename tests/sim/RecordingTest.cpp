#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "net/LobbyRecordsWire.h"
#include "sim/Recording.h"
#include "support/Bytes.h"
#include "support/Checks.h"
#include "support/SampleRecords.h"
#include "support/TempDirectory.h"

using namespace testbytes;

namespace {

// A recording of three players over four steps, given newest first as the server collects them.
Recording ThreePlayerRecording() {
  GameResults results = samples::Results();
  results.playerSlots = {0, 1, 3};
  results.playerNames = {"Ada", "Bo", "Cy"};
  return Recording({Of({0, 0, 0}), Of({1, 'd', 0, 2, 'e', 'f'}), Of({0, 1, 'c', 0}), Of({2, 'a', 'b', 0, 0})}, results);
}

// The header: the magic's length, the magic, then the rest (version and results).
Bytes Header(Bytes const& magic, unsigned long long magicLength, Bytes const& rest) {
  return Concat({Count(magicLength), magic, rest});
}
Bytes Header(Bytes const& rest) { return Header(Of({'G', 'R', 'U', 'F'}), 4, rest); }
Bytes ValidHeader() { return Header(Concat({Of({1, 0, 0, 0}), Encode(samples::Results())})); }

// A whole file: headerSize, header, chunkCount, chunks.
Bytes File(Bytes const& header, std::vector<Bytes> const& chunks = {}) {
  Bytes file = Concat({Count(header.size()), header, Count(chunks.size())});
  for (Bytes const& chunk : chunks) {
    file = Concat({file, Count(chunk.size()), chunk});
  }
  return file;
}

std::string LoadErrorAt(std::string const& path) {
  return testing_support::ErrorText([&] { Recording const recording(path); });
}

std::string LoadError(Bytes const& bytes) {
  TempDirectory directory;
  return LoadErrorAt(directory.writeBytes("recording1.bin", bytes));
}

}  // namespace

TEST(Recording, ConstructorStoresUpdatesOldestFirstAndSplitsThemAndPastTheEndNobodyOrders) {
  Recording const recording = ThreePlayerRecording();
  ASSERT_EQ(recording.updates.size(), 4u);
  EXPECT_EQ(recording.updates.front(), Of({2, 'a', 'b', 0, 0}));
  EXPECT_EQ(recording.players(), 3);
  EXPECT_EQ(recording.allUpdatesOnFrame(0), (std::vector<Bytes>{{'a', 'b'}, {}, {}}));
  EXPECT_EQ(recording.allUpdatesOnFrame(2), (std::vector<Bytes>{{'d'}, {}, {'e', 'f'}}));
  EXPECT_EQ(recording.playerUpdateOnFrame(2, 2), Of({'e', 'f'}));
  EXPECT_EQ(recording.playerUpdateOnFrame(1, 1), Of({'c'}));

  EXPECT_EQ(recording.allUpdatesOnFrame(4), (std::vector<Bytes>(3)));
  EXPECT_EQ(recording.allUpdatesOnFrame(1000), (std::vector<Bytes>(3)));
  EXPECT_EQ(recording.playerUpdateOnFrame(4, 0), Bytes{});
  EXPECT_EQ(recording.playerUpdateOnFrame(0, 5), Bytes{}) << "a seat that the recording doesn't have";
}

TEST(Recording, SaveThenLoadGivesAnEqualRecordingInTheFileFormat) {
  TempDirectory directory;
  Recording const original = ThreePlayerRecording();
  original.save(directory.file("recording7.bin"));
  EXPECT_EQ(Recording(directory.file("recording7.bin")), original);
  EXPECT_EQ(directory.readBytes("recording7.bin"),
            File(Header(Concat({Of({1, 0, 0, 0}), Encode(original.results)})),
                 std::vector<Bytes>(original.updates.begin(), original.updates.end())));

  // The same through a stream, with the same checks.
  std::stringstream stream;
  original.save(stream);
  EXPECT_EQ(Recording(stream), original);
  std::istringstream shortStream("1234");
  EXPECT_THROW(Recording{shortStream}, std::runtime_error);

  std::string const path = directory.file("missing/recording1.bin");
  EXPECT_EQ(testing_support::ErrorText([&] { original.save(path); }), "Failed to save recording: " + path);
}

TEST(Recording, ExtraBytesAfterTheResultsInTheHeaderAreIgnored) {
  TempDirectory directory;
  Recording const loaded(directory.writeBytes("r.bin", File(Concat({ValidHeader(), Of({0xAB, 0xCD})}), {Of({0}), Of({1, 'x'})})));
  EXPECT_EQ(loaded.results, samples::Results());
  EXPECT_EQ(loaded.updates, (std::deque<Bytes>{Of({0}), Of({1, 'x'})}));
}

TEST(Recording, LoadingErrorsInTheirOrder) {
  TempDirectory directory;
  std::string const missing = directory.file("recording404.bin");
  EXPECT_EQ(LoadErrorAt(missing), "Failed to load recording, file does not exist: " + missing);
  std::filesystem::create_directory(directory.file("recording5.bin"));
  EXPECT_EQ(LoadErrorAt(directory.file("recording5.bin")).rfind("Failed to load recording, ", 0), 0u)
      << "a directory of that name exists but is no recording";

  Bytes shortResults = Encode(samples::Results());
  shortResults.pop_back();
  std::pair<Bytes, char const*> const cases[] = {
      {Of({1, 2, 3, 4, 5, 6, 7}), "error reading header size"},
      {Concat({Count(40), Of({1, 2, 3})}), "error reading header data"},
      // A huge header size in a short file is a short read, not an allocation.
      {Concat({Count(1ull << 60), Of({1, 2, 3})}), "error reading header data"},
      {File(Of({4, 0, 0, 0})), "file is too small"},
      {File(Header(Of({'G', 'R', 'U'}), 4, {})), "file is too small"},
      {File(Header(Of({'G', 'R', 'U', 'G'}), 4, Of({1, 0, 0, 0}))), "file is not a recording file"},
      {File(Header(Of({'G', 'R', 'U', 'F', 1}), 5, Of({1, 0, 0, 0}))), "file is not a recording file"},
      {File(Header(Of({'G', 'R', 'U'}), 3, Of({'F', 1, 0, 0, 0}))), "file is not a recording file"},
      {File(Header(Of({1, 0, 0}))), "ran out of data while decoding file format version"},
      {File(Header(Concat({Of({2, 0, 0, 0}), Encode(samples::Results())}))), "file format version is not supported"},
      {File(Header(Concat({Of({1, 0, 0, 0}), shortResults}))), "ran out of data while decoding game results"},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(LoadError(cases[i].first), std::string("Failed to load recording, ") + cases[i].second) << "case " << i;
  }
}

TEST(Recording, ChunkErrorsNameTheChunkFromZero) {
  Bytes const whole = File(ValidHeader(), {Of({1, 'a'}), Of({1, 'b'}), Of({2, 'c', 'd'}), Of({0})});
  Bytes thirdCut(whole.begin(), whole.end() - 1 - 8 - 2);  // inside the third chunk's bytes
  EXPECT_EQ(LoadError(thirdCut), "Failed to load recording, error reading chunk 2");
  Bytes sizeCut(whole.begin(), whole.end() - 1 - 8 - 3 - 4);  // inside the third chunk's size
  EXPECT_EQ(LoadError(sizeCut), "Failed to load recording, error reading chunk 2");
  Bytes hugeChunk = Concat({Count(ValidHeader().size()), ValidHeader(), Count(1), Count(1ull << 62), Of({1})});
  EXPECT_EQ(LoadError(hugeChunk), "Failed to load recording, error reading chunk 0");
  EXPECT_EQ(LoadError(whole), "no error");
}

TEST(Recording, FileThatEndsAfterTheHeaderHasNoSteps) {
  TempDirectory directory;
  Bytes const headerOnly = Concat({Count(ValidHeader().size()), ValidHeader()});
  Recording const recording(directory.writeBytes("recording3.bin", headerOnly));
  EXPECT_TRUE(recording.updates.empty());
  EXPECT_EQ(recording.results, samples::Results());
  EXPECT_EQ(recording.allUpdatesOnFrame(0), std::vector<Bytes>(2));

  // A chunk count cut short counts as no chunks too.
  Recording const cutCount(directory.writeBytes("recording4.bin", Concat({headerOnly, Of({5, 0, 0})})));
  EXPECT_TRUE(cutCount.updates.empty());
}
