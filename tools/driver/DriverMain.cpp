// tandem-driver: runs the client's real main loop headless from a script (see README.md).
#include <argparse/argparse.hpp>
#include <fmt/format.h>
#include <stdlib.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "app/ChangeToExecutableDirectory.h"
#include "DriverScript.h"
#include "app/MainLoopContext.h"
#include "app/QZAssert.h"
#include "app/SDL3App.h"
#include "LocalAviatorsGame.h"
#include "ScriptCommandSource.h"
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

  bool const temporaryStorage = storage.empty();
  if (temporaryStorage) {
    storage = MakeTemporaryStorage();
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
        MainLoopContext::Create(app, "127.0.0.1", 6567, storage, "", &source, !paced);
    while (!context->quit && !source.finished() && frames < maxFrames) {
      context->runOneFrame(false);
      ++frames;
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
                              {"reason", reason}});
  TestLog::close();
  if (temporaryStorage) {
    std::error_code error;
    fs::remove_all(storage, error);
  }
  if (result == kPassed) {
    std::printf("Script passed after %lld frames\n", frames);
    std::fflush(stdout);
  } else {
    std::cerr << reason << std::endl;
  }
  return result;
}
