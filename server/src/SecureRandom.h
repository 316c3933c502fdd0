#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Bytes from the operating system's cryptographic generator (getrandom). Raises std::runtime_error if
// the system can't deliver them; the server never falls back to a weaker source.
void SecureRandomBytes(unsigned char* out, std::size_t size);
std::vector<unsigned char> SecureRandomBytes(std::size_t size);
// A random 64-bit number that is never 0, for tokens where 0 means "none".
std::uint64_t SecureRandomToken();
