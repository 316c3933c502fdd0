#pragma once

#include <string>
#include <vector>

#include "MapLayout.h"
#include "TerrainPainter.h"
#include "UnitSimulator.h"

// One map image of the data directory, as designed.
struct MapDesign {
  std::string file;
  MapLayout layout;
  TerrainTheme theme;
};

MapDesign MakeTutorialDigDown();
MapDesign MakeTutorialDigSideways();
MapDesign MakeTutorialBridge();
MapDesign MakeTutorialPit();
MapDesign MakeLedges();
MapDesign MakeCauldrons();
MapDesign MakeAstralSteps();
MapDesign MakeShipArena();

// A tutorial level played out by the unit model: the map, the level's settings and the orders of the
// intended solution (empty for the check that nothing exits without orders).
struct TutorialCheck {
  std::string name;
  SimSetup setup;
  int minimumExited = 1;
  int maximumExited = 1 << 30;
};

// The four tutorial levels, each with its intended solution, and each once more with no orders.
std::vector<TutorialCheck> TutorialChecks();
