// RoutingPolicyMap::PolicyMap: the agent's shared record of which policies are
// in use, by whom and why: route maps, dynamic prefix lists and redistributed
// dynamic prefix lists, each keyed by policy name.
#pragma once

#include <string>

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"
#include "RoutingPolicyMap/PolicyRequester.h"

namespace RoutingPolicyMap {

class ROTOR_API PolicyMap : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    routeMap_ = 1,  // key: the policy name
    dynamicPrefixList_,
    redistributedDynPfx_,
  };

  using Requesters = Orb::OrderedMap<Orb::Name, Orb::Ptr<PolicyRequester>>;

  static Orb::Ptr<PolicyMap> create(Orb::Name name) { return new PolicyMap(std::move(name)); }

  /// Each collection in name order; the lookups return null when absent.
  /// An adder returns the existing entry, or makes (and notifies) a new one;
  /// a remover notifies only when the name was there.
  Requesters const& routeMap() const noexcept { return coll_[policyTypeRouteMap]; }
  Orb::Ptr<PolicyRequester> routeMap(Orb::Name const& name) const;
  Orb::Ptr<PolicyRequester> routeMapIs(Orb::Name const& name);
  void routeMapDel(Orb::Name name);

  Requesters const& dynamicPrefixList() const noexcept {
    return coll_[policyTypeDynamicPrefixList];
  }
  Orb::Ptr<PolicyRequester> dynamicPrefixList(Orb::Name const& name) const;
  Orb::Ptr<PolicyRequester> dynamicPrefixListIs(Orb::Name const& name);
  void dynamicPrefixListDel(Orb::Name name);

  Requesters const& redistributedDynPfx() const noexcept {
    return coll_[policyTypeRedistributedDynPfx];
  }
  Orb::Ptr<PolicyRequester> redistributedDynPfx(Orb::Name const& name) const;
  Orb::Ptr<PolicyRequester> redistributedDynPfxIs(Orb::Name const& name);
  void redistributedDynPfxDel(Orb::Name name);

 private:
  explicit PolicyMap(Orb::Name name) : Entity(std::move(name)) {}
  Orb::Ptr<PolicyRequester> lookup(PolicyType type, Orb::Name const& name) const;
  Orb::Ptr<PolicyRequester> add(PolicyType type, Orb::Name const& name);
  void del(PolicyType type, Orb::Name const& name);

  Requesters coll_[3];
};

/// Every entry as lines `<type> "<name>" <reason>` (one per reason; an entry
/// without reasons gets one line without), collections in type order, names
/// and reasons in their order. Empty for an empty map.
ROTOR_API std::string stateText(PolicyMap const& policyMap);

}  // namespace RoutingPolicyMap
