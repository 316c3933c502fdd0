#include "ui/UI.h"

#include <imgui.h>

#include "sim/Games.h"
#include "app/IAppState.h"
#include "ui/BannerAndVersion.h"

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

namespace {

constexpr ImGuiWindowFlags kFullWindowFlags =
    ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
    ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus |
    ImGuiWindowFlags_NoNavFocus;

// The offline screen as far as it goes in this client: the banner and the version. The main menu's
// buttons come with the offline pages.
void ShowOfflineScreen(SDL_Texture* banner) {
  ImGuiViewport const* viewport = ImGui::GetMainViewport();
  ImGui::SetNextWindowPos(viewport->Pos);
  ImGui::SetNextWindowSize(viewport->Size);
  if (ImGui::Begin("MainMenu", nullptr, kFullWindowFlags)) {
    ShowBannerAndVersion(banner);
  }
  ImGui::End();
}

}  // namespace

void UI::show(IAppState const& state, SDL_Texture* banner, std::vector<UICmd>&) {
  Games const& games = state.games();
  std::vector<GameSettings>& customSettings = state_->lobby.customSettings;
  if (customSettings.size() < games.size()) {
    for (std::size_t i = 0; i < games.size(); ++i) {
      customSettings.push_back(DefaultSettingsFromSchema(games.refGame(static_cast<Game>(i)).schema));
    }
  }

  int const mode = state.mode();
  if (mode == 0) {
    ShowOfflineScreen(banner);
  }
  // Modes 1 and 2 get the lobby pages and modes 3 to 5 the in-game overlays, once those pages exist;
  // until then a connected or playing client shows only what its state draws itself.

  if (state.isConnected()) {
    ResetOfflineUIState(state_->offline);
  }
}
