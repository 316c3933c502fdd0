#pragma once

// The bottom-centre overlay of the ship games: the local player's team when it is not the player's own
// slot, and the time remaining as minutes and seconds.
void TeamAndRemainingTime(int slot, int team, unsigned long long microsecondsLeft);
