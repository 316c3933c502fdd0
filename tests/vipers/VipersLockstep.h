#pragma once

#include "support/LockstepHarness.h"

// What the lockstep harness needs of Vipers: random orders, malformed ones among them, and the per-frame
// digests of the shared state.
namespace vipers_testing {

testing_support::LockstepAdapter VipersLockstepAdapter();

}  // namespace vipers_testing
