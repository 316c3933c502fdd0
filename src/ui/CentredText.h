#pragma once

#include <imgui.h>

#include <string>

// Text centred in the current window, formatted like printf.
void CentredText(char const* format, ImVec4 colour, ...) __attribute__((format(printf, 1, 3)));
// Text centred in the current window, shown as it stands.
void CentredText(std::string const& text, ImVec4 colour);
