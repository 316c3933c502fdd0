#include "SqliteStorage.h"

#include <sqlite3.h>

#include <algorithm>
#include <stdexcept>

#include "net/GameRecordsWire.h"
#include "net/LobbyRecordsWire.h"

namespace {

// One prepared statement, finalised on scope exit. Every failure raises with SQLite's message.
class Statement {
public:
  Statement(sqlite3* db, char const* sql) : db_(db) {
    if (sqlite3_prepare_v2(db, sql, -1, &stmt_, nullptr) != SQLITE_OK) {
      throw std::runtime_error(std::string("Storage: failed to prepare statement: ") + sqlite3_errmsg(db));
    }
  }
  ~Statement() { sqlite3_finalize(stmt_); }
  Statement(Statement const&) = delete;
  Statement& operator=(Statement const&) = delete;

  Statement& blob(int index, std::vector<unsigned char> const& bytes) {
    check(sqlite3_bind_blob64(stmt_, index, bytes.empty() ? "" : static_cast<void const*>(bytes.data()),
                              bytes.size(), SQLITE_TRANSIENT));
    return *this;
  }
  Statement& text(int index, std::string const& value) {
    check(sqlite3_bind_text64(stmt_, index, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
  }
  Statement& integer(int index, long long value) {
    check(sqlite3_bind_int64(stmt_, index, value));
    return *this;
  }
  // True while a row is available; false when done.
  bool step() {
    int const rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) {
      return true;
    }
    if (rc == SQLITE_DONE) {
      return false;
    }
    throw std::runtime_error(std::string("Storage: statement failed: ") + sqlite3_errmsg(db_));
  }
  // Runs a statement that may fail on a constraint; true if it succeeded.
  bool stepAllowingConstraint() {
    int const rc = sqlite3_step(stmt_);
    if (rc == SQLITE_DONE || rc == SQLITE_ROW) {
      return true;
    }
    if ((rc & 0xff) == SQLITE_CONSTRAINT) {
      return false;
    }
    throw std::runtime_error(std::string("Storage: statement failed: ") + sqlite3_errmsg(db_));
  }
  std::vector<unsigned char> columnBlob(int column) const {
    auto const* data = static_cast<unsigned char const*>(sqlite3_column_blob(stmt_, column));
    int const size = sqlite3_column_bytes(stmt_, column);
    return data == nullptr ? std::vector<unsigned char>{} : std::vector<unsigned char>(data, data + size);
  }
  std::string columnText(int column) const {
    auto const* data = reinterpret_cast<char const*>(sqlite3_column_text(stmt_, column));
    int const size = sqlite3_column_bytes(stmt_, column);
    return data == nullptr ? std::string{} : std::string(data, static_cast<std::size_t>(size));
  }
  long long columnInteger(int column) const { return sqlite3_column_int64(stmt_, column); }

private:
  void check(int rc) {
    if (rc != SQLITE_OK) {
      throw std::runtime_error(std::string("Storage: failed to bind value: ") + sqlite3_errmsg(db_));
    }
  }
  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
};

std::optional<GameResults> DecodeGame(std::vector<unsigned char> const& bytes) {
  GameResults results;
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  if (!FromBytes(cursor, remaining, results)) {
    return std::nullopt;
  }
  return results;
}

}  // namespace

SqliteStorage::SqliteStorage(std::string const& path) {
  if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                      nullptr) != SQLITE_OK) {
    std::string const message = db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory";
    sqlite3_close(db_);
    throw std::runtime_error("Storage: failed to open database " + path + ": " + message);
  }
  sqlite3_busy_timeout(db_, 5000);
  exec("PRAGMA journal_mode=WAL");
  exec("PRAGMA synchronous=FULL");
  exec("CREATE TABLE IF NOT EXISTS accounts ("
       " player_id BLOB PRIMARY KEY, secret BLOB NOT NULL, name TEXT NOT NULL,"
       " created_ms INTEGER NOT NULL DEFAULT 0)");
  exec("CREATE TABLE IF NOT EXISTS games ("
       " game INTEGER PRIMARY KEY, finished INTEGER NOT NULL, timestamp_ms INTEGER NOT NULL, record BLOB NOT NULL)");
  exec("CREATE TABLE IF NOT EXISTS reported_results ("
       " game INTEGER NOT NULL, place INTEGER NOT NULL, player_id BLOB NOT NULL, result BLOB NOT NULL,"
       " PRIMARY KEY (game, place))");
  exec("CREATE TABLE IF NOT EXISTS recordings (game INTEGER PRIMARY KEY, chunks BLOB NOT NULL)");
  // A disputed game waits with settled = 0; its settlement fills the rest, one row a place beside.
  exec("CREATE TABLE IF NOT EXISTS disputes ("
       " game INTEGER PRIMARY KEY, settled INTEGER NOT NULL, frames INTEGER NOT NULL DEFAULT 0,"
       " error TEXT NOT NULL DEFAULT '', truth BLOB)");
  exec("CREATE TABLE IF NOT EXISTS dispute_places ("
       " game INTEGER NOT NULL, place INTEGER NOT NULL, name TEXT NOT NULL, matches INTEGER NOT NULL,"
       " PRIMARY KEY (game, place))");
}

SqliteStorage::~SqliteStorage() {
  sqlite3_close(db_);
}

void SqliteStorage::exec(char const* sql) {
  char* error = nullptr;
  if (sqlite3_exec(db_, sql, nullptr, nullptr, &error) != SQLITE_OK) {
    std::string const message = error != nullptr ? error : "unknown error";
    sqlite3_free(error);
    throw std::runtime_error(std::string("Storage: statement failed: ") + message);
  }
}

bool SqliteStorage::addAccount(std::vector<unsigned char> const& playerId, std::vector<unsigned char> const& secret,
                               std::string const& name) {
  std::lock_guard lock(mutex_);
  Statement insert(db_, "INSERT INTO accounts (player_id, secret, name) VALUES (?1, ?2, ?3)");
  insert.blob(1, playerId).blob(2, secret).text(3, name);
  return insert.stepAllowingConstraint();
}

std::optional<std::vector<unsigned char>> SqliteStorage::secretFor(std::vector<unsigned char> const& playerId) {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT secret FROM accounts WHERE player_id = ?1");
  query.blob(1, playerId);
  if (!query.step()) {
    return std::nullopt;
  }
  return query.columnBlob(0);
}

std::optional<std::string> SqliteStorage::nameFor(std::vector<unsigned char> const& playerId) {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT name FROM accounts WHERE player_id = ?1");
  query.blob(1, playerId);
  if (!query.step()) {
    return std::nullopt;
  }
  return query.columnText(0);
}

void SqliteStorage::setName(std::vector<unsigned char> const& playerId, std::string const& name) {
  std::lock_guard lock(mutex_);
  Statement update(db_, "UPDATE accounts SET name = ?2 WHERE player_id = ?1");
  update.blob(1, playerId).text(2, name);
  update.step();
}

std::size_t SqliteStorage::accountCount() {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT COUNT(*) FROM accounts");
  query.step();
  return static_cast<std::size_t>(query.columnInteger(0));
}

std::uint32_t SqliteStorage::gameCount() {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT COALESCE(MAX(game) + 1, 0) FROM games");
  query.step();
  return static_cast<std::uint32_t>(query.columnInteger(0));
}

void SqliteStorage::saveGame(std::uint32_t game, GameResults const& results) {
  std::vector<unsigned char> record;
  ToBytes(results, record);
  std::lock_guard lock(mutex_);
  exec("BEGIN IMMEDIATE");
  try {
    Statement upsert(db_, "INSERT OR REPLACE INTO games (game, finished, timestamp_ms, record) VALUES (?1, ?2, ?3, ?4)");
    upsert.integer(1, game).integer(2, results.finished ? 1 : 0);
    upsert.integer(3, static_cast<long long>(results.timestampMs)).blob(4, record);
    upsert.step();
    // The reports also stand in a table of their own, one row a place, for queries over them.
    Statement clear(db_, "DELETE FROM reported_results WHERE game = ?1");
    clear.integer(1, game);
    clear.step();
    for (std::size_t place = 0; place < results.reportedResults.size(); ++place) {
      if (results.reportedResults[place].empty()) {
        continue;
      }
      Statement report(db_, "INSERT INTO reported_results (game, place, player_id, result) VALUES (?1, ?2, ?3, ?4)");
      report.integer(1, game).integer(2, static_cast<long long>(place));
      report.blob(3, place < results.playerIds.size() ? results.playerIds[place] : std::vector<unsigned char>{});
      report.blob(4, results.reportedResults[place]);
      report.step();
    }
    exec("COMMIT");
  } catch (...) {
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

std::optional<GameResults> SqliteStorage::loadGame(std::uint32_t game) {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT record FROM games WHERE game = ?1");
  query.integer(1, game);
  if (!query.step()) {
    return std::nullopt;
  }
  return DecodeGame(query.columnBlob(0));
}

std::vector<std::pair<std::uint32_t, GameResults>> SqliteStorage::loadGames(std::uint32_t first, std::uint32_t count) {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT game, record FROM games WHERE game >= ?1 ORDER BY game LIMIT ?2");
  query.integer(1, first).integer(2, count);
  std::vector<std::pair<std::uint32_t, GameResults>> games;
  while (query.step()) {
    if (auto results = DecodeGame(query.columnBlob(1))) {
      games.emplace_back(static_cast<std::uint32_t>(query.columnInteger(0)), std::move(*results));
    }
  }
  return games;
}

void SqliteStorage::saveRecordingChunks(std::uint32_t game, std::vector<unsigned char> const& chunks) {
  std::lock_guard lock(mutex_);
  Statement upsert(db_, "INSERT OR REPLACE INTO recordings (game, chunks) VALUES (?1, ?2)");
  upsert.integer(1, game).blob(2, chunks);
  upsert.step();
}

std::optional<std::vector<unsigned char>> SqliteStorage::recordingChunks(std::uint32_t game) {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT chunks FROM recordings WHERE game = ?1");
  query.integer(1, game);
  if (!query.step()) {
    return std::nullopt;
  }
  return query.columnBlob(0);
}

void SqliteStorage::noteDispute(std::uint32_t game) {
  std::lock_guard lock(mutex_);
  Statement insert(db_, "INSERT OR IGNORE INTO disputes (game, settled) VALUES (?1, 0)");
  insert.integer(1, game);
  insert.step();
}

void SqliteStorage::saveDispute(SettledDispute const& dispute) {
  std::vector<unsigned char> truth;
  if (dispute.truth) {
    ToBytes(*dispute.truth, truth);
  }
  std::lock_guard lock(mutex_);
  exec("BEGIN IMMEDIATE");
  try {
    Statement upsert(db_,
                     "INSERT OR REPLACE INTO disputes (game, settled, frames, error, truth) VALUES (?1, 1, ?2, ?3, ?4)");
    upsert.integer(1, dispute.game).integer(2, static_cast<long long>(dispute.frames)).text(3, dispute.error);
    if (dispute.truth) {
      upsert.blob(4, truth);
    }
    upsert.step();
    Statement clear(db_, "DELETE FROM dispute_places WHERE game = ?1");
    clear.integer(1, dispute.game);
    clear.step();
    std::size_t const places = std::max(dispute.players.size(), dispute.matches.size());
    for (std::size_t place = 0; place < places; ++place) {
      Statement row(db_, "INSERT INTO dispute_places (game, place, name, matches) VALUES (?1, ?2, ?3, ?4)");
      row.integer(1, dispute.game).integer(2, static_cast<long long>(place));
      row.text(3, place < dispute.players.size() ? dispute.players[place] : std::string());
      row.integer(4, place < dispute.matches.size() && dispute.matches[place] ? 1 : 0);
      row.step();
    }
    exec("COMMIT");
  } catch (...) {
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

std::vector<std::uint32_t> SqliteStorage::waitingDisputes() {
  std::lock_guard lock(mutex_);
  Statement query(db_, "SELECT game FROM disputes WHERE settled = 0 ORDER BY game");
  std::vector<std::uint32_t> waiting;
  while (query.step()) {
    waiting.push_back(static_cast<std::uint32_t>(query.columnInteger(0)));
  }
  return waiting;
}

std::vector<SettledDispute> SqliteStorage::settledDisputes(std::uint32_t count) {
  std::lock_guard lock(mutex_);
  Statement query(db_,
                  "SELECT game, frames, error, truth FROM"
                  " (SELECT * FROM disputes WHERE settled = 1 ORDER BY game DESC LIMIT ?1) ORDER BY game");
  query.integer(1, count);
  std::vector<SettledDispute> settled;
  while (query.step()) {
    SettledDispute& dispute = settled.emplace_back();
    dispute.game = static_cast<std::uint32_t>(query.columnInteger(0));
    dispute.frames = static_cast<std::uint64_t>(query.columnInteger(1));
    dispute.error = query.columnText(2);
    std::vector<unsigned char> const truth = query.columnBlob(3);
    GameResult result;
    unsigned char const* cursor = truth.data();
    std::size_t remaining = truth.size();
    if (!truth.empty() && FromBytes(cursor, remaining, result)) {
      dispute.truth = std::move(result);
    }
  }
  for (SettledDispute& dispute : settled) {
    Statement places(db_, "SELECT name, matches FROM dispute_places WHERE game = ?1 ORDER BY place");
    places.integer(1, dispute.game);
    while (places.step()) {
      dispute.players.push_back(places.columnText(0));
      dispute.matches.push_back(places.columnInteger(1) != 0);
    }
  }
  return settled;
}
