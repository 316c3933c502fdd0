#pragma once

#include <string>

#include "ServerStorage.h"
#include "accounts/Credentials.h"

// Mints an account: a fresh 8-byte id and 16-byte secret from the system's cryptographic generator,
// stored with the player's first name. Raises std::runtime_error if the storage fails. The command
// line and the website both mint through here; nobody edits the database by hand.
Credentials MintAccount(IServerStorage& storage, std::string const& name);

// A player's name as the server accepts it: 1 to 32 bytes, no control characters.
bool IsAcceptableName(std::string const& name);
