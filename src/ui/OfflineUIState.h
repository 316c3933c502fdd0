#pragma once

#include <array>
#include <variant>

// The pages shown while the client isn't connected and no game runs.
namespace offlinepages {
struct MainMenu {};
struct Tutorial {};
struct RecordingReplay {
  int selectedIndex = -1;
};
struct CredentialsSetup {};
}  // namespace offlinepages

struct OfflineUIState {
  std::variant<offlinepages::MainMenu, offlinepages::Tutorial, offlinepages::RecordingReplay,
               offlinepages::CredentialsSetup>
      page;
  // The text of the credentials field; it survives leaving the page.
  std::array<char, 100> credentialsInput{};
};

// The main menu with an empty credentials field.
OfflineUIState CreateOfflineUIState();
// Back to the main menu; the credentials field keeps its text.
void ResetOfflineUIState(OfflineUIState& state);
