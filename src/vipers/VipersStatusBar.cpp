#include "vipers/VipersStatusBar.h"

#include <imgui.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "sim/PlayerSlots.h"

namespace {

constexpr ImGuiWindowFlags k_windowFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                           ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
                                           ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_AlwaysAutoResize;

PlayerSlot const& SlotOf(unsigned short slot) { return SLOTS[slot % SLOTS.size()]; }

}  // namespace

VipersStatusBarLayout LayOutVipersStatusBar(std::vector<int> const& lengths, float screenWidth) {
  VipersStatusBarLayout layout;
  std::size_t const players = lengths.size();
  if (players < 2) {
    return layout;
  }
  std::vector<int> order(players);
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return lengths[static_cast<std::size_t>(a)] > lengths[static_cast<std::size_t>(b)]; });
  float total = 0.0f;
  for (int length : lengths) {
    total += std::max(0.0f, static_cast<float>(length) / 256.0f);
  }
  float const gaps = k_statusBarGap * static_cast<float>(players - 1);
  float const limit = 0.7f * screenWidth;
  float scale = 1.0f;
  if (total + gaps > limit && total > 0.0f) {
    scale = std::max(0.0f, limit - gaps) / total;
  }
  for (int player : order) {
    float const width = std::max(0.0f, static_cast<float>(lengths[static_cast<std::size_t>(player)]) / 256.0f);
    layout.bars.push_back({player, width * scale});
  }
  layout.totalWidth = total * scale + gaps;
  return layout;
}

void VipersStatusBar(std::vector<unsigned short> const& slots, std::vector<int> const& lengths,
                     std::vector<bool> const& alive, int localPlayer) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x / 2.0f, 0.0f), ImGuiCond_Always, ImVec2(0.5f, 0.0f));
  if (ImGui::Begin("##StatusBar", nullptr, k_windowFlags)) {
    VipersStatusBarLayout const layout = LayOutVipersStatusBar(lengths, io.DisplaySize.x);
    if (!layout.bars.empty()) {
      ImDrawList* draw = ImGui::GetWindowDrawList();
      ImVec2 at = ImGui::GetCursorScreenPos();
      for (VipersStatusBarLayout::Bar const& bar : layout.bars) {
        auto const index = static_cast<std::size_t>(bar.player);
        PlayerSlot const& slot = SlotOf(index < slots.size() ? slots[index] : 0);
        float const dim = index < alive.size() && alive[index] ? 1.0f : 0.5f;
        draw->AddRectFilled(at, ImVec2(at.x + bar.width, at.y + k_statusBarHeight),
                            ImGui::GetColorU32(ImVec4(slot.red * dim, slot.green * dim, slot.blue * dim, 1.0f)));
        at.x += bar.width + k_statusBarGap;
      }
      ImGui::Dummy(ImVec2(layout.totalWidth, k_statusBarHeight));
    }
    auto const local = static_cast<std::size_t>(localPlayer);
    if (local < lengths.size()) {
      PlayerSlot const& slot = SlotOf(local < slots.size() ? slots[local] : 0);
      char text[64];
      std::snprintf(text, sizeof text, "Tail length: %d", lengths[local] / 256);
      float const textWidth = ImGui::CalcTextSize(text).x;
      ImGui::SetCursorPosX(std::max(ImGui::GetStyle().WindowPadding.x, (ImGui::GetWindowWidth() - textWidth) / 2.0f));
      ImGui::TextColored(ImVec4(slot.red, slot.green, slot.blue, 1.0f), "%s", text);
    }
  }
  ImGui::End();
}
