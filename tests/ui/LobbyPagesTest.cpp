// The lobby pages against snapshots made by hand: which controls the game room offers whom, what the room
// creation page sends, what the pages show, and that no snapshot a server could produce makes them fail.
#include <gtest/gtest.h>

#include <imgui.h>
#include <imgui_internal.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <random>
#include <string>

#include "net/GameRecordsWire.h"
#include "net/LobbyState.h"
#include "net/PlayerNames.h"
#include "net/ServerLogEntry.h"
#include "rankings/HighScoreTables.h"
#include "rankings/PlayerRatings.h"
#include "sim/Games.h"
#include "support/FakeAppState.h"
#include "support/FakeRunningGame.h"
#include "ui/CreateRoomPage.h"
#include "ui/LobbyUI.h"
#include "ui/PlayerTooltip.h"
#include "ui/ServerLog.h"
#include "ui/UI.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes SpecBytes(GameSpec const& spec) {
  Bytes bytes;
  ToBytes(spec, bytes);
  return bytes;
}

Bytes ResultBytes(std::vector<std::vector<long long>> rows, unsigned int endFrame = 900) {
  GameResult result;
  result.endFrame = endFrame;
  result.results = std::move(rows);
  result.endStateChecksum = 0x1234;
  Bytes bytes;
  ToBytes(result, bytes);
  return bytes;
}

GameRoom MakeRoom(std::vector<unsigned short> players, std::vector<bool> ready, unsigned short maxPlayers,
                  GameSpec const& spec) {
  GameRoom room;
  room.maxPlayers = maxPlayers;
  room.specBytes = SpecBytes(spec);
  room.players = players;
  room.ready = ready;
  room.slotChoices.assign(players.size(), -1);
  for (std::size_t i = 0; i < players.size(); ++i) room.assignedSlots.push_back(static_cast<short>(i));
  return room;
}

TEST(LobbyPageLogic, TheGameRoomOffersStartOnlyToTheHostAndOnlyWhenEveryoneIsReady) {
  struct Case {
    std::vector<unsigned short> players;
    std::vector<bool> ready;
    unsigned short local;
    bool inRoom, host, allReady, localReady;
  };
  Case const cases[] = {
      {{4}, {false}, 4, true, true, false, false},           // alone and not ready: start disabled
      {{4}, {true}, 4, true, true, true, true},              // alone and ready
      {{4, 7}, {true, false}, 4, true, true, false, true},   // host ready, guest not
      {{4, 7}, {true, true}, 7, true, false, true, true},    // the guest never gets start
      {{4, 7}, {true, true}, 9, false, false, true, false},  // not in this room
      {{4, 7}, {true}, 7, true, false, false, false},        // a short ready list counts as not ready
      {{}, {}, 4, false, false, false, false},
  };
  for (Case const& c : cases) {
    GameRoom const room = MakeRoom(c.players, c.ready, 4, GameSpec{});
    GameRoomControls const controls = GameRoomControlsFor(room, c.local);
    SCOPED_TRACE(testing::Message() << "players " << testing::PrintToString(c.players) << " local " << c.local);
    EXPECT_EQ(controls.inRoom, c.inRoom);
    EXPECT_EQ(controls.isHost, c.host);
    EXPECT_EQ(controls.allReady, c.allReady);
    EXPECT_EQ(controls.localReady, c.localReady);
  }
  // A click on the slot already chosen sends nothing; "Auto" when already automatic neither.
  EXPECT_FALSE(SlotClick(2, 2).has_value());
  EXPECT_FALSE(SlotClick(-1, -1).has_value());
  EXPECT_EQ(SlotClick(-1, 3)->slot, 3);
  EXPECT_EQ(SlotClick(1, -1)->slot, -1);
}

TEST(LobbyPageLogic, ThePageFollowsTheServersIdeaOfTheLocalRoom) {
  struct Case {
    int pageBefore;
    unsigned short room;
    int pageAfter;
    char const* title;
  };
  Case const cases[] = {
      {1, 3, 2, "Game Room"},  // put into the new room while creating it
      {0, 0, 2, "Game Room"},  {2, PlayerInLobby::kNoRoom, 0, "Multiplayer"},  // leaving goes to 0, not 1
      {1, PlayerInLobby::kNoRoom, 1, "Create Room"},
      {0, PlayerInLobby::kNoRoom, 0, "Multiplayer"},
  };
  for (Case const& c : cases) {
    LobbyUIState state;
    state.page = c.pageBefore;
    EXPECT_STREQ(UpdateLobbyPage(state, c.room), c.title);
    EXPECT_EQ(state.page, c.pageAfter);
  }
  LobbyState lobby;
  lobby.players = {PlayerInLobby{{1}, 2}, std::nullopt};
  EXPECT_EQ(LocalRoomIndex(&lobby, 0), 2);
  EXPECT_EQ(LocalRoomIndex(&lobby, 1), PlayerInLobby::kNoRoom);  // a number the mirror doesn't hold
  EXPECT_EQ(LocalRoomIndex(&lobby, 9), PlayerInLobby::kNoRoom);
  EXPECT_EQ(LocalRoomIndex(nullptr, 0), PlayerInLobby::kNoRoom);
}

class RoomCreation : public ::testing::Test {
protected:
  RoomCreation() {
    for (std::size_t i = 0; i < games.size(); ++i) {
      state.customSettings.push_back(DefaultSettingsFromSchema(games.refGame(static_cast<Game>(i)).schema));
    }
  }
  std::optional<GameSpec> spec() { return CreateRoomSpec(state, games.refGame(state.game)); }

  Games games;
  LobbyUIState state;
};

TEST_F(RoomCreation, AFriendlyRoomTakesTheCustomSettingsAndTheMapsPlayerCount) {
  for (Game game : {Game::GlowHorde, Game::Aviators, Game::Vipers}) {
    state.game = game;
    IGame const& catalogue = games.refGame(game);
    std::optional<GameSpec> const made = spec();
    ASSERT_TRUE(made.has_value());
    EXPECT_EQ(made->game, game);
    EXPECT_EQ(made->delayFrames, 15);
    EXPECT_EQ(made->minPlayers, 1);
    std::string const firstMap = catalogue.schema.front().choices.front();
    EXPECT_EQ(made->maxPlayers, catalogue.maxPlayersForMap(firstMap));
    ASSERT_TRUE(std::holds_alternative<GameSettings>(made->settings));
    EXPECT_EQ(std::get<GameSettings>(made->settings), state.customSettings[static_cast<std::size_t>(game)]);
  }
  // A map that isn't one of the game's choices is brought back to the first.
  state.game = Game::Vipers;
  state.customSettings[2].strings["map"] = "Nowhere";
  std::optional<GameSpec> const mended = spec();
  ASSERT_TRUE(mended.has_value());
  EXPECT_EQ(std::get<GameSettings>(mended->settings).strings.at("map"),
            games.refGame(Game::Vipers).schema.front().choices.front());
}

TEST_F(RoomCreation, ChallengesAndRankedMatchesTakeTheirFixedPlayerCountsAndMendChoicesOutOfRange) {
  state.game = Game::GlowHorde;
  state.gameType = GameType::CoopChallenge;
  state.coopChoiceFirstGame = 4;  // "Single player, Cauldrons"
  std::optional<GameSpec> made = spec();
  ASSERT_TRUE(made.has_value());
  EXPECT_EQ(std::get<CoopChallengeIndex>(made->settings).index, 4u);
  EXPECT_EQ(made->minPlayers, 1);
  EXPECT_EQ(made->maxPlayers, 1);

  state.gameType = GameType::RankedMatch;
  state.rankedChoiceFirstGame = 2;  // the four player game
  made = spec();
  ASSERT_TRUE(made.has_value());
  EXPECT_EQ(made->minPlayers, 4);
  EXPECT_EQ(made->maxPlayers, 4);

  // The second and third games share their choice; a choice past the end of one list comes back to 0.
  state.game = Game::Aviators;
  state.rankedChoiceOtherGames = 99;
  made = spec();
  ASSERT_TRUE(made.has_value());
  EXPECT_EQ(std::get<RankedMatchIndex>(made->settings).index, 0u);
  EXPECT_EQ(state.rankedChoiceOtherGames, 0u);
  EXPECT_EQ(state.rankedChoiceFirstGame, 2u);

  // A game without challenges can't make a challenge room.
  state.gameType = GameType::CoopChallenge;
  ASSERT_TRUE(games.refGame(Game::Aviators).lookup.coopChallenges.empty());
  EXPECT_FALSE(spec().has_value());
}

TEST_F(RoomCreation, TheCommandCarriesTheDescriptionUpToItsTerminatorAndBytesThatParseBack) {
  state.game = Game::GlowHorde;
  state.delayFrames = 60;  // a value the slider can't give is held to its range
  std::string const text = "Evening room";
  std::copy(text.begin(), text.end(), state.description.begin());
  std::optional<GameSpec> const made = spec();
  ASSERT_TRUE(made.has_value());
  EXPECT_EQ(made->delayFrames, 35);
  UICmd::CreateGame const command = CreateRoomCommand(state, *made);
  EXPECT_EQ(command.description, text);
  EXPECT_EQ(ParseGameSpec(command.specBytes), *made);
  // Equal choices give equal bytes, whatever the order in which the settings were filled.
  LobbyUIState other = state;
  GameSettings reordered;
  for (auto const& [key, value] : state.customSettings[0].ints) reordered.ints[key] = value;
  for (auto const& [key, value] : state.customSettings[0].strings) reordered.strings[key] = value;
  other.customSettings[0] = reordered;
  EXPECT_EQ(CreateRoomCommand(other, *CreateRoomSpec(other, games.refGame(Game::GlowHorde))).specBytes,
            command.specBytes);
}

TEST(LobbyPageLogic, ShortIdsTooltipsAndTheErrorToast) {
  EXPECT_EQ(GetShortId({0xAB, 0x01, 0xF0, 0x77}, 3), "AB01F0");
  EXPECT_EQ(GetShortId({0x0C, 0xD2}, 3), "0CD2");
  EXPECT_EQ(GetShortId({}, 3), "");

  Bytes const known{1, 2, 3, 4, 5, 6, 7, 8};
  Bytes const stranger{9, 9, 9, 9, 9, 9, 9, 9};
  PlayerRatings first;
  PlayerRatings second;
  GameResult result;
  result.results = {{2}, {1}};
  // A first ranked game between two new players: the winner ends above 1500, the loser below.
  ASSERT_TRUE(first.updateForCompletedGame({known, stranger}, {0, 1}, {0, 1}, result));
  PlayerNames names;
  names.updateFromNetwork({{known, "Ada"}});
  int const rating = static_cast<int>(*first.getRatingFor(known));
  EXPECT_GT(rating, 1500);
  EXPECT_EQ(PlayerTooltipText("Ada", &names, &first, &second, known), "010203 rating:" + std::to_string(rating));
  EXPECT_EQ(PlayerTooltipText("Old name", &names, &first, &second, known),
            "010203 rating:" + std::to_string(rating) + " now:Ada");
  EXPECT_EQ(PlayerTooltipText("x", nullptr, nullptr, nullptr, known), "010203");

  auto const now = std::chrono::system_clock::now();
  std::deque<ServerLogEntry> log;
  EXPECT_FALSE(ErrorToastDue(log, now));
  log.push_back({"Room is full", now - std::chrono::seconds(10), false});
  EXPECT_TRUE(ErrorToastDue(log, now));
  EXPECT_FALSE(ErrorToastDue(log, now + std::chrono::milliseconds(1)));
  log.back().time = now;
  log.back().seen = true;
  EXPECT_FALSE(ErrorToastDue(log, now));
  log.push_back({"Second", now, false});
  EXPECT_EQ(UnseenServerLogEntries(log), 1u);
}

// The pages drawn in an interface context of their own, with the text of each frame captured.
class LobbyPages : public ::testing::Test {
protected:
  LobbyPages() : previous_(ImGui::GetCurrentContext()), context_(ImGui::CreateContext()) {
    ImGui::SetCurrentContext(context_);
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr;
    io.DisplaySize = ImVec2(1280.0f, 720.0f);
    io.DeltaTime = 1.0f / 60.0f;
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    io.Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);

    names.updateFromNetwork({{{1, 1, 1}, "Ada"}, {{2, 2, 2}, "Bo"}, {{3, 3, 3}, "Cy"}});
    lobby.players = {PlayerInLobby{{1, 1, 1}, 0}, PlayerInLobby{{2, 2, 2}, 0}, PlayerInLobby{{3, 3, 3}}};
    GameSpec challenge;
    challenge.settings = CoopChallengeIndex{1};
    challenge.minPlayers = 2;
    challenge.maxPlayers = 2;
    lobby.rooms = {MakeRoom({0, 1}, {true, false}, 2, challenge), std::nullopt};
    app.lobby.lobbyState = &lobby;
    app.lobby.playerNames = &names;
    app.lobby.serverLog = &log;
    app.lobby.highScores = &highScores;
    app.lobby.glowHordeRatings = &ratings;
    app.lobby.aviatorsRatings = &ratings;
  }
  ~LobbyPages() override {
    ImGui::DestroyContext(context_);
    ImGui::SetCurrentContext(previous_);
  }

  // Runs a few frames (windows that fit their contents settle after the first) and returns the text
  // of the last.
  std::string frames(int count = 3) {
    std::string text;
    for (int i = 0; i < count; ++i) {
      commands.clear();
      ImGui::NewFrame();
      ImGui::LogToBuffer();
      ui.show(app, nullptr, commands);
      text = GImGui->LogBuffer.c_str();
      ImGui::LogFinish();
      ImGui::Render();
    }
    return text;
  }
  static int count(std::string const& text, std::string const& what) {
    int found = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++found;
    return found;
  }

  Games games;
  testing_support::FakeAppState app{games};
  LobbyState lobby;
  PlayerNames names;
  std::deque<ServerLogEntry> log;
  HighScoreTables highScores{Game::GlowHorde, 6};
  PlayerRatings ratings;
  UI ui;
  std::vector<UICmd> commands;

private:
  ImGuiContext* previous_;
  ImGuiContext* context_;
};

TEST_F(LobbyPages, TheGameRoomShowsTheHostMarkAndStartOnlyToTheHost) {
  app.modeValue = 2;
  app.lobby.localPlayerNumber = 0;
  std::string text = frames();
  EXPECT_EQ(count(text, "Game Room"), 1) << text;
  EXPECT_EQ(count(text, "[HOST]"), 1);
  EXPECT_EQ(count(text, "START GAME"), 1);
  EXPECT_EQ(count(text, "LEAVE ROOM"), 1);
  EXPECT_EQ(count(text, "Please click in, when ready."), 0);  // the host is ready
  EXPECT_NE(text.find("Two player, Astral Steps"), std::string::npos);
  EXPECT_EQ(count(text, "Move here"), 0);

  app.lobby.localPlayerNumber = 1;
  text = frames();
  EXPECT_EQ(count(text, "[HOST]"), 1);
  EXPECT_EQ(count(text, "START GAME"), 0);
  EXPECT_EQ(count(text, "Please click in, when ready."), 1);
  EXPECT_TRUE(commands.empty());
}

TEST_F(LobbyPages, TheRoomListShowsFreePlacesRunningGamesAndWhoIsOutside) {
  app.modeValue = 1;
  app.lobby.localPlayerNumber = 2;
  GameSpec friendly;
  friendly.settings = DefaultSettingsFromSchema(games.refGame(Game::GlowHorde).schema);
  friendly.maxPlayers = 4;
  lobby.rooms.push_back(MakeRoom({}, {}, 3, friendly));  // open
  GameRoom running = MakeRoom({}, {}, 3, friendly);
  running.runningGame = RunningGameState{};
  lobby.rooms.push_back(running);
  std::string const text = frames();
  EXPECT_EQ(count(text, "Multiplayer"), 1) << text;
  EXPECT_EQ(count(text, "Game Room 1"), 1);
  EXPECT_EQ(count(text, "Game Room 3"), 1);
  EXPECT_EQ(count(text, "Game Room 4"), 1);
  EXPECT_EQ(count(text, "Game Room 2"), 0);  // absent
  EXPECT_EQ(count(text, "Game running"), 1);
  EXPECT_EQ(count(text, "Join this room"), 1);  // the full room and the running one have none
  EXPECT_EQ(count(text, "Players not in a game"), 1);
  EXPECT_EQ(count(text, "Cy"), 1);  // outside, with "(you)"
  EXPECT_EQ(count(text, "(you)"), 1);
  EXPECT_EQ(count(text, "Select a room to show here"), 1);
  EXPECT_EQ(count(text, "Friendly game"), 2);
  EXPECT_EQ(count(text, "Co-op challenge"), 1);
}

TEST_F(LobbyPages, TheResultsTabShowsAgreementDisagreementAndTheRecording) {
  app.modeValue = 1;
  app.lobby.localPlayerNumber = 2;
  GameSpec ranked;
  ranked.game = Game::Aviators;
  ranked.settings = RankedMatchIndex{0};
  ranked.minPlayers = ranked.maxPlayers = 2;
  GameResults played;
  played.specBytes = SpecBytes(ranked);
  played.finished = true;
  played.playerIds = {{1, 1, 1}, {2, 2, 2}};
  played.playerNames = {"Ada", "Bo"};
  played.playerSlots = {0, 1};
  played.reportedResults = {ResultBytes({{100, 5000}, {0, 3000}}), ResultBytes({{100, 5000}, {0, 3000}})};
  app.played[7] = played;
  ui.lobbyState().showResultsTab = true;
  ui.lobbyState().selectedResultRow = 0;
  std::string text = frames();
  EXPECT_EQ(count(text, "Result and end state checksums match, across 2 reported results"), 1) << text;
  EXPECT_EQ(count(text, "Download recording"), 1);
  EXPECT_EQ(ui.lobbyState().selectedGameNumber, 7u);

  app.played[7].reportedResults[1] = ResultBytes({{100, 5000}, {0, 3000}}, 901);  // another end frame
  app.recordings[7] = RecordingStatus{false, true};
  text = frames();
  EXPECT_EQ(count(text, "Desynch or disagreement about results!"), 1) << text;
  EXPECT_EQ(count(text, "Desynch or disagreement"), 2);  // the table's status too
  EXPECT_EQ(count(text, "Downloading recording..."), 1);
  EXPECT_EQ(count(text, "Download recording"), 0);
}

// Lobby snapshots with random damage: parallel lists of other lengths, unknown player numbers and games,
// bytes of any kind as GameSpecs and reports. Every page must draw them without failing.
TEST_F(LobbyPages, DamagedSnapshotsNeverBreakThePages) {
  std::mt19937 random(20261123);
  auto pick = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  auto bytes = [&]() {
    Bytes out(static_cast<std::size_t>(pick(24)));
    for (unsigned char& b : out) b = static_cast<unsigned char>(pick(256));
    return out;
  };
  for (int round = 0; round < 400; ++round) {
    LobbyState damaged = lobby;
    GameRoom room = *damaged.rooms[0];
    room.players.push_back(static_cast<unsigned short>(pick(70000)));
    if (pick(2)) room.ready.resize(static_cast<std::size_t>(pick(4)));
    if (pick(2)) room.slotChoices.resize(static_cast<std::size_t>(pick(4)), static_cast<short>(pick(9) - 4));
    if (pick(2)) room.assignedSlots.assign(static_cast<std::size_t>(pick(4)), static_cast<short>(pick(9) - 4));
    if (pick(2)) room.specBytes = bytes();
    if (pick(3) == 0) room.lastResultsIndex = static_cast<unsigned short>(pick(10));
    if (pick(3) == 0) room.runningGame = RunningGameState{1, true, {0, 9}, {true}};
    room.maxPlayers = static_cast<unsigned short>(pick(70000));
    damaged.rooms[0] = room;
    damaged.players[0]->roomIndex = static_cast<unsigned short>(pick(2) ? 0 : pick(5));
    GameResults played;
    played.specBytes = bytes();
    played.finished = pick(2) == 1;
    played.playerIds.resize(static_cast<std::size_t>(pick(4)), Bytes{1});
    played.playerNames.resize(static_cast<std::size_t>(pick(4)), "P");
    played.playerSlots.resize(static_cast<std::size_t>(pick(4)), static_cast<unsigned short>(pick(9)));
    played.reportedResults.resize(static_cast<std::size_t>(pick(4)));
    for (Bytes& report : played.reportedResults) report = pick(2) ? bytes() : ResultBytes({{pick(9)}});
    app.played.clear();
    app.played[static_cast<unsigned int>(pick(10))] = played;
    app.lobby.lobbyState = &damaged;
    app.modeValue = 1 + pick(2);
    app.lobby.localPlayerNumber = static_cast<unsigned short>(pick(4));
    LobbyUIState& state = ui.lobbyState();
    state.selectedRoom = pick(4) - 1;
    state.selectedResultRow = pick(3) - 1;
    state.showResultsTab = pick(2) == 1;
    if (state.page != 2) state.page = pick(2);
    state.game = static_cast<Game>(pick(3));
    state.gameType = static_cast<GameType>(pick(3));
    state.delayFrames = static_cast<std::uint8_t>(pick(256));
    state.coopChoiceFirstGame = static_cast<std::uint32_t>(pick(9));
    state.rankedChoiceOtherGames = static_cast<std::uint32_t>(pick(9));
    if (pick(4) == 0 && !state.customSettings.empty()) {
      Bytes const name = bytes();
      state.customSettings[static_cast<std::size_t>(pick(3))].strings["map"] = std::string(name.begin(), name.end());
    }
    frames(1);
    app.lobby.lobbyState = &lobby;
    // Drawing alone never makes a command, and the page is always one of the three.
    EXPECT_TRUE(commands.empty());
    EXPECT_GE(state.page, 0);
    EXPECT_LE(state.page, 2);
  }
}

}  // namespace

namespace {

TEST_F(LobbyPages, TheHighScoreTabRanksEntriesAndOffersOnlyGamesTheLobbyHolds) {
  GameResult better;
  better.results = {{3, -40000}};
  GameResult worse;
  worse.results = {{1, -10000}};
  ASSERT_TRUE(highScores.addGame(CoopChallengeIndex{0}, 5, worse));
  ASSERT_TRUE(highScores.addGame(CoopChallengeIndex{0}, 6, better));
  GameResults held;
  held.finished = true;
  held.playerIds = {{1, 1, 1}};
  app.played[6] = held;  // game 5 is no longer in the lobby's list
  std::vector<NamedGameSettings> const& challenges = games.refGame(Game::GlowHorde).lookup.coopChallenges;
  auto frame = [&] {
    ImGui::NewFrame();
    ImGui::SetNextWindowPos(ImVec2(0, 0));
    ImGui::SetNextWindowSize(ImVec2(1280, 720));
    ImGui::Begin("Scores");
    ImGui::LogToBuffer();
    std::optional<unsigned short> const shown = highScores.render(app, challenges, names);
    std::string const text = GImGui->LogBuffer.c_str();
    ImGui::LogFinish();
    ImGui::End();
    ImGui::Render();
    return std::make_pair(text, shown);
  };
  auto const [text, shown] = frame();
  EXPECT_FALSE(shown.has_value());
  std::string const first = games.refGame(Game::GlowHorde).formatResult(better.results[0], false);
  std::string const second = games.refGame(Game::GlowHorde).formatResult(worse.results[0], false);
  ASSERT_NE(text.find(first), std::string::npos) << text;
  ASSERT_NE(text.find(second), std::string::npos);
  EXPECT_LT(text.find(first), text.find(second));  // the better result ranks first
  EXPECT_EQ(count(text, "Ada"), 1);
  EXPECT_EQ(count(text, "Show results"), 1);

  // Another challenge, with no scores; a catalogue shrunk below the selection comes back to the first.
  highScores.selectedChallenge = 3;
  EXPECT_EQ(count(frame().first, "No scores yet for this challenge"), 1);
  highScores.selectedChallenge = 40;
  EXPECT_EQ(count(frame().first, "Show results"), 1);
  EXPECT_EQ(highScores.selectedChallenge, 0u);
  EXPECT_EQ(count(frame().first, "Single player, Cauldrons"), 1);
}

}  // namespace

namespace {

// The overlays of a network game through UI::show: the waiting notice after a second without a step,
// who dropped out, and the way to leave that the local player is offered.
TEST_F(LobbyPages, NetworkGameOverlaysFollowStallsAndDisconnections) {
  FakeRunningGame game(games.refGame(Game::Aviators), 15, 100000);
  app.modeValue = 3;
  app.game.game = &game;
  app.game.localPlayer = 0;
  app.game.players = {0, 1, 2};
  struct Case {
    std::vector<bool> disconnected;
    int stalled;
    bool waiting;
    char const* dropped;  // a slot name shown under "Player(s) disconnected:", or null for none
    char const* leave;
  };
  Case const cases[] = {
      {{false, false, false}, 60, false, nullptr, "Abandon game"},
      {{false, false, false}, 61, true, nullptr, "Abandon game"},
      {{false, true, false}, 0, false, "blue", "Abandon game"},
      {{false, true, true}, 200, true, "yellow", "End game now"},  // everyone else gone: alone
  };
  for (Case const& c : cases) {
    app.game.disconnected = c.disconnected;
    app.game.stalledFrames = c.stalled;
    std::string const text = frames();
    SCOPED_TRACE(testing::Message() << "stalled " << c.stalled << ", disconnected "
                                    << testing::PrintToString(c.disconnected));
    EXPECT_EQ(count(text, "Waiting for other players"), c.waiting ? 1 : 0) << text;
    EXPECT_EQ(count(text, "Player(s) disconnected:"), c.dropped != nullptr ? 1 : 0);
    if (c.dropped != nullptr) {
      EXPECT_EQ(count(text, c.dropped), 1);
    }
    EXPECT_EQ(count(text, "All players connected"), c.dropped == nullptr ? 1 : 0);
    EXPECT_EQ(count(text, c.leave), 1);
    EXPECT_EQ(count(text, "Server log"), 1);  // over every connected page
  }
  // Once the game is over the corner panel is gone unless somebody dropped out, and the end overlay
  // offers the way back.
  app.game.disconnected = {false, false, false};
  app.game.ended = true;
  game.result.results = {{100, 5000}, {0, 3000}, {40, 9000}};
  std::string const text = frames();
  EXPECT_EQ(count(text, "Winner: green!"), 1) << text;
  EXPECT_EQ(count(text, "Return to lobby"), 1);
  EXPECT_EQ(count(text, "Abandon game"), 0);
  EXPECT_EQ(count(text, "Waiting for other players"), 0);
}

}  // namespace

namespace {

// The server log over the lobby: its count of unseen entries, opened by its arrow, newest entry first,
// and every frame while open the command that marks the entries seen.
TEST_F(LobbyPages, TheServerLogOpensByItsArrowAndListsNewestFirst) {
  app.modeValue = 1;
  auto const now = std::chrono::system_clock::now();
  log.push_back({"Older message", now - std::chrono::seconds(30), true});
  log.push_back({"Room is full", now, false});
  std::string text = frames();
  EXPECT_EQ(count(text, "Server log (1)"), 1) << text;
  EXPECT_EQ(count(text, "Server Error: Room is full"), 1);  // the toast of a fresh error
  EXPECT_EQ(count(text, "Older message"), 0);
  auto marks = [this] {
    return std::count_if(commands.begin(), commands.end(),
                         [](UICmd const& c) { return c.is<UICmd::MarkAllServerLogEntriesSeen>(); });
  };
  EXPECT_EQ(marks(), 0);

  // A click on the arrow at the right end of the small window.
  ImGuiWindow* window = ImGui::FindWindowByName("Server log");
  ASSERT_NE(window, nullptr);
  float const size = ImGui::GetFrameHeight();
  ImVec2 const arrow(window->Rect().Max.x - 4.0f - size / 2.0f, window->Rect().Min.y + 4.0f + size / 2.0f);
  auto clickArrow = [&] {
    for (bool down : {true, false}) {
      ImGui::GetIO().AddMousePosEvent(arrow.x, arrow.y);
      ImGui::GetIO().AddMouseButtonEvent(ImGuiMouseButton_Left, down);
      frames(1);
    }
    ImGui::GetIO().AddMousePosEvent(-100.0f, -100.0f);
  };
  clickArrow();
  text = frames();
  EXPECT_EQ(marks(), 1);
  ASSERT_NE(text.find("Room is full"), std::string::npos) << text;
  ASSERT_NE(text.find("Older message"), std::string::npos);
  EXPECT_LT(text.find("Room is full"), text.find("Older message"));
  // Closed again, it marks nothing more (the flag is the process's: other tests find it closed).
  clickArrow();
  text = frames();
  EXPECT_EQ(marks(), 0);
  EXPECT_EQ(count(text, "Older message"), 0);
}

}  // namespace
