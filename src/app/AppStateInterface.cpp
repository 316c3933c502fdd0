#include "app/AppStateInterface.h"

#include <filesystem>
#include <stdexcept>

#include "accounts/CredentialsFile.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/IRunningGame.h"
#include "net/LobbyClient.h"
#include "net/LobbyState.h"
#include "app/QZAssert.h"

namespace {

[[noreturn]] void NoLobbyClient(char const* what) {
  throw std::runtime_error(std::string(what) + " can't be read: this client has no lobby connection.");
}

}  // namespace

bool AppStateInterface::gameRoomExists(int room) const {
  if (room < 0 || lobby.lobbyState == nullptr) {
    return false;
  }
  auto const index = static_cast<std::size_t>(room);
  return index < lobby.lobbyState->rooms.size() && lobby.lobbyState->rooms[index].has_value();
}

unsigned int AppStateInterface::gameFrame() const {
  return isInGame() && game.game != nullptr ? game.game->currentFrame() : 0;
}

bool AppStateInterface::evaluateGameCondition(std::string const& condition) const {
  return isInGame() && game.game != nullptr && game.game->evaluateCondition(condition);
}

void AppStateInterface::getCurrentGameResult(GameResult& result) const {
  QZ_ASSERT(game.game != nullptr);
  game.game->getGameResult(result);
}

Game AppStateInterface::getGameType() const {
  QZ_ASSERT(game.game != nullptr);
  return game.game->game().type();
}

bool AppStateInterface::credentialFilePresent() const {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::path(offline.directory) / "credentials.bin", error);
}

Credentials AppStateInterface::loadCredentials() const {
  return LoadCredentials((std::filesystem::path(offline.directory) / "credentials.bin").string());
}

std::string AppStateInterface::formatGameResult(Game which, std::vector<long long> const& row,
                                                bool isTeamResult) const {
  return games_->refGame(which).formatResult(row, isTeamResult);
}

std::vector<unsigned int> AppStateInterface::getPlayedGames() const {
  if (lobby.client == nullptr) {
    NoLobbyClient("The list of played games");
  }
  std::vector<std::uint32_t> const numbers = lobby.client->getPlayedGames();
  return {numbers.begin(), numbers.end()};
}

GameResults const& AppStateInterface::refPlayedGameResults(unsigned int number) const {
  if (lobby.client == nullptr) {
    NoLobbyClient("The results of a played game");
  }
  GameResults const* results = lobby.client->playedGame(number);
  if (results == nullptr) {
    throw std::out_of_range("The lobby holds no results of game " + std::to_string(number) + ".");
  }
  return *results;
}

RecordingStatus AppStateInterface::getRecordingStatus(unsigned int number) const {
  if (lobby.client == nullptr) {
    NoLobbyClient("The status of a recording");
  }
  return lobby.client->getRecordingStatus(number);
}
