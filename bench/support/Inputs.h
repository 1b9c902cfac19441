// The six inputs a root needs before it builds its per-VRF machinery, so a
// benchmark fills in only those it measures and the rest arrive empty.
#pragma once

#include "Tessel/Root.h"

namespace Bench {

/// A root's inputs, in the order `giveTo` hands them over; a null one is
/// given empty, under the name the agent uses.
struct Inputs {
  enum class Held { none, aclLists, policyMap };

  Orb::Ptr<Routing::RouteMap::Config> routeMaps{};
  Orb::Ptr<Routing::RouteMap::PeerFilterConfig> peerFilters{};
  Orb::Ptr<Acl::AclListConfig> aclLists{};
  Orb::Ptr<Acl::Config> acls{};
  Orb::Ptr<Routing::DynamicPrefixList::Config> dynamicPrefixLists{};
  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap{};

  /// Gives `root` every input but `held`, which the benchmark gives itself
  /// when the start it times should begin.
  void giveTo(Tessel::Root& root, Held held = Held::none);
};

}  // namespace Bench
