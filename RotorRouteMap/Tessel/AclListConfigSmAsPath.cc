// The AS-path side of the list reactor: the regular-expression mode and the
// AS-path lists. A mode change passes through an engine without any AS-path
// list, synchronously committed, so no expression is ever held under the
// wrong mode.
#include <algorithm>
#include <vector>

#include "Orb/Trace.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

bool AclListConfigSm::aspathListValidRegex(Orb::String const& name) const {
  auto list = aclListConfig_->asPathList(name);
  if (!list) return true;
  Acl::RegexMode const mode = aclListConfig_->regexMode();
  for (auto const& [seqno, entry] : list->pathEntry()) {
    if (!aspathEntryValidRegex(entry, mode)) return false;
  }
  return true;
}

void AclListConfigSm::handleRegexMode() {
  Acl::RegexMode const mode = aclListConfig_->regexMode();
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handleRegexMode()"
                              << " switching to " << static_cast<Orb::U32>(mode));
  unconfigureAllAspathAcls();
  auto cog = cogFactory(vrfName_);
  cog->doAsPathRegexMode(mode);
  cog->doCommit();
  ORB_TRACE(traceHandler, "reconfiguring only valid as-path ACLs");
  reevaluatePathLists();
  cog->doCommit();
}

void AclListConfigSm::unconfigureAllAspathAcls() {
  ORB_TRACE(traceDelete, "deleting all as-path ACLs");
  auto cog = cogFactory(vrfName_);
  for (auto const& [name, list] : aclListConfig_->asPathList())
    cog->doDeleteAsPathList(name);
  cog->doSyncCommit();
  cog->doCommit();
}

void AclListConfigSm::handlePathList(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handlePathList(Orb::String name)"
                              << " name: " << name << " vrf: " << vrfName_);
  auto cog = cogFactory(vrfName_);
  if (aclListConfig_->asPathList().contains(name)) {
    ORB_TRACE(traceHandler, "Add as-path " << name);
    cog->doAddAsPathList(name);
  } else {
    ORB_TRACE(traceDelete, "Delete as-path " << name);
    cog->doDeleteAsPathList(name);
  }
  cog->doCommit();
}

void AclListConfigSm::handlePathList() {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handlePathList()"
                              << " vrf: " << vrfName_);
  // Lists wait for the whole configuration: the first ones go at
  // handleInitialized, not while the reactor is being made.
  if (!initialized_) return;
  reevaluatePathLists();
  cogFactory(vrfName_)->doCommit();
}

void AclListConfigSm::reevaluatePathLists() {
  // In name order, so the stream does not depend on the collection's hashing.
  std::vector<Orb::Name> names = orbPathList_.keys();
  std::sort(names.begin(), names.end());
  for (Orb::Name const& name : names) {
    if (OrbPathList* pl = orbPathList_.find(name)) pl->reevaluatePathList();
  }
}

void AclListConfigSm::pathListIs(Orb::Ptr<Acl::AsPathList const> const& list) {
  if (OrbPathList* existing = orbPathList_.find(list->name());
      existing && existing->pathList() == list) {
    return;
  }
  orbPathList_.insert(list->name(), Orb::make<OrbPathList>(list, this));
}

void AclListConfigSm::pathListDel(Orb::Name const& name) {
  orbPathList_.del(name);
}

void AclListConfigSm::pathListDelAll() {
  orbPathList_.delAll();
}

void AclListConfigSm::pathListsFollow() {
  auto const& lists = aclListConfig_->asPathList();
  orbPathList_.delUnless([&](Orb::Name const& name) { return lists.contains(name); });
  for (auto const& [name, list] : lists)
    pathListIs(list);
}

void AclListConfigSm::pathListFollow(Orb::Name const& name) {
  if (auto list = aclListConfig_->asPathList(name)) {
    pathListIs(list);
  } else {
    pathListDel(name);
  }
}

}  // namespace Tessel
