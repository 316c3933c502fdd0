#pragma once

#include <cstdint>

// The three games; the value is also the index into Games.
enum class Game : std::uint16_t { GlowHorde = 0, Aviators = 1, Vipers = 2 };
inline constexpr int kGameCount = 3;

// What kind of settings a room plays with.
enum class GameType : std::uint32_t { Friendly = 0, CoopChallenge = 1, RankedMatch = 2 };

char const* GameDisplayName(Game game);
char const* GameTypeDisplayName(GameType type);
