#include "ui/OfflineUI.h"

#include <imgui.h>

#include <algorithm>
#include <array>
#include <type_traits>
#include <variant>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "accounts/CredentialsPicker.h"
#include "accounts/CredentialsString.h"
#include "app/IAppState.h"
#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/Recording.h"
#include "ui/BannerAndVersion.h"
#include "ui/CentredButton.h"
#include "ui/CentredGhostButton.h"
#include "ui/CentredText.h"
#include "ui/FullWindowFlags.h"
#include "ui/GameResultsDisplay.h"
#include "ui/ImGuiColours.h"
#include "ui/ScopedDisableIf.h"
#include "ui/StartPage.h"
#include "ui/TutorialRow.h"
#include "ui/VersionString.h"
#include "ui/Website.h"

namespace {

using Page = decltype(OfflineUIState::page);
using NextPage = std::optional<Page>;

constexpr ImVec2 kMenuButton(320.0f, 0.0f);
constexpr ImVec4 kLinkBlue(0.2f, 0.2f, 1.0f, 1.0f);

// A link to the game's website under path, with the client's version as "v". Once opening it has failed
// the page says where to go, for the rest of the run.
void SiteLink(char const* label, char const* path, bool& failed) {
  if (CentredGhostButton(label, ImVec2(0.0f, 0.0f))) {
    std::string const url = WebsiteAddress() + path + "?v=" + VersionString(kClientVersion);
    failed = !SDL_OpenURL(url.c_str());
  }
  if (failed) {
    CentredText(std::string("Failed to open browser. Please visit:"), ImGuiColours::red);
    CentredText(WebsiteAddress() + path, kLinkBlue);
  }
}

NextPage MainMenu(SDL_Texture* banner, IAppState const& app, std::vector<UICmd>& commands) {
  static bool linkFailed = false;
  NextPage next;
  ImGuiViewport const* viewport = ImGui::GetMainViewport();
  ImGui::SetNextWindowPos(viewport->Pos);
  ImGui::SetNextWindowSize(viewport->Size);
  if (ImGui::Begin("MainMenu", nullptr, kFullWindowFlags)) {
    ShowBannerAndVersion(banner);
    SiteLink("Open getting started page on game website", "/gettingstarted", linkFailed);
    ui::SeparatorLine();
    if (CentredButton("Toggle full screen mode", kMenuButton)) {
      commands.emplace_back(UICmd::ToggleFullScreen{});
    }
    if (CentredButton("Glow Horde tutorial", kMenuButton)) {
      next = offlinepages::Tutorial{};
    }
    if (CentredButton("Credentials setup", kMenuButton)) {
      next = offlinepages::CredentialsSetup{};
    }
    {
      ScopedDisableIf disable(!app.credentialFilePresent(), "Please setup credentials for connection");
      if (CentredButton("Connect to server", kMenuButton)) {
        commands.emplace_back(UICmd::ConnectToServer{});
      }
    }
    if (CentredButton("Recording replay", kMenuButton)) {
      commands.emplace_back(UICmd::RefreshRecordings{});
      next = offlinepages::RecordingReplay{-1};
    }
    if (CentredButton("Quit to desktop", kMenuButton)) {
      commands.emplace_back(UICmd::QuitToDesktop{});
    }
  }
  ImGui::End();
  return next;
}

NextPage TutorialPage(IAppState const& app, std::vector<UICmd>& commands) {
  TutorialProgress const empty;
  TutorialProgress const* progress = app.offlineData().tutorialProgress;
  if (RenderTutorialPage(progress != nullptr ? *progress : empty, commands)) {
    return offlinepages::MainMenu{};
  }
  return std::nullopt;
}

NextPage RecordingReplayPage(offlinepages::RecordingReplay& page, IAppState const& app, std::vector<UICmd>& commands) {
  std::optional<ui::ScopedEnd> scope = ui::StartPage("Recording Replay");
  if (!scope) {
    return std::nullopt;
  }
  NextPage next;
  OfflineData const& offline = app.offlineData();
  static std::vector<GameResults> const noGames;
  std::vector<GameResults> const& played = offline.playedGames != nullptr ? *offline.playedGames : noGames;
  std::size_t const recordings = offline.recordings != nullptr ? offline.recordings->size() : 0;
  float const half = ImGui::GetContentRegionAvail().x * 0.5f;

  ImGui::BeginChild("GameResultsList", ImVec2(half, 0.0f), ImGuiChildFlags_None, ImGuiWindowFlags_NoBackground);
  ImGui::Spacing();
  if (played.empty()) {
    ImGui::TextUnformatted("No compatible recordings found");
  } else {
    ShowGameResultsTable(played, page.selectedIndex);
  }
  {
    bool const selectable = page.selectedIndex >= 0 && static_cast<std::size_t>(page.selectedIndex) < recordings;
    ScopedDisableIf disable(!selectable, "Please select a game to replay");
    if (ImGui::Button("Replay")) {
      commands.emplace_back(UICmd::ReplaySelectedRecording{static_cast<std::uint32_t>(page.selectedIndex)});
    }
  }
  ImGui::SameLine();
  if (ImGui::Button("Back to main menu")) {
    next = offlinepages::MainMenu{};
  }
  ImGui::EndChild();

  ImGui::SameLine();
  ImGui::BeginChild("GameResultsDetails", ImVec2(half, 0.0f));
  ImGui::Spacing();
  ImGui::Indent();
  if (page.selectedIndex < 0 || static_cast<std::size_t>(page.selectedIndex) >= played.size()) {
    ImGui::TextUnformatted("Select a game to show details");
  } else {
    GameResults const& entry = played[static_cast<std::size_t>(page.selectedIndex)];
    GameSpec const spec = ParseGameSpec(entry.specBytes);
    Games const& games = app.games();
    if (static_cast<std::size_t>(spec.game) < games.size()) {
      ShowGameSettings(games.refGame(spec.game), spec);
      ShowGameResults(app, spec.game, nullptr, nullptr, nullptr, entry);
    } else {
      ImGui::TextColored(ImGuiColours::red, "A game that this client doesn't know");
    }
  }
  ImGui::Unindent();
  ImGui::EndChild();
  return next;
}

NextPage CredentialsSetupPage(OfflineUIState& state, IAppState const& app, std::vector<UICmd>& commands) {
  static bool linkFailed = false;
  std::optional<ui::ScopedEnd> scope = ui::StartPage("Credentials Setup");
  if (!scope) {
    return std::nullopt;
  }
  NextPage next;
  if (app.credentialFilePresent()) {
    CentredText(std::string("Credentials found"), ImGuiColours::green);
    if (CentredButton("Clear credentials")) {
      commands.emplace_back(UICmd::ClearCredentials{});
    }
  } else {
    CentredText(std::string("No credentials found for server connection"), ImGuiColours::orange);
    CentredText(std::string("You can find information about obtaining and setting up credentials on the following "
                            "page, on the game website:"),
                ImGuiColours::grey);
    SiteLink("Credentials setup", "/setup", linkFailed);
    ui::SeparatorLine();

    CentredText(std::string("If you have a credentials string, paste it here:"), ImGuiColours::grey);
    std::array<char, 100>& input = state.credentialsInput;
    float const fieldWidth = 300.0f;
    ImGui::SetCursorPosX(std::max(ImGui::GetCursorPosX(), (ImGui::GetWindowWidth() - fieldWidth) / 2.0f));
    ImGui::SetNextItemWidth(fieldWidth);
    bool const entered = ImGui::InputText("##Credentials", input.data(), input.size(), ImGuiInputTextFlags_EnterReturnsTrue);
    {
      ScopedDisableIf disable(!SDL_HasClipboardText());
      if (CentredButton("Paste from clipboard")) {
        if (char* text = SDL_GetClipboardText()) {
          std::size_t const length = std::min<std::size_t>(std::strlen(text), input.size() - 1);
          std::memcpy(input.data(), text, length);
          input[length] = '\0';
          SDL_free(text);
        }
      }
    }
    std::optional<Credentials> decoded;
    if (input[0] != '\0') {
      try {
        decoded = DecodeCredentialsString(std::string(input.data()));
        CentredText(std::string("This is a valid credentials string"), ImGuiColours::green);
      } catch (std::exception const&) {
        CentredText(std::string("Not a valid credentials string"), ImGuiColours::red);
      }
    }
    {
      ScopedDisableIf disable(!decoded, "Please enter a valid credentials string");
      bool const set = CentredButton("Set credentials");
      if ((set || entered) && decoded) {
        commands.emplace_back(UICmd::SetCredentials{*decoded});
        input.fill('\0');
      }
    }
    ui::SeparatorLine();
    CentredText(std::string("If you have a credentials.bin file, use the following button to open a file browser "
                            "to load these credentials:"),
                ImGuiColours::grey);
    if (CentredButton("Find credentials file")) {
      RequestCredentialsFile();
    }
    // The dialog's answer may come on another thread; it is taken here once. A cancelled or failed pick
    // changes nothing on the page: SDL's log has the reason.
    if (ConsumeCredentialsPickResult() == kCredentialsPickLoaded) {
      if (std::optional<Credentials> picked = ConsumePickedCredentials()) {
        commands.emplace_back(UICmd::SetCredentials{std::move(*picked)});
      }
    }
  }
  ui::SeparatorLine();
  if (CentredButton("Back to main menu")) {
    next = offlinepages::MainMenu{};
  }
  return next;
}

}  // namespace

void RenderOfflineUI(OfflineUIState& state, SDL_Texture* banner, IAppState const& app, std::vector<UICmd>& commands) {
  NextPage next = std::visit(
      [&](auto& page) -> NextPage {
        using P = std::decay_t<decltype(page)>;
        if constexpr (std::is_same_v<P, offlinepages::MainMenu>) {
          return MainMenu(banner, app, commands);
        } else if constexpr (std::is_same_v<P, offlinepages::Tutorial>) {
          return TutorialPage(app, commands);
        } else if constexpr (std::is_same_v<P, offlinepages::RecordingReplay>) {
          return RecordingReplayPage(page, app, commands);
        } else {
          return CredentialsSetupPage(state, app, commands);
        }
      },
      state.page);
  if (next) {
    state.page = std::move(*next);
  }
}
