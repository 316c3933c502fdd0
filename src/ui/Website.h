#pragma once

// The address of the game's website, without a trailing slash; pages append their paths.
inline constexpr char kWebsite[] = "https://tandemparlour.net";
