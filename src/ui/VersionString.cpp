#include "ui/VersionString.h"

#include <fmt/format.h>

std::string const& VersionString(unsigned int version) {
  static std::string const text =
      fmt::format("{}.{}.{}", version / 1000000, (version % 1000000) / 1000, version % 1000);
  return text;
}
