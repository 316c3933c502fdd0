#include "glow_horde/DisplayActivitySelector.h"

#include <imgui.h>

#include <cstdint>

#include "present/TextureCache.h"
#include "ui/ScopedDisableIf.h"

namespace {

constexpr ImGuiWindowFlags k_windowFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                           ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
                                           ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings |
                                           ImGuiWindowFlags_NoBringToFrontOnFocus | ImGuiWindowFlags_NoNavFocus;

constexpr char const* k_triggerIcons[k_lemmingActivityTriggerCount] = {"immediate_icon.png", "blocked_icon.png",
                                                                       "falling_icon.png", "turned_icon.png"};
constexpr float k_iconSize = 20.0f;
constexpr ImU32 k_hoverCover = 0x28FFFFFF;

ImTextureRef TextureRef(SDL_Texture* texture) {
  return ImTextureRef(static_cast<ImTextureID>(reinterpret_cast<std::uintptr_t>(texture)));
}

// The four trigger icons side by side with no gap; clicking one makes it the default.
void TriggerIcons(SDL_Texture* const (&icons)[k_lemmingActivityTriggerCount], LemmingActivityTrigger& inForce) {
  ImDrawList* drawList = ImGui::GetWindowDrawList();
  for (int t = 0; t < k_lemmingActivityTriggerCount; ++t) {
    auto const trigger = static_cast<LemmingActivityTrigger>(t);
    if (t > 0) {
      ImGui::SameLine(0.0f, 0.0f);
    }
    ImGui::PushID(t);
    if (ImGui::InvisibleButton("##trigger", ImVec2(k_iconSize, k_iconSize))) {
      inForce = trigger;
    }
    bool const hovered = ImGui::IsItemHovered();
    ImVec2 const min = ImGui::GetItemRectMin();
    ImVec2 const max = ImGui::GetItemRectMax();
    drawList->AddImage(TextureRef(icons[t]), min, max);
    if (trigger == inForce) {
      drawList->AddRect(min, max, IM_COL32_WHITE, 0.0f, 0, 2.5f);
    } else if (hovered) {
      drawList->AddRectFilled(min, max, k_hoverCover);
    }
    if (hovered) {
      ImGui::SetTooltip("%s", LemmingActivityTriggerLabel(trigger));
    }
    ImGui::PopID();
  }
}

} // namespace

void DisplayActivitySelector(ActivityAvailabilities const& availabilities, LemmingActivity& selected,
                             std::vector<LemmingActivityTrigger>& defaultTriggers, TextureCache& textures) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x / 2.0f, 0.0f), ImGuiCond_Always, ImVec2(0.5f, 0.0f));
  ImGui::SetNextWindowSize(ImVec2(0.0f, 0.0f));
  if (!ImGui::Begin("##ActivitySelector", nullptr, k_windowFlags)) {
    ImGui::End();
    return;
  }
  SDL_Texture* icons[k_lemmingActivityTriggerCount];
  for (int t = 0; t < k_lemmingActivityTriggerCount; ++t) {
    icons[t] = textures.getTexture(k_triggerIcons[t]);
  }

  LemmingActivity const selectedAtStart = selected;
  for (int a = 0; a < k_lemmingActivityCount; ++a) {
    auto const activity = static_cast<LemmingActivity>(a);
    bool const wasSelected = activity == selectedAtStart;
    if (a > 0) {
      ImGui::SameLine();
    }
    ImGui::PushID(a);
    ImGui::BeginGroup();
    if (wasSelected) {
      ImGui::PushStyleColor(ImGuiCol_Button, ImVec4(0.3f, 0.5f, 0.8f, 1.0f));
      ImGui::PushStyleColor(ImGuiCol_ButtonHovered, ImVec4(0.4f, 0.6f, 0.9f, 1.0f));
      ImGui::PushStyleColor(ImGuiCol_ButtonActive, ImVec4(0.2f, 0.4f, 0.7f, 1.0f));
    }
    {
      ScopedDisableIf const none(availabilities[activity] == 0);
      if (ImGui::Button(LemmingActivityLabel(activity))) {
        selected = activity;
      }
    }
    ImGui::SameLine();
    ImGui::Text("(%d)", availabilities[activity]);
    if (wasSelected) {
      ImGui::PopStyleColor(3);
      // The icons sit under the selected activity's button.
      TriggerIcons(icons, defaultTriggers[static_cast<std::size_t>(a)]);
    }
    ImGui::EndGroup();
    ImGui::PopID();
  }
  ImGui::End();
}
