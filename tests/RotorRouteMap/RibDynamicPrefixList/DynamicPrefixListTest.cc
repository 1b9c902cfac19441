// Dynamic prefix lists: sent only while configured and listed, with their
// match maps registered meanwhile; the command shapes and the policy map.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Harness.h"
#include "RibDynamicPrefixList/Cog.h"
#include "RibDynamicPrefixList/DynPfxConfigSm.h"

namespace {

using RoutingPolicyMap::Requester;

std::string const node = "512 627 628=\"D\"";
std::string add(std::string const& v4, std::string const& v6, std::string const& matchMap) {
  std::string out = "addDynamicPrefixList [" + node + "] 0:str=\"D\"\n";
  if (!v4.empty()) out += "ipv4_prefix_list_name [" + node + "] 1:str=\"" + v4 + "\"\n";
  if (!v6.empty()) out += "ipv6_prefix_list_name [" + node + "] 2:str=\".ipv6." + v6 + "\"\n";
  return out + "match_map [" + node + "] 3:str=\"" + matchMap + "\"\ncommit\n";
}
std::string const del = "delDynamicPrefixList [" + node + "] delete\ncommit\n";
std::string matchMapRef(std::string const& map) {
  return "routeMap \"" + map +
         "\" plugin=1 mode=7 cli=\"dynamic prefix-list match-map\" key=\"D\"\n";
}

Requester const agent{RoutingPolicyMap::PluginType(3), RoutingPolicyMap::CliMode(2), "bgp",
                      "neighbor"};
std::string const listedLine =
    "dynamicPrefixList \"D\" plugin=3 mode=2 cli=\"bgp\" key=\"neighbor\"\n";

class DynamicPrefixListTest : public TesselTest::RootTest {
 protected:
  DynamicPrefixListTest() {
    giveAllInputs();
    sent();
  }
  Orb::Ptr<Routing::DynamicPrefixList::DynamicPrefixListEntry> configure(char const* matchMap) {
    auto d = dynPfxListConfig->dynamicPrefixListIs("D");
    d->ipv4PrefixListIs("P4");
    d->ipv6PrefixListIs("P6");
    d->matchMapIs(matchMap);
    d->versionInc();
    return d;
  }
  void list() { policyMap->dynamicPrefixListIs("D")->reasonIs(agent); }
  void unlist() {
    policyMap->dynamicPrefixList("D")->reasonDel(agent);
    policyMap->dynamicPrefixListDel("D");
  }
  std::string state() const { return RoutingPolicyMap::stateText(*policyMap); }
};

TEST_F(DynamicPrefixListTest, ConfiguredButUnlistedListIsNotSent) {
  trace.text.clear();
  configure("M1");
  EXPECT_EQ("", sent());
  EXPECT_THAT(trace.text,
              ::testing::HasSubstr("returning as dynamicPrefixList does not exist in policyMap"));
  EXPECT_EQ("", state());
}

TEST_F(DynamicPrefixListTest, ListingSendsItAndRegistersTheMatchMap) {
  configure("M1");
  trace.text.clear();
  list();
  EXPECT_EQ(add("P4", "P6", "M1"), sent());
  EXPECT_EQ(matchMapRef("M1") + listedLine, state());
  EXPECT_THAT(trace.text,
              ::testing::HasSubstr("dynamicPrefixList config and policyMap both exist."));
}

TEST_F(DynamicPrefixListTest, EveryVersionResendsTheWholeList) {
  list();
  auto d = configure("M1");
  EXPECT_EQ(add("", "", "") + add("P4", "P6", "M1"), sent())
      << "configured while listed: sent at once, then at its version";
  d->versionIs(d->version());
  EXPECT_EQ(add("P4", "P6", "M1"), sent());
}

TEST_F(DynamicPrefixListTest, MatchMapChangeRegistersTheNewBeforeWithdrawingTheOld) {
  list();
  auto d = configure("M1");
  sent();
  TesselTest::Notifications watch(policyMap);
  d->matchMapIs("M2");
  d->versionInc();
  EXPECT_EQ(add("P4", "P6", "M2"), sent());
  EXPECT_EQ((std::vector<std::string>{"M2", "M1"}), watch.keys);
  EXPECT_EQ(matchMapRef("M2") + listedLine, state());
}

TEST_F(DynamicPrefixListTest, UnlistingDeletesItAndWithdrawsTheReason) {
  list();
  configure("M1");
  sent();
  trace.text.clear();
  trace.text.clear();
  unlist();
  EXPECT_EQ(del, sent());
  EXPECT_EQ("", state()) << trace.text;
  EXPECT_THAT(trace.text, ::testing::HasSubstr("dynamicPrefixList is deleted from policyMap"));
  list();
  EXPECT_EQ(add("P4", "P6", "M1"), sent()) << "listed again: sent again";
}

TEST_F(DynamicPrefixListTest, EmptyIpv6NameIsLeftOutAndEmptyMatchMapIsSent) {
  list();
  auto d = dynPfxListConfig->dynamicPrefixListIs("D");
  sent();
  d->ipv4PrefixListIs("P4");
  d->versionInc();
  EXPECT_EQ(add("P4", "", ""), sent());
  EXPECT_EQ(listedLine, state()) << "an empty match map registers nothing";
}

TEST_F(DynamicPrefixListTest, RemovingAConfiguredListDeletesItListedOrNot) {
  configure("M1");
  dynPfxListConfig->dynamicPrefixListDel("D");
  EXPECT_EQ(del, sent());
  list();
  configure("M1");
  sent();
  dynPfxListConfig->dynamicPrefixListDel("D");
  EXPECT_EQ(del, sent());
  EXPECT_EQ(listedLine, state()) << "the match map's reason goes with the list";
}

// Dropping an input: without the configuration every list leaves the engine
// with its reason; without the policy map nothing counts as listed and the
// map is no longer written, not even to withdraw.
TEST_F(DynamicPrefixListTest, DroppedInputsAreNoLongerFollowed) {
  list();
  auto d = configure("M1");
  sent();
  RibDynamicPrefixList::DynPfxConfigSm* sm = root->vrfStatusSm()->dynPfxConfigSm();
  sm->configDel();
  EXPECT_EQ(del, sent());
  EXPECT_EQ(listedLine, state());
  d->versionInc();
  dynPfxListConfig->dynamicPrefixListIs("E");
  EXPECT_EQ("", sent());

  dynPfxListConfig = Routing::DynamicPrefixList::Config::create("dynpfx2");
  root->dynPfxListConfigIs(dynPfxListConfig);
  d = configure("M1");
  sm = root->vrfStatusSm()->dynPfxConfigSm();
  sent();
  sm->policyMapDel();
  EXPECT_EQ(nullptr, sm->policyMap());
  d->versionInc();
  unlist();
  list();
  EXPECT_EQ("", sent()) << "unlisted and listed again: nobody looks";
  dynPfxListConfig->dynamicPrefixListDel("D");
  EXPECT_EQ(del, sent());
  EXPECT_EQ(matchMapRef("M1") + listedLine, state());
}

TEST_F(DynamicPrefixListTest, ListedOnlyIsNothing) {
  list();
  EXPECT_EQ("", sent());
  EXPECT_EQ(0u, root->vrfStatusSm()->dynPfxConfigSm()->orbDynamicPrefixLists());
}

TEST_F(DynamicPrefixListTest, ListedRouteMapListsTheListAndItsMatchMapInTurn) {
  auto m = routeMapConfig->routeMapIs("M");
  m->mapEntryIs(10)->subRouteMapIs("S");
  configure("M");
  auto a = routeMapConfig->routeMapIs("A")->mapEntryIs(10);
  Routing::RouteMap::MatchRule r;
  r.option = Routing::RouteMap::matchDynamicPrefixList;
  r.strValue = "D";
  a->matchRuleIs(r);
  sent();
  policyMap->routeMapIs("A")->reasonIs(agent);
  EXPECT_EQ(add("P4", "P6", "M"), sent());
  EXPECT_EQ("routeMap \"A\" plugin=3 mode=2 cli=\"bgp\" key=\"neighbor\"\n" + matchMapRef("M") +
                "routeMap \"S\" plugin=1 mode=6 cli=\"sub-route-map\" key=\"M seqNo 10\"\n"
                "dynamicPrefixList \"D\" plugin=1 mode=6 "
                "cli=\"match ipv4 address dynamic prefix-list\" key=\"A seqNo 10\"\n",
            state());
  policyMap->routeMap("A")->reasonDel(agent);
  policyMap->routeMapDel("A");
  EXPECT_EQ(del, sent());
  EXPECT_EQ("", state());
}

// The new machine replays before the old one retires. The retiring list
// leaves the engine node and the match-map reason to its successor, which
// sent and registered them; an unlisted one still deletes itself last.
TEST_F(DynamicPrefixListTest, ReplacedMachineryLeavesWhatTheNewOneSent) {
  list();
  configure("M1");
  sent();
  root->aclConfigIs(Acl::Config::create("acl2"));
  std::string const stream = sent();
  EXPECT_EQ(add("P4", "P6", "M1"), stream.substr(stream.find("addDynamicPrefixList")));
  EXPECT_EQ(matchMapRef("M1") + listedLine, state());

  trace.text.clear();
  unlist();
  EXPECT_EQ(del, sent());
  EXPECT_EQ("", state()) << trace.text;
  root->aclConfigIs(aclConfig);
  std::string const again = sent();
  EXPECT_EQ(del, again.substr(again.size() - del.size())) << "configured, not listed: " << again;
}

TEST_F(DynamicPrefixListTest, CommandObjectNeedsNoRootOrVrf) {
  Tessel::rmRoot = nullptr;
  auto cog = RibDynamicPrefixList::cogFactory();
  cog->doAddDynamicPrefixListEntry("D", "", "P6", "M");
  cog->doDelDynamicPrefixList("D");
  EXPECT_EQ(add("", "P6", "M") + del, sent());
}

}  // namespace
