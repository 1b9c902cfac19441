// The community side of the list reactor: community lists. Not translated
// yet: the seams are in place and do nothing.
#include "Tessel/AclListConfigSm.h"

namespace Tessel {

void AclListConfigSm::handleCommunityList(Orb::String const&) {}

void AclListConfigSm::handleCommunityList() {}

void AclListConfigSm::communityListsFollow() {}

void AclListConfigSm::communityListFollow(Orb::Name const&) {}

}  // namespace Tessel
