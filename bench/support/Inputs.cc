// Handing a benchmark root its inputs.
#include "Inputs.h"

namespace Bench {

void Inputs::giveTo(Tessel::Root& root, Held held) {
  if (!routeMaps) routeMaps = Routing::RouteMap::Config::create("rm");
  if (!peerFilters) peerFilters = Routing::RouteMap::PeerFilterConfig::create("pf");
  if (!aclLists) aclLists = Acl::AclListConfig::create("acllist");
  if (!acls) acls = Acl::Config::create("acl");
  if (!dynamicPrefixLists)
    dynamicPrefixLists = Routing::DynamicPrefixList::Config::create("dynpfx");
  if (!policyMap) policyMap = RoutingPolicyMap::PolicyMap::create("pmap");
  root.routeMapConfigIs(routeMaps);
  root.peerFilterConfigIs(peerFilters);
  if (held != Held::aclLists) root.aclListConfigIs(aclLists);
  root.aclConfigIs(acls);
  root.dynPfxListConfigIs(dynamicPrefixLists);
  if (held != Held::policyMap) root.policyMapIs(policyMap);
}

}  // namespace Bench
