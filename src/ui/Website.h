#pragma once

#include <string>

// The address of the game's website, without a trailing slash; pages append their paths. Our server
// serves the site on the port after its lobby port, so the client derives it from --ip and
// --server-base-port at start-up: http://IP:(base port + 1). Until then it is the local default.
std::string const& WebsiteAddress();
void SetWebsiteAddress(std::string const& ip, int basePort);
