// RoutingPolicyMap::PolicyMap: the agent's shared record of which policies are
// in use, by whom and why. Its collections arrive with the policy-reference
// reactors.
#pragma once

#include "Orb/Entity.h"

namespace RoutingPolicyMap {

class PolicyMap : public Orb::Entity {
 public:
  static Orb::Ptr<PolicyMap> create(Orb::Name name) { return new PolicyMap(std::move(name)); }

 private:
  explicit PolicyMap(Orb::Name name) : Entity(std::move(name)) {}
};

}  // namespace RoutingPolicyMap
