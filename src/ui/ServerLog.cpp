#include "ui/ServerLog.h"

#include <imgui.h>

#include <ctime>
#include <string>

#include "ui/CentredText.h"
#include "ui/ImGuiColours.h"

namespace {

constexpr ImGuiWindowFlags kSmallWindowFlags =
    ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
    ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_AlwaysAutoResize |
    ImGuiWindowFlags_NoFocusOnAppearing | ImGuiWindowFlags_NoNav;

// Whether the log is open; one for the process, closed at the start.
bool g_serverLogOpen = false;

}  // namespace

std::size_t UnseenServerLogEntries(std::deque<ServerLogEntry> const& log) {
  std::size_t count = 0;
  for (ServerLogEntry const& entry : log) {
    count += entry.seen ? 0 : 1;
  }
  return count;
}

bool ErrorToastDue(std::deque<ServerLogEntry> const& log, std::chrono::system_clock::time_point now) {
  if (log.empty()) {
    return false;
  }
  ServerLogEntry const& newest = log.back();
  return !newest.seen && now - newest.time <= std::chrono::seconds(10);
}

void RenderErrorToast(std::deque<ServerLogEntry> const& log) {
  if (!ErrorToastDue(log, std::chrono::system_clock::now())) {
    return;
  }
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, io.DisplaySize.y), ImGuiCond_Always, ImVec2(0.5f, 1.0f));
  if (ImGui::Begin("##ErrorToast", nullptr, kSmallWindowFlags | ImGuiWindowFlags_NoInputs)) {
    CentredText(std::string("Server Error: ") + log.back().text, ImVec4(1.0f, 0.2f, 0.2f, 1.0f));
  }
  ImGui::End();
}

bool ShowServerLog(std::deque<ServerLogEntry> const& log) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(4.0f, 4.0f));
  ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x, 0.0f), ImGuiCond_Always, ImVec2(1.0f, 0.0f));
  float headerBottom = 0.0f;
  if (ImGui::Begin("Server log", nullptr, kSmallWindowFlags)) {
    std::size_t const unseen = UnseenServerLogEntries(log);
    if (unseen == 0) {
      ImGui::TextColored(ImGuiColours::grey, "Server log");
    } else {
      ImGui::TextColored(ImGuiColours::red, "Server log (%zu)", unseen);
    }
    ImGui::SameLine();
    if (ImGui::ArrowButton("##expand", g_serverLogOpen ? ImGuiDir_Down : ImGuiDir_Right)) {
      g_serverLogOpen = !g_serverLogOpen;
    }
    headerBottom = ImGui::GetWindowPos().y + ImGui::GetWindowSize().y;
  }
  ImGui::End();

  if (g_serverLogOpen) {
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x, headerBottom), ImGuiCond_Always, ImVec2(1.0f, 0.0f));
    if (ImGui::Begin("Server log##content", nullptr, kSmallWindowFlags)) {
      if (log.empty()) {
        ImGui::TextUnformatted("No log entries");
      }
      float const wrap = io.DisplaySize.x * 0.3f;
      for (auto entry = log.rbegin(); entry != log.rend(); ++entry) {
        std::time_t const seconds = std::chrono::system_clock::to_time_t(entry->time);
        std::tm local{};
        char clock[16] = "--:--:--";
        if (localtime_r(&seconds, &local) != nullptr) {
          std::strftime(clock, sizeof clock, "%H:%M:%S", &local);
        }
        ImGui::TextColored(ImVec4(1.0f, 0.7f, 0.3f, 1.0f), "[%s]", clock);
        ImGui::PushTextWrapPos(ImGui::GetCursorPosX() + wrap);
        ImVec4 const colour = entry->seen ? ImVec4(0.7f, 0.7f, 0.7f, 1.0f) : ImVec4(1.0f, 1.0f, 1.0f, 1.0f);
        ImGui::PushStyleColor(ImGuiCol_Text, colour);
        ImGui::TextUnformatted(entry->text.c_str());
        ImGui::PopStyleColor();
        ImGui::PopTextWrapPos();
        ImGui::Separator();
      }
    }
    ImGui::End();
  }
  ImGui::PopStyleVar(2);
  return g_serverLogOpen;
}
