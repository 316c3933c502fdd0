#include "ui/CreateRoomPage.h"

#include <imgui.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "app/IAppState.h"
#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "ui/GameResultsDisplay.h"
#include "ui/ScopedDisableIf.h"

namespace {

char const* EnumText(Game value) {
  switch (value) {
    case Game::GlowHorde:
    case Game::Aviators:
    case Game::Vipers: return GameDisplayName(value);
  }
  return "";
}

char const* EnumText(GameType value) {
  switch (value) {
    case GameType::Friendly:
    case GameType::CoopChallenge:
    case GameType::RankedMatch: return GameTypeDisplayName(value);
  }
  return "";
}

constexpr int EnumCount(Game) { return kGameCount; }
constexpr int EnumCount(GameType) { return 3; }

constexpr float kFieldWidth = 420.0f;

}  // namespace

template <typename Enum>
bool EnumCombo(char const* label, Enum& value) {
  bool changed = false;
  if (ImGui::BeginCombo(label, EnumText(value))) {
    for (int i = 0; i < EnumCount(value); ++i) {
      Enum const option = static_cast<Enum>(i);
      if (ImGui::Selectable(EnumText(option), option == value) && option != value) {
        value = option;
        changed = true;
      }
    }
    ImGui::EndCombo();
  }
  return changed;
}

template bool EnumCombo<Game>(char const*, Game&);
template bool EnumCombo<GameType>(char const*, GameType&);

std::uint32_t& CoopChoice(LobbyUIState& state) {
  return state.game == Game::GlowHorde ? state.coopChoiceFirstGame : state.coopChoiceOtherGames;
}

std::uint32_t& RankedChoice(LobbyUIState& state) {
  return state.game == Game::GlowHorde ? state.rankedChoiceFirstGame : state.rankedChoiceOtherGames;
}

std::optional<GameSpec> CreateRoomSpec(LobbyUIState& state, IGame const& game) {
  GameSpec spec;
  spec.game = state.game;
  spec.delayFrames = std::clamp<std::uint8_t>(state.delayFrames, 10, 35);
  auto named = [&spec](std::vector<NamedGameSettings> const& list, std::uint32_t& choice,
                              auto makeIndex) -> std::optional<GameSpec> {
    if (list.empty()) {
      return std::nullopt;
    }
    if (choice >= list.size()) {
      choice = 0;
    }
    spec.settings = makeIndex(choice);
    spec.minPlayers = list[choice].minPlayers;
    spec.maxPlayers = list[choice].maxPlayers;
    return spec;
  };
  switch (state.gameType) {
    case GameType::CoopChallenge:
      return named(game.lookup.coopChallenges, CoopChoice(state), [](std::uint32_t i) { return CoopChallengeIndex{i}; });
    case GameType::RankedMatch:
      return named(game.lookup.rankedMatches, RankedChoice(state), [](std::uint32_t i) { return RankedMatchIndex{i}; });
    case GameType::Friendly: break;
  }
  auto const index = static_cast<std::size_t>(state.game);
  if (index >= state.customSettings.size() || game.schema.empty() || game.schema.front().choices.empty()) {
    return std::nullopt;
  }
  GameSettings& settings = state.customSettings[index];
  std::vector<std::string> const& maps = game.schema.front().choices;
  std::string& map = settings.strings["map"];
  if (std::find(maps.begin(), maps.end(), map) == maps.end()) {
    map = maps.front();
  }
  spec.settings = settings;
  spec.minPlayers = 1;
  spec.maxPlayers = game.maxPlayersForMap(map);
  return spec;
}

UICmd::CreateGame CreateRoomCommand(LobbyUIState const& state, GameSpec const& spec) {
  UICmd::CreateGame command;
  command.description.assign(state.description.data(), strnlen(state.description.data(), state.description.size()));
  ToBytes(spec, command.specBytes);
  return command;
}

namespace {

// The settings of a friendly room, one widget for each entry of the game's schema.
void CustomSettingsWidgets(GameSettings& settings, GameSettingsSchema const& schema) {
  for (SchemaEntry const& entry : schema) {
    ImGui::SetNextItemWidth(kFieldWidth);
    if (entry.kind == SchemaEntry::Integer) {
      std::int32_t& value = settings.ints[entry.key];
      ImGui::SliderInt(entry.label.c_str(), &value, entry.minimum, entry.maximum, "%d", ImGuiSliderFlags_AlwaysClamp);
      continue;
    }
    std::string& value = settings.strings[entry.key];
    if (ImGui::BeginCombo(entry.label.c_str(), value.c_str())) {
      for (std::string const& choice : entry.choices) {
        if (ImGui::Selectable(choice.c_str(), choice == value)) {
          value = choice;
        }
      }
      ImGui::EndCombo();
    }
  }
}

// A combo over the names of a list of challenges or matches.
void NamedSettingsCombo(char const* label, std::vector<NamedGameSettings> const& list, std::uint32_t& choice) {
  ImGui::SetNextItemWidth(kFieldWidth);
  if (ImGui::BeginCombo(label, list[choice].name.c_str())) {
    for (std::uint32_t i = 0; i < list.size(); ++i) {
      if (ImGui::Selectable(list[i].name.c_str(), i == choice)) {
        choice = i;
      }
    }
    ImGui::EndCombo();
  }
}

}  // namespace

void RenderCreateRoomPage(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands) {
  ImGui::SetNextItemWidth(kFieldWidth);
  EnumCombo<Game>("Game", state.game);
  ImGui::SetNextItemWidth(kFieldWidth);
  ImGui::InputText("Room description", state.description.data(), state.description.size());
  ImGui::SetNextItemWidth(kFieldWidth);
  std::uint8_t const lowest = 10;
  std::uint8_t const highest = 35;
  ImGui::SliderScalar("Delay frames", ImGuiDataType_U8, &state.delayFrames, &lowest, &highest, "%u",
                      ImGuiSliderFlags_AlwaysClamp);
  ImGui::SetNextItemWidth(kFieldWidth);
  EnumCombo<GameType>("Game type", state.gameType);

  IGame const* game = FindGame(app.games(), state.game);
  std::optional<GameSpec> chosen;
  // The settings scroll in a region of their own, so that the buttons under them stay on the screen.
  float const height = ImGui::GetContentRegionAvail().y - ImGui::GetFrameHeightWithSpacing();
  if (ImGui::BeginChild("RoomSettings", ImVec2(0.0f, std::max(height, 40.0f)))) {
    if (game != nullptr) {
      // Mends a remembered choice out of range, or a map not of this game, before the widgets read them.
      CreateRoomSpec(state, *game);
      if (state.gameType == GameType::CoopChallenge) {
        if (game->lookup.coopChallenges.empty()) {
          ImGui::TextUnformatted("No co-op challenges available for this game.");
        } else {
          NamedSettingsCombo("Challenge", game->lookup.coopChallenges, CoopChoice(state));
        }
      } else if (state.gameType == GameType::RankedMatch) {
        if (game->lookup.rankedMatches.empty()) {
          ImGui::BeginDisabled();
          ImGui::SetNextItemWidth(kFieldWidth);
          if (ImGui::BeginCombo("Ranked match", "")) {
            ImGui::EndCombo();
          }
          ImGui::EndDisabled();
        } else {
          NamedSettingsCombo("Ranked match", game->lookup.rankedMatches, RankedChoice(state));
        }
      } else if (static_cast<std::size_t>(state.game) < state.customSettings.size()) {
        CustomSettingsWidgets(state.customSettings[static_cast<std::size_t>(state.game)], game->schema);
      }
    }
    // The GameSpec again, for what the widgets chose this frame.
    chosen = game != nullptr ? CreateRoomSpec(state, *game) : std::nullopt;
    if (chosen && state.gameType != GameType::Friendly) {
      ShowGameSettings(*game, *chosen);
    }
  }
  ImGui::EndChild();
  chosen = game != nullptr ? CreateRoomSpec(state, *game) : std::nullopt;
  {
    ScopedDisableIf disable(!chosen.has_value());
    if (ImGui::Button("Create room") && chosen) {
      commands.emplace_back(CreateRoomCommand(state, *chosen));
    }
  }
  ImGui::SameLine();
  if (ImGui::Button("Cancel")) {
    state.page = 0;
  }
}
