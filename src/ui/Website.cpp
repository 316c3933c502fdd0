#include "ui/Website.h"

namespace {

std::string& Address() {
  static std::string address = "http://127.0.0.1:6568";
  return address;
}

}  // namespace

std::string const& WebsiteAddress() {
  return Address();
}

void SetWebsiteAddress(std::string const& ip, int basePort) {
  Address() = "http://" + ip + ":" + std::to_string(basePort + 1);
}
