// Route-map set clauses: the fields a sequence sets on a matching route, each
// with the presence bit that tells the engine it is set.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "Kiwi/IpAddr.h"
#include "Orb/RangeError.h"
#include "ScenarioRouteMap.h"

namespace Scenario {

using Orb::S32;
using Orb::U32;
using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Flags = Routing::RouteMap::MapEntry::SetFlags;
using namespace Routing::RouteMap;  // the MedType names

namespace {

/// A bandwidth a configuration writer can mean: NaN, infinities and
/// negative values (-0 included) would reach the engine as they are.
bool isBandwidth(float v) {
  return std::isfinite(v) && !std::signbit(v);
}

/// What one set clause does to a sequence: the field change and the presence
/// bit it turns on (none for link bandwidth, which is always sent).
struct SetAction {
  U32 bit = 0;
  std::function<void(MapEntry&)> apply;
};

struct SetKind {
  std::vector<std::string_view> words;
  U32 bit;
  SetAction (*set)(Words&);
  /// `no set` for kinds that need more than clearing `bit`; null otherwise.
  SetAction (*unset)(Words&) = nullptr;
};

constexpr std::array<std::string_view, 9> kMedTypes = {
    "none",     "igp-cost",          "add",    "igp-cost-add", "subtract", "igp-cost-subtract",
    "multiply", "igp-cost-multiply", "divide",
};

SetAction setMetric(Words& w) {
  S32 metric = s32(w, "metric");
  MedType medType = medTypeNone;
  if (w.accept("med-type")) {
    std::string const& word = w.take("med type");
    auto named = std::find(kMedTypes.begin(), kMedTypes.end(), word);
    auto number = integerOf(word);
    if (named != kMedTypes.end()) {
      medType = MedType(named - kMedTypes.begin());
    } else if (number && *number >= 0 && *number <= 8) {
      medType = MedType(*number);
    } else {
      w.fail("med type 0-8 or a name such as igp-cost" + std::string(kAborts), word);
    }
  }
  return {Flags::metric, [=](MapEntry& e) {
            e.metricIs(metric);
            e.medTypeIs(medType);
          }};
}

SetAction setMetricType(Words& w) {
  std::string what = "metric type type-1 or type-2" + std::string(kAborts);
  U32 type = metricTypeOf(w, what);
  if (type < 1 || type > 2) w.fail(what, std::to_string(type));
  return {Flags::metricType, [=](MapEntry& e) { e.metricTypeIs(type); }};
}

SetAction setOrigin(Words& w) {
  static constexpr std::array<std::string_view, 6> names = {"igp", "egp", "incomplete",
                                                            "0",   "1",   "2"};
  auto origin =
      Acl::BGPOrigin(oneOf(w, "origin igp, egp or incomplete" + std::string(kAborts), names) % 3);
  return {Flags::origin, [=](MapEntry& e) { e.originIs(origin); }};
}

SetAction setLevel(Words& w) {
  // Named with its range already, as the other values the library aborts on.
  std::string const what = "IS-IS level 1-3" + std::string(kAborts);
  std::string const& word = w.take(what);
  auto const n = integerOf(word);
  if (!n || *n < 1 || *n > 3) w.fail(what, word);
  U32 const level = static_cast<U32>(*n);
  return {Flags::level, [=](MapEntry& e) { e.levelIs(level); }};
}

SetAction setNextHop(Words& w) {
  std::string const& word = w.take("IPv4 address");
  Kiwi::IpAddr a;
  try {
    a = Kiwi::IpAddr::fromString(word);
  } catch (Orb::RangeError const&) {
    w.fail("IPv4 address", word);
  }
  return {Flags::nextHop, [=](MapEntry& e) { e.nextHopIs(a); }};
}

SetAction setIpv6NextHop(Words& w) {
  std::string const& word = w.take("IPv6 address");
  Kiwi::Ip6Addr a;
  try {
    a = Kiwi::Ip6Addr::fromString(word);
  } catch (Orb::RangeError const&) {
    w.fail("IPv6 address", word);
  }
  return {Flags::ipv6NextHop, [=](MapEntry& e) { e.ipv6NextHopIs(a); }};
}

SetAction setPeerAddress(Words&) {
  return {Flags::nextHopPeerAddr, [](MapEntry& e) { e.nextHopPeerAddrIs(true); }};
}
SetAction setIpv6PeerAddress(Words&) {
  return {Flags::ipv6NextHopPeerAddr, [](MapEntry& e) { e.ipv6NextHopPeerAddrIs(true); }};
}
SetAction setUnchanged(Words&) {
  return {Flags::nextHopUnchanged, [](MapEntry& e) { e.nextHopUnchangedIs(true); }};
}
SetAction setIpv6Unchanged(Words&) {
  return {Flags::ipv6NextHopUnchanged, [](MapEntry& e) { e.ipv6NextHopUnchangedIs(true); }};
}

/// AS numbers by their position in the line.
MapEntry::AsPath asPathOf(Words& w) {
  MapEntry::AsPath path;
  do {
    path.set(static_cast<U32>(path.size()), u32(w, "AS number"));
  } while (!w.atEnd());
  return path;
}

SetAction setPrepend(Words& w) {
  auto path = asPathOf(w);
  return {Flags::asPathPrepend, [=](MapEntry& e) { e.asPathPrependIs(path); }};
}

SetAction setPrependLastAs(Words& w) {
  U32 count = u32(w, "last-AS count");
  return {Flags::setValue33, [=](MapEntry& e) { e.setValue33Is(count); }};
}

SetAction setReplace(Words& w) {
  auto path = asPathOf(w);
  return {Flags::asPathReplace, [=](MapEntry& e) { e.asPathReplaceIs(path); }};
}

/// The set values carried to the engine under their own tag number.
struct SetValue {
  U32 tag;
  U32 bit;
  bool isSigned;
  void (MapEntry::*setU32)(U32);
  void (MapEntry::*setS32)(S32);
};
SetValue const kSetValues[] = {
    {2, Flags::setValue2, false, &MapEntry::setValue2Is, nullptr},
    {3, Flags::setValue3, true, nullptr, &MapEntry::setValue3Is},
    {19, Flags::setValue19, true, nullptr, &MapEntry::setValue19Is},
    {25, Flags::setValue25, false, &MapEntry::setValue25Is, nullptr},
    {26, Flags::setValue26, true, nullptr, &MapEntry::setValue26Is},
    {33, Flags::setValue33, false, &MapEntry::setValue33Is, nullptr},
    {35, Flags::setValue35, true, nullptr, &MapEntry::setValue35Is},
};

SetValue const& setValueOf(Words& w) {
  std::string const& word = w.take("set value tag 2, 3, 19, 25, 26, 33 or 35");
  auto tag = integerOf(word);
  for (SetValue const& v : kSetValues) {
    if (tag && *tag == v.tag) return v;
  }
  w.fail("set value tag 2, 3, 19, 25, 26, 33 or 35", word);
}

SetAction setValue(Words& w) {
  SetValue const& v = setValueOf(w);
  if (v.isSigned) {
    S32 n = s32(w, "signed 32-bit value");
    return {v.bit, [=](MapEntry& e) { (e.*v.setS32)(n); }};
  }
  U32 n = u32(w, "unsigned 32-bit value");
  return {v.bit, [=](MapEntry& e) { (e.*v.setU32)(n); }};
}

SetAction unsetValue(Words& w) {
  U32 bit = setValueOf(w).bit;
  return {bit, nullptr};
}

// Communities: "AA:NN" standard, "rt|soo|lbw AA:NN" or "W:W" extended,
// "A:B:C" large, or "list NAME..." for named community lists. The value
// readers are shared with the community-list statements.

}  // namespace

std::optional<std::vector<long long>> numbersOf(std::string_view text, std::size_t count) {
  std::vector<long long> out;
  while (out.size() < count) {
    std::size_t colon = text.find(':');
    auto v = integerOf(text.substr(0, colon));
    if (!v) return std::nullopt;
    out.push_back(*v);
    if (colon == std::string_view::npos) break;
    text.remove_prefix(colon + 1);
  }
  if (out.size() != count) return std::nullopt;
  return out;
}

Acl::CommunityValue standardValue(Words& w) {
  static constexpr std::string_view what = "community AA:NN";
  std::string const& word = w.take(what);
  if (word == "no-export") return {0, 0, 0xffffff01};
  if (word == "no-advertise") return {0, 0, 0xffffff02};
  if (word == "local-as") return {0, 0, 0xffffff03};
  auto pair = numbersOf(word, 2);
  if (pair && (*pair)[0] >= 0 && (*pair)[0] <= 0xffff && (*pair)[1] >= 0 && (*pair)[1] <= 0xffff)
    return {0, 0, static_cast<U32>((*pair)[0] << 16 | (*pair)[1])};
  auto single = integerOf(word);
  if (single && *single >= 0 && *single <= 0xffffffffLL) return {0, 0, static_cast<U32>(*single)};
  w.fail(what, word);
}

Acl::CommunityValue extendedValue(Words& w) {
  static constexpr std::string_view what = "extended community (rt, soo or lbw AA:NN, or W:W)";
  // The upper half of the first word is the type and subtype: route target
  // 0x0002, site of origin 0x0003, link bandwidth 0x4004.
  static constexpr std::array<std::string_view, 3> kinds = {"rt", "soo", "lbw"};
  static constexpr std::array<U32, 3> typeOf = {0x0002, 0x0003, 0x4004};
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    if (!w.accept(kinds[k])) continue;
    std::string const& word = w.take(std::string(kinds[k]) + " AA:NN");
    auto colon = word.find(':');
    auto as = integerOf(std::string_view(word).substr(0, colon));
    if (colon == std::string::npos || !as || *as < 0 || *as > 0xffff)
      w.fail(std::string(kinds[k]) + " AA:NN", word);
    std::string_view rest = std::string_view(word).substr(colon + 1);
    U32 low = 0;
    if (kinds[k] == "lbw") {
      // The bandwidth is a 32-bit float on the wire.
      std::string text(rest);
      char* end = nullptr;
      float bandwidth = std::strtof(text.c_str(), &end);
      if (text.empty() || *end != '\0' || !isBandwidth(bandwidth))
        w.fail("lbw AA:BANDWIDTH (a finite bandwidth, 0 or more)", word);
      std::memcpy(&low, &bandwidth, sizeof low);
    } else {
      auto n = integerOf(rest);
      if (!n || *n < 0 || *n > 0xffffffffLL) w.fail(std::string(kinds[k]) + " AA:NN", word);
      low = static_cast<U32>(*n);
    }
    return {0, typeOf[k] << 16 | static_cast<U32>(*as), low};
  }
  std::string const& word = w.take(what);
  auto pair = numbersOf(word, 2);
  if (!pair || (*pair)[0] < 0 || (*pair)[0] > 0xffffffffLL || (*pair)[1] < 0 ||
      (*pair)[1] > 0xffffffffLL)
    w.fail(what, word);
  return {0, static_cast<U32>((*pair)[0]), static_cast<U32>((*pair)[1])};
}

Acl::CommunityValue largeValue(Words& w) {
  static constexpr std::string_view what = "large community A:B:C";
  std::string const& word = w.take(what);
  auto triple = numbersOf(word, 3);
  if (!triple) w.fail(what, word);
  for (long long v : *triple) {
    if (v < 0 || v > 0xffffffffLL) w.fail(what, word);
  }
  return {static_cast<U32>((*triple)[0]), static_cast<U32>((*triple)[1]),
          static_cast<U32>((*triple)[2])};
}

namespace {

/// The community set of a clause: an optional mode word (unless `fixed`),
/// then values or `list NAME...`; `none` sets an empty set.
Orb::Ptr<CommunitySet const> communitySetOf(Words& w, Acl::CommunityType type,
                                            std::optional<Acl::CommSetFlag> fixed,
                                            bool deleteAllowed) {
  CommunitySet::Content content;
  if (fixed) {
    content.flag = *fixed;
  } else if (w.accept("add")) {
    content.flag = Acl::commSetAdd_;
  } else if (w.accept("replace")) {
    content.flag = Acl::commSetReplace_;
  } else if (deleteAllowed && w.accept("delete")) {
    content.flag = Acl::commSetDelete_;
  } else if (w.accept("none")) {
    w.expectEnd();
    content.flag = Acl::commSetNone_;
    return CommunitySet::create(std::move(content));
  }
  if (w.accept("list")) {
    content.useCL = true;
    do {
      content.listNames.insert(Orb::Name(w.take("community-list name")));
    } while (!w.atEnd());
    return CommunitySet::create(std::move(content));
  }
  do {
    switch (type) {
      case Acl::communityStandard:
        content.values.insert(standardValue(w));
        break;
      case Acl::communityExtended:
        content.values.insert(extendedValue(w));
        break;
      case Acl::communityLarge:
        content.values.insert(largeValue(w));
        break;
    }
  } while (!w.atEnd());
  return CommunitySet::create(std::move(content));
}

SetAction setCommunity(Words& w) {
  auto set = communitySetOf(w, Acl::communityStandard, std::nullopt, false);
  return {Flags::communityAddReplace, [=](MapEntry& e) { e.communityAddReplaceIs(set); }};
}

SetAction setCommunityDelete(Words& w) {
  auto set = communitySetOf(w, Acl::communityStandard, Acl::commSetDelete_, false);
  return {Flags::communityDelete, [=](MapEntry& e) { e.communityDeleteIs(set); }};
}

SetAction setExtCommunity(Words& w) {
  auto set = communitySetOf(w, Acl::communityExtended, std::nullopt, true);
  return {Flags::extCommunity, [=](MapEntry& e) { e.extCommunityIs(set); }};
}

SetAction setLargeCommunity(Words& w) {
  auto set = communitySetOf(w, Acl::communityLarge, std::nullopt, true);
  return {Flags::largeCommunity, [=](MapEntry& e) { e.largeCommunityIs(set); }};
}

SetAction setLinkBandwidth(Words& w) {
  static constexpr std::array<std::string_view, 4> modes = {"none", "aggregate", "divide-equal",
                                                            "divide-ratio"};
  static constexpr std::array<Acl::ExtCommLinkBandwidthSetFlag, 4> flags = {
      Acl::lbwNone, Acl::lbwAggregate, Acl::lbwDivideEqual, Acl::lbwDivideRatio};
  std::string const& word =
      w.take("link bandwidth (aggregate, divide-equal, divide-ratio or a value)");
  auto mode = std::find(modes.begin(), modes.end(), word);
  if (mode != modes.end()) {
    auto flag = flags[mode - modes.begin()];
    return {0, [=](MapEntry& e) {
              e.extCommLbwFlagIs(flag);
              e.extCommLbwValueIs(0);
            }};
  }
  char* end = nullptr;
  float value = std::strtof(word.c_str(), &end);
  if (*end != '\0' || !isBandwidth(value)) {
    w.fail("link bandwidth (aggregate, divide-equal, divide-ratio or a finite value, 0 or more)",
           word);
  }
  return {0, [=](MapEntry& e) {
            e.extCommLbwFlagIs(Acl::lbwValue);
            e.extCommLbwValueIs(value);
          }};
}

SetAction unsetLinkBandwidth(Words&) {
  return {0, [](MapEntry& e) {
            e.extCommLbwFlagIs(Acl::lbwNone);
            e.extCommLbwValueIs(0);
          }};
}

SetKind const kSetKinds[] = {
    {{"metric"}, Flags::metric, setMetric},
    {{"metric-type"}, Flags::metricType, setMetricType},
    {{"origin"}, Flags::origin, setOrigin},
    {{"isis-level"}, Flags::level, setLevel},
    {{"next-hop"}, Flags::nextHop, setNextHop},
    {{"ipv6", "next-hop"}, Flags::ipv6NextHop, setIpv6NextHop},
    {{"next-hop", "peer-address"}, Flags::nextHopPeerAddr, setPeerAddress},
    {{"ipv6", "next-hop", "peer-address"}, Flags::ipv6NextHopPeerAddr, setIpv6PeerAddress},
    {{"next-hop", "unchanged"}, Flags::nextHopUnchanged, setUnchanged},
    {{"ipv6", "next-hop", "unchanged"}, Flags::ipv6NextHopUnchanged, setIpv6Unchanged},
    {{"as-path", "prepend"}, Flags::asPathPrepend, setPrepend},
    {{"as-path", "prepend", "last-as"}, Flags::setValue33, setPrependLastAs},
    {{"as-path", "replace"}, Flags::asPathReplace, setReplace},
    {{"value"}, 0, setValue, unsetValue},
    {{"community"}, Flags::communityAddReplace, setCommunity},
    {{"community", "delete"}, Flags::communityDelete, setCommunityDelete},
    {{"extcommunity"}, Flags::extCommunity, setExtCommunity},
    {{"large-community"}, Flags::largeCommunity, setLargeCommunity},
    {{"link-bandwidth"}, 0, setLinkBandwidth, unsetLinkBandwidth},
};

SetKind const& setKind(Words& w) {
  if (auto const* kind = longestMatch<SetKind>(kSetKinds, w)) return *kind;
  if (w.atEnd()) throw Refusal("expected a set clause, got end of line");
  w.fail("a set clause (" + firstWords<SetKind>(kSetKinds) + ")", w.peek());
}

void parseSet(Words& w, Context& c, Statement& s) {
  SetKind const& kind = setKind(w);
  SetAction action = kind.set(w);
  w.expectEnd();
  // The field first, then its presence bit, as a writer of the model would.
  clauseEdit(s, *c.block, [action](MapEntry& e) {
    action.apply(e);
    if (action.bit) e.setFlagIs(action.bit, true);
  });
}

void parseNoSet(Words& w, Context& c, Statement& s) {
  SetKind const& kind = setKind(w);
  SetAction action = kind.unset ? kind.unset(w) : SetAction{kind.bit, nullptr};
  w.expectEnd();
  clauseEdit(s, *c.block, [action](MapEntry& e) {
    if (action.apply) action.apply(e);
    if (action.bit) e.setFlagIs(action.bit, false);
  });
}

}  // namespace

Rows setClauses() {
  static Row const rows[] = {
      {{"set"}, parseSet},
      {{"no", "set"}, parseNoSet},
  };
  return rows;
}

}  // namespace Scenario
