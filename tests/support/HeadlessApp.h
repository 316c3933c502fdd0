#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "app/SDL3App.h"

// A real shell on SDL's dummy video driver (unless the environment chose another), for tests that
// need a window, a renderer and the interface library. Tests run in the directory of the executables,
// beside data/.
inline std::shared_ptr<SDL3App> MakeHeadlessApp() {
  setenv("SDL_VIDEODRIVER", "dummy", 0);
  return std::make_shared<SDL3App>(320, 240, true);
}

// A test suite whose tests share one headless shell, made before the first and closed after the last.
class HeadlessAppTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() { app_ = MakeHeadlessApp(); }
  static void TearDownTestSuite() { app_.reset(); }
  static inline std::shared_ptr<SDL3App> app_;
};
