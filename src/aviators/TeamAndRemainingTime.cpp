#include "aviators/TeamAndRemainingTime.h"

#include <imgui.h>

#include "sim/PlayerSlots.h"

void TeamAndRemainingTime(int slot, int team, unsigned long long microsecondsLeft) {
  constexpr ImGuiWindowFlags flags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                                     ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoSavedSettings |
                                     ImGuiWindowFlags_AlwaysAutoResize;
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, io.DisplaySize.y), ImGuiCond_Always, ImVec2(0.5f, 1.0f));
  ImGui::PushStyleColor(ImGuiCol_WindowBg, ImVec4(0.0f, 0.0f, 0.0f, 0.7f));
  if (ImGui::Begin("##TeamInfo", nullptr, flags)) {
    ImGui::SetWindowFontScale(1.5f);
    if (team != slot && team >= 0) {
      PlayerSlot const& t = SLOTS[static_cast<std::size_t>(team) % SLOTS.size()];
      ImGui::TextUnformatted("You are on team:");
      ImGui::SameLine();
      ImGui::TextColored(ImVec4(t.red, t.green, t.blue, 1.0f), "%s", t.name);
      ImGui::SameLine(0.0f, 15.0f);
    }
    unsigned long long const seconds = microsecondsLeft / 1000000ull;
    ImGui::TextColored(ImVec4(1.0f, 1.0f, 0.3f, 1.0f), "Time remaining: %02d:%02d", static_cast<int>(seconds / 60),
                       static_cast<int>(seconds % 60));
  }
  ImGui::End();
  ImGui::PopStyleColor();
}
