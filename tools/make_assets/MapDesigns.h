#pragma once

#include <string>

#include "MapLayout.h"
#include "TerrainPainter.h"

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
