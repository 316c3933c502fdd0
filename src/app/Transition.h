#pragma once

#include <cstdint>
#include <variant>

#include "accounts/Credentials.h"

// A change of main loop state that a frame's commands request; carried out at the end of the frame.
namespace transition {

struct Connect {
  Credentials credentials;
};

struct ReplayRecording {
  std::uint32_t index = 0;
};

struct PlayTutorial {
  std::uint16_t level = 0;
};

using Any = std::variant<Connect, ReplayRecording, PlayTutorial>;

}  // namespace transition
