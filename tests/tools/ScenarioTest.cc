// The scenario language: what each statement writes into the configuration,
// and how bad lines are refused before the library sees them.
#include <gtest/gtest.h>

#include <sstream>

#include "ScenarioTestSupport.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;

using ScenarioTestSupport::configured;
using ScenarioTestSupport::refusalOf;

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
  std::string out = "flag=";
  out += std::to_string(set->flag());
  if (set->useCL()) {
    out += " lists=";
    for (auto const& name : set->listNames()) {
      out += name.str();
      out += ',';
    }
  }
  for (auto const& v : set->values()) {
    out += ' ';
    out += hex(v.word1);
    out += ':';
    out += hex(v.word2);
    out += ':';
    out += hex(v.word3);
  }
  return out;
}

/// The community sets and link bandwidth of a sequence, with its presence bits.
std::string communitiesText(MapEntry const& e) {
  return "flags=" + hex(e.setFlags().bits) +
         "\ncommunity=" + communityText(e.communityAddReplace()) +
         "\ndelete=" + communityText(e.communityDelete()) +
         "\next=" + communityText(e.extCommunity()) +
         "\nlarge=" + communityText(e.largeCommunity()) +
         "\nlbw=" + std::to_string(e.extCommLbwFlag()) + "/" + std::to_string(e.extCommLbwValue()) +
         "\n";
}

/// The fields of a rule that differ from a new one.
std::string ruleText(MatchRule const* r) {
  if (!r) return "(none)";
  MatchRule const d;
  std::ostringstream os;
  os << "option=" << r->option;
  if (r->strValue != d.strValue) os << " str=" << r->strValue;
  if (r->commListSet != d.commListSet) os << " lists=" << r->commListSet.stringValue();
  os << (r->invert ? " invert" : "") << (r->exact ? " exact" : "");
  return os.str();
}

// What the community clauses keep in the model; what the library sends of
// them is covered by the golden streams.
TEST(ScenarioLanguage, CommunityClausesWriteTheirSetsAndPresenceBits) {
  auto e = entry(configured(R"(route-map R deny 10
  set community add 65000:100 no-export
  set community delete list C2 C1
  set extcommunity rt 65000:7 lbw 1:1000
  set large-community replace 1:2:3
  set link-bandwidth 2.5
)"),
                 "R", 10);
  using F = MapEntry::SetFlags;
  EXPECT_EQ(
      "flags=" +
          hex(F::communityAddReplace | F::communityDelete | F::extCommunity | F::largeCommunity) +
          "\n"
          "community=flag=3 0x0:0x0:0xfde80064 0x0:0x0:0xffffff01\n"
          "delete=flag=1 lists=C1,C2,\n"
          "ext=flag=0 0x0:0x2fde8:0x7 0x0:0x40040001:0x447a0000\n"  // 1000 as a float
          "large=flag=0 0x1:0x2:0x3\n"
          "lbw=2/2.500000\n",
      communitiesText(*e));
  // Clearing takes the presence bit away and leaves the field's value.
  e = entry(configured("route-map R deny 10\n  set community none\n  set link-bandwidth "
                       "divide-equal\n  no set community\n  no set link-bandwidth\n"),
            "R", 10);
  EXPECT_EQ("flags=0x0\ncommunity=flag=2\ndelete=-\next=-\nlarge=-\nlbw=0/0.000000\n",
            communitiesText(*e));
}

TEST(ScenarioLanguage, CommunityListEntriesWriteEveryFieldThenTheirVersion) {
  auto in = configured(R"(community-list L 10 permit standard 1:2 no-export
community-list L 20 version 0 action 7 type 9 1:2:3 4:5:6
community-list L 30 deny extended-regex ^rt 1:.*$
community-list-version L 20 5
community-list L 10 deny large 1:2:3
community-list E
no community-list L 30
)");
  auto entryText = [&](Orb::U32 seqno) {
    auto e = in.aclListConfig->communityList("L")->communityListEntry(seqno);
    if (!e) return std::string("(none)");
    std::ostringstream os;
    os << "permit=" << e->permit() << " type=" << e->listType() << " version=" << e->version()
       << " regex=" << e->regex();
    for (auto const& v : e->communityValue())
      os << " " << v.word1 << ":" << v.word2 << ":" << v.word3;
    return os.str();
  };
  EXPECT_EQ("permit=1 type=4 version=2 regex= 1:2:3", entryText(10)) << "rewritten whole";
  EXPECT_EQ("permit=7 type=9 version=5 regex= 1:2:3 4:5:6", entryText(20));
  EXPECT_EQ("(none)", entryText(30));
  EXPECT_TRUE(in.aclListConfig->communityList("E"));

  // Refused when they run, before they change anything.
  auto refusalWhenRun = [](std::string const& text) {
    try {
      configured(text);
    } catch (Scenario::Refusal const& r) {
      return std::string(r.what());
    }
    return std::string("(ran)");
  };
  EXPECT_EQ("expected a version above 0 for an entry already written, got 'version 0'",
            refusalWhenRun("community-list L 10 permit standard 1:1\n"
                           "community-list L 10 version 0 permit standard 1:1\n"));
  EXPECT_EQ("expected an existing community-list entry, got 'L 10'",
            refusalWhenRun("community-list-version L 10\n"));
}

TEST(ScenarioLanguage, ListMatchesWriteOneRuleUnderTheirOption) {
  using namespace Routing::RouteMap;
  struct Case {
    char const* clause;
    MatchOption option;
    char const* rule;
  };
  Case const cases[] = {
      {"match large-community B A exact invert", matchLargeCommunity,
       "option=127 lists=A B invert exact"},
      {"match community C", matchCommunity, "option=103 lists=C"},
      {"match ipv6 address dynamic prefix-list D", matchIpv6DynamicPrefixList, "option=124 str=D"},
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
  std::string const longRename = "route-map R permit 10\nvrf " + std::string(101, 'v') + "\n";
  struct Case {
    char const* text;
    char const* message;
  };
  Case const cases[] = {
      {"frobnicate R\n",
       "t.scenario:1: expected a statement (vrf, route-map, no, version, route-map-mode, "
       "peer-filter, ip, ipv6, mac, access-list, as-path-list, as-path-regex-mode, "
       "community-list, community-list-version, dynamic-prefix-list, list, unlist, input, replace, "
       "root, reconcile, match, set, sub-route-map, seq), got 'frobnicate'"},
      {"no frob R\n",
       "t.scenario:1: expected one of no route-map, no peer-filter, no ip, no ipv6, no mac, "
       "no access-list, no as-path-list, no community-list, no dynamic-prefix-list, no match, "
       "no set, no sub-route-map, no seq, no current-configuration, got 'frob'"},
      {"community-list L 10 permit colossal 1:2\n",
       "t.scenario:1: expected standard, extended, large, their -regex forms or type N, got "
       "'colossal'"},
      {"community-list L 10 allow standard 1:2\n",
       "t.scenario:1: expected permit, deny or action N, got 'allow'"},
      {"community-list L 10 permit large 1:2\n",
       "t.scenario:1: expected large community A:B:C, got '1:2'"},
      {"route-map R permit ten\n", "t.scenario:1: expected sequence number, got 'ten'"},
      {"route-map R allow 10\n", "t.scenario:1: expected permit or deny, got 'allow'"},
      {"version R now\n", "t.scenario:1: expected end of line, got 'now'"},
      {"input routes off\n",
       "t.scenario:1: expected an input (route-map-config, peer-filter-config, acl-list-config, "
       "acl-config, dynamic-prefix-list-config, policy-map), got 'routes'"},
      {"route-map R permit 10\nset metric 1\n",
       "t.scenario:2: expected 'set' indented under its route-map line"},
      {"route-map R permit 10\nversion R\n  set metric 1\n",
       "t.scenario:3: expected a 'route-map NAME permit|deny SEQ' line before 'set'"},
      {"route-map R permit 10\n  version R\n",
       "t.scenario:2: expected 'version' at the start of the line (only match, set and "
       "sub-route-map clauses and access-list rules are indented)"},
      {"replace routes\n",
       "t.scenario:1: expected an input (route-map-config, peer-filter-config, acl-list-config, "
       "acl-config, dynamic-prefix-list-config, policy-map), got 'routes'"},
      {"root\n", "t.scenario:1: expected root name, got end of line"},
      {longRename.c_str(),
       "t.scenario:2: expected a VRF name of at most 100 bytes: VrfName::value::bytes > "
       "VrfName::maxLength not allowed"},
      {"route-map R permit 10\n  set next-hop 10.0.0.256\n",
       "t.scenario:2: expected IPv4 address, got '10.0.0.256'"},
      {"route-map R permit 10\n  set community add 65536:1\n",
       "t.scenario:2: expected community AA:NN, got '65536:1'"},
      {"route-map R permit 10\n  match community exact\n",
       "t.scenario:2: expected community-list name, got 'exact'"},
      {"list route-map R\n", "t.scenario:1: expected 'by REQUESTER', got end of line"},
      {"list acl R by n1\n", "t.scenario:1: expected route-map or dynamic-prefix-list, got 'acl'"},
      {"dynamic-prefix-list D ipv5 P\n",
       "t.scenario:1: expected ipv4, ipv6 or match-map, got 'ipv5'"},
      {"peer-filter F permit 10\nset metric 1\n",
       "t.scenario:2: expected 'set' indented under its peer-filter line"},
      // Numbers: out of range says the range; hexadecimal takes no sign.
      {"route-map R permit 4294967296\n",
       "t.scenario:1: expected sequence number in 0..4294967295, got '4294967296'"},
      {"route-map R permit 10\n  set metric 99999999999999999999\n",
       "t.scenario:2: expected metric in -2147483648..2147483647, got '99999999999999999999'"},
      {"route-map R permit 0x-5\n", "t.scenario:1: expected sequence number, got '0x-5'"},
      // Bandwidths no configuration writer produces.
      {"route-map R permit 10\n  set link-bandwidth nan\n",
       "t.scenario:2: expected link bandwidth (aggregate, divide-equal, divide-ratio or a finite "
       "value, 0 or more), got 'nan'"},
      {"route-map R permit 10\n  set link-bandwidth -inf\n",
       "t.scenario:2: expected link bandwidth (aggregate, divide-equal, divide-ratio or a finite "
       "value, 0 or more), got '-inf'"},
      {"route-map R permit 10\n  set link-bandwidth -1\n",
       "t.scenario:2: expected link bandwidth (aggregate, divide-equal, divide-ratio or a finite "
       "value, 0 or more), got '-1'"},
      {"route-map R permit 10\n  set extcommunity lbw 1:1e39\n",
       "t.scenario:2: expected lbw AA:BANDWIDTH (a finite bandwidth, 0 or more), got '1:1e39'"},
  };
  for (Case const& c : cases)
    EXPECT_EQ(c.message, refusalOf(c.text)) << c.text;
  EXPECT_TRUE(entry(configured("route-map R permit 0x10\n"), "R", 16))
      << "hexadecimal numbers are read";
}

TEST(ScenarioLanguage, RefusalsShowControlBytesAndNulEscaped) {
  using namespace std::string_literals;
  EXPECT_EQ("t\\x1b[2J.scenario:1: expected permit or deny, got 'allow\\x1b]0;x\\x07\\x00!'",
            refusalOf("route-map R allow\x1b]0;x\x07\0!\n"s, "t\x1b[2J.scenario"));
}

TEST(ScenarioLanguage, RefusesValuesTheLibraryWouldAbortOn) {
  struct Case {
    char const* clause;
    char const* expected;
    char const* got;  // null: the message is "expected" and `expected` alone
  };
  Case const cases[] = {
      {"set isis-level 4", "IS-IS level 1-3", "4"},
      {"set metric-type 3", "metric type type-1 or type-2", "3"},
      {"set origin 3", "origin igp, egp or incomplete", "3"},
      {"set metric 1 med-type 9", "med type 0-8 or a name such as igp-cost", "9"},
      {"match protocol 0", "protocol 1-9", "0"},
      {"match route-type 0", "route type 1-5", "0"},
      {"match route-type 6", "route type 1-5", "6"},
      {"match metric-type 3", "metric type type-1 or type-2", "3"},
      // The generic form reaches the same options and is held to the same.
      {"match option 113 int 10", "protocol 1-9", "10"},
      {"match option 103 str C",
       "at least one community-list name (an empty list aborts the library), use 'match "
       "community', 'match extcommunity' or 'match large-community'",
       nullptr},
  };
  for (Case const& c : cases) {
    std::string const message =
        std::string("t.scenario:2: expected ") + c.expected +
        (c.got ? std::string(" (others abort the library), got '") + c.got + "'" : "");
    EXPECT_EQ(message, refusalOf(std::string("route-map R permit 10\n  ") + c.clause + "\n"))
        << c.clause;
  }
}

TEST(ScenarioLanguage, RefusesBadListAndAclLines) {
  struct Case {
    char const* text;
    char const* message;
  };
  Case const cases[] = {
      {"ip prefix-list P seq 10 permit 10.0.0.0/33\n",
       "t.scenario:1: expected an IPv4 prefix A.B.C.D/L, got '10.0.0.0/33': length: "},
      {"ip prefix-list P 10 permit 10.0.0.0/8\n",
       "t.scenario:1: expected 'seq' or end of line, got '10'"},
      {"ipv6 prefix-list P seq 1 allow ::/0\n",
       "t.scenario:1: expected permit, deny or action N, got 'allow'"},
      {"ip access-list standard A\n  seq 10 permit any vni 16777216\n",
       "t.scenario:2: expected a VNI: IpFilterBase::vni < 0 or > 16777215 not allowed"},
      {"ip access-list standard A\n  seq 10 permit 10.0.0.0 0.0.255.255\n",
       "t.scenario:2: expected a source (A.B.C.D/L, A.B.C.D MASK, host A.B.C.D or any), got "
       "'10.0.0.0': "},
      {"access-list type 4294967295 standard A\n",
       "t.scenario:1: expected an ACL type (ip, ipv6, mac or a number below 2147483648), got "
       "'4294967295'"},
      {"seq 10 permit any\n",
       "t.scenario:1: expected an 'ip access-list standard|extended NAME' line before 'seq'"},
  };
  for (auto const& c : cases) {
    std::string const refusal = refusalOf(c.text);
    EXPECT_EQ(0u, refusal.rfind(c.message, 0)) << c.text << refusal;
  }
}

}  // namespace
