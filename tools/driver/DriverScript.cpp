#include "DriverScript.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <sstream>
#include <unordered_map>

#include "UICmdFromText.h"

namespace {

struct BadLine {
  std::string message;
};

long long Number(std::string const& text, char const* what, long long minimum) {
  long long value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < minimum) {
    throw BadLine{fmt::format("{} must be an integer of at least {}, not \"{}\"", what, minimum, text)};
  }
  return value;
}

long long GameNumber(std::string const& name) {
  if (name == "glow_horde") {
    return 0;
  }
  if (name == "aviators") {
    return 1;
  }
  if (name == "vipers") {
    return 2;
  }
  throw BadLine{fmt::format("GAME must be glow_horde, aviators or vipers, not \"{}\"", name)};
}

using Words = std::vector<std::string>;
using Parser = std::function<void(Words const&, ScriptStep&)>;

struct Verb {
  ScriptVerb description;
  std::size_t minimumArguments;
  std::size_t maximumArguments;
  Parser parse;
};

// The language. A new verb is one entry here, its kind in ScriptStep and its case in the command source.
std::vector<Verb> const& Verbs() {
  static std::vector<Verb> const verbs{
      {{"frames", "N", "Runs N frames (N at least 1) without commands."},
       1, 1,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::Frames;
         s.number = Number(w[0], "N", 1);
       }},
      {{"cmd", "NAME [ARGUMENTS]",
        "Gives the command NAME with its arguments. Consecutive cmd lines go out in one frame; the script "
        "goes on in the next frame, after the commands have been carried out."},
       1, 16,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::Command;
         std::string error;
         s.command = UICmdFromText(w[0], Words(w.begin() + 1, w.end()), error);
         if (!s.command) {
           throw BadLine{error};
         }
       }},
      {{"wait_mode", "M [LIMIT]",
        "Waits until the mode is M (0 offline, 1 lobby, 2 room, 3 network game, 4 local game, 5 replay); "
        "fails after LIMIT frames (default 600)."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitMode;
         s.number = Number(w[0], "M", 0);
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultWaitLimit;
       }},
      {{"expect_mode", "M", "Fails unless the mode is M now."},
       1, 1,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::ExpectMode;
         s.number = Number(w[0], "M", 0);
       }},
      {{"wait_condition", "\"TEXT\" [LIMIT]",
        "Waits until the running game answers true to the condition TEXT; fails after LIMIT frames "
        "(default 600). Outside a game every condition is false."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitCondition;
         s.condition = w[0];
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultWaitLimit;
       }},
      {{"expect_condition", "\"TEXT\"", "Fails unless the running game answers true to the condition TEXT now."},
       1, 1,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::ExpectCondition;
         s.condition = w[0];
       }},
      {{"expect_game_frame", "N", "Fails unless the game's frame counter is N now (0 outside a game)."},
       1, 1,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::ExpectGameFrame;
         s.number = Number(w[0], "N", 0);
       }},
      {{"wait_game_frame", "N [LIMIT]",
        "Waits until the game's frame counter is at least N; fails after LIMIT frames (default 600). Outside "
        "a game the counter is 0."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitGameFrame;
         s.number = Number(w[0], "N", 0);
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultWaitLimit;
       }},
      {{"wait_game_end", "[LIMIT]", "Waits until the running game has ended; fails after LIMIT frames (default 600)."},
       0, 1,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitGameEnd;
         s.limit = !w.empty() ? Number(w[0], "LIMIT", 0) : kDefaultWaitLimit;
       }},
      {{"wait_result_row", "ROW MIN [LIMIT]",
        "Waits until the first value of row ROW of the running game's current result (in Glow Horde the "
        "units of that team out) is at least MIN; fails after LIMIT frames (default 600)."},
       2, 3,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitResultRow;
         s.number = Number(w[0], "ROW", 0);
         s.second = Number(w[1], "MIN", 0);
         s.limit = w.size() > 2 ? Number(w[2], "LIMIT", 0) : kDefaultWaitLimit;
       }},
      {{"expect_result_row", "ROW MIN [MAX]",
        "Fails unless the running game's current result has a row ROW whose first value (in Glow Horde the "
        "units of that team out) is at least MIN and, if MAX is given, at most MAX."},
       2, 3,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::ExpectResultRow;
         s.number = Number(w[0], "ROW", 0);
         s.second = Number(w[1], "MIN", 0);
         s.third = w.size() > 2 ? Number(w[2], "MAX", s.second) : std::numeric_limits<long long>::max();
       }},
      {{"expect_tutorial", "LEVEL STATUS ATTEMPTS",
        "Fails unless the tutorial level has the status (0 to do, 1 skipped, 2 completed) and the number "
        "of attempts given."},
       3, 3,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::ExpectTutorial;
         s.number = Number(w[0], "LEVEL", 0);
         s.second = Number(w[1], "STATUS", 0);
         s.third = Number(w[2], "ATTEMPTS", 0);
       }},
      {{"create_room", "GAME KIND INDEX [\"DESCRIPTION\"]",
        "Creates a room playing challenge or ranked match INDEX (KIND is challenge or ranked) of GAME "
        "(glow_horde, aviators or vipers), with that entry's player counts and 15 frames of delay."},
       3, 4,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::CreateRoom;
         s.number = GameNumber(w[0]);
         if (w[1] != "challenge" && w[1] != "ranked") {
           throw BadLine{fmt::format("KIND must be challenge or ranked, not \"{}\"", w[1])};
         }
         s.second = w[1] == "ranked" ? 1 : 0;
         s.third = Number(w[2], "INDEX", 0);
         s.condition = w.size() > 3 ? w[3] : std::string("Driver room");
       }},
      {{"wait_room", "ROOM [LIMIT]", "Waits until room ROOM exists in the lobby; fails after LIMIT frames (default 20000)."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitRoom;
         s.number = Number(w[0], "ROOM", 0);
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultLobbyWaitLimit;
       }},
      {{"wait_room_players", "N [LIMIT]",
        "Waits until this client's room holds at least N players; fails after LIMIT frames (default 20000)."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitRoomPlayers;
         s.number = Number(w[0], "N", 1);
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultLobbyWaitLimit;
       }},
      {{"wait_all_ready", "[LIMIT]",
        "Waits until every player of this client's room is ready; fails after LIMIT frames (default 20000)."},
       0, 1,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitAllReady;
         s.limit = !w.empty() ? Number(w[0], "LIMIT", 0) : kDefaultLobbyWaitLimit;
       }},
      {{"wait_game_results", "GAME REPORTS [LIMIT]",
        "Waits until played game GAME is finished and at least REPORTS of its players have reported a "
        "result; fails after LIMIT frames (default 20000)."},
       2, 3,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitGameResults;
         s.number = Number(w[0], "GAME", 0);
         s.second = Number(w[1], "REPORTS", 0);
         s.limit = w.size() > 2 ? Number(w[2], "LIMIT", 0) : kDefaultLobbyWaitLimit;
       }},
      {{"expect_agreement", "GAME yes|no",
        "Fails unless the non-empty reports of played game GAME agree byte for byte (yes) or differ (no)."},
       2, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::ExpectAgreement;
         s.number = Number(w[0], "GAME", 0);
         if (w[1] != "yes" && w[1] != "no") {
           throw BadLine{fmt::format("the expectation must be yes or no, not \"{}\"", w[1])};
         }
         s.second = w[1] == "yes" ? 1 : 0;
       }},
      {{"wait_recording", "GAME [LIMIT]",
        "Waits until the recording of played game GAME is on disk (after cmd RequestRecording); fails after "
        "LIMIT frames (default 20000)."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitRecording;
         s.number = Number(w[0], "GAME", 0);
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultLobbyWaitLimit;
       }},
      {{"wait_disconnected", "PLAYER [LIMIT]",
        "Waits until player PLAYER (an index into the network game's players) shows as disconnected; fails "
        "after LIMIT frames (default 20000)."},
       1, 2,
       [](Words const& w, ScriptStep& s) {
         s.kind = ScriptStep::Kind::WaitDisconnected;
         s.number = Number(w[0], "PLAYER", 0);
         s.limit = w.size() > 1 ? Number(w[1], "LIMIT", 0) : kDefaultLobbyWaitLimit;
       }},
      {{"log_lobby", "",
        "Writes to the test log one game_results event for each played game, one rating event for each "
        "player of each ranking and one high_score event for each entry of each challenge's table."},
       0, 0,
       [](Words const&, ScriptStep& s) { s.kind = ScriptStep::Kind::LogLobby; }},
      {{"quit", "", "Stops the driver here; the script has passed. Lines after it are not run."},
       0, 0,
       [](Words const&, ScriptStep& s) { s.kind = ScriptStep::Kind::Quit; }},
  };
  return verbs;
}

}  // namespace

std::vector<ScriptVerb> const& VerbTable() {
  static std::vector<ScriptVerb> const table = [] {
    std::vector<ScriptVerb> descriptions;
    for (Verb const& verb : Verbs()) {
      descriptions.push_back(verb.description);
    }
    return descriptions;
  }();
  return table;
}

std::vector<std::string> SplitScriptLine(std::string const& line, std::string& error) {
  std::vector<std::string> words;
  std::size_t i = 0;
  while (i < line.size()) {
    char const c = line[i];
    if (c == ' ' || c == '\t' || c == '\r') {
      ++i;
    } else if (c == '#') {
      break;
    } else if (c == '"') {
      std::string word;
      ++i;
      bool closed = false;
      while (i < line.size()) {
        if (line[i] == '\\' && i + 1 < line.size() && (line[i + 1] == '"' || line[i + 1] == '\\')) {
          word += line[i + 1];
          i += 2;
        } else if (line[i] == '"') {
          closed = true;
          ++i;
          break;
        } else {
          word += line[i++];
        }
      }
      if (!closed) {
        error = "a quoted word isn't closed";
        return {};
      }
      words.push_back(std::move(word));
    } else {
      std::size_t const start = i;
      while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r') {
        ++i;
      }
      words.push_back(line.substr(start, i - start));
    }
  }
  return words;
}

std::optional<DriverScript> ParseDriverScript(std::string const& text, std::string& error) {
  DriverScript script;
  std::istringstream lines(text);
  std::string line;
  int number = 0;
  while (std::getline(lines, line)) {
    ++number;
    std::string splitError;
    std::vector<std::string> words = SplitScriptLine(line, splitError);
    if (!splitError.empty()) {
      error = fmt::format("line {}: {}", number, splitError);
      return std::nullopt;
    }
    if (words.empty()) {
      continue;
    }
    auto const& verbs = Verbs();
    auto verb = std::find_if(verbs.begin(), verbs.end(), [&](Verb const& v) { return words[0] == v.description.name; });
    if (verb == verbs.end()) {
      error = fmt::format("line {}: there is no verb \"{}\"", number, words[0]);
      return std::nullopt;
    }
    Words const arguments(words.begin() + 1, words.end());
    if (arguments.size() < verb->minimumArguments || arguments.size() > verb->maximumArguments) {
      error = fmt::format("line {}: usage: {} {}", number, verb->description.name, verb->description.synopsis);
      return std::nullopt;
    }
    ScriptStep step;
    step.line = number;
    step.text = line;
    try {
      verb->parse(arguments, step);
    } catch (BadLine const& bad) {
      error = fmt::format("line {}: {}", number, bad.message);
      return std::nullopt;
    }
    script.steps.push_back(std::move(step));
  }
  return script;
}
