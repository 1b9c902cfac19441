// RoutingPolicyMap::PolicyRequester: who needs one policy, as a set of
// reasons. The policy stays listed while at least one reason is left.
#pragma once

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"
#include "RoutingPolicyMap/Types.h"

namespace RoutingPolicyMap {

class PolicyMap;

class ROTOR_API PolicyRequester : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    reason_ = 1,  // key: Orb::Key::of(Requester)
  };

  /// Reasons in their natural order (plugin, mode, text, key).
  Orb::OrderedMap<Requester, bool> const& reason() const noexcept { return reasons_; }
  bool hasReason(Requester const& r) const { return reasons_.contains(r); }
  /// Adds the reason; notifies only when it was not there.
  void reasonIs(Requester const& r);
  /// Removes the reason; notifies only when it was there.
  void reasonDel(Requester const& r);

 private:
  friend class PolicyMap;
  PolicyRequester(Orb::Name name, Orb::Entity const* parent);
  Orb::OrderedMap<Requester, bool> reasons_;
};

}  // namespace RoutingPolicyMap
