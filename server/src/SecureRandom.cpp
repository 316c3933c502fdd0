#include "SecureRandom.h"

#include <sys/random.h>

#include <cerrno>
#include <stdexcept>
#include <string>

void SecureRandomBytes(unsigned char* out, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    ssize_t const got = getrandom(out + done, size - done, 0);
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      throw std::runtime_error("Failed to read the system's random generator: errno " + std::to_string(errno));
    }
    done += static_cast<std::size_t>(got);
  }
}

std::vector<unsigned char> SecureRandomBytes(std::size_t size) {
  std::vector<unsigned char> bytes(size);
  SecureRandomBytes(bytes.data(), bytes.size());
  return bytes;
}

std::uint64_t SecureRandomToken() {
  for (;;) {
    unsigned char bytes[8];
    SecureRandomBytes(bytes, sizeof bytes);
    std::uint64_t token = 0;
    for (int i = 7; i >= 0; --i) {
      token = (token << 8) | bytes[i];
    }
    if (token != 0) {
      return token;
    }
  }
}
