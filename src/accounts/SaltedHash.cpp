#include "accounts/SaltedHash.h"

#include <xxhash.h>

#include <memory>
#include <new>

std::uint64_t SaltedHash(std::vector<unsigned char> const& challenge, std::vector<unsigned char> const& secret) {
  std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(), &XXH3_freeState);
  if (state == nullptr) {
    throw std::bad_alloc();
  }
  XXH3_64bits_reset(state.get());
  XXH3_64bits_update(state.get(), challenge.data(), challenge.size());
  XXH3_64bits_update(state.get(), secret.data(), secret.size());
  XXH3_64bits_update(state.get(), kCredentialsSalt.data(), kCredentialsSalt.size());
  return XXH3_64bits_digest(state.get());
}
