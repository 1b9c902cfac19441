// Reading scenarios: lines into words, words into statements through tables
// of statement, match and set handlers, so a new statement is one more row.
#include "Scenario.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>
#include <sstream>

#include "Kiwi/IpAddr.h"
#include "Orb/RangeError.h"

namespace Scenario {

using Orb::S32;
using Orb::U32;
using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchOption;
using Routing::RouteMap::MatchRule;
using Flags = Routing::RouteMap::MapEntry::SetFlags;

namespace {

constexpr std::array<std::string_view, inputCount> kInputNames = {
    "route-map-config", "peer-filter-config",         "acl-list-config",
    "acl-config",       "dynamic-prefix-list-config", "policy-map",
};

}  // namespace

std::string_view inputName(Input input) noexcept {
  return kInputNames[static_cast<std::size_t>(input)];
}

Inputs Inputs::create() {
  return Inputs{
      Routing::RouteMap::Config::create("routeMapConfig"),
      Routing::RouteMap::PeerFilterConfig::create("peerFilterConfig"),
      Acl::AclListConfig::create("aclListConfig"),
      Acl::Config::create("aclConfig"),
      Routing::DynamicPrefixList::Config::create("dynPfxListConfig"),
      RoutingPolicyMap::PolicyMap::create("policyMap"),
  };
}

namespace {

std::string quoted(std::string_view word) {
  return "'" + std::string(word) + "'";
}

/// The words of one line, taken from left to right. Every failure is a
/// Refusal saying what was expected and what stood there instead.
class Words {
 public:
  explicit Words(std::vector<std::string> words) : words_(std::move(words)) {}

  bool atEnd() const noexcept { return next_ == words_.size(); }
  std::string_view peek() const noexcept { return atEnd() ? std::string_view() : words_[next_]; }
  /// Whether `keywords` come next; consumes them when they do.
  bool accept(std::span<std::string_view const> keywords) {
    if (!startsWith(keywords)) return false;
    next_ += keywords.size();
    return true;
  }
  bool accept(std::string_view keyword) { return accept(std::span(&keyword, 1)); }
  bool startsWith(std::span<std::string_view const> keywords) const {
    if (words_.size() - next_ < keywords.size()) return false;
    return std::equal(keywords.begin(), keywords.end(),
                      words_.begin() + static_cast<std::ptrdiff_t>(next_));
  }
  std::string const& take(std::string_view what) {
    if (atEnd()) throw Refusal("expected " + std::string(what) + ", got end of line");
    return words_[next_++];
  }
  void expectEnd() const {
    if (!atEnd()) throw Refusal("expected end of line, got " + quoted(words_[next_]));
  }
  [[noreturn]] void fail(std::string_view what, std::string_view got) const {
    throw Refusal("expected " + std::string(what) + ", got " + quoted(got));
  }

 private:
  std::vector<std::string> words_;
  std::size_t next_ = 0;
};

std::optional<long long> integerOf(std::string_view text) {
  long long v = 0;
  int base = 10;
  if (text.starts_with("0x")) {
    text.remove_prefix(2);
    base = 16;
  }
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v, base);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return v;
}

/// A number in [lo, hi]; `what` names it in the refusal.
long long numberIn(Words& w, std::string_view what, long long lo, long long hi) {
  std::string const& word = w.take(what);
  auto v = integerOf(word);
  if (!v || *v < lo || *v > hi) w.fail(what, word);
  return *v;
}

U32 u32(Words& w, std::string_view what) {
  return static_cast<U32>(numberIn(w, what, 0, 0xffffffffLL));
}

S32 s32(Words& w, std::string_view what) {
  return static_cast<S32>(numberIn(w, what, INT32_MIN, INT32_MAX));
}

/// The first of `names` that comes next, as its index.
std::size_t oneOf(Words& w, std::string_view what, std::span<std::string_view const> names) {
  std::string const& word = w.take(what);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (word == names[i]) return i;
  }
  w.fail(what, word);
}

/// Values the library aborts on are refused here with the same wording as
/// any other bad value, plus why.
constexpr std::string_view kAborts = " (others abort the library)";

/// The row of `table` whose words come next, the longest one when several
/// do (so "next-hop peer-address" wins over "next-hop"); consumed.
template <class Row>
Row const* longestMatch(std::span<Row const> table, Words& w) {
  Row const* best = nullptr;
  for (Row const& row : table) {
    if (w.startsWith(row.words) && (!best || row.words.size() > best->words.size())) best = &row;
  }
  if (best) w.accept(best->words);
  return best;
}

/// "a, b, c" of the distinct first words of a table, for refusals.
template <class Row>
std::string firstWords(std::span<Row const> table) {
  std::vector<std::string_view> seen;
  std::string out;
  for (Row const& row : table) {
    if (std::find(seen.begin(), seen.end(), row.words.front()) != seen.end()) continue;
    seen.push_back(row.words.front());
    if (!out.empty()) out += ", ";
    out += row.words.front();
  }
  return out;
}

// ---- parsing context

/// The route-map sequence that indented clauses apply to.
struct Block {
  Orb::Name map;
  U32 seqno = 0;
};

struct Context {
  Scenario* scenario = nullptr;
  std::optional<Block> block;
  /// A statement other than the header has been read.
  bool begun = false;
};

/// The sequence a clause edits; made when missing, so a clause also stands on
/// its own.
Orb::Ptr<MapEntry> entryOf(Inputs& in, Block const& b) {
  return in.routeMapConfig->routeMapIs(b.map)->mapEntryIs(b.seqno);
}

/// Turns a change of one sequence into the statement's edit and effect.
void clauseEdit(Statement& s, Block const& b, std::function<void(MapEntry&)> change) {
  s.edit = [b, change = std::move(change)](Inputs& in) { change(*entryOf(in, b)); };
  s.effect = {Effect::Kind::mapChanged, b.map, {}};
}

// ---- match clauses

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

/// Metric types are written as the engine's users know them.
U32 metricTypeOf(Words& w, std::string_view what) {
  std::string const& word = w.take(what);
  if (word == "type-1") return 1;
  if (word == "type-2") return 2;
  auto v = integerOf(word);
  if (!v || *v < 0 || *v > 0xffffffffLL) w.fail(what, word);
  return static_cast<U32>(*v);
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

// ---- set clauses

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
  U32 level = static_cast<U32>(numberIn(w, "IS-IS level 1-3" + std::string(kAborts), 1, 3));
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
// "A:B:C" large, or "list NAME..." for named community lists.

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
      if (text.empty() || *end != '\0') w.fail("lbw AA:BANDWIDTH", word);
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
  if (*end != '\0')
    w.fail("link bandwidth (aggregate, divide-equal, divide-ratio or a value)", word);
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

void parseSubRouteMap(Words& w, Context& c, Statement& s) {
  Orb::String name = w.take("route-map name");
  w.expectEnd();
  clauseEdit(s, *c.block, [name](MapEntry& e) { e.subRouteMapIs(name); });
}

void parseNoSubRouteMap(Words& w, Context& c, Statement& s) {
  w.expectEnd();
  clauseEdit(s, *c.block, [](MapEntry& e) { e.subRouteMapIs(""); });
}

// ---- top-level statements

void parseVrf(Words& w, Context& c, Statement&) {
  std::string const& name = w.take("VRF name");
  w.expectEnd();
  if (c.begun) throw Refusal("expected 'vrf' before every other statement");
  try {
    c.scenario->vrf = L3::VrfName(Orb::String(name));
  } catch (Orb::RangeError const& e) {
    throw Refusal(std::string("expected a VRF name of at most 100 bytes: ") + e.what());
  }
}

void parseRouteMap(Words& w, Context& c, Statement& s) {
  Orb::Name name(w.take("route-map name"));
  static constexpr std::array<std::string_view, 2> actions = {"permit", "deny"};
  auto permit = oneOf(w, "permit or deny", actions) == 0 ? Acl::permit : Acl::deny;
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    in.routeMapConfig->routeMapIs(name)->mapEntryIs(seqno)->permitIs(permit);
  };
  s.effect = {Effect::Kind::mapChanged, name, {}};
  c.block = Block{name, seqno};
}

void parseNoRouteMap(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("route-map name"));
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) { in.routeMapConfig->routeMapDel(name); };
    s.effect = {Effect::Kind::mapRemoved, name, {}};
    return;
  }
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    if (auto map = in.routeMapConfig->routeMap(name)) map->mapEntryDel(seqno);
  };
  s.effect = {Effect::Kind::sequenceRemoved, name, {}};
}

void parseVersion(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("route-map name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto map = in.routeMapConfig->routeMap(name);
    if (!map) throw Refusal("expected an existing route map, got " + quoted(name.view()));
    map->versionInc();
  };
  s.effect = {Effect::Kind::mapVersioned, name, {}};
}

void parseRouteMapMode(Words& w, Context&, Statement& s) {
  static constexpr std::array<std::string_view, 2> modes = {"default", "alternate"};
  auto mode = oneOf(w, "default or alternate", modes) == 0 ? routeMapOpModeDefault
                                                           : routeMapOpModeAlternate;
  w.expectEnd();
  s.edit = [=](Inputs& in) { in.routeMapConfig->routeMapOpModeIs(mode); };
}

void parseInput(Words& w, Context&, Statement& s) {
  std::string what = "an input (";
  for (std::string_view name : kInputNames)
    what += std::string(name) + (name == kInputNames.back() ? ")" : ", ");
  auto input = Input(oneOf(w, what, kInputNames));
  static constexpr std::array<std::string_view, 2> states = {"off", "on"};
  bool on = oneOf(w, "off or on", states) == 1;
  w.expectEnd();
  s.effect = {on ? Effect::Kind::inputGiven : Effect::Kind::inputTaken, {}, input};
}

// ---- the statement table

enum class Place {
  header,  // before every other statement; yields no statement
  top,     // at the start of a line; ends a route-map block
  clause,  // indented under a route-map line
};

struct Handler {
  std::vector<std::string_view> words;
  Place place;
  void (*parse)(Words&, Context&, Statement&);
};

Handler const kHandlers[] = {
    {{"vrf"}, Place::header, parseVrf},
    {{"route-map"}, Place::top, parseRouteMap},
    {{"no", "route-map"}, Place::top, parseNoRouteMap},
    {{"version"}, Place::top, parseVersion},
    {{"route-map-mode"}, Place::top, parseRouteMapMode},
    {{"input"}, Place::top, parseInput},
    {{"match"}, Place::clause, parseMatch},
    {{"no", "match"}, Place::clause, parseNoMatch},
    {{"set"}, Place::clause, parseSet},
    {{"no", "set"}, Place::clause, parseNoSet},
    {{"sub-route-map"}, Place::clause, parseSubRouteMap},
    {{"no", "sub-route-map"}, Place::clause, parseNoSubRouteMap},
};

Handler const& handlerOf(Words& w) {
  if (auto const* h = longestMatch<Handler>(kHandlers, w)) return *h;
  std::string alternatives;
  for (Handler const& h : kHandlers) {
    if (h.words.size() < 2 || h.words.front() != w.peek()) continue;
    alternatives += alternatives.empty() ? "" : ", ";
    alternatives += std::string(h.words[0]) + " " + std::string(h.words[1]);
  }
  if (!alternatives.empty()) {
    w.take("");
    if (w.atEnd()) throw Refusal("expected one of " + alternatives + ", got end of line");
    w.fail("one of " + alternatives, w.peek());
  }
  w.fail("a statement (" + firstWords<Handler>(kHandlers) + ")", w.peek());
}

std::string joined(std::vector<std::string_view> const& words) {
  std::string out;
  for (auto w : words)
    out += (out.empty() ? "" : " ") + std::string(w);
  return out;
}

/// The line without its comment (from a `#` that starts a word) and
/// without trailing blanks.
std::string bodyOf(std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) {
      line = line.substr(0, i);
      break;
    }
  }
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r'))
    line.remove_suffix(1);
  return std::string(line);
}

std::vector<std::string> wordsOf(std::string const& body) {
  std::istringstream in(body);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

}  // namespace

Scenario parse(std::string_view text, std::string const& file) {
  Scenario scenario;
  scenario.file = file;
  Context context;
  context.scenario = &scenario;
  int lineNo = 0;
  while (!text.empty()) {
    std::size_t eol = text.find('\n');
    std::string_view line = text.substr(0, eol);
    text.remove_prefix(eol == std::string_view::npos ? text.size() : eol + 1);
    ++lineNo;
    std::string body = bodyOf(line);
    if (body.find_first_not_of(" \t") == std::string::npos) continue;
    bool const indented = body[0] == ' ' || body[0] == '\t';
    try {
      Words words(wordsOf(body));
      Handler const& handler = handlerOf(words);
      Statement statement;
      statement.line = lineNo;
      statement.text = body;
      switch (handler.place) {
        case Place::header:
        case Place::top:
          if (indented) {
            throw Refusal("expected '" + joined(handler.words) +
                          "' at the start of the line (only match, set and sub-route-map "
                          "clauses are indented)");
          }
          context.block.reset();
          break;
        case Place::clause:
          if (!context.block) {
            throw Refusal("expected a 'route-map NAME permit|deny SEQ' line before '" +
                          joined(handler.words) + "'");
          }
          if (!indented) {
            throw Refusal("expected '" + joined(handler.words) +
                          "' indented under its route-map line");
          }
          break;
      }
      handler.parse(words, context, statement);
      if (handler.place == Place::header) continue;
      context.begun = true;
      scenario.statements.push_back(std::move(statement));
    } catch (Refusal const& r) {
      throw ScenarioError(file, lineNo, r.what());
    }
  }
  return scenario;
}

Scenario parseFile(std::string const& path) {
  std::ostringstream text;
  if (path == "-") {
    text << std::cin.rdbuf();
    return parse(text.str(), "<stdin>");
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path + ": " + std::strerror(errno));
  text << in.rdbuf();
  return parse(text.str(), path);
}

}  // namespace Scenario
