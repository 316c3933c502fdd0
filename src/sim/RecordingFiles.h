#pragma once

#include <set>
#include <string>
#include <vector>

#include "sim/Recording.h"

// Recording files live in one directory, each named "recording" + the game's number + ".bin".

// Loads every regular file (following symbolic links) of the directory whose whole name matches
// "recording\d+\.bin", in the order of the directory listing, which isn't sorted. A file that fails
// to load is left out, with the line
//   Failed to load recording from "<path>", <reason>
// on the standard error stream. A missing directory gives an empty list.
std::vector<Recording> LoadRecordingsFromDirectory(std::string const& directory);

// The game numbers of the recording files in the directory, from names that match
// "recording(\d+)\.bin", reduced to their low 16 bits; no file is opened. A digit string too long
// for a 64-bit number is skipped. A missing directory gives an empty set.
std::set<unsigned short> RecordingNumbersInDirectory(std::string const& directory);
