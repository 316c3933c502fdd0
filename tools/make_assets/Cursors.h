#pragma once

#include "Canvas.h"

// Pointer cursors, hot spot at the top left. The left and right variants show the direction filter.
enum class CursorDirection { None, Left, Right };
Canvas MakeCursor(CursorDirection direction);

// Trigger icons, shown over units, in the activity selector and laid over the cursors.
Canvas MakeImmediateIcon();
Canvas MakeBlockedIcon();
Canvas MakeFallingIcon();
Canvas MakeTurnedIcon();
