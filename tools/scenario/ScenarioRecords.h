// What the list and ACL statements remember for the check: objects the
// library leaves in the engine on purpose, which the configuration alone no
// longer shows.
#pragma once

#include <set>
#include <string>
#include <utility>

#include "Scenario.h"

namespace Scenario {

struct ListRecords {
  /// IP ACLs that were configured when their type's configuration went.
  std::set<Orb::Name> abandonedAcls;
  /// IPv4 prefix lists ever made under an IPv6 list's engine name.
  std::set<Orb::Name> ipv4ListsWithIpv6Id;
  /// Prefix-list entries (engine id, sequence number) removed from the
  /// configuration and not yet sent: the list's next version sends their
  /// deletion.
  std::set<std::pair<std::string, Orb::U32>> unsentEntryRemovals;
  /// Removals whose list reactor went with the per-VRF machinery, or made
  /// while it was away: the new list reactors add the entries that are
  /// there and never delete these.
  std::set<std::pair<std::string, Orb::U32>> strandedEntryRemovals;
  /// Community lists ever made: a set name two of them share stays shared
  /// in the engine after one of them went, which deleted the other's set.
  std::set<Orb::Name> communityListsMade;
  /// Whether the per-VRF machinery exists (all inputs are there).
  bool machineryUp = true;
};

/// The records of one set of inputs (the live or the shadow ones).
ListRecords& listRecords(Inputs const& inputs);
/// Forgets every record; a new world starts with none.
void listRecordsClear();
/// The per-VRF machinery went (an input was taken) or was built anew:
/// removals not yet sent never will be.
void listRecordsMachineryIs(bool up);
/// A reconcile left the engine as a fresh start leaves it: nothing lags and
/// nothing is left behind; only the name collisions no repair undoes stay.
void listRecordsReconciled();

}  // namespace Scenario
