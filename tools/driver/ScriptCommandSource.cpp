#include "ScriptCommandSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>

#include "app/IAppState.h"
#include "app/LobbyData.h"
#include "app/TestLog.h"
#include "glow_horde/TutorialProgress.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyClient.h"
#include "rankings/HighScoreTables.h"
#include "rankings/PlayerRatings.h"
#include "sim/GameResult.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/ResultConsensus.h"

namespace {

// The first value of a row of the running game's current result, if there is a game with that row.
std::optional<long long> ResultRowValue(IAppState const& state, long long row) {
  if (!state.isInGame()) {
    return std::nullopt;
  }
  GameResult result;
  state.getCurrentGameResult(result);
  if (row < 0 || static_cast<std::size_t>(row) >= result.results.size() || result.results[static_cast<std::size_t>(row)].empty()) {
    return std::nullopt;
  }
  return result.results[static_cast<std::size_t>(row)].front();
}

// What a failed game step saw: the frame, whether the game has ended, and the result row.
std::string DescribeGame(IAppState const& state, long long row) {
  if (!state.isInGame()) {
    return "there is no game";
  }
  std::optional<long long> const value = ResultRowValue(state, row);
  return fmt::format("at game frame {}{}, {}", state.gameFrame(), state.isGameEnded() ? " (ended)" : "",
                     value.has_value() ? fmt::format("row {} starts with {}", row, *value)
                                       : fmt::format("the result has no row {}", row));
}

std::string Hex(std::vector<unsigned char> const& bytes) {
  std::string text;
  for (unsigned char byte : bytes) {
    text += fmt::format("{:02x}", byte);
  }
  return text;
}

// The played game of that number, if this client is connected and holds it.
GameResults const* PlayedGame(IAppState const& state, long long number) {
  LobbyClient const* client = state.isConnected() ? state.lobbyData().client : nullptr;
  if (client == nullptr || number < 0 || number > 0xffffffffLL) {
    return nullptr;
  }
  return client->playedGame(static_cast<std::uint32_t>(number));
}

std::size_t ReportCount(GameResults const& game) {
  std::size_t count = 0;
  for (auto const& report : game.reportedResults) {
    count += report.empty() ? 0 : 1;
  }
  return count;
}

// The lobby as the tests compare it between clients: every played game with its reports, every rating
// of both rankings with full precision, every high score.
void LogLobby(IAppState const& state) {
  LobbyData const& lobby = state.lobbyData();
  if (!state.isConnected() || lobby.client == nullptr) {
    return;
  }
  for (std::uint32_t number : lobby.client->getPlayedGames()) {
    GameResults const* game = lobby.client->playedGame(number);
    if (game == nullptr) {
      continue;
    }
    std::string reports;
    std::string players;
    std::string slots;
    for (std::size_t i = 0; i < game->reportedResults.size(); ++i) {
      reports += (i > 0 ? "," : "") + Hex(game->reportedResults[i]);
    }
    for (std::size_t i = 0; i < game->playerIds.size(); ++i) {
      players += (i > 0 ? "," : "") + Hex(game->playerIds[i]);
    }
    for (std::size_t i = 0; i < game->playerSlots.size(); ++i) {
      slots += (i > 0 ? "," : "") + std::to_string(game->playerSlots[i]);
    }
    TestLog::log("game_results", {{"game", static_cast<long long>(number)},
                                  {"finished", game->finished},
                                  {"agreed", AgreedResultBytes(*game).has_value()},
                                  {"game_spec", Hex(game->specBytes)},
                                  {"players", players},
                                  {"slots", slots},
                                  {"reports", reports}});
  }
  std::pair<char const*, PlayerRatings const*> const rankings[] = {{"glow_horde", lobby.glowHordeRatings},
                                                                  {"ships", lobby.aviatorsRatings}};
  for (auto const& [name, ratings] : rankings) {
    if (ratings == nullptr) {
      continue;
    }
    for (auto const& [id, shown] : ratings->getTopPlayers(1000000)) {
      Glicko::Rating const* rating = ratings->findRating(id);
      TestLog::log("rating", {{"ranking", std::string(name)},
                              {"player", Hex(id)},
                              {"rating", shown},
                              {"deviation", rating->shownDeviation()},
                              {"volatility", rating->sigma}});
    }
  }
  if (lobby.highScores != nullptr) {
    for (std::size_t challenge = 0; challenge < lobby.highScores->challengeCount(); ++challenge) {
      std::vector<HighScoreTables::Entry> const& table = lobby.highScores->table(challenge);
      for (std::size_t rank = 0; rank < table.size(); ++rank) {
        std::string row;
        for (std::size_t i = 0; i < table[rank].result.size(); ++i) {
          row += (i > 0 ? "," : "") + std::to_string(table[rank].result[i]);
        }
        TestLog::log("high_score", {{"challenge", static_cast<long long>(challenge)},
                                    {"rank", static_cast<long long>(rank + 1)},
                                    {"game", static_cast<long long>(table[rank].gameNumber)},
                                    {"result", row}});
      }
    }
  }
}

// The bytes of a room's GameSpec for one catalogue entry, with that entry's player counts.
std::optional<UICmd> CreateRoomCommand(IAppState const& state, ScriptStep const& step, std::string& error) {
  Game const game = static_cast<Game>(step.number);
  if (static_cast<std::size_t>(step.number) >= state.games().size()) {
    error = "this client has no such game";
    return std::nullopt;
  }
  GameSettingsLookup const& lookup = state.games().refGame(game).lookup;
  std::vector<NamedGameSettings> const& list = step.second == 1 ? lookup.rankedMatches : lookup.coopChallenges;
  if (static_cast<std::size_t>(step.third) >= list.size()) {
    error = fmt::format("the game has {} entries of that kind", list.size());
    return std::nullopt;
  }
  GameSpec spec;
  spec.game = game;
  auto const index = static_cast<std::uint32_t>(step.third);
  if (step.second == 1) {
    spec.settings = RankedMatchIndex{index};
  } else {
    spec.settings = CoopChallengeIndex{index};
  }
  spec.delayFrames = 15;
  spec.minPlayers = list[index].minPlayers;
  spec.maxPlayers = list[index].maxPlayers;
  UICmd::CreateGame create;
  create.description = step.condition;
  ToBytes(spec, create.specBytes);
  return UICmd(std::move(create));
}

}  // namespace

ScriptCommandSource::ScriptCommandSource(DriverScript script) : script_(std::move(script)) {}

int ScriptCommandSource::currentLine() const {
  return next_ < script_.steps.size() ? script_.steps[next_].line : 0;
}

void ScriptCommandSource::observeState(IAppState const& state) {
  ++frames_;
  if (state.mode() == 3 && !state.gameData().ended && state.gameData().stalledFrames > 0) {
    ++stalledFrames_;
    longestStall_ = std::max<long long>(longestStall_, state.gameData().stalledFrames);
  }
}

void ScriptCommandSource::fail(ScriptStep const& step, std::string const& reason) {
  failure_ = fmt::format("line {} ({}): {}", step.line, step.text, reason);
  finished_ = true;
}

void ScriptCommandSource::fillCommands(IAppState const& state, std::vector<UICmd>& commands) {
  using Kind = ScriptStep::Kind;
  while (!finished_) {
    if (next_ >= script_.steps.size()) {
      finished_ = true;
      return;
    }
    ScriptStep const& step = script_.steps[next_];
    switch (step.kind) {
    case Kind::Frames:
      if (++stepFrames_ >= step.number) {
        stepFrames_ = 0;
        ++next_;
      }
      return;

    case Kind::Command:
      commands.push_back(*step.command);
      ++next_;
      if (next_ >= script_.steps.size() || script_.steps[next_].kind != Kind::Command) {
        return;
      }
      break;

    case Kind::WaitMode:
    case Kind::WaitCondition: {
      bool const reached = step.kind == Kind::WaitMode ? state.mode() == step.number
                                                       : state.evaluateGameCondition(step.condition);
      if (reached) {
        stepFrames_ = 0;
        ++next_;
        break;
      }
      if (stepFrames_ >= step.limit) {
        fail(step, step.kind == Kind::WaitMode
                       ? fmt::format("still in mode {} after {} frames", state.mode(), step.limit)
                       : fmt::format("the condition didn't hold within {} frames", step.limit));
        return;
      }
      ++stepFrames_;
      return;
    }

    case Kind::ExpectMode:
      if (state.mode() != step.number) {
        fail(step, fmt::format("the mode is {}", state.mode()));
        return;
      }
      ++next_;
      break;

    case Kind::ExpectCondition:
      if (!state.evaluateGameCondition(step.condition)) {
        fail(step, state.isInGame() ? "the condition doesn't hold" : "there is no game");
        return;
      }
      ++next_;
      break;

    case Kind::ExpectGameFrame:
      if (state.gameFrame() != static_cast<unsigned long long>(step.number)) {
        fail(step, fmt::format("the game's frame is {}", state.gameFrame()));
        return;
      }
      ++next_;
      break;

    case Kind::WaitGameFrame:
    case Kind::WaitGameEnd:
    case Kind::WaitResultRow: {
      bool reached = false;
      if (step.kind == Kind::WaitGameFrame) {
        reached = state.gameFrame() >= static_cast<unsigned long long>(step.number);
      } else if (step.kind == Kind::WaitGameEnd) {
        reached = state.isGameEnded();
      } else {
        std::optional<long long> const value = ResultRowValue(state, step.number);
        reached = value.has_value() && *value >= step.second;
      }
      if (reached) {
        stepFrames_ = 0;
        ++next_;
        break;
      }
      if (stepFrames_ >= step.limit) {
        fail(step, fmt::format("not reached within {} frames: {}", step.limit, DescribeGame(state, step.number)));
        return;
      }
      ++stepFrames_;
      return;
    }

    case Kind::ExpectResultRow: {
      std::optional<long long> const value = ResultRowValue(state, step.number);
      if (!value.has_value() || *value < step.second || *value > step.third) {
        fail(step, DescribeGame(state, step.number));
        return;
      }
      ++next_;
      break;
    }

    case Kind::ExpectTutorial: {
      TutorialProgress const* progress = state.offlineData().tutorialProgress;
      int const level = static_cast<int>(step.number);
      int const status = progress != nullptr ? progress->statusOf(level) : 0;
      int const attempts = progress != nullptr ? progress->attemptsOf(level) : 0;
      if (status != step.second || attempts != step.third) {
        fail(step, fmt::format("level {} has status {} and {} attempts", level, status, attempts));
        return;
      }
      ++next_;
      break;
    }

    case Kind::CreateRoom: {
      std::string error;
      std::optional<UICmd> create = CreateRoomCommand(state, step, error);
      if (!create) {
        fail(step, error);
        return;
      }
      commands.push_back(std::move(*create));
      ++next_;
      return;
    }

    case Kind::WaitRoom:
    case Kind::WaitRoomPlayers:
    case Kind::WaitAllReady:
    case Kind::WaitGameResults:
    case Kind::WaitRecording:
    case Kind::WaitDisconnected: {
      bool reached = false;
      std::string seen;
      if (step.kind == Kind::WaitRoom) {
        reached = state.gameRoomExists(static_cast<int>(step.number));
        seen = "the room doesn't exist";
      } else if (step.kind == Kind::WaitRoomPlayers) {
        reached = state.playerCountInRoom() >= step.number;
        seen = fmt::format("the room holds {} players (mode {})", state.playerCountInRoom(), state.mode());
      } else if (step.kind == Kind::WaitAllReady) {
        reached = state.areAllPlayersReady();
        seen = fmt::format("mode {}, {} players", state.mode(), state.playerCountInRoom());
      } else if (step.kind == Kind::WaitGameResults) {
        GameResults const* game = PlayedGame(state, step.number);
        reached = game != nullptr && game->finished && ReportCount(*game) >= static_cast<std::size_t>(step.second);
        seen = game == nullptr ? std::string("the lobby holds no such game")
                               : fmt::format("finished {}, {} reports", game->finished, ReportCount(*game));
      } else if (step.kind == Kind::WaitRecording) {
        reached = PlayedGame(state, step.number) != nullptr &&
                  state.getRecordingStatus(static_cast<unsigned int>(step.number)).onDisk;
        seen = "the recording isn't on disk";
      } else {
        std::vector<bool> const& disconnected = state.gameData().disconnected;
        reached = state.isInNetworkedGame() && static_cast<std::size_t>(step.number) < disconnected.size() &&
                  disconnected[static_cast<std::size_t>(step.number)];
        seen = state.isInNetworkedGame() ? "the player is still connected" : "there is no network game";
      }
      if (reached) {
        stepFrames_ = 0;
        ++next_;
        break;
      }
      if (stepFrames_ >= step.limit) {
        fail(step, fmt::format("not reached within {} frames: {}", step.limit, seen));
        return;
      }
      ++stepFrames_;
      return;
    }

    case Kind::ExpectAgreement: {
      GameResults const* game = PlayedGame(state, step.number);
      if (game == nullptr || ReportCount(*game) == 0) {
        fail(step, "the lobby holds no reports of that game");
        return;
      }
      bool const agreed = AgreedResultBytes(*game).has_value();
      if (agreed != (step.second == 1)) {
        fail(step, agreed ? "the reports agree" : "the reports differ");
        return;
      }
      ++next_;
      break;
    }

    case Kind::LogLobby:
      LogLobby(state);
      ++next_;
      break;

    case Kind::Quit:
      ++next_;
      finished_ = true;
      return;

    case Kind::LocalAviators:
      localGameRequest_ = step;
      ++next_;
      return;
    }
  }
}
