#include "ui/ScopedDisableIf.h"

#include <imgui.h>

ScopedDisableIf::ScopedDisableIf(bool condition, char const* tooltip) : disabled_(condition), tooltip_(tooltip) {
  if (disabled_) {
    ImGui::BeginDisabled(true);
  }
}

ScopedDisableIf::~ScopedDisableIf() {
  if (!disabled_) {
    return;
  }
  ImGui::EndDisabled();
  if (tooltip_ != nullptr && ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled)) {
    ImGui::SetTooltip("%s", tooltip_);
  }
}
