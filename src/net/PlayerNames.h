#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

// One entry of the PLAYER_NAMES message.
struct PlayerNameInfo {
  std::vector<unsigned char> playerId;
  std::string name;

  friend bool operator==(PlayerNameInfo const&, PlayerNameInfo const&) = default;
};

// The names of players by playerId, as the server last told them. Nothing is ever removed.
class PlayerNames {
public:
  static constexpr char const* kUnknownPlayer = "NO_PLAYER_FOUND";

  // Inserts each entry, or overwrites the name of an id already known.
  void updateFromNetwork(std::vector<PlayerNameInfo> const& entries);

  // The stored name, or "NO_PLAYER_FOUND".
  std::string const& playerName(std::vector<unsigned char> const& id) const;

  std::size_t size() const { return names_.size(); }

private:
  struct IdHash {
    std::size_t operator()(std::vector<unsigned char> const& id) const;
  };

  std::unordered_map<std::vector<unsigned char>, std::string, IdHash> names_;
};
