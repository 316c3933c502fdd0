#include "SettleByReplay.h"

#include <exception>
#include <sstream>
#include <string>

#include "sim/HeadlessGames.h"
#include "sim/Recording.h"
#include "sim/RecordingVerifier.h"

SettledDispute SettleByReplay(std::uint32_t game, std::vector<unsigned char> const& recordingFile,
                              std::atomic<bool> const& stop) {
  // The games' tables are built once, on first use, and only read after that.
  static HeadlessGames const games;
  SettledDispute dispute;
  dispute.game = game;
  try {
    std::istringstream in(std::string(recordingFile.begin(), recordingFile.end()));
    Recording const recording(in);
    dispute.players = recording.results.playerNames;
    dispute.players.resize(recording.results.reportedResults.size());
    ReportSettlement const settlement = SettleReports(games, recording, &stop);
    dispute.matches = settlement.matches;
    dispute.truth = settlement.truth;
    dispute.frames = settlement.frames;
  } catch (std::exception const& error) {
    dispute.error = error.what();
  }
  return dispute;
}
