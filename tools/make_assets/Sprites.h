#pragma once

#include "Canvas.h"

// Drawings in black on white for tinting: darkness becomes coverage when the game loads them.
Canvas MakeEntrySprite();
Canvas MakeExitSprite();
Canvas MakeHordelingSprite();
Canvas MakeSelectionBracketsSprite();
Canvas MakeCircleSprite();
Canvas MakeCircleCrossSectionSprite();
Canvas MakeShipSprite();
Canvas MakeRingSprite();
Canvas MakeStarSprite();
