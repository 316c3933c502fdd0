#pragma once

#include "MapSettings.h"

// The one map shared by the two ship games.
MapSettings EmptyBerthMap();
