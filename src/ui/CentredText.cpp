#include "ui/CentredText.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace {

void MoveToCentreFor(float textWidth) {
  float const x = (ImGui::GetWindowWidth() - textWidth) / 2.0f;
  float const cursor = ImGui::GetCursorPosX();
  if (cursor < x) {
    ImGui::Dummy(ImVec2(x - cursor, 0.0f));
    ImGui::SameLine(0.0f, 0.0f);
  }
}

}  // namespace

void CentredText(char const* format, ImVec4 colour, ...) {
  va_list arguments;
  va_start(arguments, colour);
  va_list copy;
  va_copy(copy, arguments);
  int const length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::vector<char> buffer(static_cast<std::size_t>(length > 0 ? length : 0) + 1);
  std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
  CentredText(std::string(buffer.data()), colour);
}

void CentredText(std::string const& text, ImVec4 colour) {
  MoveToCentreFor(ImGui::CalcTextSize(text.c_str()).x);
  ImGui::PushStyleColor(ImGuiCol_Text, colour);
  ImGui::TextUnformatted(text.c_str());
  ImGui::PopStyleColor();
}
