#pragma once

#include <string>

// The client's version: major * 1000000 + minor * 1000 + patch.
inline constexpr unsigned int kClientVersion = 1003;

// The version as "major.minor.patch". Built on the first call and kept: later calls return the same
// text whatever their argument.
std::string const& VersionString(unsigned int version);
