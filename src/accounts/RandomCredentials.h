#pragma once

#include <string>

#include "accounts/Credentials.h"

// Loads the credentials of one regular file of the directory (not its subfolders), chosen with equal
// chances by a Mersenne Twister seeded once from "/dev/urandom". Lets one machine play as several test
// accounts. Throws std::runtime_error "No files found in directory" for a directory with no regular
// file, the texts of LoadCredentials for the chosen file, and std::filesystem errors for a directory
// that can't be listed.
Credentials LoadRandomCredentials(std::string const& directory);
