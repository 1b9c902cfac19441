// The AS-path side of the list reactor: the regular-expression mode and the
// AS-path lists. Not translated yet: the seams are in place and do nothing.
#include "Tessel/AclListConfigSm.h"

namespace Tessel {

void AclListConfigSm::handleRegexMode() {}

void AclListConfigSm::handlePathList(Orb::String const&) {}

void AclListConfigSm::handlePathList() {}

void AclListConfigSm::pathListsFollow() {}

void AclListConfigSm::pathListFollow(Orb::Name const&) {}

}  // namespace Tessel
