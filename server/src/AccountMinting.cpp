#include "AccountMinting.h"

#include <algorithm>
#include <stdexcept>

#include "LobbyServer.h"
#include "SecureRandom.h"

Credentials MintAccount(IServerStorage& storage, std::string const& name) {
  // A clash of 64-bit random ids is next to impossible; a few tries cover it all the same.
  for (int attempt = 0; attempt < 8; ++attempt) {
    Credentials credentials{SecureRandomBytes(8), SecureRandomBytes(16)};
    if (storage.addAccount(credentials.playerId, credentials.secret, name)) {
      return credentials;
    }
  }
  throw std::runtime_error("Failed to mint an account: no free player id found");
}

bool IsAcceptableName(std::string const& name) {
  return !name.empty() && name.size() <= LobbyServer::kMaxNameLength &&
         std::none_of(name.begin(), name.end(), [](char c) {
           auto const byte = static_cast<unsigned char>(c);
           return byte < 0x20 || byte == 0x7f;
         });
}
