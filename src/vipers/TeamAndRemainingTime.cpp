#include "vipers/TeamAndRemainingTime.h"

#include <imgui.h>

#include "sim/PlayerSlots.h"

namespace {

constexpr ImGuiWindowFlags k_windowFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                           ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
                                           ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_AlwaysAutoResize;

}  // namespace

void TeamAndRemainingTime(int slot, int team, unsigned long long microsecondsLeft) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x / 2.0f, io.DisplaySize.y), ImGuiCond_Always, ImVec2(0.5f, 1.0f));
  ImGui::PushStyleColor(ImGuiCol_WindowBg, ImVec4(0.0f, 0.0f, 0.0f, 0.7f));
  if (ImGui::Begin("##TeamInfo", nullptr, k_windowFlags)) {
    ImGui::SetWindowFontScale(1.5f);
    if (team != slot) {
      PlayerSlot const& entry = SLOTS[static_cast<unsigned>(team) % SLOTS.size()];
      ImGui::TextUnformatted("You are on team:");
      ImGui::SameLine();
      ImGui::TextColored(ImVec4(entry.red, entry.green, entry.blue, 1.0f), "%s", entry.name);
      ImGui::SameLine(0.0f, 15.0f);
    }
    unsigned long long const seconds = microsecondsLeft / 1000000;
    ImGui::TextColored(ImVec4(1.0f, 1.0f, 0.3f, 1.0f), "Time remaining: %02d:%02d", static_cast<int>(seconds / 60),
                       static_cast<int>(seconds % 60));
  }
  ImGui::End();
  ImGui::PopStyleColor();
}
