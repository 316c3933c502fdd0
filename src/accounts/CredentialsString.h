#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "accounts/Credentials.h"

// The credentials string: Base64url text (no padding needed) of a 27-byte payload made of a version
// byte (1), the 8-byte player id, the 16-byte secret and a CRC-16 of those 25 bytes, most significant
// byte first. Whitespace anywhere in the text is ignored.

// Deletes every space, tab, line feed, vertical tab, form feed and carriage return, keeping the order of
// the other characters.
void RemoveAsciiWhitespaceInPlace(std::string& text);

// Decodes a pasted credentials string. Throws std::runtime_error with one of the texts
// "Invalid Base64url length", "Invalid Base64url character", "Invalid Base64url padding",
// "Decoded payload has unexpected length", "Unsupported credential version",
// "Credential checksum mismatch", checked in that order.
Credentials DecodeCredentialsString(std::string const& text);

// The 36-character string of an account, without padding, for those who hand accounts out.
// Throws std::invalid_argument unless playerId has 8 bytes and secret 16.
std::string EncodeCredentialsString(Credentials const& credentials);

// CRC-16 with polynomial 0x1021, initial value 0xFFFF, no reflection and no final inversion.
std::uint16_t CredentialsCrc16(unsigned char const* data, std::size_t size);
