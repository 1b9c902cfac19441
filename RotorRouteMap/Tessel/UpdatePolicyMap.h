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

/// updatePolicyMap on behalf of one reactor, `holder`. A reason two reactors
/// hold (the one being replaced and its successor) is withdrawn only when the
/// last of them lets go; a reason nobody holds is withdrawn all the same, as
/// updatePolicyMap does.
ROTOR_API void updatePolicyMapFor(void const* holder, RoutingPolicyMap::PolicyType type,
                                  RoutingPolicyMap::PluginType plugin,
                                  RoutingPolicyMap::CliMode mode, Orb::String const& configCli,
                                  Orb::String const& configKey,
                                  Orb::Ptr<RoutingPolicyMap::PolicyMap> const& policyMap,
                                  Orb::String const& name, bool del);

/// Lets go of `holder`'s hold on a reason without withdrawing it: the
/// reactor no longer writes to that policy map, and the reason stays there.
ROTOR_API void policyMapHoldDel(void const* holder, RoutingPolicyMap::PolicyType type,
                                RoutingPolicyMap::PluginType plugin, RoutingPolicyMap::CliMode mode,
                                Orb::String const& configCli, Orb::String const& configKey,
                                RoutingPolicyMap::PolicyMap const* policyMap,
                                Orb::String const& name);

/// How many reasons some reactor holds, in all policy maps.
ROTOR_API std::size_t policyMapHolds() noexcept;

}  // namespace Tessel
