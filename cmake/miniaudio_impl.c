/* The one translation unit that holds miniaudio's implementation. */
#define MINIAUDIO_IMPLEMENTATION
#include "miniaudio.h"
