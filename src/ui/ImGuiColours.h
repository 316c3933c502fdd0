#pragma once

#include <imgui.h>

// Colours that the pages share.
namespace ImGuiColours {
inline constexpr ImVec4 grey{0.7f, 0.7f, 0.7f, 1.0f};
inline constexpr ImVec4 red{1.0f, 0.2f, 0.2f, 1.0f};
inline constexpr ImVec4 green{0.3f, 0.8f, 0.3f, 1.0f};
inline constexpr ImVec4 orange{1.0f, 0.6f, 0.2f, 1.0f};
}  // namespace ImGuiColours
