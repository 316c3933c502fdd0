#include "vipers/RunningVipers.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

#include "app/QZAssert.h"
#include "app/SDL3App.h"
#include "present/Renderer.h"
#include "present/SoundSystem.h"
#include "present/TextureCache.h"
#include "present/WorldDrawing.h"
#include "sim/PlayerSlots.h"
#include "vipers/RenderTail.h"
#include "vipers/TeamAndRemainingTime.h"
#include "vipers/VipersGame.h"
#include "vipers/VipersStatusBar.h"

namespace {

constexpr char const* k_hitSound = "small_hit.wav";
constexpr char const* k_deathSound = "explosion.wav";
constexpr char const* k_eatSound = "target_lock_succeeded.wav";
constexpr float k_radiansPerAngleUnit = 9.58738e-5f;
constexpr float k_shipScale = 32.0f / 63.0f;
constexpr float k_tailRadius = 12.0f;

SDL_Color SlotColour(unsigned short slot, float factor) {
  PlayerSlot const& entry = SLOTS[slot % SLOTS.size()];
  auto const channel = [factor](float value) { return static_cast<Uint8>(std::clamp(value * factor, 0.0f, 1.0f) * 255.0f); };
  return SDL_Color{channel(entry.red), channel(entry.green), channel(entry.blue), 255};
}

void RenderShipAndCore(Renderer const& renderer, TextureCache& textures, MovingBody const& body, unsigned short slot) {
  float const x = static_cast<float>(body.position.x) / 256.0f;
  float const y = static_cast<float>(body.position.y) / 256.0f;
  textures.setGreyscaleColour(SDL_Color{255, 255, 255, 255});
  renderer.renderShip(x, y, k_shipScale, static_cast<float>(body.rotation) * k_radiansPerAngleUnit);
  textures.setGreyscaleColour(SlotColour(slot, 0.3f));
  renderer.renderCircle(x, y, k_tailRadius);
}

}  // namespace

RunningVipers::RunningVipers(std::shared_ptr<VipersGame const> game, std::shared_ptr<SDL3App> app, int localPlayer,
                             unsigned long long framePeriod, unsigned char delayFrames, GameSettings const& settings,
                             MapSettings const& map, std::vector<unsigned short> const& players, bool debugTools)
    : game_(std::move(game)), app_(std::move(app)),
      simulation_(localPlayer, framePeriod, delayFrames, settings, map, players),
      cameraWrapX_(map.cameraWrapX), cameraWrapY_(map.cameraWrapY), debugTools_(debugTools) {
  SoundSystem& sound = app_->getSoundSystem();
  sound.preloadSound(k_hitSound);
  sound.preloadSound(k_deathSound);
  sound.preloadSound(k_eatSound);
  lastTicks_ = SDL_GetTicks();
}

IGame const& RunningVipers::game() const { return *game_; }

std::uint8_t RunningVipers::ControlsFromKeys(bool a, bool d, bool w, bool s) {
  std::uint8_t const turn = a ? 1 : (d ? 2 : 0);
  std::uint8_t const thrust = w ? 1 : (s ? 2 : 0);
  return static_cast<std::uint8_t>(turn | thrust << 2);
}

void RunningVipers::eventHandler(SDL_Event const& event) {
  if (event.type == SDL_EVENT_KEY_DOWN && event.key.scancode == SDL_SCANCODE_SPACE) {
    uiFire_ = true;
  } else if (event.type == SDL_EVENT_MOUSE_WHEEL) {
    camera_.zoom = std::clamp(camera_.zoom * (1.0f + 0.1f * event.wheel.y), 0.5f, 2.0f);
  }
}

void RunningVipers::nonEventDrivenUIChecks() {
  std::uint64_t const now = SDL_GetTicks();
  float const dt = static_cast<float>(now - lastTicks_) / 1000.0f;
  lastTicks_ = now;
  bool const* keys = SDL_GetKeyboardState(nullptr);
  uiControls_ = ControlsFromKeys(keys[SDL_SCANCODE_A], keys[SDL_SCANCODE_D], keys[SDL_SCANCODE_W], keys[SDL_SCANCODE_S]);
  if (keys[SDL_SCANCODE_Q]) {
    camera_.zoom = std::max(0.5f, camera_.zoom * (1.0f - dt));
  }
  if (keys[SDL_SCANCODE_E]) {
    camera_.zoom = std::min(2.0f, camera_.zoom * (1.0f + dt));
  }

  // Keep the predicted head in the middle of the screen.
  float const viewWidth = static_cast<float>(app_->getWidth()) / camera_.zoom;
  float const viewHeight = static_cast<float>(app_->getHeight()) / camera_.zoom;
  auto const place = [](float centre, float view, int worldSize, bool wrap) {
    float value = centre - view / 2.0f;
    if (wrap) {
      int const size = std::max(worldSize, 1);
      int whole = static_cast<int>(std::floor(value)) % size;
      if (whole < 0) {
        whole += size;
      }
      return static_cast<float>(whole);
    }
    value = std::min(value, static_cast<float>(worldSize) - 150.0f);
    return std::max(value, 150.0f - view);
  };
  MovingBody const& shadow = simulation_.shadow().body;
  camera_.x = place(static_cast<float>(shadow.position.x) / 256.0f, viewWidth, simulation_.world().width(), cameraWrapX_);
  camera_.y = place(static_cast<float>(shadow.position.y) / 256.0f, viewHeight, simulation_.world().height(), cameraWrapY_);
}

std::vector<unsigned char> RunningVipers::processUIInputsAndGetOurNextOrder() {
  if (uiControls_ == simulation_.shadow().body.controls && !uiFire_) {
    return {};
  }
  std::vector<unsigned char> order{static_cast<unsigned char>(uiControls_ | (uiFire_ ? 16 : 0))};
  uiFire_ = false;
  return order;
}

void RunningVipers::playHit(std::int32_t impact) {
  float const volume = std::min(static_cast<float>(impact) / 3072.0f, 1.0f);
  app_->getSoundSystem().playSound(k_hitSound, volume, 1.0f);
}

void RunningVipers::update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> ourOrder) {
  VipersSimulation::StepEvents const events = simulation_.update(orders, ourOrder);
  if (events.shadowHit.has_value()) {
    playHit(*events.shadowHit);
  }
  for (std::int32_t const impact : events.otherHits) {
    playHit(impact);
  }
  SoundSystem& sound = app_->getSoundSystem();
  for (int i = 0; i < events.foodEaten; ++i) {
    sound.playSound(k_eatSound, 1.0f, 1.0f);
  }
  for (int i = 0; i < events.deaths; ++i) {
    sound.playSound(k_deathSound, 1.0f, 1.0f);
  }
}

void RunningVipers::injectOrder(std::string const&) { QZ_ASSERT(false && "Vipers has no textual orders"); }

void RunningVipers::render() {
  int const screenWidth = app_->getWidth();
  int const screenHeight = app_->getHeight();
  ChunkedWorld& world = simulation_.world();
  TextureCache& textures = app_->getTextures();
  Renderer const renderer(app_->getRenderer(), textures, screenWidth, screenHeight, world.width(), world.height(),
                          cameraWrapX_, cameraWrapY_, camera_);
  RenderWorld(world, app_->getRenderer(), camera_, screenWidth, screenHeight);

  // Food glows through the colours, a cycle every 60 frames.
  float const phase = static_cast<float>(simulation_.frame()) * 0.104719765f;
  auto const glow = [](float angle) { return static_cast<Uint8>(180.0f + 75.0f * std::sin(angle)); };
  textures.setGreyscaleColour(SDL_Color{glow(phase), glow(phase + 2.0943952f), glow(phase + 4.1887903f), 255});
  SDL_Texture* star = textures.getGreyscaleTexture("star.png");
  float const starScale = 0.2f + 0.03f * std::sin(phase);
  for (Vec2<WorldCoord> const& item : simulation_.food()) {
    renderer.renderTexture_CentreAnchor(star, static_cast<float>(item.x) + 0.5f, static_cast<float>(item.y) + 0.5f,
                                        starScale, 0.0f, false);
  }

  std::vector<ViperHead> const& heads = simulation_.heads();
  std::vector<unsigned short> const& slots = simulation_.slots();
  int const local = simulation_.localPlayer();
  std::vector<int> lengths;
  std::vector<bool> alive;
  for (std::size_t i = 0; i < heads.size(); ++i) {
    textures.setGreyscaleColour(SlotColour(slots[i], heads[i].alive() ? 1.0f : 0.3f));
    RenderTail(simulation_.tails()[i].points(), k_tailRadius, renderer);
    if (static_cast<int>(i) != local && heads[i].alive()) {
      RenderShipAndCore(renderer, textures, heads[i].body, slots[i]);
    }
    lengths.push_back(simulation_.tails()[i].length());
    alive.push_back(heads[i].alive());
  }
  unsigned short const localSlot = slots[static_cast<std::size_t>(local)];
  RenderShipAndCore(renderer, textures, simulation_.shadow().body, localSlot);

  VipersStatusBar(slots, lengths, alive, local);
  if (debugTools_) {
    if (ImGui::Begin("##DebugWindow")) {
      ImGui::Checkbox("Network shadows", &networkShadows_);
    }
    ImGui::End();
  }
  std::vector<int> const& teams = simulation_.teams();
  int const team = localSlot < teams.size() ? teams[localSlot] : localSlot;
  std::int64_t const framesLeft = std::max<std::int64_t>(
      0, std::int64_t{simulation_.endFrame()} + simulation_.delayFrames() - std::int64_t{simulation_.frame()});
  TeamAndRemainingTime(localSlot, team, simulation_.framePeriod() * static_cast<std::uint64_t>(framesLeft));
}
