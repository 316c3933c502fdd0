#pragma once

#include "support/LockstepHarness.h"

// What the lockstep harness needs of Aviators: random orders (a pilot that often chases the nearest
// ship, locks and fires, and any byte at all now and then) and the per-frame digests of the shared state.
namespace aviators_testing {

testing_support::LockstepAdapter AviatorsLockstepAdapter();

}  // namespace aviators_testing
