#include "MemoryStorage.h"

#include <algorithm>

namespace {
std::string Key(std::vector<unsigned char> const& id) {
  return std::string(id.begin(), id.end());
}
}  // namespace

bool MemoryStorage::addAccount(std::vector<unsigned char> const& playerId, std::vector<unsigned char> const& secret,
                               std::string const& name) {
  std::lock_guard lock(mutex_);
  return accounts_.emplace(Key(playerId), Account{secret, name}).second;
}

std::optional<std::vector<unsigned char>> MemoryStorage::secretFor(std::vector<unsigned char> const& playerId) {
  std::lock_guard lock(mutex_);
  auto const found = accounts_.find(Key(playerId));
  return found == accounts_.end() ? std::nullopt : std::optional(found->second.secret);
}

std::optional<std::string> MemoryStorage::nameFor(std::vector<unsigned char> const& playerId) {
  std::lock_guard lock(mutex_);
  auto const found = accounts_.find(Key(playerId));
  return found == accounts_.end() ? std::nullopt : std::optional(found->second.name);
}

void MemoryStorage::setName(std::vector<unsigned char> const& playerId, std::string const& name) {
  std::lock_guard lock(mutex_);
  auto const found = accounts_.find(Key(playerId));
  if (found != accounts_.end()) {
    found->second.name = name;
  }
}

std::size_t MemoryStorage::accountCount() {
  std::lock_guard lock(mutex_);
  return accounts_.size();
}

std::uint32_t MemoryStorage::gameCount() {
  std::lock_guard lock(mutex_);
  return games_.empty() ? 0 : games_.rbegin()->first + 1;
}

void MemoryStorage::saveGame(std::uint32_t game, GameResults const& results) {
  std::lock_guard lock(mutex_);
  games_[game] = results;
}

std::optional<GameResults> MemoryStorage::loadGame(std::uint32_t game) {
  std::lock_guard lock(mutex_);
  auto const found = games_.find(game);
  return found == games_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::pair<std::uint32_t, GameResults>> MemoryStorage::loadGames(std::uint32_t first, std::uint32_t count) {
  std::lock_guard lock(mutex_);
  std::vector<std::pair<std::uint32_t, GameResults>> games;
  for (auto it = games_.lower_bound(first); it != games_.end() && games.size() < count; ++it) {
    games.emplace_back(it->first, it->second);
  }
  return games;
}

void MemoryStorage::saveRecordingChunks(std::uint32_t game, std::vector<unsigned char> const& chunks) {
  std::lock_guard lock(mutex_);
  recordings_[game] = chunks;
}

std::optional<std::vector<unsigned char>> MemoryStorage::recordingChunks(std::uint32_t game) {
  std::lock_guard lock(mutex_);
  auto const found = recordings_.find(game);
  return found == recordings_.end() ? std::nullopt : std::optional(found->second);
}

void MemoryStorage::noteDispute(std::uint32_t game) {
  std::lock_guard lock(mutex_);
  disputes_.try_emplace(game);
}

void MemoryStorage::saveDispute(SettledDispute const& dispute) {
  std::lock_guard lock(mutex_);
  disputes_[dispute.game] = dispute;
}

std::vector<std::uint32_t> MemoryStorage::waitingDisputes() {
  std::lock_guard lock(mutex_);
  std::vector<std::uint32_t> waiting;
  for (auto const& [game, settled] : disputes_) {
    if (!settled) {
      waiting.push_back(game);
    }
  }
  return waiting;
}

std::vector<SettledDispute> MemoryStorage::settledDisputes(std::uint32_t count) {
  std::lock_guard lock(mutex_);
  std::vector<SettledDispute> settled;
  for (auto found = disputes_.rbegin(); found != disputes_.rend() && settled.size() < count; ++found) {
    if (found->second) {
      settled.push_back(*found->second);
    }
  }
  std::reverse(settled.begin(), settled.end());
  return settled;
}
