#pragma once

#include "app/IAppState.h"

// The snapshot that the main loop refreshes once a frame. The flags read only the snapshot; the game
// queries go through the game pointer of the snapshot.
class AppStateInterface final : public IAppState {
public:
  int mode() const override { return mode_; }
  LobbyData const& lobbyData() const override { return lobby; }
  GameData const& gameData() const override { return game; }
  OfflineData const& offlineData() const override { return offline; }
  Games const& games() const override { return *games_; }
  bool isOffline() const override { return mode_ == 0; }
  bool isConnected() const override { return mode_ >= 1 && mode_ <= 3; }
  bool isInGameRoom() const override { return mode_ == 2; }
  bool areAllPlayersReady() const override { return mode_ == 2 && lobby.allPlayersReady; }
  int playerCountInRoom() const override { return mode_ == 2 ? lobby.playerCountInRoom : 0; }
  bool isInGame() const override { return mode_ >= 3 && mode_ <= 5; }
  bool isInNetworkedGame() const override { return mode_ == 3; }
  bool isInLocalGame() const override { return mode_ == 4; }
  bool isGameEnded() const override { return isInGame() && game.ended; }
  bool isWatchingReplay() const override { return mode_ == 5; }
  bool gameRoomExists(int room) const override;
  unsigned int gameFrame() const override;
  bool evaluateGameCondition(std::string const& condition) const override;
  void getCurrentGameResult(GameResult& result) const override;
  Game getGameType() const override;
  bool credentialFilePresent() const override;
  Credentials loadCredentials() const override;
  std::string formatGameResult(Game which, std::vector<long long> const& row, bool isTeamResult) const override;
  std::vector<unsigned int> getPlayedGames() const override;
  GameResults const& refPlayedGameResults(unsigned int number) const override;
  RecordingStatus getRecordingStatus(unsigned int number) const override;

  void setMode(int mode) { mode_ = mode; }
  void setGames(Games const* games) { games_ = games; }

  LobbyData lobby;
  GameData game;
  OfflineData offline;

private:
  int mode_ = 0;
  Games const* games_ = nullptr;
};
