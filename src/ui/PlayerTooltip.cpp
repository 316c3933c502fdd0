#include "ui/PlayerTooltip.h"

#include <imgui.h>

#include <optional>

#include "net/PlayerNames.h"
#include "rankings/PlayerRatings.h"

std::string GetShortId(std::vector<unsigned char> const& id, std::size_t bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < id.size() && i < bytes; ++i) {
    text += kDigits[id[i] >> 4];
    text += kDigits[id[i] & 0x0F];
  }
  return text;
}

std::string PlayerTooltipText(std::string const& shownName, PlayerNames const* names, PlayerRatings const* first,
                              PlayerRatings const* second, std::vector<unsigned char> const& id) {
  std::string text = GetShortId(id, 3);
  auto appendRating = [&text, &id](char const* label, PlayerRatings const* table) {
    if (table == nullptr) {
      return;
    }
    if (std::optional<double> const rating = table->getRatingFor(id)) {
      text += label;
      text += std::to_string(static_cast<long long>(*rating));
    }
  };
  appendRating(" rating:", first);
  appendRating(" aviator rating:", second);
  if (names != nullptr) {
    std::string const& current = names->playerName(id);
    if (current != shownName) {
      text += " now:";
      text += current;
    }
  }
  return text;
}

void PlayerTooltip(std::string const& shownName, PlayerNames const* names, PlayerRatings const* first,
                   PlayerRatings const* second, std::vector<unsigned char> const& id) {
  std::string const text = PlayerTooltipText(shownName, names, first, second, id);
  ImGui::SetTooltip("%s", text.c_str());
}

void PlayerTooltip(PlayerRatings const* first, PlayerRatings const* second, std::vector<unsigned char> const& id) {
  std::string const text = PlayerTooltipText(std::string(), nullptr, first, second, id);
  ImGui::SetTooltip("%s", text.c_str());
}
