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
      // Limited by the width inside the window's padding, so that a wide banner isn't cut off.
      float const viewportHeight = ImGui::GetMainViewport()->Size.y;
      float const scale = std::min(viewportHeight * 0.65f / height, ImGui::GetContentRegionAvail().x / width);
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
