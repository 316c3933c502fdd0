#pragma once

#include <string>

#include "Canvas.h"

// The title banner of the main menu: the name of the collection over a little night scene.
Canvas MakeBanner(std::string const& fontPath);
