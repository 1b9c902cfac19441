// The community side of the list reactor: a community list and its exact
// twin appear and go with the configuration, and every change of a list is
// passed on to the route-map clauses that copied it.
#include "Orb/Trace.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

void AclListConfigSm::handleCommunityList(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handleCommunityList(Orb::String name)"
                              << " name: " << name << " vrf: " << vrfName_);
  Orb::String const exactName(".exact." + name.str());
  auto cog = cogFactory(vrfName_);
  if (aclListConfig_->communityList().contains(name)) {
    cog->doAddCommunityList(name);
    cog->refreshCommListUsersOf(name);
    cog->doAddCommunityList(exactName);
  } else {
    cog->doDelCommunityList(name);
    cog->refreshCommListUsersOf(name);
    cog->doDelCommunityList(exactName);
  }
  cog->doCommit();
}

void AclListConfigSm::handleCommunityList() {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handleCommunityList()"
                              << " vrf: " << vrfName_);
  for (auto const& [name, list] : aclListConfig_->communityList())
    handleCommunityList(name);
}

void AclListConfigSm::communityListIs(Orb::Ptr<Acl::CommunityList const> const& list) {
  if (OrbCommunityList* existing = orbCommunityList_.find(list->name());
      existing && existing->communityList() == list) {
    return;
  }
  orbCommunityList_.insert(list->name(), Orb::make<OrbCommunityList>(list, this));
}

void AclListConfigSm::communityListDel(Orb::Name const& name) {
  orbCommunityList_.del(name);
}

void AclListConfigSm::communityListDelAll() {
  orbCommunityList_.delAll();
}

void AclListConfigSm::communityListsFollow() {
  auto const& lists = aclListConfig_->communityList();
  orbCommunityList_.delUnless([&](Orb::Name const& name) { return lists.contains(name); });
  for (auto const& [name, list] : lists)
    communityListIs(list);
}

void AclListConfigSm::communityListFollow(Orb::Name const& name) {
  if (auto list = aclListConfig_->communityList(name)) {
    communityListIs(list);
  } else {
    communityListDel(name);
  }
}

}  // namespace Tessel
