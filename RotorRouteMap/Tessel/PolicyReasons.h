// The reasons under which the library registers policies in the shared policy
// map; built once when the library is loaded.
#pragma once

#include "Orb/Api.h"
#include "Orb/String.h"

namespace Tessel {

/// A listed route map's sequence matches an IPv4 dynamic prefix list.
ROTOR_API extern Orb::String const pmapRmapNestedV4Dpl;
/// A listed route map's sequence matches an IPv6 dynamic prefix list.
ROTOR_API extern Orb::String const pmapRmapNestedV6Dpl;
/// A listed route map's sequence calls a sub-route-map.
ROTOR_API extern Orb::String const pmapRmapNestedRmap;
/// A sent dynamic prefix list needs its match map.
ROTOR_API extern Orb::String const pmapDynPfxMatchMap;

}  // namespace Tessel
