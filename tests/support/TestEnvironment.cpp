// The unit tests run headless: SDL's dummy video driver unless another is asked for, and miniaudio's
// silent back end, so that no sound server is probed and no third-party audio thread runs.
#include <cstdlib>

namespace {

struct HeadlessEnvironment {
  HeadlessEnvironment() {
    setenv("SDL_VIDEODRIVER", "dummy", 0);
    setenv("TANDEM_AUDIO_DRIVER", "null", 0);
  }
};

HeadlessEnvironment const headless;

}  // namespace
