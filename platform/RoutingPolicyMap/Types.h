// RoutingPolicyMap value types: which collection a policy is in, who asks for
// it (plugin and CLI mode) and the requester reason made of them.
#pragma once

#include <compare>
#include <iosfwd>
#include <string>

#include "Orb/Api.h"
#include "Orb/String.h"
#include "Orb/Types.h"

namespace RoutingPolicyMap {

/// The collection of the policy map a policy name belongs to.
enum PolicyType : Orb::U32 {
  policyTypeRouteMap = 0,
  policyTypeDynamicPrefixList = 1,
  policyTypeRedistributedDynPfx = 2,
};

/// The part of the agent that asks for a policy. Values other than the named
/// ones belong to other parts of the agent and are carried as they are.
enum PluginType : Orb::U32 {
  pluginTypeNone = 0,
  /// The routing plugin: route-map and dynamic prefix-list references.
  pluginTypeRouting = 1,
};

/// The configuration mode the request was made in; carried as a number.
enum CliMode : Orb::U32 {
  cliModeNone = 0,
  /// A route-map sequence.
  cliModeRouteMap = 6,
  /// A dynamic prefix list.
  cliModeDynamicPrefixList = 7,
};

/// One reason a policy is needed. Two reasons are the same reason when all
/// four parts are equal; a requester holds each at most once.
struct ROTOR_API Requester {
  PluginType pluginType = pluginTypeNone;
  CliMode cliMode = cliModeNone;
  Orb::String configCli;
  Orb::String configKey;

  friend bool operator==(Requester const&, Requester const&) = default;
  friend std::strong_ordering operator<=>(Requester const&, Requester const&) = default;
};

ROTOR_API std::string valueToStrep(PolicyType v);
/// "routeMap", "dynamicPrefixList", "redistributedDynPfx" or a decimal
/// number; anything else raises Orb::RangeError naming PolicyType.
ROTOR_API PolicyType policyTypeFromStrep(std::string_view text);
ROTOR_API std::ostream& operator<<(std::ostream& os, PolicyType v);
/// "plugin=1 mode=6 cli=\"sub-route-map\" key=\"A seqNo 10\"".
ROTOR_API std::ostream& operator<<(std::ostream& os, Requester const& r);

}  // namespace RoutingPolicyMap
