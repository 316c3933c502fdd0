#include "ui/CentredButton.h"

bool CentredButton(char const* label, ImVec2 const& size) {
  ImGuiStyle const& style = ImGui::GetStyle();
  float const width = size.x > 0.0f ? size.x : ImGui::CalcTextSize(label, nullptr, true).x + style.FramePadding.x * 2.0f;
  float const x = (ImGui::GetWindowWidth() - width) / 2.0f;
  float const cursor = ImGui::GetCursorPosX();
  if (cursor < x) {
    ImGui::Dummy(ImVec2(x - cursor, 0.0f));
    ImGui::SameLine(0.0f, 0.0f);
  }
  return ImGui::Button(label, ImVec2(width, size.y));
}
