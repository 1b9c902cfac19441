// The W4 configuration: a large mixed one (route maps with match, set and
// community clauses, prefix, AS-path and community lists, standard ACLs, peer
// filters, listed dynamic prefix lists) whose start the cold-start and
// reconcile benchmarks time.
#pragma once

#include "Tessel/Root.h"

namespace Bench {

/// Configured objects: every named object and every entry, sequence and rule
/// within one; what heap figures are divided by.
extern double const w4Objects;

/// A root for VRF "default" holding five of its six inputs, the W4
/// configuration in them and in the sixth, the policy map; `start` gives the
/// policy map, which builds the VrfStatusSm.
struct W4World {
  /// `mirror`: the root keeps its engine mirror from the start.
  explicit W4World(bool mirror = false);
  ~W4World();
  W4World(W4World const&) = delete;
  W4World& operator=(W4World const&) = delete;
  void start() { root->policyMapIs(policyMap); }

  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Routing::RouteMap::Config> routeMaps;
  Orb::Ptr<Routing::RouteMap::PeerFilterConfig> peerFilters;
  Orb::Ptr<Acl::AclListConfig> lists;
  Orb::Ptr<Acl::Config> acls;
  Orb::Ptr<Routing::DynamicPrefixList::Config> dynamicPrefixLists;
  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap;
};

}  // namespace Bench
