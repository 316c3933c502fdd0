#include "net/PlayerNames.h"

#include <string_view>

std::size_t PlayerNames::IdHash::operator()(std::vector<unsigned char> const& id) const {
  return std::hash<std::string_view>{}(std::string_view(reinterpret_cast<char const*>(id.data()), id.size()));
}

void PlayerNames::updateFromNetwork(std::vector<PlayerNameInfo> const& entries) {
  for (PlayerNameInfo const& entry : entries) {
    names_.insert_or_assign(entry.playerId, entry.name);
  }
}

std::string const& PlayerNames::playerName(std::vector<unsigned char> const& id) const {
  static std::string const unknown = kUnknownPlayer;
  auto const found = names_.find(id);
  return found != names_.end() ? found->second : unknown;
}
