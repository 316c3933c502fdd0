#include "ui/BannerAndVersion.h"

#include <imgui.h>

#include <algorithm>
#include <cstdint>

#include "ui/CentredText.h"
#include "ui/ImGuiColours.h"
#include "ui/VersionString.h"

void ShowBannerAndVersion(SDL_Texture* banner) {
  if (banner != nullptr) {
    float width = 0.0f;
    float height = 0.0f;
    SDL_GetTextureSize(banner, &width, &height);
    if (width > 0.0f && height > 0.0f) {
      ImVec2 const viewport = ImGui::GetMainViewport()->Size;
      float const scale = std::min(viewport.y * 0.65f / height, viewport.x / width);
      ImVec2 const size(width * scale, height * scale);
      float const x = (ImGui::GetWindowWidth() - size.x) / 2.0f;
      if (x > ImGui::GetCursorPosX()) {
        ImGui::SetCursorPosX(x);
      }
      ImGui::Image(ImTextureRef(static_cast<ImTextureID>(reinterpret_cast<std::uintptr_t>(banner))), size);
    }
  }
  CentredText("Game client version %s", ImGuiColours::orange, VersionString(kClientVersion).c_str());
}
