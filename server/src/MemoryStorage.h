#pragma once

#include <map>
#include <mutex>
#include <string>

#include "ServerStorage.h"

// Storage that lives in memory only: for tests and fuzzing, and for a server that need keep nothing.
class MemoryStorage final : public IServerStorage {
public:
  bool addAccount(std::vector<unsigned char> const& playerId, std::vector<unsigned char> const& secret,
                  std::string const& name) override;
  std::optional<std::vector<unsigned char>> secretFor(std::vector<unsigned char> const& playerId) override;
  std::optional<std::string> nameFor(std::vector<unsigned char> const& playerId) override;
  void setName(std::vector<unsigned char> const& playerId, std::string const& name) override;
  std::size_t accountCount() override;

  std::uint32_t gameCount() override;
  void saveGame(std::uint32_t game, GameResults const& results) override;
  std::optional<GameResults> loadGame(std::uint32_t game) override;
  std::vector<std::pair<std::uint32_t, GameResults>> loadGames(std::uint32_t first, std::uint32_t count) override;

  void saveRecordingChunks(std::uint32_t game, std::vector<unsigned char> const& chunks) override;
  std::optional<std::vector<unsigned char>> recordingChunks(std::uint32_t game) override;

  void noteDispute(std::uint32_t game) override;
  void saveDispute(SettledDispute const& dispute) override;
  std::vector<std::uint32_t> waitingDisputes() override;
  std::vector<SettledDispute> settledDisputes(std::uint32_t count) override;

private:
  struct Account {
    std::vector<unsigned char> secret;
    std::string name;
  };
  std::mutex mutex_;
  std::map<std::string, Account> accounts_;  // by playerId, its bytes as a string
  std::map<std::uint32_t, GameResults> games_;
  std::map<std::uint32_t, std::vector<unsigned char>> recordings_;
  std::map<std::uint32_t, std::optional<SettledDispute>> disputes_;  // none while waiting
};
