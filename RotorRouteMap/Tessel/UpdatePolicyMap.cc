// Writing one reason into the policy map.
#include "Tessel/UpdatePolicyMap.h"

#include "Orb/Assert.h"

namespace Tessel {

using RoutingPolicyMap::PolicyMap;
using RoutingPolicyMap::PolicyRequester;

namespace {
// The three collections differ only in their operations.
struct Collection {
  Orb::Ptr<PolicyRequester> (PolicyMap::*find)(Orb::Name const&) const;
  Orb::Ptr<PolicyRequester> (PolicyMap::*add)(Orb::Name const&);
  void (PolicyMap::*remove)(Orb::Name);
};

Collection collectionOf(RoutingPolicyMap::PolicyType type) {
  switch (type) {
    case RoutingPolicyMap::policyTypeRouteMap:
      return {&PolicyMap::routeMap, &PolicyMap::routeMapIs, &PolicyMap::routeMapDel};
    case RoutingPolicyMap::policyTypeDynamicPrefixList:
      return {&PolicyMap::dynamicPrefixList, &PolicyMap::dynamicPrefixListIs,
              &PolicyMap::dynamicPrefixListDel};
    case RoutingPolicyMap::policyTypeRedistributedDynPfx:
      return {&PolicyMap::redistributedDynPfx, &PolicyMap::redistributedDynPfxIs,
              &PolicyMap::redistributedDynPfxDel};
  }
  ORB_ASSERT(0 && "Invalid PolicyType");
  return {};
}
}  // namespace

void updatePolicyMap(RoutingPolicyMap::PolicyType type, RoutingPolicyMap::PluginType plugin,
                     RoutingPolicyMap::CliMode mode, Orb::String const& configCli,
                     Orb::String const& configKey, Orb::Ptr<PolicyMap> const& policyMap,
                     Orb::String const& name, bool del) {
  Collection const coll = collectionOf(type);
  RoutingPolicyMap::Requester const reason{plugin, mode, configCli, configKey};
  Orb::Name const key(name);
  Orb::Ptr<PolicyRequester> entry = (policyMap.get()->*coll.find)(key);
  if (del) {
    if (!entry) return;
    entry->reasonDel(reason);
    if (entry->reason().empty()) (policyMap.get()->*coll.remove)(key);
    return;
  }
  if (!entry) entry = (policyMap.get()->*coll.add)(key);
  entry->reasonIs(reason);
}

}  // namespace Tessel
