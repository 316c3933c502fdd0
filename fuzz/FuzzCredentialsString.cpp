// Fuzz target: decoding a pasted credentials string. Any text either decodes to an 8-byte id and a
// 16-byte secret, whose encoding decodes to the same account, or raises std::runtime_error with one of
// the decoder's six texts.
#include <stdexcept>
#include <string>

#include "FuzzChecks.h"
#include "accounts/CredentialsString.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text(reinterpret_cast<char const*>(data), size);
  try {
    Credentials const credentials = DecodeCredentialsString(text);
    FUZZ_REQUIRE(credentials.playerId.size() == 8 && credentials.secret.size() == 16);
    std::string const encoded = EncodeCredentialsString(credentials);
    FUZZ_REQUIRE(encoded.size() == 36);
    FUZZ_REQUIRE(DecodeCredentialsString(encoded) == credentials);
  } catch (std::runtime_error const& error) {
    std::string const what = error.what();
    FUZZ_REQUIRE(what == "Invalid Base64url length" || what == "Invalid Base64url character" ||
                 what == "Invalid Base64url padding" || what == "Decoded payload has unexpected length" ||
                 what == "Unsupported credential version" || what == "Credential checksum mismatch");
  }
  return 0;
}
