// The one writer of the shared policy map: adds or withdraws one reason under
// one policy name, making and removing the policy's entry as needed.
#pragma once

#include "Orb/Api.h"
#include "RoutingPolicyMap/PolicyMap.h"

namespace Tessel {

/// Adds the reason (plugin, mode, configCli, configKey) to the entry `name` of
/// the collection of `type`, making the entry when absent; with `del`,
/// removes the reason and then the entry when no reason is left. An unknown
/// type is a programming error and aborts.
ROTOR_API void updatePolicyMap(RoutingPolicyMap::PolicyType type,
                               RoutingPolicyMap::PluginType plugin, RoutingPolicyMap::CliMode mode,
                               Orb::String const& configCli, Orb::String const& configKey,
                               Orb::Ptr<RoutingPolicyMap::PolicyMap> const& policyMap,
                               Orb::String const& name, bool del);

/// updatePolicyMap on behalf of one reactor, `holder`. While a machine
/// replaces another, a reason the new machine has registered is not
/// withdrawn on behalf of the old one (see Holds.h); otherwise it is
/// updatePolicyMap.
ROTOR_API void updatePolicyMapFor(void const* holder, RoutingPolicyMap::PolicyType type,
                                  RoutingPolicyMap::PluginType plugin,
                                  RoutingPolicyMap::CliMode mode, Orb::String const& configCli,
                                  Orb::String const& configKey,
                                  Orb::Ptr<RoutingPolicyMap::PolicyMap> const& policyMap,
                                  Orb::String const& name, bool del);

}  // namespace Tessel
