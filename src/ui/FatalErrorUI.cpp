#include "ui/FatalErrorUI.h"

#include <SDL3/SDL.h>
#include <imgui.h>

#include <chrono>
#include <string_view>
#include <thread>

#include "app/SDL3App.h"
#include "ui/CentredGhostButton.h"
#include "ui/CentredText.h"
#include "ui/ImGuiColours.h"
#include "ui/VersionString.h"
#include "ui/Website.h"

namespace {

constexpr ImVec4 kWhite{1.0f, 1.0f, 1.0f, 1.0f};

bool downloadLinkFailed = false;
bool signupLinkFailed = false;

bool IsMissingCredentialsFile(std::string_view message) {
  return message.starts_with("Failed to open file: ") && message.ends_with("credentials.bin");
}

// A button that opens a page of the website; while its last press failed, the address to visit instead.
void LinkButton(char const* label, std::string const& url, std::string const& shownAddress, bool& failed) {
  if (CentredGhostButton(label, ImVec2(0.0f, 0.0f))) {
    failed = !SDL_OpenURL(url.c_str());
  }
  if (failed) {
    CentredText("Failed to open browser. Please visit:", ImGuiColours::red);
    CentredText(shownAddress, kWhite);
  }
}

}  // namespace

bool RenderFatalErrorScreen(std::string const& message) {
  ImGuiViewport const* viewport = ImGui::GetMainViewport();
  ImGui::SetNextWindowPos(viewport->Pos);
  ImGui::SetNextWindowSize(viewport->Size);
  constexpr ImGuiWindowFlags kFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                                      ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoCollapse |
                                      ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus |
                                      ImGuiWindowFlags_NoNavFocus;
  ImGui::Begin("FatalError", nullptr, kFlags);
  ImGui::PushFont(nullptr, ImGui::GetStyle().FontSizeBase * 2.0f);

  CentredText("Fatal Error", kWhite);
  ImGui::Spacing();
  CentredText(message, kWhite);

  std::string const& website = WebsiteAddress();
  if (message == kVersionNotAcceptedMessage) {
    std::string const url = website + "/download";
    LinkButton("Open downloads page", url, url, downloadLinkFailed);
  } else if (IsMissingCredentialsFile(message)) {
    LinkButton("Open beta applications page", website + "/signup?v=" + VersionString(kClientVersion),
               website + "/signup", signupLinkFailed);
  }

  ImGui::Spacing();
  float const width = ImGui::CalcTextSize("Exit").x + ImGui::GetStyle().FramePadding.x * 2.0f;
  ImGui::SetCursorPosX((ImGui::GetWindowWidth() - width) / 2.0f);
  bool const exit = ImGui::Button("Exit");

  ImGui::PopFont();
  ImGui::End();
  return exit;
}

void FatalErrorUI(SDL3App& app, std::string const& message) {
  bool quit = false;
  for (;;) {
    app.processEvents(quit);
    {
      SDL3App::RenderingScope scope = app.startRendering(RGBColour{0.0f, 0.0f, 0.0f});
      if (RenderFatalErrorScreen(message)) {
        quit = true;
      }
      scope.end();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (quit) {
      return;
    }
  }
}
