// Lookup of configured community lists through the current root.
#include "Tessel/CommunityListLookup.h"

#include "Tessel/Root.h"

namespace Tessel {

Orb::Ptr<Acl::CommunityList const> configuredCommunityList(Orb::Name const& name) {
  if (!rmRoot || !rmRoot->aclListConfig()) return nullptr;
  return rmRoot->aclListConfig()->communityList(name);
}

}  // namespace Tessel
