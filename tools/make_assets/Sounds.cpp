#include "Sounds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "Random.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;

std::size_t Samples(double seconds) { return static_cast<std::size_t>(seconds * kSoundRate); }

// Attack linearly over `attack` seconds, then fall exponentially with the time constant `decay`.
double Envelope(double t, double attack, double decay) {
  if (t < attack) {
    return t / attack;
  }
  return std::exp(-(t - attack) / decay);
}

// Mixes `length` seconds of a source into out at `start`, under the envelope: source(t) gives the
// next raw sample at t seconds into the sound, called once per sample in order.
template <typename Source>
void MixIn(std::vector<float>& out, double start, double length, double amplitude, double attack, double decay,
           Source source) {
  std::size_t const first = Samples(start);
  std::size_t const count = Samples(length);
  if (out.size() < first + count) {
    out.resize(first + count, 0.0f);
  }
  for (std::size_t i = 0; i < count; ++i) {
    double const t = static_cast<double>(i) / kSoundRate;
    double const value = source(t);
    // A short fade at the very end keeps the cut silent.
    double const tail = std::min(1.0, static_cast<double>(count - i) / (0.004 * kSoundRate));
    out[first + i] += static_cast<float>(amplitude * value * Envelope(t, attack, decay) * tail);
  }
}

// A tone whose frequency glides exponentially from f0 to f1 over the length, mixed into out at start.
void AddGlide(std::vector<float>& out, double start, double length, double f0, double f1, double amplitude,
              double attack, double decay, double thirdHarmonic = 0.0) {
  double phase = 0.0;
  MixIn(out, start, length, amplitude, attack, decay, [&](double t) {
    double const f = f0 * std::pow(f1 / f0, t / length);
    phase += kTwoPi * f / kSoundRate;
    return std::sin(phase) + thirdHarmonic * std::sin(3 * phase);
  });
}

// Noise through a one-pole low-pass whose cutoff glides from c0 to c1 (Hz), under an envelope.
void AddNoise(std::vector<float>& out, FixedRandom& random, double start, double length, double c0, double c1,
              double amplitude, double attack, double decay) {
  double state = 0.0;
  MixIn(out, start, length, amplitude, attack, decay, [&](double t) {
    double const cutoff = c0 * std::pow(c1 / c0, t / length);
    double const k = 1.0 - std::exp(-kTwoPi * cutoff / kSoundRate);
    state += k * (random.range(-1.0, 1.0) - state);
    return state;
  });
}

// Scales the whole effect so that its loudest sample reaches `peak`.
std::vector<float> Normalised(std::vector<float> samples, float peak) {
  float loudest = 0.0f;
  for (float s : samples) {
    loudest = std::max(loudest, std::fabs(s));
  }
  if (loudest > 0.0f) {
    for (float& s : samples) {
      s *= peak / loudest;
    }
  }
  return samples;
}

}  // namespace

std::vector<float> MakeOrderGivenSound() {
  std::vector<float> out;
  AddGlide(out, 0.0, 0.09, 620, 1040, 0.8, 0.004, 0.035, 0.15);
  return Normalised(out, 0.6f);
}

std::vector<float> MakeExitSound() {
  // Two bell-like notes a fifth apart.
  std::vector<float> out;
  for (auto [start, f] : {std::pair{0.0, 1046.5}, std::pair{0.09, 1568.0}}) {
    AddGlide(out, start, 0.32, f, f, 0.6, 0.003, 0.09);
    AddGlide(out, start, 0.32, f * 2.76, f * 2.76, 0.15, 0.002, 0.04);
  }
  return Normalised(out, 0.55f);
}

std::vector<float> MakeSmallHitSound() {
  FixedRandom random(0x5A11);
  std::vector<float> out;
  AddGlide(out, 0.0, 0.14, 150, 65, 0.9, 0.002, 0.04);
  AddNoise(out, random, 0.0, 0.06, 2500, 600, 0.5, 0.001, 0.015);
  return Normalised(out, 0.7f);
}

std::vector<float> MakeExplosionSound() {
  FixedRandom random(0xB0011);
  std::vector<float> out;
  AddNoise(out, random, 0.0, 1.1, 3200, 140, 1.0, 0.004, 0.28);
  AddNoise(out, random, 0.0, 0.25, 7000, 2000, 0.4, 0.001, 0.05);
  AddGlide(out, 0.0, 0.9, 70, 38, 0.7, 0.01, 0.3);
  return Normalised(out, 0.85f);
}

std::vector<float> MakeTargetLockSucceededSound() {
  std::vector<float> out;
  AddGlide(out, 0.0, 0.07, 880, 880, 0.5, 0.003, 0.2, 0.25);
  AddGlide(out, 0.1, 0.12, 1318.5, 1318.5, 0.5, 0.003, 0.12, 0.25);
  return Normalised(out, 0.55f);
}

std::vector<float> MakeTargetLockFailedSound() {
  std::vector<float> out;
  AddGlide(out, 0.0, 0.24, 330, 200, 0.5, 0.004, 0.2, 0.45);
  return Normalised(out, 0.5f);
}

std::vector<float> MakeFireMissileSound() {
  FixedRandom random(0xF12E);
  std::vector<float> out;
  AddNoise(out, random, 0.0, 0.4, 600, 5000, 1.0, 0.03, 0.14);
  AddGlide(out, 0.0, 0.3, 260, 900, 0.25, 0.01, 0.1);
  return Normalised(out, 0.6f);
}

std::vector<float> MakeCannotFireMissileSound() {
  FixedRandom random(0xC1C);
  std::vector<float> out;
  for (double start : {0.0, 0.09}) {
    AddGlide(out, start, 0.06, 190, 150, 0.7, 0.001, 0.02, 0.3);
    AddNoise(out, random, start, 0.03, 1800, 800, 0.4, 0.0005, 0.008);
  }
  return Normalised(out, 0.5f);
}
