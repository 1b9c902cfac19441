// Fresh copies of the configuration inputs, as an agent that mounts its
// configuration anew hands them to the root: new objects throughout (entities,
// community sets, ACL configurations), holding what the old ones were given.
#pragma once

#include "Scenario.h"

namespace Scenario {

/// Puts a fresh copy of `input` in place of the entity `in` holds. The copy of
/// a policy map holds what the other parts of the agent listed, not the
/// library's own reasons.
void replaceWithCopy(Inputs& in, Input input);

}  // namespace Scenario
