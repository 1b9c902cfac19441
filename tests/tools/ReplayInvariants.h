// What the library guarantees beyond the engine state, asserted by the random
// replay whenever a run settles: every policy-map reason has a live owner, and
// the community-list user index holds exactly the clauses the configuration
// has.
#pragma once

#include <string>

#include "ScenarioWorld.h"

namespace ReplayInvariants {

/// The invariants broken in `world` now, one line each in text order; empty
/// when all hold. Only meaningful while the world is settled: every map and
/// peer filter has been sent since its last change.
///
/// - Every reason in the policy map has a live owner: a sequence of a listed
///   route map that names the policy (sub-route-map, the dynamic prefix-list
///   matches), a configured and listed dynamic prefix list whose match map it
///   is, or a requester the scenario listed and did not unlist. A loop of
///   references owns its own reasons, so it passes.
/// - The current root's community-list user index records each list clause
///   of every configured route map and peer filter (under its engine name),
///   under each list the clause names, with the clause's own set; nothing
///   else, and no list without a clause. Its way back from each clause to
///   its lists agrees with the lists' collections.
std::string broken(Scenario::World const& world);

}  // namespace ReplayInvariants
