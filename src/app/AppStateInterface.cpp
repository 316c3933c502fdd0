#include "app/AppStateInterface.h"

#include <filesystem>
#include <stdexcept>

#include "accounts/CredentialsFile.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/IRunningGame.h"
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

std::vector<unsigned int> AppStateInterface::getPlayedGames() const { NoLobbyClient("The list of played games"); }

GameResults const& AppStateInterface::refPlayedGameResults(unsigned int) const {
  NoLobbyClient("The results of a played game");
}

RecordingStatus AppStateInterface::getRecordingStatus(unsigned int) const {
  NoLobbyClient("The status of a recording");
}
