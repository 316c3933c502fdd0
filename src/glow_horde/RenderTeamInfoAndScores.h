#pragma once

#include <string>
#include <vector>

// The in-game bar at the middle of the bottom edge: the local player's colour and, if it differs,
// its team's; each team's score in the team's colour; the units still to spawn; the time left.
void RenderTeamInfoAndScores(std::vector<int> const& exitedCounts, int slot, int team, int toSpawn,
                             unsigned long long microsecondsLeft);

// "Time remaining: MM:SS", whole seconds by integer division; 90,000,000 microseconds reads 01:30.
std::string TimeRemainingText(unsigned long long microsecondsLeft);
