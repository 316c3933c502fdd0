#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "sim/RecordingFiles.h"
#include "support/SampleRecords.h"
#include "support/TempDirectory.h"

namespace {

Recording SampleRecording(unsigned long long timestamp) {
  GameResults results = samples::Results();
  results.timestampMs = timestamp;
  return Recording({{1, 'x', 0}}, results);
}

}  // namespace

TEST(RecordingFiles, LoadsOnlyWholeNameMatchesAndSkipsBadFilesWithALine) {
  TempDirectory directory;
  SampleRecording(1).save(directory.file("recording1.bin"));
  SampleRecording(22).save(directory.file("recording22.bin"));
  for (char const* name : {"recording12.bin.tmp", "xrecording12.bin", "recording.bin", "recordingA.bin", "recording12.BIN"}) {
    SampleRecording(999).save(directory.file(name));
  }
  std::filesystem::create_directory(directory.file("recording3.bin"));
  directory.writeBytes("recording9.bin", {1, 2, 3});

  ::testing::internal::CaptureStderr();
  std::vector<Recording> const recordings = LoadRecordingsFromDirectory(directory.path().string());
  std::string const errors = ::testing::internal::GetCapturedStderr();

  std::vector<unsigned long long> timestamps;
  for (Recording const& recording : recordings) {
    timestamps.push_back(recording.results.timestampMs);
  }
  std::sort(timestamps.begin(), timestamps.end());
  EXPECT_EQ(timestamps, (std::vector<unsigned long long>{1, 22}));
  EXPECT_EQ(errors, "Failed to load recording from \"" + directory.file("recording9.bin") +
                        "\", Failed to load recording, error reading header size\n");
}

TEST(RecordingFiles, ListKeepsTheOrderOfTheDirectoryListing) {
  TempDirectory directory;
  for (unsigned long long number : {5, 3, 9, 1, 7}) {
    SampleRecording(number).save(directory.file("recording" + std::to_string(number) + ".bin"));
  }
  std::vector<unsigned long long> listed;
  for (auto const& entry : std::filesystem::directory_iterator(directory.path())) {
    listed.push_back(std::stoull(entry.path().filename().string().substr(9)));
  }
  std::vector<unsigned long long> loaded;
  for (Recording const& recording : LoadRecordingsFromDirectory(directory.path().string())) {
    loaded.push_back(recording.results.timestampMs);
  }
  EXPECT_EQ(loaded, listed);
}

TEST(RecordingFiles, NumbersComeFromNamesWithoutOpeningTheFiles) {
  TempDirectory directory;
  EXPECT_TRUE(LoadRecordingsFromDirectory(directory.file("absent")).empty());
  EXPECT_TRUE(RecordingNumbersInDirectory(directory.file("absent")).empty());
  for (char const* name : {"recording12.bin", "recording0.bin", "recording65537.bin", "recording007.bin",
                           "recording12.bin.tmp", "xrecording13.bin", "recording.bin",
                           "recording99999999999999999999999.bin"}) {
    directory.writeBytes(name, {0xFF});  // not a valid recording: nothing is opened
  }
  std::filesystem::create_directory(directory.file("recording14.bin"));
  std::filesystem::create_symlink(directory.file("recording12.bin"), directory.file("recording15.bin"));
  std::filesystem::create_symlink(directory.file("nowhere"), directory.file("recording16.bin"));

  EXPECT_EQ(RecordingNumbersInDirectory(directory.path().string()),
            (std::set<unsigned short>{0, 1, 7, 12, 15})) << "65537 keeps its low 16 bits; a link counts as its target";
}
