#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "accounts/Credentials.h"

// One command of the interface. Pages append commands to the frame's list; the main loop carries
// them out after the frame has been presented. The alternatives' order is fixed: the index names the
// kind of a command when a list is scanned.
struct UICmd {
  struct MoveToGameRoom {
    std::uint16_t room = 0;
  };
  struct MoveToSlot {
    std::int16_t slot = 0;
  };
  struct SetReadyState {
    bool ready = false;
  };
  struct StartGame {};
  struct CreateGame {
    std::string description;
    std::vector<unsigned char> specBytes;
  };
  struct LeaveGameRoom {};
  struct ChangeName {
    std::string name;
  };
  struct RequestRecording {
    std::uint16_t game = 0;
  };
  struct DisconnectFromServer {};
  struct ClearCredentials {};
  struct SetCredentials {
    Credentials credentials;
  };
  struct ConnectToServer {};
  struct ReplaySelectedRecording {
    std::uint32_t index = 0;
  };
  struct RefreshRecordings {};
  struct PlayTutorial {
    std::uint16_t level = 0;
  };
  struct SkipTutorial {
    std::uint16_t level = 0;
  };
  struct QuitToDesktop {};
  struct ReturnToLobbyAfterGameEnd {};
  struct AbandonGame {};
  struct EndGameEarly {};
  struct InjectGameOrder {
    std::string order;
  };
  struct MarkAllServerLogEntriesSeen {};
  struct ToggleFullScreen {};

  using Variant =
      std::variant<MoveToGameRoom, MoveToSlot, SetReadyState, StartGame, CreateGame, LeaveGameRoom, ChangeName,
                   RequestRecording, DisconnectFromServer, ClearCredentials, SetCredentials, ConnectToServer,
                   ReplaySelectedRecording, RefreshRecordings, PlayTutorial, SkipTutorial, QuitToDesktop,
                   ReturnToLobbyAfterGameEnd, AbandonGame, EndGameEarly, InjectGameOrder,
                   MarkAllServerLogEntriesSeen, ToggleFullScreen>;

  static constexpr std::size_t kCount = std::variant_size_v<Variant>;

  // Any alternative converts to a command, so that pages can write commands.push_back(UICmd::StartGame{}).
  template <typename Alternative>
    requires std::is_constructible_v<Variant, Alternative&&>
  UICmd(Alternative&& alternative) : value(std::forward<Alternative>(alternative)) {}

  std::size_t index() const { return value.index(); }
  template <typename Alternative>
  bool is() const {
    return std::holds_alternative<Alternative>(value);
  }

  Variant value;
};

// The name of each alternative, by index, as the headless driver spells them.
char const* UICmdName(std::size_t index);
