#pragma once

#include <imgui.h>

// The flags of the windows that lie over the game or fill the screen: no title bar, no resizing or
// moving, no scroll bar, no collapsing, no saved settings, not brought to the front, no navigation focus.
inline constexpr ImGuiWindowFlags kFullWindowFlags =
    ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
    ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus |
    ImGuiWindowFlags_NoNavFocus;
