#include "aviators/StatusBarUI.h"

#include <SDL3/SDL.h>
#include <imgui.h>

#include "sim/PlayerSlots.h"

namespace {

constexpr ImGuiWindowFlags k_overlayFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                            ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
                                            ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_AlwaysAutoResize;

ImVec4 SlotColour(unsigned short slot) {
  PlayerSlot const& s = SLOTS[slot % SLOTS.size()];
  return ImVec4(s.red, s.green, s.blue, 1.0f);
}

void Bar(float fraction, ImVec4 colour, int value, int maximum) {
  ImGui::PushStyleColor(ImGuiCol_PlotHistogram, colour);
  ImGui::ProgressBar(fraction, ImVec2(180.0f, 20.0f), "");
  ImGui::PopStyleColor();
  ImGui::SameLine();
  ImGui::Text("%d/%d", value, maximum);
}

float Fraction(int value, int maximum) {
  return maximum > 0 ? static_cast<float>(value) / static_cast<float>(maximum) : 0.0f;
}

}  // namespace

void StatusBarUI(std::vector<unsigned short> const& slots, std::vector<int> const& healths, int maxHealth, int missiles,
                 int maxMissiles, std::optional<unsigned short> targetSlot, bool targetOutOfRange) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, 0.0f), ImGuiCond_Always, ImVec2(0.5f, 0.0f));
  if (ImGui::Begin("##StatusBar", nullptr, k_overlayFlags)) {
    ImGui::TextUnformatted("Health: ");
    for (std::size_t i = 0; i < slots.size() && i < healths.size(); ++i) {
      ImGui::SameLine();
      Bar(Fraction(healths[i], maxHealth), SlotColour(slots[i]), healths[i], maxHealth);
    }
    ImGui::TextUnformatted("Missiles: ");
    ImGui::SameLine();
    Bar(Fraction(missiles, maxMissiles), ImVec4(1.0f, 1.0f, 1.0f, 1.0f), missiles, maxMissiles);
    if (!targetSlot.has_value()) {
      ImGui::TextUnformatted("No target locked");
    } else {
      // Out of range, both pieces vanish in every second quarter of a second.
      bool const hidden = targetOutOfRange && (SDL_GetTicks() / 250) % 2 == 1;
      ImVec4 const invisible(0.0f, 0.0f, 0.0f, 0.0f);
      ImGui::TextColored(hidden ? invisible : ImGui::GetStyleColorVec4(ImGuiCol_Text), "Target lock on ");
      ImGui::SameLine(0.0f, 0.0f);
      ImGui::TextColored(hidden ? invisible : SlotColour(*targetSlot), "%s", SLOTS[*targetSlot % SLOTS.size()].name);
    }
  }
  ImGui::End();
}
