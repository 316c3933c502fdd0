// Kept apart from Games.cpp so that code which only reads the catalogues doesn't need the application shell.
#include "sim/Games.h"
#include "glow_horde/GlowHordeGame.h"

void Games::oneTimeAppInit(SDL3App& app) {
  GlowHordeGame::oneTimeAppInit(app);
}
