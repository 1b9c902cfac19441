// Writing one reason into the policy map.
#include "Tessel/UpdatePolicyMap.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <tuple>

#include "Orb/Assert.h"
#include "Orb/Trace.h"
#include "Tessel/Holds.h"
#include "Tessel/TraceLevels.h"

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

/// One reason under one name in one policy map.
struct PolicyHold {
  PolicyMap const* policyMap;
  RoutingPolicyMap::PolicyType type;
  Orb::String name;
  RoutingPolicyMap::Requester reason;

  friend bool operator<(PolicyHold const& a, PolicyHold const& b) {
    if (a.policyMap != b.policyMap) return std::less<>()(a.policyMap, b.policyMap);
    return std::tie(a.type, a.name, a.reason) < std::tie(b.type, b.name, b.reason);
  }
  Orb::HashValue hash(Orb::HashValue seed) const noexcept {
    Orb::HashValue h = Orb::hashMix(seed, reinterpret_cast<std::uintptr_t>(policyMap));
    h = Orb::hashMix(h, type);
    h = Orb::hashMix(h, name.hash());
    h = Orb::hashMix(h, reason.pluginType);
    h = Orb::hashMix(h, reason.cliMode);
    h = Orb::hashMix(h, reason.configCli.hash());
    return Orb::hashFinish(Orb::hashMix(h, reason.configKey.hash()));
  }
};

Holds<PolicyHold>& policyHolds() {
  static Holds<PolicyHold> holds;
  return holds;
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

void updatePolicyMapFor(void const* holder, RoutingPolicyMap::PolicyType type,
                        RoutingPolicyMap::PluginType plugin, RoutingPolicyMap::CliMode mode,
                        Orb::String const& configCli, Orb::String const& configKey,
                        Orb::Ptr<PolicyMap> const& policyMap, Orb::String const& name, bool del) {
  // Holds are kept only while a machine replaces another.
  if (machineReplacing()) {
    PolicyHold const hold{policyMap.get(), type, name, {plugin, mode, configCli, configKey}};
    if (!del) {
      policyHolds().holdIs(hold, holder);
    } else if (policyHolds().holdDel(hold, holder)) {
      ORB_TRACE(traceHandler, "updatePolicyMap: " << name << " keeps " << configCli << " for "
                                                  << configKey << ", held by another reactor");
      return;
    }
  }
  updatePolicyMap(type, plugin, mode, configCli, configKey, policyMap, name, del);
}

}  // namespace Tessel
