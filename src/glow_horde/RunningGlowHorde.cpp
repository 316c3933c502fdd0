#include "glow_horde/RunningGlowHorde.h"

#include <algorithm>
#include <cctype>

#include "sim/PlayerSlots.h"
#include "app/QZAssert.h"
#include "present/Renderer.h"
#include "app/SDL3App.h"
#include "present/SoundSystem.h"
#include "present/TextureCache.h"
#include "present/WorldDrawing.h"
#include "glow_horde/DisplayActivitySelector.h"
#include "glow_horde/GlowHordeGame.h"
#include "glow_horde/RenderTeamInfoAndScores.h"
#include "glow_horde/UIOrderText.h"

namespace {

constexpr char const* k_orderSound = "order_given.wav";
constexpr char const* k_exitSound = "exit.wav";

SDL_Color Shown(UnitColour colour) { return SDL_Color{colour.r, colour.g, colour.b, colour.a}; }

SDL_Color Dimmed(UnitColour colour) {
  auto const dim = [](Uint8 channel) { return static_cast<Uint8>(static_cast<float>(channel) * 0.4f); };
  return SDL_Color{dim(colour.r), dim(colour.g), dim(colour.b), colour.a};
}

} // namespace

RunningGlowHorde::RunningGlowHorde(std::shared_ptr<GlowHordeGame const> game, std::shared_ptr<SDL3App> app,
                                   int localPlayer, unsigned long long framePeriod, unsigned char delayFrames,
                                   GameSettings const& settings, MapSettings const& map,
                                   std::vector<unsigned short> const& players)
    : game_(std::move(game)), app_(std::move(app)),
      simulation_(localPlayer, framePeriod, delayFrames, settings, map, players),
      controls_(simulation_.world().width(), simulation_.world().height(), map.cameraWrapX, map.cameraWrapY) {
  app_->getSoundSystem().preloadSound(k_orderSound);
  app_->getSoundSystem().preloadSound(k_exitSound);
  controls_.centreOn(simulation_.localPlayerState().spawn(), app_->getWidth(), app_->getHeight());
  lastTicks_ = static_cast<std::uint32_t>(SDL_GetTicks());
}

IGame const& RunningGlowHorde::game() const { return *game_; }

Position RunningGlowHorde::wrappedAlways(Position position) const {
  return GlowHordeSimulation::WrappedAlways(position, simulation_.world().width(), simulation_.world().height());
}

GlowHordeControls::Pointer RunningGlowHorde::pointer() const {
  GlowHordeControls::Pointer p;
  app_->getMousePos(p.x, p.y, p.overGame);
  return p;
}

void RunningGlowHorde::eventHandler(SDL_Event const& event) { controls_.handleEvent(event, pointer()); }

void RunningGlowHorde::nonEventDrivenUIChecks() {
  auto const now = static_cast<std::uint32_t>(SDL_GetTicks());
  std::uint32_t const milliseconds = now - lastTicks_;
  lastTicks_ = now;

  bool const* keys = SDL_GetKeyboardState(nullptr);
  GlowHordeControls::HeldKeys held;
  held.left = keys[SDL_SCANCODE_LEFT];
  held.right = keys[SDL_SCANCODE_RIGHT];
  held.up = keys[SDL_SCANCODE_UP];
  held.down = keys[SDL_SCANCODE_DOWN];
  held.w = keys[SDL_SCANCODE_W];
  held.a = keys[SDL_SCANCODE_A];
  held.s = keys[SDL_SCANCODE_S];
  held.d = keys[SDL_SCANCODE_D];
  held.q = keys[SDL_SCANCODE_Q];
  held.e = keys[SDL_SCANCODE_E];
  char const* cursor = controls_.applyHeldInput(held, milliseconds, pointer(), app_->getWidth(), app_->getHeight());
  app_->setCursor(cursor);
}

void RunningGlowHorde::render() {
  int const screenWidth = app_->getWidth();
  int const screenHeight = app_->getHeight();
  ChunkedWorld& world = simulation_.world();
  TextureCache& textures = app_->getTextures();
  Camera const& camera = controls_.camera();
  Renderer const renderer(app_->getRenderer(), textures, screenWidth, screenHeight, world.width(), world.height(),
                          world.cameraWrapX(), world.cameraWrapY(), camera);
  RenderWorld(world, app_->getRenderer(), camera, screenWidth, screenHeight);

  DirectionFilter const filter = controls_.directionFilter();
  LemmingActivityTrigger const trigger = controls_.triggerInEffect();
  std::vector<PlayerState> const& players = simulation_.players();
  for (std::size_t p = 0; p < players.size(); ++p) {
    PlayerState const& player = players[p];
    textures.setGreyscaleColour(Shown(player.colour()));
    player.render(renderer, filter, trigger);
    if (static_cast<int>(p) == simulation_.localPlayer() && controls_.hoverPosition().has_value()) {
      if (std::optional<Position> chosen =
              player.previewUnitSelectionForOrder(controls_.orderAt(*controls_.hoverPosition()))) {
        renderer.renderSelectionBrackets(*chosen);
      }
    }
    textures.setGreyscaleColour(Dimmed(player.colour()));
    player.renderLowAlpha(renderer, filter, trigger);
  }

  std::vector<Position> const& exits = simulation_.exitPositions();
  for (std::size_t e = 0; e < exits.size(); ++e) {
    PlayerSlot const& slot = SLOTS[e % SLOTS.size()];
    textures.setGreyscaleColour(SDL_Color{static_cast<Uint8>(slot.red * 255.0f), static_cast<Uint8>(slot.green * 255.0f),
                                          static_cast<Uint8>(slot.blue * 255.0f), 255});
    renderer.renderExit(exits[e]);
  }

  PlayerState const& local = simulation_.localPlayerState();
  if (!gameEnded()) {
    DisplayActivitySelector(local.availabilities(), controls_.selectedActivity(), controls_.defaultTriggers(),
                            textures);
  }
  int const slot = simulation_.slots()[static_cast<std::size_t>(simulation_.localPlayer())];
  int const team = simulation_.teams().at(static_cast<std::size_t>(slot));
  std::int64_t const framesLeft = static_cast<std::int64_t>(simulation_.endFrame()) + simulation_.delayFrames() -
                                  static_cast<std::int64_t>(simulation_.frame());
  RenderTeamInfoAndScores(simulation_.exitedCounts(), slot, team, players.front().toSpawn(),
                          simulation_.framePeriod() * static_cast<std::uint64_t>(std::max<std::int64_t>(framesLeft, 0)));
}

std::vector<unsigned char> RunningGlowHorde::processUIInputsAndGetOurNextOrder() {
  // A click with no unit in range is simply lost.
  std::optional<UIOrder> const pending = controls_.takePendingOrder();
  resolvedOrder_.clear();
  if (pending.has_value()) {
    if (std::optional<Order> order = simulation_.localPlayerState().resolveUIOrder(*pending)) {
      resolvedOrder_ = order->toBytes();
    }
  }
  return resolvedOrder_;
}

void RunningGlowHorde::update(std::vector<std::vector<unsigned char>> const& orders,
                              std::vector<unsigned char> ourOrder) {
  // The order of this step is the local player's own only if it is the one just resolved here; in a
  // replay it comes from the recording instead.
  auto const origin = ourOrder == resolvedOrder_ ? GlowHordeSimulation::OurOrderOrigin::ResolvedHere
                                                 : GlowHordeSimulation::OurOrderOrigin::Recorded;
  resolvedOrder_.clear();
  GlowHordeSimulation::StepEvents const events = simulation_.update(orders, ourOrder, origin);
  SoundSystem& sound = app_->getSoundSystem();
  if (events.localOrderAccepted) {
    sound.playSound(k_orderSound, 1.0f, 1.0f);
  }
  for (int i = 0; i < events.exitArrivals; ++i) {
    sound.playSound_WithRandomVariation(k_exitSound, 0.2f, 1, 1, 1.0f, 1.0f);
  }
}

std::optional<UIOrder> RunningGlowHorde::parseUIOrder(std::string const& text) const {
  return ParseUIOrderText(text, controls_.defaultTriggers());
}

void RunningGlowHorde::injectOrder(std::string const& order) {
  std::optional<UIOrder> const parsed = parseUIOrder(order);
  QZ_ASSERT(parsed.has_value());
  controls_.setPendingOrder(*parsed);
}

bool RunningGlowHorde::evaluateCondition(std::string const& condition) const {
  std::size_t const typeEnd = condition.find_first_of(" \t");
  std::string const condition_type = condition.substr(0, typeEnd);
  QZ_ASSERT(condition_type == "order_applies");
  std::size_t const restStart = typeEnd == std::string::npos ? condition.size() : condition.find_first_not_of(" \t", typeEnd);
  std::optional<UIOrder> const parsed =
      parseUIOrder(restStart == std::string::npos ? std::string() : condition.substr(restStart));
  QZ_ASSERT(parsed.has_value());
  return simulation_.localPlayerState().previewUnitSelectionForOrder(*parsed).has_value();
}
