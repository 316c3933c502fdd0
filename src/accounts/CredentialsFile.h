#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "accounts/Credentials.h"

// The credentials file "credentials.bin": three length-prefixed fields, each length an unsigned 4-byte
// little-endian number: a name (at most 30 bytes, ignored when read, written as "Anon"), the player id
// (at most 32 bytes) and the secret (at most 64 bytes). Nothing follows the secret.

// Reads the fields from a stream, then resizes the id to exactly 8 bytes and the secret to exactly 16,
// cutting or filling with zero bytes. Throws std::runtime_error with
// "Unexpected data format in credentials file" for a length above its limit,
// "Failed to read complete credentials from file" for a short read and
// "Unexpected trailing data in credentials file" if a byte follows the secret.
Credentials ReadCredentials(std::istream& in);

// Opens the file in binary mode and reads it as ReadCredentials does; a file that can't be opened throws
// "Failed to open file: " followed by the path.
Credentials LoadCredentials(std::string const& path);

// The bytes of a credentials file for these credentials, the name being "Anon".
std::vector<unsigned char> CredentialsFileBytes(Credentials const& credentials);

// Creates or replaces the file. Throws std::runtime_error with "Failed to open file for writing: " and
// the path, or "Failed to write credentials to file"; a failed write may leave a partial file.
void SaveCredentials(Credentials const& credentials, std::string const& path);
