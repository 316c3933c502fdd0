#include "ui/UI.h"

#include <imgui.h>

#include "sim/Games.h"
#include "app/IAppState.h"
#include "sim/IRunningGame.h"
#include "ui/InGameUI.h"
#include "ui/LobbyUI.h"
#include "ui/OfflineUI.h"
#include "ui/ServerLog.h"

struct UI::State {
  OfflineUIState offline = CreateOfflineUIState();
  LobbyUIState lobby;
};

UI::UI() : state_(std::make_unique<State>()) {}
UI::UI(UI&&) noexcept = default;
UI& UI::operator=(UI&&) noexcept = default;
UI::~UI() = default;

OfflineUIState& UI::offlineState() { return state_->offline; }
LobbyUIState& UI::lobbyState() { return state_->lobby; }


void UI::show(IAppState const& state, SDL_Texture* banner, std::vector<UICmd>& commands) {
  Games const& games = state.games();
  std::vector<GameSettings>& customSettings = state_->lobby.customSettings;
  if (customSettings.size() < games.size()) {
    for (std::size_t i = 0; i < games.size(); ++i) {
      customSettings.push_back(DefaultSettingsFromSchema(games.refGame(static_cast<Game>(i)).schema));
    }
  }

  int const mode = state.mode();
  if (mode == 0) {
    RenderOfflineUI(state_->offline, banner, state, commands);
  } else if (mode == 1 || mode == 2) {
    LobbyUI(state_->lobby, state, commands);
  } else if (state.isInGame()) {
    GameData const& data = state.gameData();
    if (data.game != nullptr) {
      std::optional<GameResult> result;
      if (state.isGameEnded()) {
        result.emplace();
        state.getCurrentGameResult(*result);
      }
      unsigned short const local = static_cast<unsigned short>(data.localPlayer < 0 ? 0 : data.localPlayer);
      if (state.isConnected()) {
        ShowInGameUI(*data.game, data.players, local, data.disconnected, data.stalledFrames, result, commands);
      } else {
        ShowInGameUI(*data.game, data.players, local, result, commands);
      }
    }
  }
  if (state.isConnected()) {
    // The main menu is what comes back after a disconnection.
    ResetOfflineUIState(state_->offline);
    std::deque<ServerLogEntry> const* log = state.lobbyData().serverLog;
    if (log != nullptr && ShowServerLog(*log)) {
      commands.emplace_back(UICmd::MarkAllServerLogEntriesSeen{});
    }
  }
}
