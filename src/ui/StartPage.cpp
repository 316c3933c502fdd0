#include "ui/StartPage.h"

#include <imgui.h>

#include "ui/CentredText.h"
#include "ui/FullWindowFlags.h"

namespace ui {

ScopedEnd::~ScopedEnd() {
  if (active_) {
    ImGui::End();
  }
}

std::optional<ScopedEnd> StartPage(char const* title) {
  ImGuiViewport const* viewport = ImGui::GetMainViewport();
  ImGui::SetNextWindowPos(viewport->Pos);
  ImGui::SetNextWindowSize(viewport->Size);
  if (!ImGui::Begin("##Page", nullptr, kFullWindowFlags)) {
    ImGui::End();
    return std::nullopt;
  }
  ImGui::SetWindowFontScale(2.0f);
  CentredText(std::string(title), ImVec4(1.0f, 1.0f, 1.0f, 1.0f));
  ImGui::SetWindowFontScale(1.0f);
  ImGui::Spacing();
  SeparatorLine();
  return std::optional<ScopedEnd>(std::in_place);
}

void SeparatorLine() {
  float const width = ImGui::GetContentRegionAvail().x;
  ImVec2 const start = ImGui::GetCursorScreenPos();
  ImDrawList* drawList = ImGui::GetWindowDrawList();
  float const y = start.y + 0.5f;
  drawList->AddLine(ImVec2(start.x + width * 0.25f, y), ImVec2(start.x + width * 0.75f, y),
                    ImGui::GetColorU32(ImGuiCol_Separator), 1.0f);
  ImGui::Dummy(ImVec2(0.0f, 1.0f + ImGui::GetStyle().ItemSpacing.y * 2.0f));
}

}  // namespace ui
