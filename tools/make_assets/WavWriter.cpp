#include "WavWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <stdexcept>

namespace {

void Put32(std::ofstream& out, std::uint32_t v) {
  unsigned char const bytes[4] = {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8),
                                  static_cast<unsigned char>(v >> 16), static_cast<unsigned char>(v >> 24)};
  out.write(reinterpret_cast<char const*>(bytes), 4);
}

void Put16(std::ofstream& out, std::uint16_t v) {
  unsigned char const bytes[2] = {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8)};
  out.write(reinterpret_cast<char const*>(bytes), 2);
}

}  // namespace

void WriteWav(std::string const& path, std::vector<float> const& samples, int sampleRate) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) {
    throw std::runtime_error("Failed to open '" + path + "' for writing.");
  }
  std::uint32_t const dataBytes = static_cast<std::uint32_t>(samples.size() * 2);
  out.write("RIFF", 4);
  Put32(out, 36 + dataBytes);
  out.write("WAVE", 4);
  out.write("fmt ", 4);
  Put32(out, 16);                                         // size of the format chunk
  Put16(out, 1);                                          // PCM
  Put16(out, 1);                                          // mono
  Put32(out, static_cast<std::uint32_t>(sampleRate));
  Put32(out, static_cast<std::uint32_t>(sampleRate) * 2);  // bytes per second
  Put16(out, 2);                                          // bytes per frame
  Put16(out, 16);                                         // bits per sample
  out.write("data", 4);
  Put32(out, dataBytes);
  for (float s : samples) {
    long const v = std::lround(std::clamp(s, -1.0f, 1.0f) * 32767.0f);
    Put16(out, static_cast<std::uint16_t>(static_cast<std::int16_t>(v)));
  }
  if (!out) {
    throw std::runtime_error("Failed to write '" + path + "'.");
  }
}
