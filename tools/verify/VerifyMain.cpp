// tandem-verify: replays recordings of games without a window, as fast as the simulation goes, and says
// for each file whether the replay reproduced the result that its players agreed on.
//
//   tandem-verify FILE...
//
// One line for each file: "OK", "DIFFERS", "NO RESULT" (its players agreed on no result, so there is
// nothing to prove) or "ERROR" (the file can't be read or replayed), the path, what was compared, the
// frames simulated and the speed in multiples of real time at 60 frames a second. Exit status 0 when
// every file was reproduced, 1 when any was not, 2 for wrong options.
#include <argparse/argparse.hpp>
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "app/ChangeToExecutableDirectory.h"
#include "sim/HeadlessGames.h"
#include "sim/Recording.h"
#include "sim/RecordingVerifier.h"

namespace {

constexpr int kAllReproduced = 0;
constexpr int kSomeFailed = 1;
constexpr int kUsage = 2;
constexpr double kFramesPerSecond = 60.0;

std::string Describe(GameResult const& result) {
  std::string rows;
  for (std::vector<long long> const& row : result.results) {
    rows += rows.empty() ? "" : " ";
    rows += "(";
    for (std::size_t i = 0; i < row.size(); ++i) {
      rows += fmt::format("{}{}", i == 0 ? "" : ",", row[i]);
    }
    rows += ")";
  }
  return fmt::format("end frame {}, rows {}, checksum {:016x}", result.endFrame, rows.empty() ? "none" : rows,
                     result.endStateChecksum);
}

// Verifies one file and prints its line; returns whether it was reproduced.
bool VerifyFile(HeadlessGames const& games, std::string const& shownPath, std::string const& path) {
  try {
    Recording const recording(path);
    auto const start = std::chrono::steady_clock::now();
    RecordingVerdict const verdict = VerifyRecording(games, recording);
    double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    double const realTime = static_cast<double>(verdict.run.frames) / kFramesPerSecond;
    std::string const speed = fmt::format("{} frames in {:.1f} ms, {:.0f}x real time", verdict.run.frames,
                                          seconds * 1000.0, seconds > 0.0 ? realTime / seconds : 0.0);
    switch (verdict.outcome) {
      case RecordingVerdict::Outcome::Reproduced:
        std::printf("OK        %s: reproduced the agreed result (%s); %s\n", shownPath.c_str(),
                    Describe(verdict.run.result).c_str(), speed.c_str());
        return true;
      case RecordingVerdict::Outcome::Differs:
        std::printf("DIFFERS   %s: the replay arrived at %s, but the players agreed on %s; %s\n", shownPath.c_str(),
                    Describe(verdict.run.result).c_str(),
                    verdict.expected ? Describe(*verdict.expected).c_str() : "a result that can't be read",
                    speed.c_str());
        return false;
      case RecordingVerdict::Outcome::NoAgreedResult:
        std::printf("NO RESULT %s: its players agreed on no result, so nothing is proved; the replay arrived at %s; %s\n",
                    shownPath.c_str(), Describe(verdict.run.result).c_str(), speed.c_str());
        return false;
    }
  } catch (std::exception const& error) {
    std::printf("ERROR     %s: %s\n", shownPath.c_str(), error.what());
  }
  return false;
}

}  // namespace

int main(int argc, char* argv[]) {
  argparse::ArgumentParser parser("tandem-verify", "1.0");
  parser.add_description(
      "Replays recordings of games without a window and checks that each reproduces the result its players agreed on.");
  parser.add_argument("files").nargs(argparse::nargs_pattern::at_least_one).help("recording files");
  try {
    parser.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::cerr << error.what() << '\n' << parser.usage() << std::endl;
    return kUsage;
  }
  std::vector<std::string> const files = parser.get<std::vector<std::string>>("files");
  // The games' images lie in data/ beside the executable; the paths given are taken from where the
  // program was started.
  std::vector<std::string> absolute;
  for (std::string const& file : files) {
    std::error_code ignored;
    std::filesystem::path const full = std::filesystem::absolute(file, ignored);
    absolute.push_back(full.empty() ? file : full.string());
  }
  ChangeToExecutableDirectory();

  HeadlessGames const games;
  int failed = 0;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!VerifyFile(games, files[i], absolute[i])) {
      ++failed;
    }
    std::fflush(stdout);
  }
  std::printf("%zu of %zu recordings reproduced their agreed result\n", files.size() - static_cast<std::size_t>(failed),
              files.size());
  return failed == 0 ? kAllReproduced : kSomeFailed;
}
