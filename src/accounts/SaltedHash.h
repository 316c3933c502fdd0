#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

// The salt of the login answer, shared with the server: 25 ASCII bytes, no terminator.
inline constexpr std::string_view kCredentialsSalt = "Patagonian Amber Crystals";

// The answer to a login challenge: 64-bit XXH3 with the default seed over the challenge, then the
// secret, then the salt, as one stream of bytes.
std::uint64_t SaltedHash(std::vector<unsigned char> const& challenge, std::vector<unsigned char> const& secret);
