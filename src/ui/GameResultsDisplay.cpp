#include "ui/GameResultsDisplay.h"

#include <imgui.h>

#include <algorithm>
#include <ctime>
#include <utility>
#include <variant>
#include <exception>
#include <map>
#include <string>

#include "app/IAppState.h"
#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/PlayerSlots.h"
#include "ui/ImGuiColours.h"
#include "ui/PlayerTooltip.h"

namespace {

ImVec4 SlotColour(std::size_t slot) {
  PlayerSlot const& entry = SLOTS[slot % SLOTS.size()];
  return ImVec4(entry.red, entry.green, entry.blue, 1.0f);
}

// The reports that are there, and whether any two of them differ.
struct ReportSummary {
  int count = 0;
  bool disagree = false;
  std::vector<unsigned char> const* firstReport = nullptr;
};

ReportSummary SummariseReports(GameResults const& results) {
  ReportSummary summary;
  for (std::vector<unsigned char> const& report : results.reportedResults) {
    if (report.empty()) {
      continue;
    }
    if (summary.firstReport == nullptr) {
      summary.firstReport = &report;
    } else if (report != *summary.firstReport) {
      summary.disagree = true;
    }
    ++summary.count;
  }
  return summary;
}

std::string const kNoName;

std::string FormatTimestamp(unsigned long long timestampMs) {
  if (timestampMs == 0) {
    return "N/A";
  }
  std::time_t const seconds = static_cast<std::time_t>(timestampMs / 1000);
  std::tm local{};
  if (localtime_r(&seconds, &local) == nullptr) {
    return "N/A";
  }
  char buffer[64];
  if (std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &local) == 0) {
    return "N/A";
  }
  return buffer;
}

char const* SpecTypeText(GameSpec const& spec) {
  if (std::holds_alternative<CoopChallengeIndex>(spec.settings)) {
    return "Co-op";
  }
  if (std::holds_alternative<RankedMatchIndex>(spec.settings)) {
    return "Ranked";
  }
  return "Friendly";
}

void OrangeLabel(char const* label) {
  ImGui::TextColored(ImGuiColours::orange, "%s", label);
  ImGui::SameLine();
}

// The settings that the GameSpec names, or none if its index is outside the game's tables.
GameSettings const* SettingsOf(IGame const& game, GameSpec const& spec, std::string& name) {
  if (auto const* coop = std::get_if<CoopChallengeIndex>(&spec.settings)) {
    if (coop->index >= game.lookup.coopChallenges.size()) return nullptr;
    name = game.lookup.coopChallenges[coop->index].name;
    return &game.lookup.coopChallenges[coop->index].settings;
  }
  if (auto const* ranked = std::get_if<RankedMatchIndex>(&spec.settings)) {
    if (ranked->index >= game.lookup.rankedMatches.size()) return nullptr;
    name = game.lookup.rankedMatches[ranked->index].name;
    return &game.lookup.rankedMatches[ranked->index].settings;
  }
  return &std::get<GameSettings>(spec.settings);
}

std::string StringSetting(GameSettings const& settings, char const* key) {
  auto found = settings.strings.find(key);
  return found == settings.strings.end() ? std::string("(unknown)") : found->second;
}

void IntSetting(GameSettings const& settings, char const* key) {
  auto found = settings.ints.find(key);
  if (found == settings.ints.end()) {
    ImGui::TextUnformatted("(unknown)");
  } else {
    ImGui::Text("%d", found->second);
  }
}

}  // namespace

char const* GameResultsStatus(GameResults const& results) {
  if (!results.finished) {
    return "Running";
  }
  ReportSummary const summary = SummariseReports(results);
  if (summary.count == 0) {
    return "No results";
  }
  return summary.disagree ? "Desynch or disagreement" : "Completed";
}

namespace {

// The table over count games, each fetched by its row.
template <typename RowAt>
void GameResultsTable(std::size_t count, RowAt const& rowAt, int& selectedRow) {
  ImGuiTableFlags const flags = ImGuiTableFlags_Borders | ImGuiTableFlags_RowBg;
  if (!ImGui::BeginTable("GameResultsTable", 4, flags)) {
    return;
  }
  ImGui::TableSetupColumn("Date/Time");
  ImGui::TableSetupColumn("Type");
  ImGui::TableSetupColumn("Status");
  ImGui::TableSetupColumn("Players");
  ImGui::TableHeadersRow();
  for (std::size_t row = 0; row < count; ++row) {
    GameResults const& entry = rowAt(row);
    ImGui::PushID(static_cast<int>(row));
    ImGui::TableNextRow();
    ImGui::TableSetColumnIndex(0);
    ImGui::TextUnformatted(FormatTimestamp(entry.timestampMs).c_str());
    ImGui::TableSetColumnIndex(1);
    GameSpec const spec = ParseGameSpec(entry.specBytes);
    if (ImGui::Selectable(SpecTypeText(spec), selectedRow == static_cast<int>(row),
                          ImGuiSelectableFlags_SpanAllColumns)) {
      selectedRow = static_cast<int>(row);
    }
    ImGui::TableSetColumnIndex(2);
    char const* status = GameResultsStatus(entry);
    std::string const text(status);
    if (text == "Running") {
      ImGui::TextColored(ImGuiColours::green, "%s", status);
    } else if (text == "Completed") {
      ImGui::TextUnformatted(status);
    } else {
      ImGui::TextColored(ImGuiColours::red, "%s", status);
    }
    ImGui::TableSetColumnIndex(3);
    std::string players;
    for (std::size_t i = 0; i < entry.playerNames.size(); ++i) {
      players += (i == 0 ? "" : ", ") + entry.playerNames[i];
    }
    ImGui::TextUnformatted(players.c_str());
    ImGui::PopID();
  }
  ImGui::EndTable();
}

}  // namespace

IGame const* FindGame(Games const& games, Game game) {
  auto const index = static_cast<std::size_t>(game);
  return index < games.size() ? &games.refGame(game) : nullptr;
}

void ShowGameResultsTable(std::vector<GameResults> const& games, int& selectedRow) {
  GameResultsTable(games.size(), [&games](std::size_t row) -> GameResults const& { return games[row]; }, selectedRow);
}

void ShowGameResultsTable(IAppState const& state, std::vector<unsigned int> const& numbers, int& selectedRow) {
  GameResultsTable(
      numbers.size(), [&](std::size_t row) -> GameResults const& { return state.refPlayedGameResults(numbers[row]); },
      selectedRow);
}

void ShowGameResults(IAppState const& state, Game game, PlayerNames const* names, PlayerRatings const* first,
                     PlayerRatings const* second, GameResults const& results) {
  ImGui::SeparatorText("Players");
  ImGui::Indent();
  std::size_t const places = results.playerSlots.size();
  for (std::size_t i = 0; i < places; ++i) {
    ImGui::PushID(static_cast<int>(i));
    ImVec4 const colour = SlotColour(results.playerSlots[i]);
    ImGui::PushStyleColor(ImGuiCol_Button, colour);
    ImGui::PushStyleColor(ImGuiCol_ButtonHovered, colour);
    ImGui::PushStyleColor(ImGuiCol_ButtonActive, colour);
    ImGui::Button("##slot", ImVec2(20.0f, 15.0f));
    ImGui::PopStyleColor(3);
    ImGui::SameLine();
    std::string const& shown = i < results.playerNames.size() ? results.playerNames[i] : kNoName;
    ImGui::TextUnformatted(shown.c_str());
    if (ImGui::IsItemHovered() && i < results.playerIds.size()) {
      PlayerTooltip(shown, names, first, second, results.playerIds[i]);
    }
    bool const reported = i < results.reportedResults.size() && !results.reportedResults[i].empty();
    if (!reported) {
      ImGui::SameLine();
      if (results.finished) {
        ImGui::TextColored(ImGuiColours::red, "(abandoned or disconnected)");
      } else {
        ImGui::TextUnformatted("(waiting for results)");
      }
    }
    ImGui::PopID();
  }
  ImGui::Unindent();

  ImGui::SeparatorText("Results");
  ReportSummary const summary = SummariseReports(results);
  if (summary.count == 0) {
    ImGui::TextColored(ImGuiColours::red, "No reported results");
    return;
  }
  if (summary.disagree) {
    ImGui::TextColored(ImGuiColours::red, "Desynch or disagreement about results!");
    return;
  }
  if (summary.count == 1) {
    ImGui::TextUnformatted("Single result reported:");
  } else {
    ImGui::TextColored(ImGuiColours::green, "Result and end state checksums match, across %d reported results",
                       summary.count);
  }
  ImGui::Indent();
  GameResult result;
  unsigned char const* cursor = summary.firstReport->data();
  std::size_t remaining = summary.firstReport->size();
  // A game number from elsewhere that this client doesn't know has its rows shown without their form.
  bool const known = FindGame(state.games(), game) != nullptr;
  if (FromBytes(cursor, remaining, result)) {
    bool const teamRows = result.results.size() < places;
    for (std::size_t r = 0; r < result.results.size(); ++r) {
      std::string const text = known ? state.formatGameResult(game, result.results[r], teamRows) : "?";
      if (teamRows) {
        ImGui::Text("Team %d: %s", static_cast<int>(r + 1), text.c_str());
      } else {
        ImGui::TextColored(SlotColour(r), "%s ", SLOTS[r % SLOTS.size()].name);
        ImGui::SameLine();
        ImGui::Text("(%s): %s", r < results.playerNames.size() ? results.playerNames[r].c_str() : "", text.c_str());
      }
    }
  }
  ImGui::Unindent();
}

void ShowGameSettings(IGame const& game, GameSpec const& spec) {
  ImGui::SeparatorText("Game Settings");
  OrangeLabel("Game:");
  ImGui::TextUnformatted(GameDisplayName(spec.game));
  std::string name;
  GameSettings const* settings = SettingsOf(game, spec, name);
  if (std::holds_alternative<CoopChallengeIndex>(spec.settings)) {
    ImGui::TextUnformatted("Co-op or single player challenge, with fixed settings");
    OrangeLabel("Challenge description:");
    ImGui::TextUnformatted(settings != nullptr ? name.c_str() : "(unknown challenge)");
  } else if (std::holds_alternative<RankedMatchIndex>(spec.settings)) {
    ImGui::TextUnformatted("Ranked match, with fixed settings");
    OrangeLabel("Match description:");
    ImGui::TextUnformatted(settings != nullptr ? name.c_str() : "(unknown match)");
  } else {
    ImGui::TextUnformatted("Friendly game");
  }
  if (settings == nullptr) {
    return;
  }
  std::string const map = StringSetting(*settings, "map");
  OrangeLabel("Map:");
  ImGui::TextUnformatted(map.c_str());
  OrangeLabel("Allowed player counts:");
  // A count from a file is listed in full only up to the largest room there can be.
  std::string counts;
  int const last = std::min<int>(spec.maxPlayers, spec.minPlayers + 15);
  for (int count = spec.minPlayers; count <= last; ++count) {
    if (!counts.empty()) {
      counts += ' ';
    }
    counts += std::to_string(count);
  }
  ImGui::TextUnformatted(counts.c_str());
  OrangeLabel("Delay frames:");
  ImGui::Text("%d", static_cast<int>(spec.delayFrames));
  OrangeLabel("Game duration (in seconds):");
  IntSetting(*settings, "duration_seconds");
  if (spec.game == Game::GlowHorde) {
    OrangeLabel("Number to spawn, per player:");
    IntSetting(*settings, "number_to_spawn");
    OrangeLabel("Spawn interval (in tenths of a second):");
    IntSetting(*settings, "spawn_interval_deciseconds");
    ImGui::TextColored(ImGuiColours::orange, "Available orders:");
    ImGui::Indent();
    static constexpr std::pair<char const*, char const*> kOrders[] = {
        {"Bridge", "bridge_orders"},           {"Horizontal bridge", "horizontal_bridge_orders"},
        {"Raise ground", "raise_ground_orders"}, {"Block", "block_orders"},
        {"Dig down", "dig_down_orders"},       {"Dig sideways", "dig_sideways_orders"},
        {"Dig upwards", "dig_upwards_orders"},
    };
    for (auto const& [label, key] : kOrders) {
      ImGui::TextColored(ImGuiColours::green, "%s", label);
      ImGui::SameLine();
      IntSetting(*settings, key);
    }
    ImGui::Unindent();
  }

  ImGui::SeparatorText("Teams");
  std::vector<int> teams;
  try {
    teams = game.playerTeamsForMap(map);
  } catch (std::exception const&) {
    ImGui::TextUnformatted("Unknown map.");
    return;
  }
  int highest = -1;
  for (int team : teams) {
    highest = std::max(highest, team);
  }
  if (highest + 1 >= static_cast<int>(teams.size())) {
    ImGui::TextUnformatted("No teams.");
    return;
  }
  for (int team = 0; team <= highest; ++team) {
    ImGui::Text("Team %d", team + 1);
    ImGui::Indent();
    for (std::size_t slot = 0; slot < teams.size(); ++slot) {
      if (teams[slot] == team) {
        ImGui::TextColored(SlotColour(slot), "%s ", SLOTS[slot % SLOTS.size()].name);
        ImGui::SameLine();
        ImGui::TextUnformatted("player");
      }
    }
    ImGui::TextUnformatted("Going to ");
    ImGui::SameLine(0.0f, 0.0f);
    ImGui::TextColored(SlotColour(static_cast<std::size_t>(team)), "%s ", SLOTS[static_cast<std::size_t>(team) % SLOTS.size()].name);
    ImGui::SameLine();
    ImGui::TextUnformatted("exit");
    ImGui::Unindent();
  }
}
