#include <gtest/gtest.h>

#include <xxhash.h>

#include <string>
#include <vector>

#include "accounts/SaltedHash.h"

namespace {

using Bytes = std::vector<unsigned char>;

// One call of XXH3 over the bytes laid end to end, apart from the streaming code under test.
std::uint64_t OneShot(Bytes const& challenge, Bytes const& secret) {
  std::string joined(challenge.begin(), challenge.end());
  joined.append(secret.begin(), secret.end());
  joined += "Patagonian Amber Crystals";
  return XXH3_64bits(joined.data(), joined.size());
}

}  // namespace

TEST(SaltedHash, IsXXH3OverChallengeSecretAndSaltAsOneStream) {
  Bytes const challenge = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
  Bytes const secret = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  Bytes const large(1000, 0x5A);  // beyond XXH3's short-input paths
  struct Case {
    Bytes challenge;
    Bytes secret;
  };
  Case const cases[] = {{challenge, secret}, {{}, secret}, {challenge, {}}, {{}, {}}, {large, secret}, {challenge, large}};
  for (Case const& c : cases) {
    EXPECT_EQ(SaltedHash(c.challenge, c.secret), OneShot(c.challenge, c.secret));
  }
  // Only the concatenation counts: moving the seam between the two leaves the value alone, while the
  // order of the bytes and the salt do matter.
  Bytes const shorterChallenge(challenge.begin(), challenge.end() - 1);
  Bytes longerSecret = secret;
  longerSecret.insert(longerSecret.begin(), challenge.back());
  EXPECT_EQ(SaltedHash(shorterChallenge, longerSecret), SaltedHash(challenge, secret));
  EXPECT_NE(SaltedHash(secret, challenge), SaltedHash(challenge, secret));
  Bytes unsalted = challenge;
  unsalted.insert(unsalted.end(), secret.begin(), secret.end());
  EXPECT_NE(SaltedHash(challenge, secret), XXH3_64bits(unsalted.data(), unsalted.size()));
  EXPECT_EQ(kCredentialsSalt.size(), 25u);
}
