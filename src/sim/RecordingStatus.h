#pragma once

// Whether a played game's recording is on disk, and whether its download is under way.
struct RecordingStatus {
  bool onDisk = false;
  bool downloadInProgress = false;
};
