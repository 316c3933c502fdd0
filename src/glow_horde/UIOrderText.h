#pragma once

#include <optional>
#include <string>
#include <vector>

#include "glow_horde/LemmingActivityTrigger.h"
#include "glow_horde/UIOrder.h"

// The text form of an order, for a driver of the program: "x,y keyword [words]", for example
// "784,400 dig_down" or "560,560 bridge falling right". The keyword is one of "bridge",
// "horizontal_bridge", "raise_ground", "block", "dig_down", "dig_sideways", "dig_upwards". The trigger
// starts as the default of that activity and the filter as any; "immediate", "blocked", "falling",
// "turned" set the trigger and "left", "right" the filter, the last word winning; other words are
// ignored. Returns nothing if the numbers, the comma or the keyword are missing or wrong.
std::optional<UIOrder> ParseUIOrderText(std::string const& text,
                                        std::vector<LemmingActivityTrigger> const& defaultTriggers);

// The keyword of an activity in the text form, e.g. "dig_down".
char const* LemmingActivityKeyword(LemmingActivity activity);
