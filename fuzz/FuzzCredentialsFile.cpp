// Fuzz target: reading the bytes of a credentials file. Any bytes either read to an 8-byte id and a
// 16-byte secret, which the file written for them reads back to, or raise std::runtime_error with one
// of the reader's three texts.
#include <sstream>
#include <stdexcept>
#include <string>

#include "FuzzChecks.h"
#include "accounts/CredentialsFile.h"

namespace {

Credentials Read(std::string const& bytes) {
  std::istringstream file(bytes);
  return ReadCredentials(file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  try {
    Credentials const credentials = Read(std::string(reinterpret_cast<char const*>(data), size));
    FUZZ_REQUIRE(credentials.playerId.size() == 8 && credentials.secret.size() == 16);
    std::vector<unsigned char> const written = CredentialsFileBytes(credentials);
    FUZZ_REQUIRE(written.size() == 40);
    FUZZ_REQUIRE(Read(std::string(written.begin(), written.end())) == credentials);
  } catch (std::runtime_error const& error) {
    std::string const what = error.what();
    FUZZ_REQUIRE(what == "Unexpected data format in credentials file" ||
                 what == "Failed to read complete credentials from file" ||
                 what == "Unexpected trailing data in credentials file");
  }
  return 0;
}
