#pragma once

#include "support/LockstepHarness.h"

// What the lockstep harness needs of Glow Horde: random orders of every kind and the per-frame digests.
namespace glow_horde_testing {

testing_support::LockstepAdapter GlowHordeLockstepAdapter();

}  // namespace glow_horde_testing
