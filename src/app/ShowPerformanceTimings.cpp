#include "app/ShowPerformanceTimings.h"

#include <imgui.h>

#include <algorithm>
#include <numeric>

#include "ui/ImGuiColours.h"

namespace {

bool timingsExpanded = false;

constexpr ImGuiWindowFlags kFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysAutoResize;

void PushWindowStyle() {
  ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
  ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(4.0f, 4.0f));
}

void PopWindowStyle() { ImGui::PopStyleVar(2); }

}  // namespace

void ShowPerformanceTimings(std::unordered_map<std::string, std::deque<double>> const& sections) {
  PushWindowStyle();
  ImGui::SetNextWindowPos(ImVec2(0.0f, 0.0f));
  ImGui::Begin("Timings", nullptr, kFlags);
  if (ImGui::ArrowButton("##expand", timingsExpanded ? ImGuiDir_Down : ImGuiDir_Right)) {
    timingsExpanded = !timingsExpanded;
  }
  ImGui::SameLine();
  ImGui::TextColored(ImGuiColours::grey, "Timings");
  ImVec2 const position = ImGui::GetWindowPos();
  ImVec2 const size = ImGui::GetWindowSize();
  ImGui::End();

  if (timingsExpanded) {
    ImGui::SetNextWindowPos(ImVec2(position.x, position.y + size.y));
    ImGui::Begin("Timings##content", nullptr, kFlags);
    if (sections.empty()) {
      ImGui::TextUnformatted("No performance data available");
    } else if (ImGui::BeginTable("PerformanceTable", 3, ImGuiTableFlags_RowBg | ImGuiTableFlags_Borders)) {
      ImGui::TableSetupColumn("Label");
      ImGui::TableSetupColumn("Average");
      ImGui::TableSetupColumn("Maximum");
      ImGui::TableHeadersRow();
      for (auto const& [name, values] : sections) {
        if (values.empty()) {
          continue;
        }
        double const mean = std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
        double const largest = *std::max_element(values.begin(), values.end());
        ImGui::TableNextRow();
        ImGui::TableNextColumn();
        ImGui::Text("%s", name.c_str());
        ImGui::TableNextColumn();
        ImGui::Text("%.3f", mean);
        ImGui::TableNextColumn();
        ImGui::Text("%.3f", largest);
      }
      ImGui::EndTable();
    }
    ImGui::End();
  }
  PopWindowStyle();
}
