// The replay check: it holds on the route-map flows, names the divergences the
// system makes on purpose, and catches faults planted on either side.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "Rib/CommandText.h"
#include "ScenarioTestSupport.h"

namespace {

using Rib::RecordedCommand;

std::string const kDiffers =
    "the engine state differs from a fresh replay of the configuration\n"
    "(- only as sent change by change, + only in the fresh replay):\n";
// The unchanged nodes above what differs in map R's only sequence.
std::string const kAboveSeq10 =
    "  512\n    576=\"R\" 0:str=\"R\" (routeMap)\n      577\n"
    "        578=10 0:u32=10 1:flag=true (routeMapSeq)\n";

class CheckTest : public ScenarioTestSupport::CheckedWorldTest {};

TEST_F(CheckTest, RouteMapFlowsMatchAFreshReplayWheneverSettled) {
  // Settled, and checked, whenever the changed maps were resent, a map's last
  // sequence or the map went, or the input came back. Removing
  // sequences and maps leaves containers behind only as long as they hold
  // something, as a fresh replay never makes an empty one.
  EXPECT_EQ("checks=8\n", runChecked(R"(route-map R permit 10
  match ip address prefix-list PL
  set metric 10
route-map S deny 5
  set next-hop peer-address
version R
version S
route-map R permit 20
  set ipv6 next-hop 2001:db8::1
  sub-route-map S
version R
no route-map R 10
route-map-mode alternate
input policy-map off
input policy-map on
no route-map R 20
no route-map S
route-map T permit 10
no route-map T
)"));
}

TEST_F(CheckTest, CommandLostOnTheWayIsReportedAtTheStatementThatSettles) {
  EXPECT_EQ("checks=1\nline 3: version R\n" + kDiffers + kAboveSeq10 +
                "-         601 (ExtCommSetLinkBwOpts)\n"
                "+         601 7:ip=10.0.0.1 (ExtCommSetLinkBwOpts)\n",
            runChecked("route-map R permit 10\n  set next-hop 10.0.0.1\nversion R\n",
                       [](RecordedCommand const& c) { return c.name != "setNextHop"; }));
}

TEST_F(CheckTest, ShadowThatDisagreesWithWhatWasSentIsReported) {
  ASSERT_EQ("checks=1\n", runChecked("route-map R permit 10\n  set metric 5\nversion R\n"));
  world->shadow().routeMapConfig->routeMap("R")->mapEntry(10)->metricIs(6);
  auto const checked = Scenario::check(*world);
  EXPECT_TRUE(checked.diverges);
  EXPECT_EQ(kDiffers + kAboveSeq10 +
                "-         601 1:u32=5 17:u32=5 (ExtCommSetLinkBwOpts)\n"
                "+         601 1:u32=6 17:u32=6 (ExtCommSetLinkBwOpts)\n",
            checked.report);
}

TEST_F(CheckTest, MapRemovedWhileAnInputWasAwayIsKnownByName) {
  EXPECT_EQ(
      "checks=4\n"
      "t.scenario:7: known divergence 'route-map-removed-while-away': a route map removed while "
      "an input was taken away stays in the engine: the new reactor only sends the maps that "
      "are there\n",
      runChecked(R"(route-map R permit 10
route-map S permit 10
version R
version S
input route-map-config off
no route-map R
input route-map-config on
version S
route-map R permit 20
version R
)"));
  // Made again while everything is there, R's new reactor deleted the old one.
  EXPECT_TRUE(world->staleMaps().empty());
}

TEST_F(CheckTest, MapMadeAgainWhileAnInputWasAwayIsSentWholeAndNotExcused) {
  EXPECT_EQ(
      "checks=2\n"
      "t.scenario:10: known divergence 'route-map-removed-while-away': a route map removed while "
      "an input was taken away stays in the engine: the new reactor only sends the maps that "
      "are there\n",
      runChecked(R"(route-map R permit 10
  set metric 5
route-map S permit 10
version R
version S
input acl-config off
no route-map R
no route-map S
route-map R deny 20
input acl-config on
)"));
  EXPECT_EQ(std::set<Orb::Name>{"S"}, world->staleMaps());
  EXPECT_TRUE(world->settled());
}

TEST_F(CheckTest, ChangedMapStaysPendingUntilResentOrEmptied) {
  ASSERT_EQ("checks=0\n", runChecked("route-map R permit 10\nroute-map S permit 10\nversion S\n"));
  EXPECT_EQ(std::set<Orb::Name>{"R"}, world->pending(Scenario::ObjectKind::routeMap));
  EXPECT_FALSE(world->settled());
  // Removing the last sequence took R out of the engine by itself.
  world->apply(Scenario::parse("no route-map R 10\n", "t.scenario").statements.front());
  EXPECT_TRUE(world->settled());
}

TEST_F(CheckTest, MapRemovalLostWhileEverythingIsThereIsNotExcused) {
  EXPECT_EQ("checks=2\nline 3: no route-map R\n" + kDiffers +
                "- 512\n"
                "-   576=\"R\" 0:str=\"R\" (routeMap)\n"
                "-     577\n"
                "-       578=10 0:u32=10 1:flag=true (routeMapSeq)\n"
                "-         601 (ExtCommSetLinkBwOpts)\n",
            runChecked("route-map R permit 10\nversion R\nno route-map R\n",
                       [](RecordedCommand const& c) {
                         return !(c.name == "deleteRouteMap" && c.path.size() == 2);
                       }));
}

TEST_F(CheckTest, CommandsLeftUncommittedAreADivergence) {
  EXPECT_EQ(
      "checks=1\n"
      "line 2: version R\n"
      "commands left uncommitted:\n"
      "  deleteRouteMap [512 576=\"R\"] delete\n"
      "  delCommunityList [512 528 529=\"/policy/commlist .clR10ar\"] delete\n"
      "  delCommunitySet [512 524 525=\"/policy/commset .csR10ar\"] delete\n"
      "  delCommunityList [512 528 529=\"/policy/commlist .clR10del\"] delete\n"
      "  delCommunitySet [512 524 525=\"/policy/commset .csR10del\"] delete\n"
      "  delCommunitySet [512 526 527=\"/policy/commset .eR10\"] delete\n"
      "  delCommunitySet [512 631 632=\"/policy/commset .lR10\"] delete\n"
      "  deleteRouteMap [512 576=\"R\"] delete\n"
      "  routeMap [512 576=\"R\"] 0:str=\"R\"\n"
      "  routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=true\n"
      "  ExtCommSetLinkBwOpts [512 576=\"R\" 577 578=10 601] 29:reset\n",
      runChecked("route-map R permit 10\nversion R\n", [](RecordedCommand const& c) {
        return c.kind == RecordedCommand::Kind::command;
      }));
}

TEST_F(CheckTest, ReferenceToAnAbsentMapIsRefusedWhenItRuns) {
  std::string message;
  try {
    runChecked("route-map R permit 10\nversion R\nversion S\n");
  } catch (Scenario::ScenarioError const& e) {
    message = e.what();
  }
  EXPECT_EQ("t.scenario:3: expected an existing route map, got 'S'", message);
}

TEST_F(CheckTest, CommunityDivergencesAreKnownByName) {
  struct Case {
    char const* name;
    char const* scenario;
  };
  Case const cases[] = {
      {"community-set-name-shared",
       "community-list a1 2 permit standard 1:2\ncommunity-list a 12 permit standard 1:12\n"},
      // The list that wrote the shared set last goes and deletes it.
      {"community-set-name-shared",
       "community-list a 12 permit standard 1:12\ncommunity-list a1 2 permit standard 1:2\n"
       "no community-list a1\n"},
      {"community-clause-objects-left",
       "route-map M permit 10\n  set large-community 1:2:3\nversion M\nno route-map M\n"},
      {"community-list-removed-while-away",
       "community-list A 1 permit standard 1:1\ninput acl-list-config off\n"
       "no community-list A 1\ninput acl-list-config on\n"},
      {"community-entry-incomplete-in-clause",
       "route-map M permit 10\n  set community add list A\nversion M\n"
       "community-list A 5 version 0 permit standard 1:1\n"},
  };
  for (Case const& c : cases) {
    std::string const out = runChecked(c.scenario);
    EXPECT_THAT(out, testing::HasSubstr("known divergence '" + std::string(c.name) + "'")) << out;
    EXPECT_THAT(out, testing::Not(testing::HasSubstr("differs"))) << out;
  }
}

// A clause switched to other values after its map's first version, and the
// clauses of a removed map, are no users of their old list any more.
TEST_F(CheckTest, ClausesNoLongerConfiguredAreNoListUsers) {
  for (char const* scenario : {
           "community-list A 1 permit standard 1:1\nroute-map M permit 10\n  set community add "
           "list A\nversion M\nversion M\nroute-map M permit 10\n  set community add 1:5\n"
           "version M\ncommunity-list A 2 permit standard 1:2\n",
           "community-list A 1 permit standard 1:1\nroute-map M permit 10\n  set community add "
           "list A\nversion M\nno route-map M\ncommunity-list A 2 permit standard 1:2\n",
       }) {
    std::string const out = runChecked(scenario);
    EXPECT_THAT(out, testing::Not(testing::HasSubstr("community-list-user-stale"))) << out;
    EXPECT_THAT(out, testing::Not(testing::HasSubstr("differs"))) << scenario << out;
  }
}

// A list rebuilt while an input was away deletes, when it goes, the sets of
// the entries that were already there.
TEST_F(CheckTest, SetsOfEntriesThereWhenAListWasRebuiltGoWithIt) {
  std::string const out = runChecked(
      "community-list A 1 permit standard 1:1\ninput acl-list-config off\n"
      "input acl-list-config on\nno community-list A\n");
  EXPECT_THAT(out, testing::Not(testing::HasSubstr("known divergence"))) << out;
  EXPECT_THAT(out, testing::Not(testing::HasSubstr("differs"))) << out;
}

TEST_F(CheckTest, LostCommunityEntryRemovalIsNotExcused) {
  std::string const out =
      runChecked("community-list A 1 permit standard 1:1\nno community-list A 1\n",
                 [](RecordedCommand const& c) { return c.name != "delCommunityListEntry"; });
  EXPECT_THAT(out, testing::HasSubstr("line 2: no community-list A 1\nthe engine state differs"));
  EXPECT_THAT(out, testing::Not(testing::HasSubstr("known divergence")));
}

// An input replaced by a copy of itself, a renamed VRF and a later root each
// build the machine anew; the engine and the policy map then hold what a
// fresh start holds, with nothing to excuse.
TEST_F(CheckTest, MachinesBuiltAnewMatchAFreshStart) {
  std::string const out = runChecked(R"(route-map A permit 10
  sub-route-map B
  match ip address dynamic prefix-list D
  set community add list CA
version A
route-map B permit 10
version B
peer-filter F permit 10
  set community delete list CA
version peer-filter F
community-list CA 10 permit standard 1:1
dynamic-prefix-list D ipv4 P1 match-map B
dynamic-prefix-list E ipv4 P2
list route-map A by n1
list dynamic-prefix-list D by n1
replace route-map-config
replace peer-filter-config
replace acl-list-config
replace acl-config
replace dynamic-prefix-list-config
replace policy-map
community-list CA 20 permit standard 1:2
vrf blue
replace acl-config
root second
vrf red
root third
input policy-map off
vrf green
replace route-map-config
input policy-map on
no community-list CA
)");
  EXPECT_EQ("checks=18\n", out);
}

// Until an input changes, the machine serves the VRF it was built for, and
// the library would abort on a command built for it; the replay refuses what
// could send one.
TEST_F(CheckTest, RenamedVrfWaitsForAnInputStatement) {
  std::string message;
  try {
    run("route-map A permit 10\nvrf blue\nversion A\n");
  } catch (Scenario::ScenarioError const& e) {
    message = e.what();
  }
  EXPECT_EQ(
      "t.scenario:3: expected 'input', 'replace' or 'root' after renaming the VRF: the library "
      "keeps serving the old VRF until an input changes, and aborts on any command built "
      "meanwhile",
      message);
  EXPECT_EQ("checks=1\n", runChecked("route-map A permit 10\ninput acl-config off\nvrf blue\n"
                                     "version A\ninput acl-config on\n"));
}

class ListCheckTest : public CheckTest {};

TEST_F(ListCheckTest, PrefixListIsPendingFromAnEntryChangeToItsVersion) {
  // Checked after the empty list, after each version and after the list's
  // removal; never between an entry change and the version that sends it.
  EXPECT_EQ("checks=4\n", runChecked(R"(ip prefix-list P
ip prefix-list P seq 10 permit 10.0.0.0/8
no ip prefix-list P seq 10
ip prefix-list P seq 20 permit 10.1.0.0/16
version ip prefix-list P
ip prefix-list P seq 20 deny 10.1.0.0/16 le 24
version ip prefix-list P
no ip prefix-list P
)"));
}

TEST_F(ListCheckTest, LostEntryDeletionIsADivergence) {
  // The engine never receives entry deletions: the deleted entry stays.
  auto const out =
      runChecked(R"(ip prefix-list P seq 10 permit 10.0.0.0/8
version ip prefix-list P
no ip prefix-list P seq 10
version ip prefix-list P
)",
                 [](RecordedCommand const& c) { return c.name != "doDelIpPrefixListEntry"; });
  EXPECT_NE(std::string::npos, out.find("line 4: version ip prefix-list P\n" + kDiffers)) << out;
}

TEST_F(ListCheckTest, ListsAndAclsLeftInTheEngineOnPurposeAreNamed) {
  auto const out = runChecked(R"(ip prefix-list P seq 10 permit 10.0.0.0/8
ip prefix-list P seq 20 permit 10.1.0.0/16
version ip prefix-list P
ip access-list standard A
  seq 10 permit 10.1.0.0/16
input acl-list-config off
no ip prefix-list P seq 20
input acl-list-config on
ip access-list extended A
)");
  EXPECT_EQ(std::string::npos, out.find(kDiffers)) << out;
  EXPECT_NE(std::string::npos, out.find("t.scenario:8: known divergence "
                                        "'prefix-list-entry-removed-while-away'"))
      << out;
  EXPECT_NE(std::string::npos, out.find("t.scenario:9: known divergence 'acl-left-when-not-sent'"))
      << out;
}

TEST_F(ListCheckTest, AclWhoseRewriteIsLostIsADivergence) {
  auto const out = runChecked(
      R"(ip access-list standard A
  seq 10 permit 10.1.0.0/16
  seq 20 deny any
)",
      [](RecordedCommand const& c) {
        return !(c.name == "doAddIpStdAclEntry" && !c.path.empty() && c.path.back().number == 20);
      });
  EXPECT_NE(std::string::npos, out.find("line 3:   seq 20 deny any\n" + kDiffers)) << out;
}

}  // namespace
