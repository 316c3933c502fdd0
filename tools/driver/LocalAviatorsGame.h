#pragma once

#include "DriverScript.h"
#include "app/MainLoopStates.h"

class MainLoopContext;

// A local Aviators game as the driver starts it: one ship for the person at the window, or a scripted
// duel of two clients in this process, each a whole session, joined by a relay that brings each order to
// both clients 15 frames later. In the duel the window shows client 0; when the game ends, the two
// clients' results must be byte-equal, or the run ends with a fatal error.
mainloop::LocalGameState MakeLocalAviatorsGame(MainLoopContext& context, ScriptStep const& step);
