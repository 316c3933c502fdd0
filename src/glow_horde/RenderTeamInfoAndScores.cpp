#include "glow_horde/RenderTeamInfoAndScores.h"

#include <fmt/format.h>
#include <imgui.h>

#include "sim/PlayerSlots.h"

namespace {

constexpr ImGuiWindowFlags k_windowFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                           ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
                                           ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings |
                                           ImGuiWindowFlags_NoBringToFrontOnFocus | ImGuiWindowFlags_NoNavFocus;
constexpr float k_groupGap = 15.0f;

ImVec4 SlotColour(int slot) {
  PlayerSlot const& entry = SLOTS[static_cast<std::size_t>(slot) % SLOTS.size()];
  return ImVec4(entry.red, entry.green, entry.blue, 1.0f);
}

char const* SlotName(int slot) { return SLOTS[static_cast<std::size_t>(slot) % SLOTS.size()].name; }

} // namespace

std::string TimeRemainingText(unsigned long long microsecondsLeft) {
  unsigned long long const seconds = microsecondsLeft / 1000000;
  return fmt::format("Time remaining: {:02d}:{:02d}", seconds / 60, seconds % 60);
}

void RenderTeamInfoAndScores(std::vector<int> const& exitedCounts, int slot, int team, int toSpawn,
                             unsigned long long microsecondsLeft) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x / 2.0f, io.DisplaySize.y), ImGuiCond_Always, ImVec2(0.5f, 1.0f));
  ImGui::SetNextWindowSize(ImVec2(0.0f, 0.0f));
  ImGui::PushStyleColor(ImGuiCol_WindowBg, ImVec4(0.0f, 0.0f, 0.0f, 0.7f));
  if (ImGui::Begin("##TeamInfo", nullptr, k_windowFlags)) {
    ImGui::SetWindowFontScale(1.5f);
    ImGui::TextUnformatted("You are:");
    ImGui::SameLine();
    ImGui::TextColored(SlotColour(slot), "%s", SlotName(slot));
    if (team != slot) {
      ImGui::SameLine(0.0f, k_groupGap);
      ImGui::TextUnformatted("On team:");
      ImGui::SameLine();
      ImGui::TextColored(SlotColour(team), "%s", SlotName(team));
    }
    ImGui::SameLine(0.0f, k_groupGap);
    ImGui::TextUnformatted("Scores:");
    for (std::size_t t = 0; t < exitedCounts.size(); ++t) {
      ImGui::SameLine();
      ImGui::TextColored(SlotColour(static_cast<int>(t)), "%d", exitedCounts[t]);
    }
    ImGui::SameLine(0.0f, k_groupGap);
    ImGui::Text("To Spawn: %d", toSpawn);
    ImGui::SameLine(0.0f, k_groupGap);
    std::string const timeLeft = TimeRemainingText(microsecondsLeft);
    ImGui::TextColored(ImVec4(1.0f, 1.0f, 0.3f, 1.0f), "%s", timeLeft.c_str());
  }
  ImGui::End();
  ImGui::PopStyleColor();
}
