#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

#include "net/ServerLogEntry.h"

// The number of entries not yet seen.
std::size_t UnseenServerLogEntries(std::deque<ServerLogEntry> const& log);

// Whether the newest entry is unseen and arrived at most 10 seconds before now.
bool ErrorToastDue(std::deque<ServerLogEntry> const& log, std::chrono::system_clock::time_point now);

// A toast at the middle of the bottom edge with the newest server error, while ErrorToastDue.
void RenderErrorToast(std::deque<ServerLogEntry> const& log);

// The small "Server log" window at the top right, with its arrow to open the entries below it. Returns
// whether the log is open; the caller then marks every entry seen.
bool ShowServerLog(std::deque<ServerLogEntry> const& log);
