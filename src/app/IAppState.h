#pragma once

#include <string>
#include <vector>

#include "accounts/Credentials.h"
#include "sim/Game.h"
#include "app/GameData.h"
#include "sim/GameResult.h"
#include "app/LobbyData.h"
#include "app/OfflineData.h"
#include "sim/RecordingStatus.h"

class Games;
struct GameResults;

// The read-only view of the application that the interface and a driver of the program get, refreshed
// by the main loop once a frame before rendering. The modes: 0 offline, 1 connected in no room,
// 2 connected in a room, 3 in a network game, 4 in a local game, 5 watching a replay.
class IAppState {
public:
  virtual ~IAppState() = default;

  virtual int mode() const = 0;
  virtual LobbyData const& lobbyData() const = 0;
  virtual GameData const& gameData() const = 0;
  virtual OfflineData const& offlineData() const = 0;
  virtual Games const& games() const = 0;
  virtual bool isOffline() const = 0;
  virtual bool isConnected() const = 0;
  virtual bool isInGameRoom() const = 0;
  virtual bool areAllPlayersReady() const = 0;
  virtual int playerCountInRoom() const = 0;
  virtual bool isInGame() const = 0;
  virtual bool isInNetworkedGame() const = 0;
  virtual bool isInLocalGame() const = 0;
  virtual bool isGameEnded() const = 0;
  virtual bool isWatchingReplay() const = 0;
  virtual bool gameRoomExists(int room) const = 0;
  virtual unsigned int gameFrame() const = 0;
  virtual bool evaluateGameCondition(std::string const& condition) const = 0;
  virtual void getCurrentGameResult(GameResult& result) const = 0;
  virtual Game getGameType() const = 0;
  virtual bool credentialFilePresent() const = 0;
  virtual Credentials loadCredentials() const = 0;
  virtual std::string formatGameResult(Game game, std::vector<long long> const& row, bool isTeamResult) const = 0;
  virtual std::vector<unsigned int> getPlayedGames() const = 0;
  virtual GameResults const& refPlayedGameResults(unsigned int game) const = 0;
  virtual RecordingStatus getRecordingStatus(unsigned int game) const = 0;
};
