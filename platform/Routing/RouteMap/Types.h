// Enumerations of the route-map model: match options, MED types and the
// route-map set-operation mode.
#pragma once

#include <string>
#include <string_view>

#include "Orb/Api.h"
#include "Orb/Types.h"

namespace Routing::RouteMap {

/// What a match rule tests. The numbers are what the engine translation
/// dispatches on; values without a name of their own are carried as numbers.
enum MatchOption : Orb::U32 {
  matchAccessList = 1,
  matchPrefixList = 2,
  matchGateway = 5,
  matchNextHop = 12,
  matchNextHopPrefixList = 14,
  matchResolvedNextHopPrefixList = 15,
  matchCommunity = 103,
  matchExtCommunity = 104,
  matchIsisInstance = 106,
  matchInterface = 107,
  matchMetricType = 112,
  matchProtocol = 113,
  matchIpv6PrefixList = 116,
  matchIpv6NextHop = 117,
  matchIpv6NextHopPrefixList = 118,
  matchIpv6ResolvedNextHopPrefixList = 119,
  matchAsRange = 121,
  matchRouteType = 122,
  matchDynamicPrefixList = 123,
  matchIpv6DynamicPrefixList = 124,
  matchCommunityInstances = 125,
  matchAsPathLength = 126,
  matchLargeCommunity = 127,
  matchContribAggAttr = 128,
};

/// How the metric of a set clause is applied; valid 0 to 8.
enum MedType : Orb::U32 {
  medTypeNone = 0,
  medTypeIgpCost = 1,
  medTypeAdd = 2,
  medTypeIgpCostAdd = 3,
  medTypeSubtract = 4,
  medTypeIgpCostSubtract = 5,
  medTypeMultiply = 6,
  medTypeIgpCostMultiply = 7,
  medTypeDivide = 8,
};

/// The route-map set-operation mode, sent to the engine as its number.
enum RouteMapOpModeType : Orb::U32 { routeMapOpModeDefault = 0, routeMapOpModeAlternate = 1 };

ROTOR_API std::string valueToStrep(RouteMapOpModeType v);
ROTOR_API RouteMapOpModeType routeMapOpModeFromStrep(std::string_view text);

}  // namespace Routing::RouteMap
