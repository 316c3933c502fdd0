#pragma once

#include <mutex>
#include <string>

#include "ServerStorage.h"

struct sqlite3;

// The embedded storage: one SQLite database file, plain SQL, one transaction per call, the journal in
// write-ahead mode so that a process that dies mid-write leaves the last committed state.
// Raises std::runtime_error when the database can't be opened or a statement fails.
class SqliteStorage final : public IServerStorage {
public:
  explicit SqliteStorage(std::string const& path);
  ~SqliteStorage() override;
  SqliteStorage(SqliteStorage const&) = delete;
  SqliteStorage& operator=(SqliteStorage const&) = delete;

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
  void exec(char const* sql);

  std::mutex mutex_;
  sqlite3* db_ = nullptr;
};
