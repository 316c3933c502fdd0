#pragma once

#include <vector>

// Short synthesised effects, mono, at kSoundRate samples a second, from -1 to 1.
inline constexpr int kSoundRate = 22050;

std::vector<float> MakeOrderGivenSound();
std::vector<float> MakeExitSound();
std::vector<float> MakeSmallHitSound();
std::vector<float> MakeExplosionSound();
std::vector<float> MakeTargetLockSucceededSound();
std::vector<float> MakeTargetLockFailedSound();
std::vector<float> MakeFireMissileSound();
std::vector<float> MakeCannotFireMissileSound();
