#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/IAppState.h"
#include "net/LobbyState.h"
#include "sim/GameResults.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/IRunningGame.h"

namespace testing_support {

// A snapshot made by hand for page tests: the mode, the lobby block and the played games are fields the
// test sets; the game's result comes from the game of the game block, if any.
class FakeAppState final : public IAppState {
public:
  explicit FakeAppState(Games const& games) : games_(games) {}

  int mode() const override { return modeValue; }
  LobbyData const& lobbyData() const override { return lobby; }
  GameData const& gameData() const override { return game; }
  OfflineData const& offlineData() const override { return offline; }
  Games const& games() const override { return games_; }
  bool isOffline() const override { return modeValue == 0; }
  bool isConnected() const override { return modeValue >= 1 && modeValue <= 3; }
  bool isInGameRoom() const override { return modeValue == 2; }
  bool areAllPlayersReady() const override { return modeValue == 2 && lobby.allPlayersReady; }
  int playerCountInRoom() const override { return modeValue == 2 ? lobby.playerCountInRoom : 0; }
  bool isInGame() const override { return modeValue >= 3; }
  bool isInNetworkedGame() const override { return modeValue == 3; }
  bool isInLocalGame() const override { return modeValue == 4; }
  bool isGameEnded() const override { return isInGame() && game.ended; }
  bool isWatchingReplay() const override { return modeValue == 5; }
  bool gameRoomExists(int room) const override {
    return room >= 0 && lobby.lobbyState != nullptr && static_cast<std::size_t>(room) < lobby.lobbyState->rooms.size() &&
           lobby.lobbyState->rooms[static_cast<std::size_t>(room)].has_value();
  }
  unsigned int gameFrame() const override { return 0; }
  bool evaluateGameCondition(std::string const&) const override { return false; }
  void getCurrentGameResult(GameResult& result) const override {
    if (game.game != nullptr) {
      game.game->getGameResult(result);
    } else {
      result = GameResult{};
    }
  }
  Game getGameType() const override { return Game::GlowHorde; }
  bool credentialFilePresent() const override { return false; }
  Credentials loadCredentials() const override { return Credentials{}; }
  std::string formatGameResult(Game which, std::vector<long long> const& row, bool team) const override {
    return games_.refGame(which).formatResult(row, team);
  }
  std::vector<unsigned int> getPlayedGames() const override {
    std::vector<unsigned int> numbers;
    for (auto const& [number, results] : played) numbers.push_back(number);
    return numbers;
  }
  GameResults const& refPlayedGameResults(unsigned int number) const override { return played.at(number); }
  RecordingStatus getRecordingStatus(unsigned int number) const override {
    auto found = recordings.find(number);
    return found == recordings.end() ? RecordingStatus{} : found->second;
  }

  int modeValue = 1;
  LobbyData lobby;
  GameData game;
  OfflineData offline;
  std::map<unsigned int, GameResults> played;
  std::map<unsigned int, RecordingStatus> recordings;

private:
  Games const& games_;
};

}  // namespace testing_support
