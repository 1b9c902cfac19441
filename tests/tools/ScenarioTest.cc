// The scenario language: what each statement writes into the configuration,
// and how bad lines are refused before the library sees them.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "Check.h"
#include "Scenario.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;

std::string refusalOf(std::string const& text) {
  try {
    Scenario::parse(text, "t.scenario");
  } catch (Scenario::ScenarioError const& e) {
    return e.what();
  }
  return "(accepted)";
}

/// Runs the edits of `text` on new inputs, without a root.
Scenario::Inputs configured(std::string const& text) {
  auto inputs = Scenario::Inputs::create();
  for (auto const& s : Scenario::parse(text, "t.scenario").statements) {
    if (s.edit) s.edit(inputs);
  }
  return inputs;
}

Orb::Ptr<MapEntry> entry(Scenario::Inputs const& in, char const* map, Orb::U32 seqno) {
  auto m = in.routeMapConfig->routeMap(map);
  return m ? m->mapEntry(seqno) : nullptr;
}

std::string hex(Orb::U32 v) {
  std::ostringstream os;
  os << std::hex << "0x" << v;
  return os.str();
}

std::string communityText(Orb::Ptr<CommunitySet const> const& set) {
  if (!set) return "-";
  std::string out = "flag=" + std::to_string(set->flag());
  if (set->useCL()) {
    out += " lists=";
    for (auto const& name : set->listNames())
      out += name.str() + ",";
  }
  for (auto const& v : set->values())
    out += " " + hex(v.word1) + ":" + hex(v.word2) + ":" + hex(v.word3);
  return out;
}

/// The set side of a sequence, one field a line, for whole comparisons.
std::string setText(MapEntry const& e) {
  std::ostringstream os;
  auto path = [](MapEntry::AsPath const& p) {
    std::string out;
    for (auto const& [pos, as] : p)
      out += std::to_string(pos) + ":" + std::to_string(as) + " ";
    return out;
  };
  os << "flags=" << hex(e.setFlags().bits) << "\n"
     << "metric=" << e.metric() << " medType=" << e.medType() << " metricType=" << e.metricType()
     << " origin=" << e.origin() << " level=" << e.level() << "\n"
     << "nextHop=" << e.nextHop() << " ipv6NextHop=" << e.ipv6NextHop()
     << " peer=" << e.nextHopPeerAddr() << e.ipv6NextHopPeerAddr()
     << " unchanged=" << e.nextHopUnchanged() << e.ipv6NextHopUnchanged() << "\n"
     << "prepend=" << path(e.asPathPrepend()) << "replace=" << path(e.asPathReplace()) << "\n"
     << "values=" << e.setValue2() << "," << e.setValue3() << "," << e.setValue19() << ","
     << e.setValue25() << "," << e.setValue26() << "," << e.setValue33() << "," << e.setValue35()
     << "\n"
     << "community=" << communityText(e.communityAddReplace()) << "\n"
     << "delete=" << communityText(e.communityDelete()) << "\n"
     << "ext=" << communityText(e.extCommunity()) << "\n"
     << "large=" << communityText(e.largeCommunity()) << "\n"
     << "lbw=" << e.extCommLbwFlag() << "/" << e.extCommLbwValue() << "\n";
  return os.str();
}

std::string ruleText(MatchRule const* r) {
  if (!r) return "(none)";
  std::ostringstream os;
  os << "option=" << r->option << " str=" << r->strValue << " int=" << r->intValue
     << " ip=" << r->ipAddr << " ip6=" << r->ip6Addr << " high=" << r->rangeHigh
     << " lists=" << r->commListSet.stringValue() << " length=" << r->pathLengthFirst << "-"
     << r->pathLengthSecond << " invert=" << r->invert << " exact=" << r->exact;
  return os.str();
}

TEST(ScenarioLanguage, SetClausesWriteTheirFieldsAndPresenceBits) {
  auto in = configured(R"(route-map R deny 10
  set metric -7 med-type igp-cost-add
  set metric-type type-2
  set origin incomplete
  set isis-level 3
  set next-hop 10.1.2.3
  set ipv6 next-hop 2001:db8::1
  set next-hop peer-address
  set ipv6 next-hop unchanged
  set as-path prepend 65001 65002
  set as-path prepend last-as 2
  set as-path replace 65010
  set value 2 7
  set value 3 -3
  set value 35 9
  set community add 65000:100 no-export
  set community delete list C2 C1
  set extcommunity rt 65000:7 lbw 1:1000
  set large-community replace 1:2:3
  set link-bandwidth 2.5
)");
  auto e = entry(in, "R", 10);
  ASSERT_TRUE(e);
  EXPECT_EQ(Acl::deny, e->permit());
  std::uint32_t lbw;
  float const bandwidth = 1000;
  std::memcpy(&lbw, &bandwidth, sizeof lbw);
  using F = MapEntry::SetFlags;
  Orb::U32 const flags = F::metric | F::metricType | F::origin | F::level | F::nextHop |
                         F::ipv6NextHop | F::nextHopPeerAddr | F::ipv6NextHopUnchanged |
                         F::asPathPrepend | F::setValue33 | F::asPathReplace | F::setValue2 |
                         F::setValue3 | F::setValue35 | F::communityAddReplace |
                         F::communityDelete | F::extCommunity | F::largeCommunity;
  EXPECT_EQ("flags=" + hex(flags) +
                "\n"
                "metric=-7 medType=3 metricType=2 origin=2 level=3\n"
                "nextHop=10.1.2.3 ipv6NextHop=2001:db8::1 peer=10 unchanged=01\n"
                "prepend=0:65001 1:65002 replace=0:65010 \n"
                "values=7,-3,0,0,0,2,9\n"
                "community=flag=3 0x0:0x0:0xfde80064 0x0:0x0:0xffffff01\n"
                "delete=flag=1 lists=C1,C2,\n"
                "ext=flag=0 0x0:0x2fde8:0x7 0x0:0x40040001:" +
                hex(lbw) +
                "\n"
                "large=flag=0 0x1:0x2:0x3\n"
                "lbw=2/2.5\n",
            setText(*e));

  auto cleared = configured(R"(route-map R deny 10
  set metric 1
  set isis-level 1
  set value 26 4
  set community none
  set link-bandwidth divide-equal
  no set metric
  no set isis-level
  no set value 26
  no set community
  no set link-bandwidth
)");
  // Clearing takes the presence bit away and leaves the field's value.
  EXPECT_EQ(
      "flags=0x0\n"
      "metric=1 medType=0 metricType=0 origin=0 level=1\n"
      "nextHop=0.0.0.0 ipv6NextHop=:: peer=00 unchanged=00\n"
      "prepend=replace=\n"
      "values=0,0,0,0,4,0,0\n"
      "community=flag=2\n"
      "delete=-\n"
      "ext=-\n"
      "large=-\n"
      "lbw=0/0\n",
      setText(*entry(cleared, "R", 10)));
}

TEST(ScenarioLanguage, MatchClausesWriteOneRuleEachUnderTheirOption) {
  struct Case {
    char const* clause;
    Routing::RouteMap::MatchOption option;
    char const* rule;
  };
  using namespace Routing::RouteMap;
  Case const cases[] = {
      {"match ip address prefix-list PL invert", matchPrefixList,
       "option=2 str=PL int=0 ip=0.0.0.0 ip6=:: high=0 lists= length=0-0 invert=1 exact=0"},
      {"match ipv6 address dynamic prefix-list D", matchIpv6DynamicPrefixList,
       "option=124 str=D int=0 ip=0.0.0.0 ip6=:: high=0 lists= length=0-0 invert=0 exact=0"},
      {"match ipv6 next-hop 2001:db8::2", matchIpv6NextHop,
       "option=117 str= int=0 ip=0.0.0.0 ip6=2001:db8::2 high=0 lists= length=0-0 invert=0 "
       "exact=0"},
      {"match ip next-hop prefix-list N", matchNextHopPrefixList,
       "option=14 str=N int=0 ip=0.0.0.0 ip6=:: high=0 lists= length=0-0 invert=0 exact=0"},
      {"match metric-type type-2", matchMetricType,
       "option=112 str= int=2 ip=0.0.0.0 ip6=:: high=0 lists= length=0-0 invert=0 exact=0"},
      {"match as-range 100 200 invert", matchAsRange,
       "option=121 str= int=100 ip=0.0.0.0 ip6=:: high=200 lists= length=0-0 invert=1 exact=0"},
      {"match as-path-length 2 5", matchAsPathLength,
       "option=126 str= int=0 ip=0.0.0.0 ip6=:: high=0 lists= length=2-5 invert=0 exact=0"},
      {"match large-community B A exact invert", matchLargeCommunity,
       "option=127 str= int=0 ip=0.0.0.0 ip6=:: high=0 lists=A B length=0-0 invert=1 exact=1"},
      {"match option 109 int 4", MatchOption(109),
       "option=109 str= int=4 ip=0.0.0.0 ip6=:: high=0 lists= length=0-0 invert=0 exact=0"},
      {"match option 120 str x invert", MatchOption(120),
       "option=120 str=x int=0 ip=0.0.0.0 ip6=:: high=0 lists= length=0-0 invert=1 exact=0"},
  };
  for (Case const& c : cases) {
    auto in = configured(std::string("route-map R permit 10\n  ") + c.clause + "\n");
    EXPECT_EQ(1u, entry(in, "R", 10)->matchRule().size()) << c.clause;
    EXPECT_EQ(c.rule, ruleText(entry(in, "R", 10)->matchRule(c.option))) << c.clause;
  }
  auto removed = configured(
      "route-map R permit 10\n  match option 109 int 4\n  match protocol 2\n"
      "  no match option 109\n");
  EXPECT_EQ(1u, entry(removed, "R", 10)->matchRule().size());
  EXPECT_TRUE(entry(removed, "R", 10)->matchRule(matchProtocol));
}

TEST(ScenarioLanguage, RefusesBadLinesSayingWhereAndWhatWasExpected) {
  struct Case {
    char const* text;
    char const* message;
  };
  Case const cases[] = {
      {"frobnicate R\n",
       "t.scenario:1: expected a statement (vrf, route-map, no, version, route-map-mode, input, "
       "match, set, sub-route-map), got 'frobnicate'"},
      {"no frob R\n",
       "t.scenario:1: expected one of no route-map, no match, no set, no sub-route-map, got "
       "'frob'"},
      {"route-map R permit\n", "t.scenario:1: expected sequence number, got end of line"},
      {"route-map R permit ten\n", "t.scenario:1: expected sequence number, got 'ten'"},
      {"route-map R allow 10\n", "t.scenario:1: expected permit or deny, got 'allow'"},
      {"version R now\n", "t.scenario:1: expected end of line, got 'now'"},
      {"input routes off\n",
       "t.scenario:1: expected an input (route-map-config, peer-filter-config, acl-list-config, "
       "acl-config, dynamic-prefix-list-config, policy-map), got 'routes'"},
      {"# header\n\n  match protocol 1\n",
       "t.scenario:3: expected a 'route-map NAME permit|deny SEQ' line before 'match'"},
      {"route-map R permit 10\nset metric 1\n",
       "t.scenario:2: expected 'set' indented under its route-map line"},
      {"route-map R permit 10\nversion R\n  set metric 1\n",
       "t.scenario:3: expected a 'route-map NAME permit|deny SEQ' line before 'set'"},
      {"route-map R permit 10\n  version R\n",
       "t.scenario:2: expected 'version' at the start of the line (only match, set and "
       "sub-route-map clauses are indented)"},
      {"vrf blue\nroute-map R permit 10\nvrf red\n",
       "t.scenario:3: expected 'vrf' before every other statement"},
      {"route-map R permit 10\n  set next-hop 10.0.0.256\n",
       "t.scenario:2: expected IPv4 address, got '10.0.0.256'"},
      {"route-map R permit 10\n  set community add 65536:1\n",
       "t.scenario:2: expected community AA:NN, got '65536:1'"},
      {"route-map R permit 10\n  match community exact\n",
       "t.scenario:2: expected community-list name, got 'exact'"},
  };
  for (Case const& c : cases)
    EXPECT_EQ(c.message, refusalOf(c.text)) << c.text;
}

TEST(ScenarioLanguage, RefusesValuesTheLibraryWouldAbortOn) {
  struct Case {
    char const* clause;
    char const* message;
  };
  Case const cases[] = {
      {"set isis-level 4", "expected IS-IS level 1-3 (others abort the library), got '4'"},
      {"set metric-type 3",
       "expected metric type type-1 or type-2 (others abort the library), got '3'"},
      {"set origin 3",
       "expected origin igp, egp or incomplete (others abort the library), got '3'"},
      {"set metric 1 med-type 9",
       "expected med type 0-8 or a name such as igp-cost (others abort the library), got '9'"},
      {"match protocol 0", "expected protocol 1-9 (others abort the library), got '0'"},
      {"match route-type 0", "expected route type 1-5 (others abort the library), got '0'"},
      {"match route-type 6", "expected route type 1-5 (others abort the library), got '6'"},
      {"match metric-type 3",
       "expected metric type type-1 or type-2 (others abort the library), got '3'"},
      // The generic form reaches the same options and is held to the same.
      {"match option 113 int 10", "expected protocol 1-9 (others abort the library), got '10'"},
      {"match option 103 str C",
       "expected at least one community-list name (an empty list aborts the library), use "
       "'match community', 'match extcommunity' or 'match large-community'"},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(std::string("t.scenario:2: ") + c.message,
              refusalOf(std::string("route-map R permit 10\n  ") + c.clause + "\n"))
        << c.clause;
  }
}

TEST(ScenarioLanguage, ReferenceToAnAbsentMapIsRefusedWhenItRuns) {
  long const before = Orb::Object::liveObjects();
  {
    auto scenario = Scenario::parse("route-map R permit 10\nversion R\nversion S\n", "t.scenario");
    Scenario::World world({});
    std::string message;
    try {
      Scenario::run(scenario, world, true);
    } catch (Scenario::ScenarioError const& e) {
      message = e.what();
    }
    EXPECT_EQ("t.scenario:3: expected an existing route map, got 'S'", message);
  }
  Tessel::rmRoot = nullptr;
  EXPECT_EQ(before, Orb::Object::liveObjects()) << "the world left objects behind";
}

}  // namespace
