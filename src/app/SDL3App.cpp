#include "app/SDL3App.h"

#include <SDL3_image/SDL_image.h>
#include <SDL3_ttf/SDL_ttf.h>
#include <imgui.h>
#include <imgui_impl_sdl3.h>
#include <imgui_impl_sdlrenderer3.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include "app/CompositeCursorImage.h"
#include "app/QZAssert.h"
#include "present/SoundSystem.h"
#include "present/TextureCache.h"
#include "app/WithBackgroundUpdate.h"

namespace {

bool IsMacOS() { return std::strcmp(SDL_GetPlatform(), "macOS") == 0; }

// Loads an image from the data directory; raises if it can't be read.
SDL_Surface* LoadDataImage(char const* file, char const* purpose) {
  std::string const path = std::string("data/") + file;
  SDL_Surface* surface = IMG_Load(path.c_str());
  if (surface == nullptr) {
    throw std::runtime_error(std::string("Failed to load ") + purpose + " image " + path + ": " + SDL_GetError());
  }
  return surface;
}

}  // namespace

SDL3App::RenderingScope::~RenderingScope() {
  if (app_ == nullptr) {
    return;
  }
  if (std::uncaught_exceptions() > 0) {
    // The frame is being left by an exception, maybe inside a window that a page opened: the interface
    // library closes what was left open as it ends the frame, which must not count as a failed assertion.
    ImGuiIO& io = ImGui::GetIO();
    bool const asserting = io.ConfigErrorRecoveryEnableAssert;
    io.ConfigErrorRecoveryEnableAssert = false;
    app_->endRendering();
    io.ConfigErrorRecoveryEnableAssert = asserting;
  } else {
    app_->endRendering();
  }
}

void SDL3App::RenderingScope::end() {
  if (app_ != nullptr) {
    SDL3App* app = app_;
    app_ = nullptr;
    app->endRendering();
  }
}

SDL3App::SDL3App(int width, int height, bool noVsync) : width_(width), height_(height) {
  std::printf("Compiled against SDL %d.%d.%d\n", SDL_MAJOR_VERSION, SDL_MINOR_VERSION, SDL_MICRO_VERSION);
  std::printf("Compiled against SDL_image %d.%d.%d\n", SDL_IMAGE_MAJOR_VERSION, SDL_IMAGE_MINOR_VERSION,
              SDL_IMAGE_MICRO_VERSION);
  std::fflush(stdout);

  if (!SDL_Init(SDL_INIT_VIDEO)) {
    throw std::runtime_error(std::string("SDL could not initialize! SDL_Error: ") + SDL_GetError());
  }
  sdlInitialised_ = true;

  int const linked = SDL_GetVersion();
  std::printf("Linked against SDL %d.%d.%d\n", SDL_VERSIONNUM_MAJOR(linked), SDL_VERSIONNUM_MINOR(linked),
              SDL_VERSIONNUM_MICRO(linked));
  int const linkedImage = IMG_Version();
  std::printf("Linked against SDL_image %d.%d.%d\n", SDL_VERSIONNUM_MAJOR(linkedImage),
              SDL_VERSIONNUM_MINOR(linkedImage), SDL_VERSIONNUM_MICRO(linkedImage));
  std::fflush(stdout);

  auto fail = [this](char const* text) {
    std::string message = std::string(text) + SDL_GetError();
    cleanup();
    throw std::runtime_error(message);
  };

  if (!TTF_Init()) {
    fail("SDL_ttf could not initialize! SDL_Error: ");
  }
  ttfInitialised_ = true;

  SDL_WindowFlags const flags = IsMacOS() ? SDL_WINDOW_RESIZABLE : 0;
  window_ = SDL_CreateWindow("SDL3 application", width, height, flags);
  if (window_ == nullptr) {
    fail("SDL window could not be created! SDL_Error: ");
  }

  SDL_PropertiesID const properties = SDL_CreateProperties();
  SDL_SetPointerProperty(properties, SDL_PROP_RENDERER_CREATE_WINDOW_POINTER, window_);
  if (!noVsync) {
    SDL_SetNumberProperty(properties, SDL_PROP_RENDERER_CREATE_PRESENT_VSYNC_NUMBER, 1);
  }
  renderer_ = SDL_CreateRendererWithProperties(properties);
  SDL_DestroyProperties(properties);
  if (renderer_ == nullptr) {
    fail("SDL renderer could not be created! SDL_Error: ");
  }

  ImGui::CreateContext();
  imguiInitialised_ = true;
  ImGui::GetIO().IniFilename = nullptr;
  ImGui_ImplSDL3_InitForSDLRenderer(window_, renderer_);
  ImGui_ImplSDLRenderer3_Init(renderer_);

  watchdog_ = std::make_unique<WithBackgroundUpdate>(10);
  sound_ = std::make_unique<SoundSystem>();
  textures_ = std::make_unique<TextureCache>(renderer_);
}

SDL3App::~SDL3App() { cleanup(); }

void SDL3App::cleanup() {
  sound_.reset();
  watchdog_.reset();
  if (imguiInitialised_) {
    ImGui_ImplSDLRenderer3_Shutdown();
    ImGui_ImplSDL3_Shutdown();
    ImGui::DestroyContext();
    imguiInitialised_ = false;
  }
  for (auto& [name, cursor] : cursors_) {
    SDL_DestroyCursor(cursor);
  }
  cursors_.clear();
  currentCursor_.reset();
  textures_.reset();
  if (renderer_ != nullptr) {
    SDL_DestroyRenderer(renderer_);
    renderer_ = nullptr;
  }
  if (window_ != nullptr) {
    SDL_DestroyWindow(window_);
    window_ = nullptr;
  }
  if (ttfInitialised_) {
    TTF_Quit();
    ttfInitialised_ = false;
  }
  if (sdlInitialised_) {
    SDL_Quit();
    sdlInitialised_ = false;
  }
}

void SDL3App::toggleFullScreen() {
  if (window_ == nullptr) {
    return;
  }
  fullScreen_ = !fullScreen_;
  SDL_SetWindowFullscreen(window_, fullScreen_);
}

void SDL3App::processEvents(std::function<void(SDL_Event const&)> handler, std::function<void()> background,
                            bool& quit) {
  sound_->update();
  quit = false;
  bool const keysHandled = !IsMacOS();
  for (;;) {
    SDL_Event event;
    bool polled = false;
    if (watchdog_) {
      watchdog_->runWithBackgroundUpdate([&event, &polled] { polled = SDL_PollEvent(&event); }, background);
    } else {
      polled = SDL_PollEvent(&event);
    }
    if (!polled) {
      break;
    }
    ImGui_ImplSDL3_ProcessEvent(&event);
    switch (event.type) {
    case SDL_EVENT_KEY_DOWN:
      if (keysHandled) {
        if (event.key.key == SDLK_F11) {
          toggleFullScreen();
        } else if (event.key.key == SDLK_ESCAPE && fullScreen_) {
          toggleFullScreen();
        }
      }
      break;
    case SDL_EVENT_QUIT:
      quit = true;
      break;
    case SDL_EVENT_WINDOW_RESIZED:
    case SDL_EVENT_WINDOW_PIXEL_SIZE_CHANGED:
      SDL_GetWindowSize(window_, &width_, &height_);
      break;
    default:
      break;
    }
    if (event.type == SDL_EVENT_MOUSE_BUTTON_DOWN && event.button.button == SDL_BUTTON_LEFT &&
        ImGui::GetIO().WantCaptureMouse) {
      continue;  // a click on an interface window doesn't reach the game
    }
    handler(event);
  }
  forceCursorSet();
}

void SDL3App::processEvents(std::function<void(SDL_Event const&)> handler, bool& quit) {
  processEvents(std::move(handler), [] {}, quit);
}

void SDL3App::processEvents(bool& quit) {
  processEvents([](SDL_Event const&) {}, quit);
}

SDL3App::RenderingScope SDL3App::startRendering(RGBColour colour) {
  rendering_ = true;
  SDL_SetRenderDrawColorFloat(renderer_, colour.red, colour.green, colour.blue, 1.0f);
  SDL_RenderClear(renderer_);
  ImGui_ImplSDLRenderer3_NewFrame();
  ImGui_ImplSDL3_NewFrame();
  ImGui::NewFrame();
  return RenderingScope(this);
}

void SDL3App::endRendering() {
  rendering_ = false;
  ImGui::Render();
  ImGui_ImplSDLRenderer3_RenderDrawData(ImGui::GetDrawData(), renderer_);
  SDL_RenderPresent(renderer_);
}

void SDL3App::getMousePos(float& x, float& y, bool& inWindow) const {
  SDL_GetMouseState(&x, &y);
  y = static_cast<float>(height_ - 1) - y;
  inWindow = x >= 0.0f && x < static_cast<float>(width_) && y >= 0.0f && y < static_cast<float>(height_);
  if (ImGui::GetIO().WantCaptureMouse) {
    inWindow = false;
  }
}

void SDL3App::storeCursor(char const* name, SDL_Cursor* cursor) {
  auto [entry, inserted] = cursors_.try_emplace(name, cursor);
  if (!inserted) {
    if (currentCursor_ == name) {
      SDL_SetCursor(cursor);
    }
    SDL_DestroyCursor(entry->second);
    entry->second = cursor;
  }
}

void SDL3App::loadCursor(char const* file, Position hotspot, char const* name) {
  SDL_Surface* surface = LoadDataImage(file, "cursor");
  SDL_Cursor* cursor = SDL_CreateColorCursor(surface, hotspot.x, hotspot.y);
  SDL_DestroySurface(surface);
  if (cursor == nullptr) {
    throw std::runtime_error(std::string("Failed to create the cursor ") + name + " from data/" + file + ": " +
                             SDL_GetError());
  }
  storeCursor(name, cursor);
}

void SDL3App::loadCompositeCursor(char const* file, char const* overlayFile, Position hotspot, char const* name,
                                  bool flipOverlay) {
  SDL_Surface* base = LoadDataImage(file, "cursor");
  SDL_Surface* overlay = nullptr;
  try {
    overlay = LoadDataImage(overlayFile, "cursor overlay");
  } catch (...) {
    SDL_DestroySurface(base);
    throw;
  }
  if (flipOverlay) {
    SDL_FlipSurface(overlay, SDL_FLIP_HORIZONTAL);
  }
  SDL_Surface* composite = CompositeCursorImage(base, overlay);
  SDL_Cursor* cursor = nullptr;
  if (composite != nullptr) {
    cursor = SDL_CreateColorCursor(composite, hotspot.x, hotspot.y);
  }
  std::string const error = SDL_GetError();
  SDL_DestroySurface(composite);
  SDL_DestroySurface(overlay);
  SDL_DestroySurface(base);
  if (cursor == nullptr) {
    throw std::runtime_error(std::string("Failed to create the cursor ") + name + " from data/" + file +
                             " and data/" + overlayFile + ": " + error);
  }
  storeCursor(name, cursor);
}

void SDL3App::setCursor(char const* name) {
  if (currentCursor_ == name) {
    return;
  }
  auto found = cursors_.find(name);
  QZ_ASSERT(found != cursors_.end());
  currentCursor_ = name;
  SDL_SetCursor(found->second);
}

void SDL3App::setDefaultCursor() {
  if (!currentCursor_) {
    return;
  }
  currentCursor_.reset();
  SDL_SetCursor(SDL_GetDefaultCursor());
}

SDL_Cursor* SDL3App::cursorInForce() const {
  if (!currentCursor_) {
    return SDL_GetDefaultCursor();
  }
  auto found = cursors_.find(*currentCursor_);
  return found == cursors_.end() ? SDL_GetDefaultCursor() : found->second;
}

void SDL3App::forceCursorSet() {
  SDL_Cursor* wanted = cursorInForce();
  if (SDL_GetCursor() != wanted) {
    SDL_SetCursor(wanted);
  }
}

void SDL3App::playSound(char const* name) { sound_->playSound(name, 1.0f, 1.0f); }
