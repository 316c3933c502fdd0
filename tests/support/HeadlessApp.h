#pragma once

#include <cstdlib>
#include <memory>

#include "SDL3App.h"

// A real shell on SDL's dummy video driver (unless the environment chose another), for tests that
// need a window, a renderer and the interface library. Tests run in the directory of the executables,
// beside data/.
inline std::shared_ptr<SDL3App> MakeHeadlessApp() {
  setenv("SDL_VIDEODRIVER", "dummy", 0);
  return std::make_shared<SDL3App>(320, 240, true);
}
