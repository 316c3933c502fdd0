#include "ui/InterfaceStyle.h"

#include <imgui.h>

void SetInterfaceStyle() {
  ImGuiStyle& style = ImGui::GetStyle();
  style.WindowPadding = ImVec2(15.0f, 15.0f);
  style.WindowRounding = 8.0f;
  style.WindowBorderSize = 1.0f;
  style.ChildRounding = 6.0f;
  style.ChildBorderSize = 1.0f;
  style.FramePadding = ImVec2(8.0f, 4.0f);
  style.FrameRounding = 4.0f;
  style.FrameBorderSize = 0.0f;
  style.ItemSpacing = ImVec2(10.0f, 8.0f);
  style.GrabRounding = 4.0f;
  ImVec4* colours = style.Colors;
  colours[ImGuiCol_WindowBg] = ImVec4(0.10f, 0.10f, 0.15f, 0.95f);
  colours[ImGuiCol_ChildBg] = ImVec4(0.08f, 0.08f, 0.12f, 1.0f);
  colours[ImGuiCol_Border] = ImVec4(0.20f, 0.25f, 0.30f, 0.50f);
  colours[ImGuiCol_FrameBg] = ImVec4(0.15f, 0.15f, 0.20f, 1.0f);
  colours[ImGuiCol_FrameBgHovered] = ImVec4(0.25f, 0.25f, 0.35f, 1.0f);
  colours[ImGuiCol_Header] = ImVec4(0.20f, 0.25f, 0.35f, 1.0f);
  colours[ImGuiCol_HeaderHovered] = ImVec4(0.30f, 0.35f, 0.50f, 1.0f);
}
