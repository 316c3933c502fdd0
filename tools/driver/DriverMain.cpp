// tandem-driver: runs the client's real main loop headless from a script (see README.md).
#include <argparse/argparse.hpp>
#include <fmt/format.h>
#include <stdlib.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <chrono>
#include <fstream>
#include <thread>
#include <iostream>
#include <memory>
#include <sstream>

#include "app/ChangeToExecutableDirectory.h"
#include "DriverScript.h"
#include "app/MainLoopContext.h"
#include "app/MainLoopStates.h"
#include "app/QZAssert.h"
#include "app/SDL3App.h"
#include "LocalAviatorsGame.h"
#include "ScriptCommandSource.h"
#include "sim/LocalOnlyOrderSource.h"
#include "app/TestLog.h"
#include "UICmdFromText.h"
#include "ui/InterfaceStyle.h"

namespace {

namespace fs = std::filesystem;

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

std::string Absolute(std::string const& path) { return path.empty() ? path : fs::absolute(path).string(); }

// A fresh storage directory under the system's temporary directory, for a run that names none.
std::string MakeTemporaryStorage() {
  std::string pattern = (fs::temp_directory_path() / "tandem-driver-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("Can't make a temporary storage directory.");
  }
  return pattern;
}

// "WIDTHxHEIGHT", each from 64 to 8192.
bool ParseWindowSize(std::string const& text, int& width, int& height) {
  char separator = 0;
  std::istringstream in(text);
  std::string rest;
  if (!(in >> width >> separator >> height) || separator != 'x' || (in >> rest)) {
    return false;
  }
  return width >= 64 && width <= 8192 && height >= 64 && height <= 8192;
}

// The ship games that --local-game can start, by the name given on the command line.
std::optional<Game> LocalGameNamed(std::string const& name) {
  if (name == "aviators") {
    return Game::Aviators;
  }
  if (name == "vipers") {
    return Game::Vipers;
  }
  return std::nullopt;
}

// Puts the main loop into a local game of the given game on its default settings: this client is
// player 0 in slot 0, the other players give no orders. They take the slots in the order 2, 1, 3, so
// that a game of two has neighbouring corners: on the ship games' map opposite corners face each other
// along one diagonal.
void StartLocalGame(MainLoopContext& context, Game which, int players) {
  constexpr unsigned long long kFramePeriod = 16666;
  constexpr unsigned char kDelayFrames = 15;
  IGame const& game = context.shared.games.refGame(which);
  GameSettings const settings = DefaultSettingsFromSchema(game.schema);
  mainloop::LocalGameState local;
  constexpr std::uint16_t kSlotOrder[4] = {0, 2, 1, 3};
  for (int i = 0; i < players; ++i) {
    local.players.push_back(kSlotOrder[i]);
  }
  local.game = game.startSession(context.app, 0, kFramePeriod, kDelayFrames, settings, local.players, false);
  local.orderSource = std::make_unique<LocalOnlyOrderSource>(players, 0, kDelayFrames);
  context.state = std::move(local);
}

void PrintVerbs() {
  for (ScriptVerb const& verb : VerbTable()) {
    std::cout << verb.name << (verb.synopsis[0] != '\0' ? " " : "") << verb.synopsis << "\n    " << verb.meaning
              << "\n";
  }
  std::cout << "Commands: ";
  for (std::size_t i = 0; i < UICmd::kCount; ++i) {
    std::cout << (i == 0 ? "" : ", ") << UICmdName(i);
  }
  std::cout << std::endl;
}

}  // namespace

int main(int argc, char* argv[]) {
  // Every command of the program can be written in a script.
  for (std::size_t i = 0; i < UICmd::kCount; ++i) {
    QZ_ASSERT(IsUICmdName(UICmdName(i)));
  }

  argparse::ArgumentParser parser("tandem-driver", "1.0");
  parser.add_description("Runs the client's main loop headless, as a script says.");
  parser.add_argument("--script").default_value(std::string()).help("The script to run");
  parser.add_argument("--log").default_value(std::string()).help("Open the test log (JSON lines) on this file");
  parser.add_argument("--storage")
      .default_value(std::string())
      .help("Storage directory (progress, credentials, recordings); a fresh temporary one if not given");
  parser.add_argument("--max-frames")
      .default_value(100000)
      .scan<'i', int>()
      .help("Stop with a failure after this many frames");
  parser.add_argument("--window")
      .default_value(std::string("1280x720"))
      .help("Size of the window, WIDTHxHEIGHT; a smaller one draws faster in long headless runs");
  parser.add_argument("--paced")
      .flag()
      .help("Run at the client's steady 60 frames a second with vertical sync, so that a person at a real "
            "window can play what the script starts");
  parser.add_argument("--record-local-games")
      .flag()
      .help("Save every local game on leaving it as a recording file in \"recordings\" of the storage directory");
  parser.add_argument("--local-game")
      .default_value(std::string())
      .help("Start in a local game of aviators or vipers on its default settings, as player 0");
  parser.add_argument("--local-players")
      .default_value(2)
      .scan<'i', int>()
      .help("Players of the local game, 1 to 4; all but the first give no orders");
  parser.add_argument("--ip").default_value(std::string("127.0.0.1")).help("The game server's host");
  parser.add_argument("--server-base-port")
      .default_value(6567)
      .scan<'i', int>()
      .help("The game server's base port");
  parser.add_argument("--credentials")
      .default_value(std::string())
      .help("Copy this credentials file into the storage directory as credentials.bin before the loop");
  parser.add_argument("--list-verbs").flag().help("Print the script language and exit");
  try {
    parser.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::cerr << error.what() << '\n' << parser.usage() << std::endl;
    return kUsage;
  }
  if (parser.get<bool>("--list-verbs")) {
    PrintVerbs();
    return kPassed;
  }

  std::string const scriptPath = Absolute(parser.get<std::string>("--script"));
  std::string const logPath = Absolute(parser.get<std::string>("--log"));
  std::string storage = Absolute(parser.get<std::string>("--storage"));
  int const maxFrames = parser.get<int>("--max-frames");
  bool const paced = parser.get<bool>("--paced");
  int windowWidth = 0;
  int windowHeight = 0;
  if (!ParseWindowSize(parser.get<std::string>("--window"), windowWidth, windowHeight)) {
    std::cerr << "The window size must be WIDTHxHEIGHT, each from 64 to 8192, not \"" << parser.get<std::string>("--window")
              << "\".\n" << parser.usage() << std::endl;
    return kUsage;
  }
  std::string const localGameName = parser.get<std::string>("--local-game");
  std::optional<Game> const localGame = LocalGameNamed(localGameName);
  int const localPlayers = parser.get<int>("--local-players");
  if (!localGameName.empty() && !localGame) {
    std::cerr << "The local game must be aviators or vipers, not \"" << localGameName << "\".\n" << parser.usage()
              << std::endl;
    return kUsage;
  }
  if (localPlayers < 1 || localPlayers > 4) {
    std::cerr << "The local game has 1 to 4 players, not " << localPlayers << ".\n" << parser.usage() << std::endl;
    return kUsage;
  }
  if (scriptPath.empty()) {
    std::cerr << "A script is needed: --script FILE.\n" << parser.usage() << std::endl;
    return kUsage;
  }

  std::ifstream scriptFile(scriptPath);
  if (!scriptFile.is_open()) {
    std::cerr << "Can't open the script " << scriptPath << "." << std::endl;
    return kUsage;
  }
  std::stringstream scriptText;
  scriptText << scriptFile.rdbuf();
  std::string parseError;
  std::optional<DriverScript> script = ParseDriverScript(scriptText.str(), parseError);
  if (!script) {
    std::cerr << scriptPath << ": " << parseError << std::endl;
    return kUsage;
  }

  int const basePort = parser.get<int>("--server-base-port");
  if (basePort < 1 || basePort > 65535 - 8) {
    std::cerr << "The server's base port must be from 1 to 65527.\n" << parser.usage() << std::endl;
    return kUsage;
  }
  bool const temporaryStorage = storage.empty();
  if (temporaryStorage) {
    storage = MakeTemporaryStorage();
  }
  std::string const credentials = Absolute(parser.get<std::string>("--credentials"));
  if (!credentials.empty()) {
    std::error_code error;
    fs::copy_file(credentials, fs::path(storage) / "credentials.bin", fs::copy_options::overwrite_existing, error);
    if (error) {
      std::cerr << "Can't copy the credentials " << credentials << ": " << error.message() << std::endl;
      return kUsage;
    }
  }
  ChangeToExecutableDirectory();
  if (!logPath.empty()) {
    TestLog::init(logPath);
    if (!TestLog::isEnabled()) {
      std::cerr << "Can't open the test log " << logPath << "." << std::endl;
      return kUsage;
    }
  }

  ScriptCommandSource source(std::move(*script));
  int result = kPassed;
  std::string reason;
  long long frames = 0;
  try {
    auto app = std::make_shared<SDL3App>(windowWidth, windowHeight, !paced);
    SetInterfaceStyle();
    std::unique_ptr<MainLoopContext> context =
        MainLoopContext::Create(app, parser.get<std::string>("--ip"), static_cast<unsigned short>(basePort), storage, "",
                                &source, !paced);
    context->recordLocalGames = parser.get<bool>("--record-local-games");
    if (localGame) {
      StartLocalGame(*context, *localGame, localPlayers);
    }
    while (!context->quit && !source.finished() && frames < maxFrames) {
      context->runOneFrame(false);
      ++frames;
      // Unpaced, a client that waits on the server would spin; a millisecond a frame leaves the
      // machine to the server and the other clients, and still steps a network game far faster than
      // real time.
      if (!paced && (context->stateIndex() == 1 || context->stateIndex() == 2)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      if (std::optional<ScriptStep> request = source.takeLocalGameRequest()) {
        // Between two frames, where the main loop itself changes state.
        context->state = MakeLocalAviatorsGame(*context, *request);
      }
    }
    bool const quitByProgram = context->quit;
    context.reset();

    if (source.failed()) {
      result = kFailed;
      reason = fmt::format("Expectation failed at {}", source.failure());
    } else if (quitByProgram && !source.atEnd()) {
      result = kFailed;
      reason = fmt::format("The program quit before line {} of the script.", source.currentLine());
    } else if (!source.finished() && !quitByProgram) {
      result = kFailed;
      reason = fmt::format("Stopped after {} frames, at line {} of the script.", frames, source.currentLine());
    }
  } catch (std::exception const& error) {
    result = kFailed;
    reason = fmt::format("Fatal error at line {} of the script: {}", source.currentLine(), error.what());
  }

  TestLog::log("driver_end", {{"passed", result == kPassed},
                              {"frames", static_cast<long long>(frames)},
                              {"line", static_cast<long long>(source.currentLine())},
                              {"reason", reason},
                              {"stalled_frames", source.stalledFrames()},
                              {"longest_stall", source.longestStall()}});
  TestLog::close();
  if (temporaryStorage) {
    std::error_code error;
    fs::remove_all(storage, error);
  }
  if (source.stalledFrames() > 0) {
    std::printf("Stalled frames: %lld, at most %lld in a row\n", source.stalledFrames(), source.longestStall());
  }
  if (result == kPassed) {
    std::printf("Script passed after %lld frames\n", frames);
    std::fflush(stdout);
  } else {
    std::cerr << reason << std::endl;
  }
  return result;
}
