// The lobby's "High scores" tab: HighScoreTables::render, kept with the interface so that the tables
// themselves need no interface library.
#include <imgui.h>

#include <algorithm>
#include <string>

#include "app/IAppState.h"
#include "net/PlayerNames.h"
#include "rankings/HighScoreTables.h"
#include "sim/GameResults.h"
#include "sim/Games.h"
#include "ui/GameResultsDisplay.h"

std::optional<unsigned short> HighScoreTables::render(IAppState const& app,
                                                      std::vector<NamedGameSettings> const& challenges,
                                                      PlayerNames const& names) const {
  if (challenges.empty()) {
    ImGui::TextUnformatted("No co-op challenges available");
    return std::nullopt;
  }
  if (selectedChallenge >= challenges.size()) {
    selectedChallenge = 0;
  }
  std::optional<unsigned short> shown;
  if (ImGui::BeginChild("ChallengeList", ImVec2(ImGui::GetContentRegionAvail().x * 0.3f, 0.0f),
                        ImGuiChildFlags_Borders)) {
    for (std::size_t i = 0; i < challenges.size(); ++i) {
      ImGui::PushID(static_cast<int>(i));
      if (ImGui::Selectable(challenges[i].name.c_str(), i == selectedChallenge)) {
        selectedChallenge = i;
      }
      ImGui::PopID();
    }
  }
  ImGui::EndChild();
  ImGui::SameLine();
  if (ImGui::BeginChild("HighScoreDetails", ImVec2(0.0f, 0.0f), ImGuiChildFlags_Borders)) {
    ImGui::Spacing();
    if (selectedChallenge >= tables_.size() || tables_[selectedChallenge].empty()) {
      ImGui::TextUnformatted("No scores yet for this challenge");
    } else if (ImGui::BeginTable("HighScoreTable", 5, ImGuiTableFlags_Borders | ImGuiTableFlags_RowBg)) {
      ImGui::TableSetupColumn("Rank");
      ImGui::TableSetupColumn("Result");
      ImGui::TableSetupColumn("Players");
      ImGui::TableSetupColumn("");
      ImGui::TableSetupColumn("");
      ImGui::TableHeadersRow();
      // An entry whose game the lobby client no longer holds is listed without its players.
      std::vector<unsigned int> const played = app.getPlayedGames();
      bool const knownGame = FindGame(app.games(), game_) != nullptr;
      std::vector<Entry> const& table = tables_[selectedChallenge];
      for (std::size_t rank = 0; rank < table.size(); ++rank) {
        Entry const& entry = table[rank];
        bool const held = std::find(played.begin(), played.end(), entry.gameNumber) != played.end();
        GameResults const* results = held ? &app.refPlayedGameResults(entry.gameNumber) : nullptr;
        ImGui::PushID(static_cast<int>(rank));
        ImGui::TableNextRow();
        ImGui::TableSetColumnIndex(0);
        ImGui::Text("%zu", rank + 1);
        ImGui::TableSetColumnIndex(1);
        bool const team = results != nullptr && results->playerIds.size() > 1;
        std::string const text = knownGame ? app.formatGameResult(game_, entry.result, team) : "?";
        ImGui::TextUnformatted(text.c_str());
        ImGui::TableSetColumnIndex(2);
        std::string players;
        for (std::size_t i = 0; results != nullptr && i < results->playerIds.size(); ++i) {
          players += (i == 0 ? "" : ", ") + names.playerName(results->playerIds[i]);
        }
        ImGui::TextUnformatted(players.c_str());
        ImGui::TableSetColumnIndex(3);
        if (results != nullptr && ImGui::SmallButton("Show results")) {
          shown = entry.gameNumber;
        }
        ImGui::PopID();
      }
      ImGui::EndTable();
    }
  }
  ImGui::EndChild();
  return shown;
}
