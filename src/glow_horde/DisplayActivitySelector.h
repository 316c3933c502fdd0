#pragma once

#include <vector>

#include "glow_horde/ActivityAvailabilities.h"
#include "glow_horde/LemmingActivity.h"
#include "glow_horde/LemmingActivityTrigger.h"

class TextureCache;

// The in-game window at the middle of the top edge: a button per activity with the orders left,
// the selected one highlighted, and under it the four trigger icons, the default trigger of that
// activity outlined. A button with none left is greyed out and can't be chosen with the mouse.
// Clicking an icon changes the default trigger of the selected activity for the rest of the game.
void DisplayActivitySelector(ActivityAvailabilities const& availabilities, LemmingActivity& selected,
                             std::vector<LemmingActivityTrigger>& defaultTriggers, TextureCache& textures);
