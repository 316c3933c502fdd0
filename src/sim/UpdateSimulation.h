#pragma once

#include <utility>
#include <vector>

#include "sim/IOrderSource.h"

// Steps a session at most once: takes the local player's next order from it (none once the local
// player's game is over), asks the source for this frame's orders and, if they are there, calls
// update. Returns whether the session stepped.
//
// stalledFrames counts the frames in a row that had to wait: it is set to 0 by a step, raised by 1 by
// a stall and left alone once the game has ended. There is no catching up: a stalled frame is simply
// lost, together with whatever processUIInputsAndGetOurNextOrder consumed for it.
//
// RunningGame is IRunningGame in the application; any type with the same four operations will do.
template <class RunningGame>
bool UpdateSimulation(RunningGame& game, IOrderSource& source, int& stalledFrames) {
  if (game.gameEnded()) {
    return false;
  }
  bool const localGameEnded = game.gameEnded_LocalPlayer();
  std::vector<unsigned char> nextOrder;
  if (!localGameEnded) {
    nextOrder = game.processUIInputsAndGetOurNextOrder();
  }

  // The frame's orders are kept from call to call so that a step reuses their storage. A step runs on
  // one thread at a time (the main thread, or the watchdog while the main thread is held), and each
  // thread has its own copy.
  struct FrameOrders {
    std::vector<std::vector<unsigned char>> orders;
    std::vector<unsigned char> ourOrder;
  };
  thread_local FrameOrders frame;
  frame.orders.clear();
  frame.ourOrder.clear();

  bool const ready = source.fetchOrders(localGameEnded, std::move(nextOrder), frame.orders, frame.ourOrder);
  if (ready) {
    stalledFrames = 0;
    game.update(frame.orders, std::move(frame.ourOrder));
  } else {
    ++stalledFrames;
  }
  return ready;
}
