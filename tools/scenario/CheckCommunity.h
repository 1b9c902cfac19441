// The deliberate divergences of community lists and of the community clauses
// of route maps, for the table of known divergences in Check.cc.
#pragma once

#include <vector>

#include "Rib/CommandText.h"
#include "ScenarioWorld.h"

namespace Scenario {

/// A set node named by entries of two configured lists ("a1" 2 and "a" 12
/// both write ".a12"): whichever entry was written last holds it.
bool sharedSetNameCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                         World const& world);
/// A private community list or set (".cl", ".cs", ".e", ".l") that no
/// configured clause owns, left behind on the incremental side: a removed map
/// or a clause removed from a sequence already sent is not cleaned up.
bool leftClauseObjectCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                            World const& world);
/// An entry of a clause's private list copied from a configured entry still
/// at version zero: making the entry refreshes no clause, so only clauses
/// rebuilt since hold it.
bool incompleteEntryCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                           World const& world);
/// A community list, or its exact twin, or an entry of one, removed while an
/// input was away.
bool communityListRemovedWhileAwayCovers(std::vector<Rib::PathElement> const& path,
                                         bool incremental, World const& world);

}  // namespace Scenario
