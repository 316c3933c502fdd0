#include "aviators/RunningAviators.h"

#include <imgui.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>

#include "app/QZAssert.h"
#include "app/SDL3App.h"
#include "aviators/AviatorsGame.h"
#include "aviators/StatusBarUI.h"
#include "aviators/TeamAndRemainingTime.h"
#include "present/Renderer.h"
#include "present/SoundSystem.h"
#include "present/TextureCache.h"
#include "present/WorldDrawing.h"
#include "sim/PlayerSlots.h"

namespace {

constexpr char const* k_sounds[] = {"small_hit.wav",         "explosion.wav", "target_lock_succeeded.wav",
                                    "target_lock_failed.wav", "fire_missile.wav", "cannot_fire_missile.wav"};

char const* SoundFile(AviatorsSimulation::Sound sound) { return k_sounds[static_cast<std::size_t>(sound)]; }

// The bodies are moved through the terrain grown by the ship's radius; the growth is timed once a session.
CollisionMap TimedExpand(CollisionMap const& solid) {
  auto const start = std::chrono::steady_clock::now();
  CollisionMap grown = solid.expandByRadius(10);
  double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::cout << "expandByRadius took " << seconds << " seconds" << std::endl;
  return grown;
}

SDL_Color SlotColour(unsigned short slot, float alpha) {
  PlayerSlot const& s = SLOTS[slot % SLOTS.size()];
  return SDL_Color{static_cast<Uint8>(s.red * 255.0f), static_cast<Uint8>(s.green * 255.0f),
                   static_cast<Uint8>(s.blue * 255.0f), static_cast<Uint8>(std::clamp(alpha, 0.0f, 255.0f))};
}

float Px(AviatorCoord c) { return static_cast<float>(c) / 256.0f; }

constexpr float k_radiansPerUnit = 9.58738e-5f;

}  // namespace

RunningAviators::RunningAviators(std::shared_ptr<AviatorsGame const> game, std::shared_ptr<SDL3App> app,
                                 int localPlayer, unsigned long long framePeriod, unsigned char delayFrames,
                                 GameSettings const& settings, MapSettings const& map,
                                 std::vector<unsigned short> const& players, bool debugTools)
    : game_(std::move(game)), app_(std::move(app)),
      simulation_(localPlayer, framePeriod, delayFrames, settings, map, players,
                  TimedExpand),
      debugTools_(debugTools) {
  if (app_) {
    for (char const* sound : k_sounds) {
      app_->getSoundSystem().preloadSound(sound);
    }
  }
  lastTicks_ = SDL_GetTicks();
}

IGame const& RunningAviators::game() const { return *game_; }

void RunningAviators::eventHandler(SDL_Event const& event) {
  if (event.type == SDL_EVENT_KEY_DOWN) {
    if (event.key.scancode == SDL_SCANCODE_L) {
      uiLock_ = true;
    } else if (event.key.scancode == SDL_SCANCODE_SPACE) {
      uiFire_ = true;
    }
  } else if (event.type == SDL_EVENT_MOUSE_WHEEL) {
    camera_.zoom = std::clamp(camera_.zoom * (1.0f + 0.1f * event.wheel.y), 0.5f, 2.0f);
  }
}

void RunningAviators::nonEventDrivenUIChecks() {
  std::uint32_t const frame = simulation_.frame();
  if (autoFire_ && (autoFireInterval_ == 0 ? frame == 0 : frame % static_cast<std::uint32_t>(autoFireInterval_) == 0)) {
    uiFire_ = true;
  }
  std::uint64_t const now = SDL_GetTicks();
  float const dt = static_cast<float>(now - lastTicks_) / 1000.0f;
  lastTicks_ = now;

  bool const* keys = SDL_GetKeyboardState(nullptr);
  std::uint8_t turn = 0;
  if (keys[SDL_SCANCODE_A]) {
    turn = 1;
  } else if (keys[SDL_SCANCODE_D]) {
    turn = 2;
  }
  std::uint8_t thrust = 0;
  if (keys[SDL_SCANCODE_W]) {
    thrust = 1;
  } else if (keys[SDL_SCANCODE_S]) {
    thrust = 2;
  }
  uiControls_ = static_cast<std::uint8_t>(turn | (thrust << 2));
  if (keys[SDL_SCANCODE_Q]) {
    camera_.zoom = std::max(camera_.zoom * (1.0f - dt), 0.5f);
  }
  if (keys[SDL_SCANCODE_E]) {
    camera_.zoom = std::min(camera_.zoom * (1.0f + dt), 2.0f);
  }

  // The predicted ship stays in the centre; without camera wrap the view stays near the world.
  float const viewWidth = static_cast<float>(app_->getWidth()) / camera_.zoom;
  float const viewHeight = static_cast<float>(app_->getHeight()) / camera_.zoom;
  ChunkedWorld const& world = simulation_.world();
  auto place = [](float centre, float view, float size, bool wrap) {
    float value = centre - view / 2.0f;
    if (wrap) {
      auto const whole = static_cast<long long>(std::floor(value));
      auto const period = static_cast<long long>(size);
      return static_cast<float>(((whole % period) + period) % period);
    }
    return std::max(std::min(value, size - 150.0f), 150.0f - view);
  };
  Aviator const& shadow = simulation_.shadow();
  camera_.x = place(Px(shadow.position.x), viewWidth, static_cast<float>(world.width()), world.cameraWrapX());
  camera_.y = place(Px(shadow.position.y), viewHeight, static_cast<float>(world.height()), world.cameraWrapY());
}

std::vector<unsigned char> RunningAviators::processUIInputsAndGetOurNextOrder() {
  if (uiControls_ == simulation_.shadow().controls && !uiFire_ && !uiLock_) {
    return {};
  }
  auto const byte = static_cast<unsigned char>(uiControls_ + (uiFire_ ? 16 : 0) + (uiLock_ ? 32 : 0));
  uiFire_ = false;
  uiLock_ = false;
  return {byte};
}

void RunningAviators::update(std::vector<std::vector<unsigned char>> const& orders,
                             std::vector<unsigned char> ourOrder) {
  simulation_.update(orders, ourOrder);
  if (!app_) {
    return;
  }
  SoundSystem& sound = app_->getSoundSystem();
  for (AviatorsSimulation::SoundEvent const& event : simulation_.sounds()) {
    float const volume = event.impact >= 0 ? std::min(static_cast<float>(event.impact) / 3072.0f, 1.0f) : 1.0f;
    sound.playSound(SoundFile(event.sound), volume, 1.0f);
  }
}

bool RunningAviators::evaluateCondition(std::string const&) const { return false; }

void RunningAviators::injectOrder(std::string const&) {
  // Only the tutorial injects orders, and this game has none.
  QZ_ASSERT(false);
}

void RunningAviators::renderAviator(Aviator const& ship, unsigned short slot, bool sharedLocal, float dying) const {
  if (dying >= 1.0f || (sharedLocal && !networkShadows_)) {
    return;
  }
  TextureCache& textures = app_->getTextures();
  PlayerSlot const& s = SLOTS[slot % SLOTS.size()];
  float red = s.red * 255.0f;
  float green = s.green * 255.0f;
  float blue = s.blue * 255.0f;
  if (sharedLocal) {
    red *= 0.3f;
    green *= 0.3f;
    blue *= 0.3f;
  }
  float alpha = 255.0f;
  if (dying > 0.0f) {
    red += dying * (255.0f - red);
    green += dying * ((1.0f - dying) * 100.0f - green);
    blue += dying * ((1.0f - dying) * 50.0f - blue);
    if (dying > 0.5f) {
      alpha = 255.0f * (1.0f - dying) / 0.5f;
    }
  }
  auto const channel = [](float v) { return static_cast<Uint8>(std::clamp(v, 0.0f, 255.0f)); };
  Renderer const renderer(app_->getRenderer(), textures, app_->getWidth(), app_->getHeight(),
                          simulation_.world().width(), simulation_.world().height(), simulation_.world().cameraWrapX(),
                          simulation_.world().cameraWrapY(), camera_);
  textures.setGreyscaleColour(SDL_Color{channel(red), channel(green), channel(blue), channel(alpha)});
  renderer.renderCircle(Px(ship.position.x), Px(ship.position.y), 12.0f * (1.0f + 2.0f * dying));
  textures.setGreyscaleColour(SDL_Color{255, 255, 255, channel(alpha)});
  renderer.renderShip(Px(ship.position.x), Px(ship.position.y), 32.0f / 63.0f,
                      static_cast<float>(ship.rotation) * k_radiansPerUnit);
}

void RunningAviators::renderDeathExplosion(Aviator const& ship, unsigned short slot, float dying) const {
  TextureCache& textures = app_->getTextures();
  Renderer const renderer(app_->getRenderer(), textures, app_->getWidth(), app_->getHeight(),
                          simulation_.world().width(), simulation_.world().height(), simulation_.world().cameraWrapX(),
                          simulation_.world().cameraWrapY(), camera_);
  textures.setGreyscaleColour(SlotColour(slot, (1.0f - dying) * 200.0f));
  float const radius = 12.0f + 48.0f * dying;
  renderer.renderTexture_CentreAnchor(textures.getGreyscaleTexture("ring.png"), Px(ship.position.x),
                                      Px(ship.position.y), radius / 32.0f, 0.0f, false);
}

void RunningAviators::renderMissiles() const {
  TextureCache& textures = app_->getTextures();
  Renderer const renderer(app_->getRenderer(), textures, app_->getWidth(), app_->getHeight(),
                          simulation_.world().width(), simulation_.world().height(), simulation_.world().cameraWrapX(),
                          simulation_.world().cameraWrapY(), camera_);
  int const local = simulation_.localPlayer();
  auto draw = [&](Missile const& m, float strength) {
    bool const launching = m.age < Missile::k_launch_steps;
    SDL_Color colour = launching ? SDL_Color{255, 255, 255, 255}
                                 : SlotColour(simulation_.slots()[static_cast<std::size_t>(m.target)], 255.0f);
    colour.r = static_cast<Uint8>(static_cast<float>(colour.r) * strength);
    colour.g = static_cast<Uint8>(static_cast<float>(colour.g) * strength);
    colour.b = static_cast<Uint8>(static_cast<float>(colour.b) * strength);
    textures.setGreyscaleColour(colour);
    renderer.renderMissile(Position{m.renderPosition.x / 256, m.renderPosition.y / 256},
                           static_cast<float>(m.renderRotation) * k_radiansPerUnit);
  };
  for (Missile const& m : simulation_.missiles()) {
    bool const predicted = m.target == local || (m.owner == local && m.age < Missile::k_launch_steps);
    if (!predicted) {
      draw(m, 1.0f);
    } else if (networkShadows_) {
      draw(m, 0.3f);
    }
  }
  for (Missile const& m : simulation_.shadowMissiles()) {
    draw(m, 1.0f);
  }
}

void RunningAviators::render() {
  int const screenWidth = app_->getWidth();
  int const screenHeight = app_->getHeight();
  ChunkedWorld& world = simulation_.world();
  TextureCache& textures = app_->getTextures();
  Renderer const renderer(app_->getRenderer(), textures, screenWidth, screenHeight, world.width(), world.height(),
                          world.cameraWrapX(), world.cameraWrapY(), camera_);
  RenderWorld(world, app_->getRenderer(), camera_, screenWidth, screenHeight);

  std::uint32_t const frame = simulation_.frame();
  auto dyingOf = [&](Aviator const& ship) {
    if (!ship.deathFrame.has_value()) {
      return 0.0f;
    }
    return std::min(static_cast<float>(static_cast<std::int64_t>(frame) - *ship.deathFrame) / 45.0f, 1.0f);
  };
  std::vector<Aviator> const& ships = simulation_.aviators();
  int const local = simulation_.localPlayer();
  unsigned short const localSlot = simulation_.slots()[static_cast<std::size_t>(local)];
  for (std::size_t i = 0; i < ships.size(); ++i) {
    float const f = dyingOf(ships[i]);
    unsigned short const slot = simulation_.slots()[i];
    renderAviator(ships[i], slot, static_cast<int>(i) == local, f);
    if (ships[i].deathFrame.has_value() && f < 1.0f) {
      renderDeathExplosion(ships[i], slot, f);
    }
  }
  Aviator const& shadow = simulation_.shadow();
  float const shadowDying = dyingOf(shadow);
  renderAviator(shadow, localSlot, false, shadowDying);
  if (shadow.deathFrame.has_value() && shadowDying < 1.0f) {
    renderDeathExplosion(shadow, localSlot, shadowDying);
  }

  if (shadow.target.has_value() && *shadow.target < ships.size()) {
    Aviator const& target = ships[*shadow.target];
    textures.setGreyscaleColour(SlotColour(simulation_.slots()[*shadow.target], 100.0f));
    renderer.renderTexture_CentreAnchor(textures.getGreyscaleTexture("selection_brackets.png"), Px(target.position.x),
                                        Px(target.position.y), 0.8f, 0.0f, false);
  }
  if (simulation_.pingFrame().has_value() && simulation_.pingPoint().has_value()) {
    auto const age = static_cast<float>(frame - *simulation_.pingFrame());
    if (age >= 60.0f) {
      simulation_.clearPing();
    } else {
      float const alpha = age <= 30.0f ? 40.0f * (age / 30.0f) : 40.0f * ((60.0f - age) / 30.0f);
      textures.setGreyscaleColour(SDL_Color{255, 255, 255, static_cast<Uint8>(std::clamp(alpha, 0.0f, 255.0f))});
      renderer.renderTexture_CentreAnchor(textures.getGreyscaleTexture("ring.png"), Px(simulation_.pingPoint()->x),
                                          Px(simulation_.pingPoint()->y), 300.0f / 32.0f, 0.0f, false);
    }
  }
  renderMissiles();
  textures.setGreyscaleColour(SDL_Color{255, 255, 255, 255});

  std::vector<int> healths;
  for (std::size_t i = 0; i < ships.size(); ++i) {
    healths.push_back(static_cast<int>(i) == local ? shadow.health : ships[i].health);
  }
  std::optional<unsigned short> targetSlot;
  if (shadow.target.has_value() && *shadow.target < ships.size()) {
    targetSlot = simulation_.slots()[*shadow.target];
  }
  StatusBarUI(simulation_.slots(), healths, Aviator::max_health, shadow.missiles, Aviator::max_missiles, targetSlot,
              shadow.lockLostFrames > 0);
  if (debugTools_) {
    debugWindow();
  }
  int const team = localSlot < simulation_.teams().size() ? simulation_.teams()[localSlot] : localSlot;
  std::int64_t const framesLeft =
      std::max<std::int64_t>(static_cast<std::int64_t>(simulation_.endFrame()) + simulation_.delayFrames() - frame, 0);
  TeamAndRemainingTime(localSlot, team, simulation_.framePeriod() * static_cast<std::uint64_t>(framesLeft));
}

void RunningAviators::debugWindow() {
  if (ImGui::Begin("##DebugWindow")) {
    int turnRate = Missile::turn_rate;
    if (ImGui::SliderInt("Turn rate", &turnRate, 200, 2500)) {
      Missile::turn_rate = static_cast<std::uint16_t>(turnRate);
    }
    int thrust = simulation_.missileSpeed();
    if (ImGui::SliderInt("Thrust", &thrust, 5, 100)) {
      simulation_.setMissileSpeed(thrust);
    }
    ImGui::SliderInt("Lead frames", &Missile::lead_frames, 0, 10);
    ImGui::Checkbox("Direct acceleration on overshoot", &Missile::direct_acceleration_on_overshoot);
    ImGui::SliderInt("Drag threshold", &Missile::drag_threshold, 100, 3000);
    ImGui::SliderInt("Drag numerator", &Missile::drag_numerator, 5, 30);
    ImGui::SliderInt("Drag denominator", &Missile::drag_denominator, 5, 30);
    ImGui::SliderInt("Hit radius", &Missile::hit_radius, 0, 1280);
    ImGui::Checkbox("Auto fire", &autoFire_);
    ImGui::SliderInt("Auto fire inteval", &autoFireInterval_, 0, 360);
    ImGui::Checkbox("Network shadows", &networkShadows_);
  }
  ImGui::End();
}
