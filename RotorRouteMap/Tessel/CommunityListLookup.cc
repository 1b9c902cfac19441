// Lookup of configured community lists through the current root.
#include "Tessel/CommunityListLookup.h"

#include "Tessel/Root.h"

namespace Tessel {

Orb::Ptr<Acl::CommunityList const> configuredCommunityList(Orb::Name const&) {
  return nullptr;
}

}  // namespace Tessel
