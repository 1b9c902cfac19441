// The policy-map reason texts.
#include "Tessel/PolicyReasons.h"

namespace Tessel {

Orb::String const pmapRmapNestedV4Dpl = "match ipv4 address dynamic prefix-list";
Orb::String const pmapRmapNestedV6Dpl = "match ipv6 address dynamic prefix-list";
Orb::String const pmapRmapNestedRmap = "sub-route-map";
Orb::String const pmapDynPfxMatchMap = "dynamic prefix-list match-map";

}  // namespace Tessel
