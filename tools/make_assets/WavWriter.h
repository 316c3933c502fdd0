#pragma once

#include <string>
#include <vector>

// Writes mono 16-bit PCM samples (floats from -1 to 1, clipped) as a RIFF WAVE file.
void WriteWav(std::string const& path, std::vector<float> const& samples, int sampleRate);
