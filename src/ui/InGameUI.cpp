#include "ui/InGameUI.h"

#include <imgui.h>

#include <algorithm>
#include <numeric>

#include "sim/IGame.h"
#include "sim/IRunningGame.h"
#include "sim/PlayerSlots.h"
#include "ui/CentredButton.h"
#include "ui/CentredText.h"

namespace {

constexpr ImGuiWindowFlags kOverlayFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                           ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoScrollbar |
                                           ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_AlwaysAutoResize;

constexpr ImVec4 kWhite(1.0f, 1.0f, 1.0f, 1.0f);

ImVec4 SlotColour(std::size_t slot) {
  PlayerSlot const& entry = SLOTS[slot % SLOTS.size()];
  return ImVec4(entry.red, entry.green, entry.blue, 1.0f);
}

char const* SlotName(std::size_t slot) { return SLOTS[slot % SLOTS.size()].name; }

// A window sized to fit, centred on the screen, with the overlays' dark rounded frame.
bool BeginCentredOverlay(char const* name, ImVec2 padding, ImVec4 border) {
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, io.DisplaySize.y * 0.5f), ImGuiCond_Always,
                          ImVec2(0.5f, 0.5f));
  ImGui::PushStyleColor(ImGuiCol_WindowBg, ImVec4(0.0f, 0.0f, 0.0f, 0.9f));
  ImGui::PushStyleColor(ImGuiCol_Border, border);
  ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 15.0f);
  ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, padding);
  ImGui::PushStyleVar(ImGuiStyleVar_WindowBorderSize, 3.0f);
  bool const open = ImGui::Begin(name, nullptr, kOverlayFlags);
  ImGui::PopStyleVar(3);
  ImGui::PopStyleColor(2);
  return open;
}

}  // namespace

GameEndSummary SummariseGameEnd(GameResult const& result, std::size_t playerCount) {
  GameEndSummary summary;
  std::vector<std::vector<long long>> const& rows = result.results;
  summary.order.resize(rows.size());
  std::iota(summary.order.begin(), summary.order.end(), std::size_t{0});
  std::stable_sort(summary.order.begin(), summary.order.end(),
                   [&rows](std::size_t a, std::size_t b) { return CompareResultRows(rows[a], rows[b]) > 0; });
  if (rows.size() >= 2 && CompareResultRows(rows[summary.order[0]], rows[summary.order[1]]) > 0) {
    summary.winner = summary.order[0];
  }
  if (summary.winner) {
    summary.title = std::string("Winner: ") + SlotName(*summary.winner) + "!";
  } else if (playerCount == 1) {
    summary.title = "Single player results";
  } else if (rows.size() == 1) {
    summary.title = "Co-op results";
  } else {
    summary.title = "Tied game!";
  }
  summary.teamRows = rows.size() < playerCount;
  return summary;
}

void ShowInGameUI(IRunningGame const& game, std::vector<unsigned short> const& slots, unsigned short localPlayer,
                  std::vector<bool> const& disconnected, int stalledFrames, std::optional<GameResult> const& result,
                  std::vector<UICmd>& commands) {
  std::vector<unsigned short> slotDisconnected;
  bool alone = true;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    bool const gone = i < disconnected.size() && disconnected[i];
    if (gone) {
      slotDisconnected.push_back(slots[i]);
    } else if (i != localPlayer) {
      alone = false;
    }
  }
  std::sort(slotDisconnected.begin(), slotDisconnected.end());
  ShowInGameGeneralUI(slotDisconnected, result.has_value(), alone, slots.size(), commands);
  if (!result) {
    if (stalledFrames > 60) {
      ShowWaitingForPlayersOverlay();
    }
  } else {
    GameEndUI(game, slots, *result, commands);
  }
}

void ShowInGameUI(IRunningGame const& game, std::vector<unsigned short> const& slots, unsigned short localPlayer,
                  std::optional<GameResult> const& result, std::vector<UICmd>& commands) {
  ShowInGameUI(game, slots, localPlayer, std::vector<bool>(slots.size(), false), 0, result, commands);
}

void ShowInGameGeneralUI(std::vector<unsigned short> const& slotDisconnected, bool gameOver, bool alone,
                         std::size_t playerCount, std::vector<UICmd>& commands) {
  bool const anyDisconnected = !slotDisconnected.empty();
  if (!anyDisconnected && gameOver) {
    return;
  }
  ImGuiIO const& io = ImGui::GetIO();
  ImGui::SetNextWindowPos(io.DisplaySize, ImGuiCond_Always, ImVec2(1.0f, 1.0f));
  if (anyDisconnected) {
    ImGui::PushStyleColor(ImGuiCol_WindowBg, ImVec4(0.3f, 0.0f, 0.0f, 0.7f));
  }
  bool const open = ImGui::Begin("##PlayerDisconnected", nullptr, kOverlayFlags);
  if (anyDisconnected) {
    ImGui::PopStyleColor();
  }
  if (open) {
    if (anyDisconnected) {
      CentredText(std::string("Player(s) disconnected:"), kWhite);
      for (unsigned short slot : slotDisconnected) {
        CentredText(std::string(SlotName(slot)), SlotColour(slot));
      }
    }
    if (!gameOver) {
      if (alone) {
        if (!anyDisconnected) {
          CentredText(std::string(playerCount > 1 ? "All players connected" : "Single player game"), kWhite);
        }
        if (CentredButton("End game now")) {
          commands.emplace_back(UICmd::EndGameEarly{});
        }
      } else {
        if (!anyDisconnected) {
          CentredText(std::string("All players connected"), kWhite);
        }
        if (CentredButton("Abandon game")) {
          commands.emplace_back(UICmd::AbandonGame{});
        }
      }
    }
  }
  ImGui::End();
}

void ShowWaitingForPlayersOverlay() {
  if (BeginCentredOverlay("WaitingForPlayersOverlay", ImVec2(40.0f, 40.0f), ImGui::GetStyleColorVec4(ImGuiCol_Border))) {
    ImGui::SetWindowFontScale(2.0f);
    CentredText(std::string("Waiting for other players"), ImVec4(0.8f, 0.2f, 0.2f, 1.0f));
    ImGui::SetWindowFontScale(1.0f);
  }
  ImGui::End();
}

void GameEndUI(IRunningGame const& game, std::vector<unsigned short> const& slots, GameResult const& result,
               std::vector<UICmd>& commands) {
  GameEndSummary const summary = SummariseGameEnd(result, slots.size());
  ImVec4 const border = summary.winner ? SlotColour(*summary.winner) : ImVec4(0.4f, 0.4f, 0.4f, 1.0f);
  if (BeginCentredOverlay("WinnerOverlay", ImVec2(40.0f, 32.0f), border)) {
    ImGui::Dummy(ImVec2(0.0f, 10.0f));
    ImGui::SetWindowFontScale(3.0f);
    CentredText(summary.title, kWhite);
    ImGui::SetWindowFontScale(1.5f);
    IGame const& kind = game.game();
    for (std::size_t row : summary.order) {
      ImGui::TextColored(SlotColour(row), "%s: ", SlotName(row));
      ImGui::SameLine();
      ImGui::TextUnformatted(kind.formatResult(result.results[row], summary.teamRows).c_str());
    }
    ImGui::SetWindowFontScale(1.0f);
    ImGui::Spacing();
    CentredText(std::string("Game Over."), ImVec4(1.0f, 1.0f, 0.3f, 1.0f));
    if (CentredButton("Return to lobby")) {
      commands.emplace_back(UICmd::ReturnToLobbyAfterGameEnd{});
    }
  }
  ImGui::End();
}
