// The configured community lists of the current root's VRF, as the route-map
// clauses that copy them read them.
#pragma once

#include "Acl/CommunityList.h"
#include "Orb/Api.h"

namespace Tessel {

/// The configured list `name`, or null when it is not configured or there is
/// no root with an ACL-list configuration.
ROTOR_API Orb::Ptr<Acl::CommunityList const> configuredCommunityList(Orb::Name const& name);

}  // namespace Tessel
