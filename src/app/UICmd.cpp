#include "app/UICmd.h"

#include <array>

#include "app/QZAssert.h"

namespace {

constexpr std::array<char const*, UICmd::kCount> kNames{
    "MoveToGameRoom",  "MoveToSlot",       "SetReadyState",       "StartGame",
    "CreateGame",      "LeaveGameRoom",    "ChangeName",          "RequestRecording",
    "DisconnectFromServer", "ClearCredentials", "SetCredentials", "ConnectToServer",
    "ReplaySelectedRecording", "RefreshRecordings", "PlayTutorial", "SkipTutorial",
    "QuitToDesktop",   "ReturnToLobbyAfterGameEnd", "AbandonGame", "EndGameEarly",
    "InjectGameOrder", "MarkAllServerLogEntriesSeen", "ToggleFullScreen"};

}  // namespace

char const* UICmdName(std::size_t index) {
  QZ_ASSERT(index < kNames.size());
  return kNames[index];
}
