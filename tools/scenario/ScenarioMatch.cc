// Route-map match clauses: the conditions a sequence matches on, read into
// match rules under their options.
#include <array>
#include <string>

#include "Kiwi/IpAddr.h"
#include "Orb/RangeError.h"
#include "ScenarioRouteMap.h"

namespace Scenario {

using Orb::U32;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchOption;
using Routing::RouteMap::MatchRule;

U32 metricTypeOf(Words& w, std::string_view what) {
  std::string const& word = w.take(what);
  if (word == "type-1") return 1;
  if (word == "type-2") return 2;
  auto v = integerOf(word);
  if (!v || *v < 0 || *v > 0xffffffffLL) w.fail(what, word);
  return static_cast<U32>(*v);
}

namespace {

enum class MatchValue {
  name,        // strValue
  ipv4,        // ipAddr
  ipv6,        // ip6Addr
  number,      // intValue
  range,       // intValue .. rangeHigh
  pathLength,  // pathLengthFirst, pathLengthSecond
  lists,       // commListSet, with `exact`
  generic,     // option N int V | option N str S
};

struct MatchKind {
  std::vector<std::string_view> words;
  MatchOption option;
  MatchValue value;
  std::string_view what;  // the value's name in refusals
};

using namespace Routing::RouteMap;  // the MatchOption names

MatchKind const kMatchKinds[] = {
    {{"ip", "address", "access-list"}, matchAccessList, MatchValue::name, "access-list name"},
    {{"ip", "address", "prefix-list"}, matchPrefixList, MatchValue::name, "prefix-list name"},
    {{"ipv6", "address", "prefix-list"}, matchIpv6PrefixList, MatchValue::name, "prefix-list name"},
    {{"ip", "address", "dynamic", "prefix-list"},
     matchDynamicPrefixList,
     MatchValue::name,
     "dynamic prefix-list name"},
    {{"ipv6", "address", "dynamic", "prefix-list"},
     matchIpv6DynamicPrefixList,
     MatchValue::name,
     "dynamic prefix-list name"},
    {{"ip", "next-hop"}, matchNextHop, MatchValue::ipv4, "IPv4 address"},
    {{"ipv6", "next-hop"}, matchIpv6NextHop, MatchValue::ipv6, "IPv6 address"},
    {{"ip", "next-hop", "prefix-list"},
     matchNextHopPrefixList,
     MatchValue::name,
     "prefix-list name"},
    {{"ipv6", "next-hop", "prefix-list"},
     matchIpv6NextHopPrefixList,
     MatchValue::name,
     "prefix-list name"},
    {{"ip", "resolved-next-hop", "prefix-list"},
     matchResolvedNextHopPrefixList,
     MatchValue::name,
     "prefix-list name"},
    {{"ipv6", "resolved-next-hop", "prefix-list"},
     matchIpv6ResolvedNextHopPrefixList,
     MatchValue::name,
     "prefix-list name"},
    {{"gateway"}, matchGateway, MatchValue::ipv4, "IPv4 address"},
    {{"interface"}, matchInterface, MatchValue::name, "interface name"},
    {{"protocol"}, matchProtocol, MatchValue::number, "protocol 1-9"},
    {{"metric-type"}, matchMetricType, MatchValue::number, "metric type type-1 or type-2"},
    {{"route-type"}, matchRouteType, MatchValue::number, "route type 1-5"},
    {{"as-range"}, matchAsRange, MatchValue::range, "AS number"},
    {{"as-path-length"}, matchAsPathLength, MatchValue::pathLength, "AS-path length"},
    {{"isis", "instance"}, matchIsisInstance, MatchValue::number, "IS-IS instance"},
    {{"community"}, matchCommunity, MatchValue::lists, "community-list name"},
    {{"extcommunity"}, matchExtCommunity, MatchValue::lists, "community-list name"},
    {{"large-community"}, matchLargeCommunity, MatchValue::lists, "community-list name"},
    {{"community-instances"}, matchCommunityInstances, MatchValue::range, "instance count"},
    {{"option"}, MatchOption(0), MatchValue::generic, "match option number"},
};

/// The option that `no match` and `match` address, after the kind's words.
MatchOption optionOf(MatchKind const& kind, Words& w) {
  if (kind.value == MatchValue::generic) return MatchOption(u32(w, kind.what));
  return kind.option;
}

MatchKind const& matchKind(Words& w) {
  if (auto const* kind = longestMatch<MatchKind>(kMatchKinds, w)) return *kind;
  if (w.atEnd()) throw Refusal("expected a match condition, got end of line");
  w.fail("a match condition (" + firstWords<MatchKind>(kMatchKinds) + ")", w.peek());
}

/// Refuses the rules on which the translation asserts.
void refuseAborting(MatchRule const& rule) {
  auto refuse = [&](std::string_view what) {
    throw Refusal("expected " + std::string(what) + std::string(kAborts) + ", got " +
                  quoted(std::to_string(rule.intValue)));
  };
  switch (rule.option) {
    case matchProtocol:
      if (rule.intValue < 1 || rule.intValue > 9) refuse("protocol 1-9");
      break;
    case matchMetricType:
      if (rule.intValue < 1 || rule.intValue > 2) refuse("metric type type-1 or type-2");
      break;
    case matchRouteType:
      if (rule.intValue < 1 || rule.intValue > 5) refuse("route type 1-5");
      break;
    case matchCommunity:
    case matchExtCommunity:
    case matchLargeCommunity:
      if (rule.commListSet.empty()) {
        throw Refusal(
            "expected at least one community-list name (an empty list aborts the "
            "library), use 'match community', 'match extcommunity' or 'match "
            "large-community'");
      }
      break;
    default:
      break;
  }
}

MatchRule readMatchRule(Words& w) {
  MatchKind const& kind = matchKind(w);
  MatchRule rule;
  rule.option = optionOf(kind, w);
  switch (kind.value) {
    case MatchValue::name:
      rule.strValue = w.take(kind.what);
      break;
    case MatchValue::ipv4: {
      std::string const& word = w.take(kind.what);
      try {
        rule.ipAddr = Kiwi::IpAddr::fromString(word);
      } catch (Orb::RangeError const&) {
        w.fail(kind.what, word);
      }
      break;
    }
    case MatchValue::ipv6: {
      std::string const& word = w.take(kind.what);
      try {
        rule.ip6Addr = Kiwi::Ip6Addr::fromString(word);
      } catch (Orb::RangeError const&) {
        w.fail(kind.what, word);
      }
      break;
    }
    case MatchValue::number:
      rule.intValue =
          rule.option == matchMetricType ? metricTypeOf(w, kind.what) : u32(w, kind.what);
      break;
    case MatchValue::range:
      rule.intValue = u32(w, std::string("lowest ") + std::string(kind.what));
      rule.rangeHigh = u32(w, std::string("highest ") + std::string(kind.what));
      break;
    case MatchValue::pathLength:
      rule.pathLengthFirst = u32(w, std::string("shortest ") + std::string(kind.what));
      rule.pathLengthSecond = u32(w, std::string("longest ") + std::string(kind.what));
      break;
    case MatchValue::lists:
      while (!w.atEnd() && w.peek() != "exact" && w.peek() != "invert")
        rule.commListSet.nameIs(Orb::Name(w.take(kind.what)));
      if (rule.commListSet.empty()) {
        if (w.atEnd()) w.take(kind.what);
        w.fail(kind.what, w.peek());
      }
      rule.exact = w.accept("exact");
      break;
    case MatchValue::generic: {
      static constexpr std::array<std::string_view, 2> kinds = {"int", "str"};
      if (oneOf(w, "int or str", kinds) == 0) {
        rule.intValue = u32(w, "integer match value");
      } else {
        rule.strValue = w.take("string match value");
      }
      break;
    }
  }
  rule.invert = w.accept("invert");
  w.expectEnd();
  refuseAborting(rule);
  return rule;
}

void parseMatch(Words& w, Context& c, Statement& s) {
  MatchRule rule = readMatchRule(w);
  clauseEdit(s, *c.block, [rule](MapEntry& e) { e.matchRuleIs(rule); });
}

void parseNoMatch(Words& w, Context& c, Statement& s) {
  MatchOption option = optionOf(matchKind(w), w);
  w.expectEnd();
  clauseEdit(s, *c.block, [option](MapEntry& e) { e.matchRuleDel(option); });
}

}  // namespace

Rows matchClauses() {
  static Row const rows[] = {
      {{"match"}, parseMatch},
      {{"no", "match"}, parseNoMatch},
  };
  return rows;
}

}  // namespace Scenario
