#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "SettledDispute.h"
#include "sim/GameResults.h"

// What the server keeps across restarts: accounts with their names, the played games with every
// reported result, and the relayed updates of each game (the chunk section of its recording file).
// Every call is one complete transaction: after a crash or a SIGTERM a change is either whole or absent.
// Implementations may be called from the lobby thread and the website thread at once.
class IServerStorage {
public:
  virtual ~IServerStorage() = default;

  // Adds an account; false if the id is already taken.
  virtual bool addAccount(std::vector<unsigned char> const& playerId, std::vector<unsigned char> const& secret,
                          std::string const& name) = 0;
  virtual std::optional<std::vector<unsigned char>> secretFor(std::vector<unsigned char> const& playerId) = 0;
  virtual std::optional<std::string> nameFor(std::vector<unsigned char> const& playerId) = 0;
  virtual void setName(std::vector<unsigned char> const& playerId, std::string const& name) = 0;
  virtual std::size_t accountCount() = 0;

  // Played games are numbered from 0 in order of start.
  virtual std::uint32_t gameCount() = 0;
  // Inserts or replaces the record of a game.
  virtual void saveGame(std::uint32_t game, GameResults const& results) = 0;
  virtual std::optional<GameResults> loadGame(std::uint32_t game) = 0;
  // The games from first on, at most count of them, in order of number.
  virtual std::vector<std::pair<std::uint32_t, GameResults>> loadGames(std::uint32_t first, std::uint32_t count) = 0;

  // The relayed updates of a game as the chunk section of a recording file: the 8-byte chunk count,
  // then each chunk (8-byte size and bytes).
  virtual void saveRecordingChunks(std::uint32_t game, std::vector<unsigned char> const& chunks) = 0;
  virtual std::optional<std::vector<unsigned char>> recordingChunks(std::uint32_t game) = 0;

  // Games whose reports disagreed: noted as waiting when they finish, then replaced by their settlement.
  // Noting a game that is already noted or settled changes nothing.
  virtual void noteDispute(std::uint32_t game) = 0;
  virtual void saveDispute(SettledDispute const& dispute) = 0;
  // The games still waiting for a settlement, in order of number.
  virtual std::vector<std::uint32_t> waitingDisputes() = 0;
  // The count settlements of the highest game numbers, in order of number.
  virtual std::vector<SettledDispute> settledDisputes(std::uint32_t count) = 0;
};
