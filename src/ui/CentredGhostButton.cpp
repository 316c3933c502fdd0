#include "ui/CentredGhostButton.h"

bool CentredGhostButton(std::string const& label, ImVec2 const& size) {
  ImGuiStyle const& style = ImGui::GetStyle();
  float const width = size.x > 0.0f ? size.x : ImGui::CalcTextSize(label.c_str(), nullptr, true).x + style.FramePadding.x * 2.0f;
  float const x = (ImGui::GetWindowWidth() - width) / 2.0f;
  float const cursor = ImGui::GetCursorPosX();
  if (cursor < x) {
    ImGui::Dummy(ImVec2(x - cursor, 0.0f));
    ImGui::SameLine(0.0f, 0.0f);
  }
  ImGui::PushStyleColor(ImGuiCol_Button, ImVec4(0.0f, 0.0f, 0.0f, 0.0f));
  ImGui::PushStyleColor(ImGuiCol_ButtonHovered, ImVec4(0.4f, 0.7f, 1.0f, 0.1f));
  ImGui::PushStyleColor(ImGuiCol_ButtonActive, ImVec4(0.4f, 0.7f, 1.0f, 0.2f));
  ImGui::PushStyleColor(ImGuiCol_Border, ImVec4(0.4f, 0.7f, 1.0f, 1.0f));
  ImGui::PushStyleColor(ImGuiCol_Text, ImVec4(0.4f, 0.7f, 1.0f, 1.0f));
  ImGui::PushStyleVar(ImGuiStyleVar_FrameBorderSize, 1.0f);
  bool const pressed = ImGui::Button(label.c_str(), ImVec2(width, size.y));
  ImGui::PopStyleVar();
  ImGui::PopStyleColor(5);
  return pressed;
}
