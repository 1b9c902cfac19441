// The check's memory of what lists and ACLs left in the engine on purpose.
#include "ScenarioRecords.h"

#include <map>

namespace Scenario {

namespace {
// Keyed by the inputs' list configuration, which lives as long as its world;
// a new world clears them, so no key is ever another world's.
std::map<Acl::AclListConfig const*, ListRecords>& all() {
  static std::map<Acl::AclListConfig const*, ListRecords> records;
  return records;
}
}  // namespace

ListRecords& listRecords(Inputs const& inputs) {
  return all()[inputs.aclListConfig.get()];
}

void listRecordsClear() {
  all().clear();
}

void listRecordsReconciled() {
  for (auto& [config, records] : all()) {
    records.abandonedAcls.clear();
    records.unsentEntryRemovals.clear();
    records.strandedEntryRemovals.clear();
  }
}

void listRecordsMachineryIs(bool up) {
  for (auto& [config, records] : all()) {
    records.machineryUp = up;
    records.strandedEntryRemovals.merge(records.unsentEntryRemovals);
    records.unsentEntryRemovals.clear();
  }
}

}  // namespace Scenario
