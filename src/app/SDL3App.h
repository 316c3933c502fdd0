#pragma once

#include <SDL3/SDL.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "present/Camera.h"
#include "world/Position.h"

class SoundSystem;
class TextureCache;
class WithBackgroundUpdate;

// The one owner of the window, the renderer, the interface library's context, the sound system,
// the texture cache, the cursors and the event pump.
class SDL3App {
public:
  // Ends the frame when it goes out of scope, unless the frame was ended already.
  class RenderingScope {
  public:
    explicit RenderingScope(SDL3App* app) : app_(app) {}
    RenderingScope(RenderingScope&& other) noexcept : app_(other.app_) { other.app_ = nullptr; }
    RenderingScope& operator=(RenderingScope&&) = delete;
    RenderingScope(RenderingScope const&) = delete;
    ~RenderingScope();
    // Presents the frame now.
    void end();

  private:
    SDL3App* app_;
  };

  // Raises std::runtime_error if SDL, SDL_ttf, the window or the renderer can't be made.
  SDL3App(int width, int height, bool noVsync);
  ~SDL3App();
  SDL3App(SDL3App const&) = delete;
  SDL3App& operator=(SDL3App const&) = delete;

  void toggleFullScreen();

  void processEvents(std::function<void(SDL_Event const&)> handler, std::function<void()> background, bool& quit);
  void processEvents(std::function<void(SDL_Event const&)> handler, bool& quit);
  void processEvents(bool& quit);

  [[nodiscard]] RenderingScope startRendering(RGBColour colour);
  void endRendering();

  // Pointer position with y upward; inWindow is false while the interface wants the mouse.
  void getMousePos(float& x, float& y, bool& inWindow) const;

  void loadCursor(char const* file, Position hotspot, char const* name);
  void loadCompositeCursor(char const* file, char const* overlayFile, Position hotspot, char const* name,
                           bool flipOverlay);
  void setCursor(char const* name);
  void setDefaultCursor();
  void forceCursorSet();

  void playSound(char const* name);

  SDL_Window* getWindow() const { return window_; }
  SDL_Renderer* getRenderer() const { return renderer_; }
  SoundSystem& getSoundSystem() { return *sound_; }
  TextureCache& getTextures() { return *textures_; }
  int getWidth() const { return width_; }
  int getHeight() const { return height_; }
  bool isFullScreen() const { return fullScreen_; }
  bool isRendering() const { return rendering_; }
  // The name of the cursor in force; empty for the system's default cursor.
  std::optional<std::string> const& currentCursorName() const { return currentCursor_; }
  bool hasCursor(std::string const& name) const { return cursors_.contains(name); }

private:
  void cleanup();
  void storeCursor(char const* name, SDL_Cursor* cursor);
  SDL_Cursor* cursorInForce() const;

  std::unique_ptr<SoundSystem> sound_;
  std::unique_ptr<WithBackgroundUpdate> watchdog_;
  SDL_Window* window_ = nullptr;
  SDL_Renderer* renderer_ = nullptr;
  int width_ = 0;
  int height_ = 0;
  bool fullScreen_ = false;
  bool rendering_ = false;
  std::unordered_map<std::string, SDL_Cursor*> cursors_;
  std::optional<std::string> currentCursor_;
  std::unique_ptr<TextureCache> textures_;
  bool ttfInitialised_ = false;
  bool sdlInitialised_ = false;
  bool imguiInitialised_ = false;
};
