#pragma once

// The window at the bottom centre of a ship game's screen: the team, when the player's slot is on
// another's team, and the time left as minutes and seconds.
void TeamAndRemainingTime(int slot, int team, unsigned long long microsecondsLeft);
