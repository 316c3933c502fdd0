#include "ui/LobbyUI.h"

#include <imgui.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "app/IAppState.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyState.h"
#include "net/PlayerNames.h"
#include "net/ServerLogEntry.h"
#include "rankings/HighScoreTables.h"
#include "rankings/PlayerRatings.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/PlayerSlots.h"
#include "ui/CreateRoomPage.h"
#include "ui/GameResultsDisplay.h"
#include "ui/ImGuiColours.h"
#include "ui/PlayerTooltip.h"
#include "ui/ScopedDisableIf.h"
#include "ui/ServerLog.h"
#include "ui/StartPage.h"

// ---------------------------------------------------------------------------------------------------------
// Helpers
// ---------------------------------------------------------------------------------------------------------

namespace {

constexpr ImVec4 kNameColour(0.9f, 0.9f, 0.9f, 1.0f);
constexpr int kTopPlayers = 50;

ImVec4 SlotColour(std::size_t slot, float alpha = 1.0f) {
  PlayerSlot const& entry = SLOTS[slot % SLOTS.size()];
  return ImVec4(entry.red, entry.green, entry.blue, alpha);
}

PlayerInLobby const* FindPlayer(LobbyState const* lobby, unsigned short number) {
  if (lobby == nullptr || number >= lobby->players.size() || !lobby->players[number].has_value()) {
    return nullptr;
  }
  return &*lobby->players[number];
}

GameRoom const* FindRoom(LobbyState const* lobby, int room) {
  if (lobby == nullptr || room < 0 || static_cast<std::size_t>(room) >= lobby->rooms.size() ||
      !lobby->rooms[static_cast<std::size_t>(room)].has_value()) {
    return nullptr;
  }
  return &*lobby->rooms[static_cast<std::size_t>(room)];
}

// A player's name as the server last told it; a number the mirror doesn't hold by its number.
std::string PlayerName(LobbyData const& data, unsigned short number) {
  PlayerInLobby const* player = FindPlayer(data.lobbyState, number);
  if (player == nullptr) {
    return "Player " + std::to_string(number);
  }
  if (data.playerNames == nullptr) {
    return GetShortId(player->playerId, 3);
  }
  return data.playerNames->playerName(player->playerId);
}

void NameWithTooltip(LobbyData const& data, unsigned short number) {
  std::string const name = PlayerName(data, number);
  ImGui::TextColored(kNameColour, "%s", name.c_str());
  PlayerInLobby const* player = FindPlayer(data.lobbyState, number);
  if (player != nullptr && ImGui::IsItemHovered()) {
    PlayerTooltip(data.glowHordeRatings, data.aviatorsRatings, player->playerId);
  }
}

template <typename T>
T At(std::vector<T> const& list, std::size_t index, T fallback) {
  return index < list.size() ? list[index] : fallback;
}

bool AtBool(std::vector<bool> const& list, std::size_t index) { return index < list.size() && list[index]; }

// Starts a child window beside the previous one, each (available width - 200) / 2 wide, the first at x 100.
void SideBySide(char const* first, char const* second, auto const& drawFirst, auto const& drawSecond) {
  float const width = std::max(100.0f, (ImGui::GetContentRegionAvail().x - 200.0f) / 2.0f);
  ImGui::SetCursorPosX(100.0f);
  // The two have no background of their own; the colour is read when a child begins.
  ImGui::PushStyleColor(ImGuiCol_ChildBg, ImVec4(0.0f, 0.0f, 0.0f, 0.0f));
  bool open = ImGui::BeginChild(first, ImVec2(width, 0.0f));
  ImGui::PopStyleColor();
  if (open) {
    drawFirst();
  }
  ImGui::EndChild();
  ImGui::SameLine();
  ImGui::PushStyleColor(ImGuiCol_ChildBg, ImVec4(0.0f, 0.0f, 0.0f, 0.0f));
  open = ImGui::BeginChild(second, ImVec2(width, 0.0f));
  ImGui::PopStyleColor();
  if (open) {
    drawSecond();
  }
  ImGui::EndChild();
}

// A button in the game room's blue.
bool BlueButton(char const* label) {
  ImGui::PushStyleColor(ImGuiCol_Button, ImVec4(0.1f, 0.3f, 0.6f, 1.0f));
  ImGui::PushStyleColor(ImGuiCol_ButtonHovered, ImVec4(0.2f, 0.4f, 0.8f, 1.0f));
  ImGui::PushStyleColor(ImGuiCol_ButtonActive, ImVec4(0.1f, 0.2f, 0.5f, 1.0f));
  bool const pressed = ImGui::Button(label, ImVec2(140.0f, 0.0f));
  ImGui::PopStyleColor(3);
  return pressed;
}

// A coloured slot button, 30 by 20, bordered in white when marked.
bool SlotButton(char const* id, std::size_t slot, bool marked) {
  ImGui::PushStyleColor(ImGuiCol_Button, SlotColour(slot, 0.8f));
  ImGui::PushStyleColor(ImGuiCol_ButtonHovered, SlotColour(slot, 1.0f));
  ImGui::PushStyleColor(ImGuiCol_ButtonActive, SlotColour(slot, 0.6f));
  ImGui::PushStyleColor(ImGuiCol_Border, marked ? ImVec4(1.0f, 1.0f, 1.0f, 1.0f) : ImVec4(0.0f, 0.0f, 0.0f, 0.0f));
  ImGui::PushStyleVar(ImGuiStyleVar_FrameBorderSize, marked ? 2.0f : 0.0f);
  bool const pressed = ImGui::Button(id, ImVec2(30.0f, 20.0f));
  ImGui::PopStyleVar();
  ImGui::PopStyleColor(4);
  return pressed;
}

void GreyLabel(char const* label) {
  ImGui::TextColored(ImGuiColours::grey, "%s", label);
  ImGui::SameLine();
}

}  // namespace

unsigned short LocalRoomIndex(LobbyState const* lobby, unsigned short localPlayer) {
  PlayerInLobby const* player = FindPlayer(lobby, localPlayer);
  return player != nullptr ? player->roomIndex : PlayerInLobby::kNoRoom;
}

char const* UpdateLobbyPage(LobbyUIState& state, unsigned short roomIndex) {
  if (roomIndex != PlayerInLobby::kNoRoom) {
    state.page = 2;
    return "Game Room";
  }
  if (state.page == 2 || state.page < 0 || state.page > 2) {
    state.page = 0;
  }
  return state.page == 0 ? "Multiplayer" : "Create Room";
}

GameRoomControls GameRoomControlsFor(GameRoom const& room, unsigned short localPlayer) {
  GameRoomControls controls;
  controls.allReady = true;
  for (std::size_t i = 0; i < room.players.size(); ++i) {
    bool const ready = AtBool(room.ready, i);
    controls.allReady = controls.allReady && ready;
    if (room.players[i] == localPlayer && !controls.inRoom) {
      controls.inRoom = true;
      controls.isHost = i == 0;
      controls.localReady = ready;
      controls.slotChoice = At<short>(room.slotChoices, i, -1);
    }
  }
  controls.allReady = controls.allReady && !room.players.empty();
  return controls;
}

std::optional<UICmd::MoveToSlot> SlotClick(std::int16_t currentChoice, std::int16_t clicked) {
  if (currentChoice == clicked) {
    return std::nullopt;
  }
  return UICmd::MoveToSlot{clicked};
}

char const* RoomKindText(GameSpec const& spec) {
  switch (spec.settings.index()) {
    case 0: return "Co-op challenge";
    case 1: return "Ranked match";
    default: return "Friendly game";
  }
}

char const* RoomPlayerStatus(LobbyState const& lobby, GameRoom const& room, std::size_t place) {
  unsigned short index = 0;
  if (place < room.players.size() && lobby.playerIsInRunningGame(room.players[place], index)) {
    return "In game";
  }
  return AtBool(room.ready, place) ? "Ready" : "In lobby";
}

// ---------------------------------------------------------------------------------------------------------
// The multiplayer page's tabs
// ---------------------------------------------------------------------------------------------------------

namespace {

void GameResultsTab(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  std::vector<unsigned int> const numbers = app.getPlayedGames();
  if (state.selectedResultRow >= static_cast<int>(numbers.size())) {
    state.selectedResultRow = -1;
  }
  float const half = ImGui::GetContentRegionAvail().x / 2.0f;
  if (ImGui::BeginChild("GameResultsList", ImVec2(half, 0.0f))) {
    if (numbers.empty()) {
      ImGui::TextUnformatted("No game results yet");
    } else {
      ShowGameResultsTable(app, numbers, state.selectedResultRow);
      if (state.selectedResultRow >= 0) {
        state.selectedGameNumber = numbers[static_cast<std::size_t>(state.selectedResultRow)];
      }
    }
  }
  ImGui::EndChild();
  ImGui::SameLine();
  if (ImGui::BeginChild("GameResultsDetails", ImVec2(0.0f, 0.0f))) {
    ImGui::Indent();
    if (state.selectedResultRow < 0) {
      ImGui::TextUnformatted("Select a game result to show details");
    } else {
      unsigned int const number = numbers[static_cast<std::size_t>(state.selectedResultRow)];
      GameResults const& results = app.refPlayedGameResults(number);
      GameSpec const spec = ParseGameSpec(results.specBytes);
      IGame const* game = FindGame(app.games(), spec.game);
      if (game == nullptr) {
        ImGui::TextColored(ImGuiColours::red, "A game that this client doesn't know");
      } else {
        ShowGameSettings(*game, spec);
      }
      ShowGameResults(app, spec.game, data.playerNames, data.glowHordeRatings, data.aviatorsRatings, results);
      if (results.finished) {
        ImGui::SeparatorText("Recording");
        RecordingStatus const status = app.getRecordingStatus(number);
        if (status.onDisk) {
          ImGui::TextColored(ImGuiColours::green, "Recording downloaded and available locally");
        } else if (status.downloadInProgress) {
          ImGui::TextColored(ImGuiColours::orange, "Downloading recording...");
        } else if (ImGui::Button("Download recording")) {
          commands.emplace_back(UICmd::RequestRecording{static_cast<std::uint16_t>(number)});
        }
      }
    }
    ImGui::Unindent();
  }
  ImGui::EndChild();
}

void HighScoresTab(LobbyUIState& state, IAppState const& app) {
  LobbyData const& data = app.lobbyData();
  IGame const* glowHorde = FindGame(app.games(), Game::GlowHorde);
  if (data.highScores == nullptr || data.playerNames == nullptr || glowHorde == nullptr) {
    ImGui::TextUnformatted("No high scores yet");
    return;
  }
  std::optional<unsigned short> const shown = data.highScores->render(app, glowHorde->lookup.coopChallenges,
                                                                      *data.playerNames);
  if (shown) {
    std::vector<unsigned int> const numbers = app.getPlayedGames();
    auto const found = std::find(numbers.begin(), numbers.end(), *shown);
    if (found != numbers.end()) {
      state.selectedResultRow = static_cast<int>(found - numbers.begin());
      state.selectedGameNumber = *shown;
      state.showResultsTab = true;
    }
  }
}

void RankingsTab(LobbyData const& data, PlayerRatings const* ratings) {
  if (ratings == nullptr || ratings->size() == 0) {
    ImGui::TextUnformatted("No ranked players yet");
    return;
  }
  if (!ImGui::BeginTable("RankingsTable", 3, ImGuiTableFlags_Borders | ImGuiTableFlags_RowBg)) {
    return;
  }
  ImGui::TableSetupColumn("Rank");
  ImGui::TableSetupColumn("Player");
  ImGui::TableSetupColumn("Rating");
  ImGui::TableHeadersRow();
  int rank = 0;
  for (auto const& [id, rating] : ratings->getTopPlayers(kTopPlayers)) {
    ++rank;
    ImGui::PushID(rank);
    ImGui::TableNextRow();
    ImGui::TableSetColumnIndex(0);
    ImGui::Text("%d", rank);
    ImGui::TableSetColumnIndex(1);
    std::string const name = data.playerNames != nullptr ? data.playerNames->playerName(id) : GetShortId(id, 3);
    ImGui::TextUnformatted(name.c_str());
    if (ImGui::IsItemHovered()) {
      PlayerTooltip(data.glowHordeRatings, data.aviatorsRatings, id);
    }
    ImGui::TableSetColumnIndex(2);
    ImGui::Text("%lld", static_cast<long long>(rating));
    ImGui::PopID();
  }
  ImGui::EndTable();
}

void MultiplayerPage(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  float const height = ImGui::GetContentRegionAvail().y - ImGui::GetFrameHeightWithSpacing();
  if (ImGui::BeginChild("MultiplayerContent", ImVec2(0.0f, height))) {
    if (ImGui::BeginTabBar("MultiplayerTabs")) {
      if (ImGui::BeginTabItem("Rooms and players")) {
        SideBySide("ServerOverview", "GameRoomDetails", [&] { RenderServerOverview(state, app, commands); },
                   [&] { RenderGameRoomDetails(state, app, state.selectedRoom, commands); });
        ImGui::EndTabItem();
      }
      ImGuiTabItemFlags const resultsFlags = state.showResultsTab ? ImGuiTabItemFlags_SetSelected : 0;
      state.showResultsTab = false;
      if (ImGui::BeginTabItem("Game results", nullptr, resultsFlags)) {
        GameResultsTab(state, app, commands);
        ImGui::EndTabItem();
      }
      if (ImGui::BeginTabItem("High scores")) {
        HighScoresTab(state, app);
        ImGui::EndTabItem();
      }
      if (ImGui::BeginTabItem("Glow Horde rankings")) {
        RankingsTab(data, data.glowHordeRatings);
        ImGui::EndTabItem();
      }
      if (ImGui::BeginTabItem("Aviators rankings")) {
        RankingsTab(data, data.aviatorsRatings);
        ImGui::EndTabItem();
      }
      if (ImGui::BeginTabItem("Name change")) {
        RenderNameChangeUI(app, state, commands);
        ImGui::EndTabItem();
      }
      ImGui::EndTabBar();
    }
  }
  ImGui::EndChild();
  if (ImGui::Button("Disconnect from server")) {
    commands.emplace_back(UICmd::DisconnectFromServer{});
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// Pages
// ---------------------------------------------------------------------------------------------------------

void LobbyUI(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  unsigned short const room = LocalRoomIndex(data.lobbyState, data.localPlayerNumber);
  char const* title = UpdateLobbyPage(state, room);
  if (std::optional<ui::ScopedEnd> page = ui::StartPage(title)) {
    if (state.page == 2) {
      SideBySide("GameLobby", "GameRoomDetails", [&] { RenderGameLobby(app, state, commands); },
                 [&] { RenderGameRoomDetails(state, app, room, commands); });
    } else if (state.page == 1) {
      RenderCreateRoomPage(state, app, commands);
    } else {
      MultiplayerPage(state, app, commands);
    }
  }
  if (data.serverLog != nullptr) {
    RenderErrorToast(*data.serverLog);
  }
}

void RenderServerOverview(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  LobbyState const* lobby = data.lobbyState;
  int hovered = -1;
  for (std::size_t number = 0; lobby != nullptr && number < lobby->rooms.size(); ++number) {
    if (!lobby->rooms[number].has_value()) {
      continue;
    }
    GameRoom const& room = *lobby->rooms[number];
    int const roomNumber = static_cast<int>(number);
    ImVec4 background(0.0f, 0.0f, 0.0f, 0.0f);
    if (roomNumber == state.selectedRoom) {
      background = ImVec4(0.2f, 0.2f, 0.5f, 0.3f);
    } else if (roomNumber == state.hoveredRoom) {
      background = ImVec4(0.2f, 0.2f, 0.5f, 0.1f);
    }
    ImGui::PushStyleColor(ImGuiCol_ChildBg, background);
    bool const open = ImGui::BeginChild(static_cast<ImGuiID>(number + 1), ImVec2(0.0f, 0.0f),
                                        ImGuiChildFlags_Borders | ImGuiChildFlags_AutoResizeY);
    ImGui::PopStyleColor();
    if (open) {
      ImGui::Text("Game Room %d", roomNumber + 1);
      ImGui::Indent();
      if (!room.description.empty()) {
        GreyLabel("Description:");
        ImGui::TextColored(ImGuiColours::orange, "%s", room.description.c_str());
      }
      GameSpec const spec = ParseGameSpec(room.specBytes);
      ImGui::TextUnformatted(RoomKindText(spec));
      GreyLabel("Map:");
      IGame const* game = FindGame(app.games(), spec.game);
      std::string map = "(unknown)";
      if (game != nullptr) {
        if (std::holds_alternative<GameSettings>(spec.settings)) {
          auto const found = std::get<GameSettings>(spec.settings).strings.find("map");
          if (found != std::get<GameSettings>(spec.settings).strings.end()) map = found->second;
        } else {
          std::size_t const index = spec.settings.index() == 0 ? std::get<CoopChallengeIndex>(spec.settings).index
                                                               : std::get<RankedMatchIndex>(spec.settings).index;
          auto const& list = spec.settings.index() == 0 ? game->lookup.coopChallenges : game->lookup.rankedMatches;
          if (index < list.size()) {
            auto const found = list[index].settings.strings.find("map");
            if (found != list[index].settings.strings.end()) map = found->second;
          }
        }
      }
      ImGui::TextColored(ImGuiColours::orange, "%s", map.c_str());
      GreyLabel("Allowed player counts:");
      for (int count = spec.minPlayers; count <= std::min<int>(spec.maxPlayers, spec.minPlayers + 15); ++count) {
        ImGui::TextColored(ImGuiColours::orange, "%d", count);
        ImGui::SameLine();
      }
      ImGui::NewLine();
      if (ImGui::BeginTable("Players", 2, ImGuiTableFlags_Borders)) {
        ImGui::TableSetupColumn("Name");
        ImGui::TableSetupColumn("Status");
        ImGui::TableHeadersRow();
        for (std::size_t place = 0; place < room.players.size(); ++place) {
          ImGui::PushID(static_cast<int>(place));
          ImGui::TableNextRow();
          ImGui::TableSetColumnIndex(0);
          NameWithTooltip(data, room.players[place]);
          if (room.players[place] == data.localPlayerNumber) {
            ImGui::SameLine();
            ImGui::TextColored(ImGuiColours::green, "(you)");
          }
          ImGui::TableSetColumnIndex(1);
          char const* status = RoomPlayerStatus(*lobby, room, place);
          ImVec4 const colour = std::strcmp(status, "In game") == 0 ? ImGuiColours::red
                                : std::strcmp(status, "Ready") == 0  ? ImGuiColours::green
                                                                     : ImGuiColours::grey;
          ImGui::TextColored(colour, "%s", status);
          ImGui::PopID();
        }
        ImGui::EndTable();
      }
      if (room.runningGame.has_value()) {
        ImGui::TextColored(ImGuiColours::red, "Game running");
      } else {
        int const free = std::max(0, static_cast<int>(room.maxPlayers) - static_cast<int>(room.players.size()));
        ImGui::TextUnformatted("Slots available: ");
        ImGui::SameLine(0.0f, 0.0f);
        ImGui::TextColored(free != 0 ? ImGuiColours::green : ImGuiColours::red, "%d", free);
        if (free != 0 && CanAddToGame(room) && ImGui::Button("Join this room")) {
          commands.emplace_back(UICmd::MoveToGameRoom{static_cast<std::uint16_t>(number)});
        }
      }
      ImGui::Unindent();
      if (ImGui::IsWindowHovered(ImGuiHoveredFlags_ChildWindows)) {
        hovered = roomNumber;
        if (ImGui::IsMouseClicked(ImGuiMouseButton_Left) && !ImGui::IsAnyItemHovered()) {
          state.selectedRoom = roomNumber;
        }
      }
    }
    ImGui::EndChild();
  }
  state.hoveredRoom = hovered;

  bool anyoneOutside = false;
  for (std::size_t number = 0; lobby != nullptr && number < lobby->players.size(); ++number) {
    anyoneOutside = anyoneOutside || (lobby->players[number] && lobby->players[number]->roomIndex == PlayerInLobby::kNoRoom);
  }
  if (anyoneOutside) {
    ImGui::TextUnformatted("Players not in a game");
    if (ImGui::BeginTable("Players not in a game", 1, ImGuiTableFlags_Borders)) {
      ImGui::TableSetupColumn("Name");
      ImGui::TableHeadersRow();
      for (std::size_t number = 0; number < lobby->players.size(); ++number) {
        if (!lobby->players[number] || lobby->players[number]->roomIndex != PlayerInLobby::kNoRoom) {
          continue;
        }
        ImGui::PushID(static_cast<int>(number));
        ImGui::TableNextRow();
        ImGui::TableSetColumnIndex(0);
        NameWithTooltip(data, static_cast<unsigned short>(number));
        if (number == data.localPlayerNumber) {
          ImGui::SameLine();
          ImGui::TextColored(ImGuiColours::green, "(you)");
        }
        ImGui::PopID();
      }
      ImGui::EndTable();
    }
  }
  if (ImGui::Button("Create a game room")) {
    state.page = 1;
  }
}

void RenderGameRoomDetails(LobbyUIState&, IAppState const& app, int room, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  GameRoom const* details = FindRoom(data.lobbyState, room);
  if (details == nullptr) {
    ImGui::TextUnformatted("Select a room to show here");
    return;
  }
  ImGui::Spacing();
  ImGui::Indent();
  if (!details->description.empty()) {
    ImGui::TextColored(ImGuiColours::orange, "Room description:");
    ImGui::SameLine();
    ImGui::TextUnformatted(details->description.c_str());
  }
  if (details->repeatedIdsAllowed) {
    ImGui::TextColored(ImGuiColours::orange, "Repeated player ids are allowed.");
  }
  GameSpec const spec = ParseGameSpec(details->specBytes);
  if (IGame const* game = FindGame(app.games(), spec.game)) {
    ShowGameSettings(*game, spec);
  } else {
    ImGui::TextColored(ImGuiColours::red, "A game that this client doesn't know");
  }
  if (details->lastResultsIndex.has_value()) {
    std::vector<unsigned int> const numbers = app.getPlayedGames();
    if (std::find(numbers.begin(), numbers.end(), *details->lastResultsIndex) != numbers.end()) {
      ImGui::SeparatorText("Last Game Results");
      ShowGameResults(app, spec.game, data.playerNames, data.glowHordeRatings, data.aviatorsRatings,
                      app.refPlayedGameResults(*details->lastResultsIndex));
    }
  }
  if (LocalRoomIndex(data.lobbyState, data.localPlayerNumber) != room && ImGui::Button("Move here")) {
    commands.emplace_back(UICmd::MoveToGameRoom{static_cast<std::uint16_t>(room)});
  }
  ImGui::Unindent();
}

void RenderGameLobby(IAppState const& app, LobbyUIState& state, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  GameRoom const* room = FindRoom(data.lobbyState, LocalRoomIndex(data.lobbyState, data.localPlayerNumber));
  if (room == nullptr) {
    return;
  }
  GameRoomControls const controls = GameRoomControlsFor(*room, data.localPlayerNumber);
  float const available = ImGui::GetContentRegionAvail().x;
  float const width = std::min(600.0f, available - 40.0f);
  ImGui::SetCursorPosX(ImGui::GetCursorPosX() + std::max(0.0f, (available - width) / 2.0f));
  ImGui::BeginGroup();
  if (ImGui::BeginChild("PlayersList", ImVec2(width, 350.0f), ImGuiChildFlags_Borders)) {
    if (ImGui::BeginChild("ScrollArea")) {
      for (std::size_t place = 0; place < room->players.size(); ++place) {
        unsigned short const number = room->players[place];
        PlayerInLobby const* player = FindPlayer(data.lobbyState, number);
        if (player == nullptr) {
          continue;
        }
        unsigned short index = 0;
        bool const inGame = data.lobbyState->playerIsInRunningGame(number, index);
        ImGui::PushID(static_cast<int>(place));
        DrawPlayerCard(app, state, number, *player, place == 0, number == data.localPlayerNumber, width,
                       At<short>(room->assignedSlots, place, 0), At<short>(room->slotChoices, place, -1) != -1,
                       AtBool(room->ready, place), inGame, commands);
        ImGui::PopID();
      }
    }
    ImGui::EndChild();
  }
  ImGui::EndChild();

  ImGui::AlignTextToFramePadding();
  ImGui::TextUnformatted("Slot: ");
  for (std::int16_t slot = 0; slot < static_cast<std::int16_t>(SLOTS.size()); ++slot) {
    ImGui::SameLine();
    ImGui::PushID(slot);
    if (SlotButton("##slot", static_cast<std::size_t>(slot), controls.slotChoice == slot)) {
      if (auto command = SlotClick(controls.slotChoice, slot)) commands.emplace_back(*command);
    }
    ImGui::PopID();
  }
  ImGui::SameLine();
  ImGui::PushStyleColor(ImGuiCol_Border, controls.slotChoice == -1 ? ImVec4(1, 1, 1, 1) : ImVec4(0, 0, 0, 0));
  ImGui::PushStyleVar(ImGuiStyleVar_FrameBorderSize, controls.slotChoice == -1 ? 2.0f : 0.0f);
  bool const autoPressed = ImGui::Button("Auto", ImVec2(0.0f, 20.0f));
  ImGui::PopStyleVar();
  ImGui::PopStyleColor();
  if (autoPressed) {
    if (auto command = SlotClick(controls.slotChoice, -1)) commands.emplace_back(*command);
  }

  if (!controls.localReady) {
    ImGui::TextUnformatted("Please click in, when ready.");
  }
  if (BlueButton("LEAVE ROOM")) {
    commands.emplace_back(UICmd::LeaveGameRoom{});
  }
  if (controls.isHost) {
    ImGui::SameLine();
    ScopedDisableIf disable(!controls.allReady, "All players must be ready");
    if (BlueButton("START GAME")) {
      commands.emplace_back(UICmd::StartGame{});
    }
  }
  ImGui::EndGroup();
}

void DrawPlayerCard(IAppState const& app, LobbyUIState&, unsigned short playerNumber, PlayerInLobby const& player,
                    bool isHost, bool isLocal, float width, int slot, bool slotChosen, bool ready, bool inGame,
                    std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  ImVec2 const origin = ImGui::GetCursorScreenPos();
  ImVec2 const size(std::max(60.0f, width - 50.0f), 70.0f);
  ImVec2 const corner(origin.x + size.x, origin.y + size.y);
  bool const hovered = ImGui::IsMouseHoveringRect(origin, corner) && ImGui::IsWindowHovered();
  float const lift = hovered ? 0.1f : 0.0f;
  ImVec4 const fill = isLocal ? ImVec4(0.25f + lift, 0.2f + lift, 0.1f + lift, 1.0f)
                              : ImVec4(0.15f + lift, 0.15f + lift, 0.2f + lift, 1.0f);
  ImDrawList* draw = ImGui::GetWindowDrawList();
  draw->AddRectFilled(origin, corner, ImGui::GetColorU32(fill), 6.0f);
  if (isLocal) {
    draw->AddRect(origin, corner, ImGui::GetColorU32(ImVec4(1.0f, 0.8f, 0.2f, 0.8f)), 6.0f, 0, 2.0f);
  }

  ImGui::SetCursorScreenPos(ImVec2(origin.x + 50.0f, origin.y + 18.0f - 6.0f));
  ImGui::SetWindowFontScale(1.3f);
  std::string const name = PlayerName(data, playerNumber);
  ImGui::TextColored(kNameColour, "%s", name.c_str());
  if (ImGui::IsItemHovered()) {
    PlayerTooltip(data.glowHordeRatings, data.aviatorsRatings, player.playerId);
  }
  ImGui::SetWindowFontScale(1.0f);
  if (isHost) {
    ImGui::SameLine();
    ImGui::TextColored(ImGuiColours::green, " [HOST]");
  }
  ImGui::SameLine();
  SlotButton("##cardslot", static_cast<std::size_t>(slot < 0 ? 0 : slot), slotChosen);

  ImGui::SetCursorScreenPos(ImVec2(origin.x + 50.0f, origin.y + 42.0f));
  if (inGame) {
    ImGui::TextColored(ImGuiColours::red, "In Game");
  } else {
    bool value = ready;
    ImGui::BeginDisabled(!isLocal);
    if (ImGui::Checkbox("Ready", &value) && isLocal) {
      commands.emplace_back(UICmd::SetReadyState{value});
    }
    ImGui::EndDisabled();
  }
  ImGui::SetCursorScreenPos(origin);
  ImGui::Dummy(ImVec2(size.x, 80.0f - ImGui::GetStyle().ItemSpacing.y));
}

void RenderNameChangeUI(IAppState const& app, LobbyUIState& state, std::vector<UICmd>& commands) {
  LobbyData const& data = app.lobbyData();
  ImGui::TextColored(ImGuiColours::orange, "Current name:");
  ImGui::SameLine();
  ImGui::TextUnformatted(PlayerName(data, data.localPlayerNumber).c_str());
  ImGui::SetNextItemWidth(300.0f);
  bool const entered = ImGui::InputText("New name", state.newName.data(), state.newName.size(),
                                        ImGuiInputTextFlags_EnterReturnsTrue);
  bool const empty = state.newName[0] == '\0';
  bool clicked = false;
  {
    ScopedDisableIf disable(empty, "Please enter a new name");
    clicked = ImGui::Button("Change Name");
  }
  if ((clicked || entered) && !empty) {
    commands.emplace_back(UICmd::ChangeName{std::string(state.newName.data(), strnlen(state.newName.data(), state.newName.size()))});
    state.newName.fill('\0');
  }
}
