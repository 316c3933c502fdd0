#pragma once

#include <imgui.h>

// A button centred in the current window. A width of 0 or less fits the label. Returns true when pressed.
bool CentredButton(char const* label, ImVec2 const& size = ImVec2(0.0f, 0.0f));
