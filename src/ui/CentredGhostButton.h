#pragma once

#include <imgui.h>

#include <string>

// A centred button without fill, for secondary actions. A width of 0 or less fits the label.
// Returns true when pressed.
bool CentredGhostButton(std::string const& label, ImVec2 const& size);
