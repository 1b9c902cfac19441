// Policy-map references of listed route maps: what the sequences register,
// in which order, and what they withdraw, down chains of sub-route-maps.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Harness.h"
#include "Tessel/Holds.h"
#include "Tessel/RouteMapConfigSm.h"
#include "Tessel/UpdatePolicyMap.h"

namespace {

using Routing::RouteMap::MatchRule;
using RoutingPolicyMap::Requester;

MatchRule dpl(char const* name, bool ipv6 = false) {
  MatchRule r;
  r.option = ipv6 ? Routing::RouteMap::matchIpv6DynamicPrefixList
                  : Routing::RouteMap::matchDynamicPrefixList;
  r.strValue = name;
  return r;
}

// The state lines of a reference registered by sequence `seqno` of `map`.
std::string ref(char const* type, char const* name, char const* cli, char const* map, int seqno) {
  return std::string(type) + " \"" + name + "\" plugin=1 mode=6 cli=\"" + cli + "\" key=\"" + map +
         " seqNo " + std::to_string(seqno) + "\"\n";
}
std::string subRef(char const* name, char const* map, int seqno = 10) {
  return ref("routeMap", name, "sub-route-map", map, seqno);
}
std::string v4Ref(char const* name, char const* map, int seqno = 10) {
  return ref("dynamicPrefixList", name, "match ipv4 address dynamic prefix-list", map, seqno);
}
std::string v6Ref(char const* name, char const* map, int seqno = 10) {
  return ref("dynamicPrefixList", name, "match ipv6 address dynamic prefix-list", map, seqno);
}

Requester const agent{RoutingPolicyMap::PluginType(3), RoutingPolicyMap::CliMode(2), "neighbor",
                      "peer1"};
std::string const agentLine = " plugin=3 mode=2 cli=\"neighbor\" key=\"peer1\"\n";

class PolicyReferenceTest : public TesselTest::RootTest {
 protected:
  PolicyReferenceTest() { giveAllInputs(); }
  /// Lists `name` as another part of the agent would.
  void list(char const* name) { policyMap->routeMapIs(name)->reasonIs(agent); }
  void unlist(char const* name) {
    policyMap->routeMap(name)->reasonDel(agent);
    policyMap->routeMapDel(name);
  }
  Orb::Ptr<Routing::RouteMap::MapEntry> seq(char const* map, Orb::U32 seqno) {
    return routeMapConfig->routeMapIs(map)->mapEntryIs(seqno);
  }
  std::string state() const { return RoutingPolicyMap::stateText(*policyMap); }
  /// The policy map's notifications since the last call, as "key" per line.
  std::string changes() {
    std::string out;
    for (std::size_t i = 0; i < watch_.keys.size(); ++i)
      out += std::to_string(watch_.attributes[i]) + " " + watch_.keys[i] + "\n";
    watch_.attributes.clear();
    watch_.keys.clear();
    return out;
  }

 private:
  TesselTest::Notifications watch_{policyMap};
};

TEST_F(PolicyReferenceTest, UnlistedMapRegistersNothing) {
  auto s = seq("A", 10);
  s->subRouteMapIs("B");
  s->matchRuleIs(dpl("D1"));
  s->matchRuleIs(dpl("D6", true));
  EXPECT_EQ("", state());
  EXPECT_EQ("", changes());
}

TEST_F(PolicyReferenceTest, ListingRegistersEveryReferenceAndUnlistingWithdrawsThem) {
  auto s = seq("A", 10);
  s->subRouteMapIs("B");
  s->matchRuleIs(dpl("D1"));
  s->matchRuleIs(dpl("D6", true));
  list("A");
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("B", "A") + v4Ref("D1", "A") + v6Ref("D6", "A"),
            state());
  unlist("A");
  EXPECT_EQ("", state());
  auto* entry = root->vrfStatusSm()->routeMapConfigSm()->orbRouteMap("A")->seqMapEntry(10);
  EXPECT_EQ("", entry->prevSubRouteMap().str() + entry->prevV4DynamicPrefixList().str() +
                    entry->prevV6DynamicPrefixList().str());
}

TEST_F(PolicyReferenceTest, ChangedDynamicPrefixListAddsTheNewBeforeRemovingTheOld) {
  list("A");
  auto s = seq("A", 10);
  s->matchRuleIs(dpl("D1"));
  changes();
  s->matchRuleIs(dpl("D2"));
  EXPECT_EQ("2 D2\n2 D1\n", changes()) << "D2 listed first, D1 gone with its last reason";
  EXPECT_EQ("routeMap \"A\"" + agentLine + v4Ref("D2", "A"), state());
  s->matchRuleDel(Routing::RouteMap::matchDynamicPrefixList);
  EXPECT_EQ("2 D2\n", changes()) << "a removed match withdraws its reference";
  EXPECT_EQ("routeMap \"A\"" + agentLine, state());
}

TEST_F(PolicyReferenceTest, SettingTheSameNameAgainChangesNothing) {
  list("A");
  auto s = seq("A", 10);
  s->matchRuleIs(dpl("D1"));
  s->subRouteMapIs("B");
  std::string const before = state();
  changes();
  auto* entry = root->vrfStatusSm()->routeMapConfigSm()->orbRouteMap("A")->seqMapEntry(10);
  entry->handleMatchRule(Routing::RouteMap::matchDynamicPrefixList);
  entry->handleSubRouteMap();
  EXPECT_EQ("", changes());
  EXPECT_EQ(before, state());
}

TEST_F(PolicyReferenceTest, SharedReferenceStaysUntilItsLastReasonGoes) {
  list("A");
  seq("A", 10)->subRouteMapIs("B");
  seq("A", 20)->subRouteMapIs("B");
  routeMapConfig->routeMap("A")->mapEntryDel(10);
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("B", "A", 20), state());
  seq("A", 20)->subRouteMapIs("");
  EXPECT_EQ("routeMap \"A\"" + agentLine, state());
}

TEST_F(PolicyReferenceTest, ChainIsListedDownwardsAndWithdrawnDownwards) {
  seq("A", 10)->subRouteMapIs("B");
  seq("B", 10)->subRouteMapIs("C");
  seq("C", 10)->matchRuleIs(dpl("D"));
  list("A");
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("B", "A") + subRef("C", "B") + v4Ref("D", "C"),
            state());
  changes();
  unlist("A");
  EXPECT_EQ("1 A\n1 B\n1 C\n2 D\n", changes());
  EXPECT_EQ("", state());
}

TEST_F(PolicyReferenceTest, ChainBuiltAfterListingFollows) {
  list("A");
  seq("A", 10)->subRouteMapIs("B");
  seq("B", 10)->subRouteMapIs("C");
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("B", "A") + subRef("C", "B"), state());
  seq("A", 10)->subRouteMapIs("C");
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("C", "A"), state())
      << "B leaves with its reason and takes its own reference to C along";
}

TEST_F(PolicyReferenceTest, LoopOfSubRouteMapsEnds) {
  seq("A", 10)->subRouteMapIs("B");
  seq("B", 10)->subRouteMapIs("A");
  list("A");
  EXPECT_EQ(subRef("A", "B") + "routeMap \"A\"" + agentLine + subRef("B", "A"), state())
      << "reasons in their order: plugin 1 before the agent's plugin 3";
}

TEST_F(PolicyReferenceTest, DeletedSequenceWithdrawsItsThreeKindsOfReference) {
  list("A");
  auto s = seq("A", 10);
  s->subRouteMapIs("B");
  s->matchRuleIs(dpl("D1"));
  s->matchRuleIs(dpl("D6", true));
  routeMapConfig->routeMap("A")->mapEntryDel(10);
  EXPECT_EQ("routeMap \"A\"" + agentLine, state());
}

TEST_F(PolicyReferenceTest, DeletedMapAndTornDownMachineryWithdrawTheirReferences) {
  list("A");
  seq("A", 10)->subRouteMapIs("B");
  seq("X", 10)->subRouteMapIs("Y");
  list("X");
  routeMapConfig->routeMapDel("A");
  EXPECT_EQ("routeMap \"A\"" + agentLine + "routeMap \"X\"" + agentLine + subRef("Y", "X"),
            state());
  root->aclConfigIs(nullptr);
  EXPECT_EQ("routeMap \"A\"" + agentLine + "routeMap \"X\"" + agentLine, state());
  root->aclConfigIs(aclConfig);
  EXPECT_EQ("routeMap \"A\"" + agentLine + "routeMap \"X\"" + agentLine + subRef("Y", "X"),
            state());
}

// A replaced machine replays before the old one retires. The old sequences
// withdraw nothing the new ones registered, whose previous names stay true:
// a later change moves the reference as on a fresh start.
TEST_F(PolicyReferenceTest, ReplacedMachineryLeavesTheNewOnesReferences) {
  list("A");
  seq("A", 10)->subRouteMapIs("B");
  root->aclConfigIs(Acl::Config::create("acl2"));
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("B", "A"), state());
  seq("A", 10)->subRouteMapIs("C");
  EXPECT_EQ("routeMap \"A\"" + agentLine + subRef("C", "A"), state());
  root->aclConfigIs(nullptr);
  EXPECT_EQ("routeMap \"A\"" + agentLine, state());
  EXPECT_EQ(0u, Tessel::holdsLeft()) << "holds end with the replacement";
}

TEST_F(PolicyReferenceTest, ReferencesSendNoEngineCommands) {
  seq("A", 10);
  routeMapConfig->routeMap("A")->versionInc();
  sent();
  list("A");
  seq("A", 10)->subRouteMapIs("B");
  EXPECT_EQ("", sent());
}

TEST_F(PolicyReferenceTest, UpdatePolicyMapKeepsOtherReasonsAndRefusesUnknownTypes) {
  Requester const r{RoutingPolicyMap::pluginTypeRouting, RoutingPolicyMap::cliModeRouteMap, "x",
                    "k"};
  policyMap->redistributedDynPfxIs("P")->reasonIs(agent);
  Tessel::updatePolicyMap(RoutingPolicyMap::policyTypeRedistributedDynPfx, r.pluginType, r.cliMode,
                          r.configCli, r.configKey, policyMap, "P", false);
  Tessel::updatePolicyMap(RoutingPolicyMap::policyTypeRedistributedDynPfx, r.pluginType, r.cliMode,
                          r.configCli, r.configKey, policyMap, "P", true);
  Tessel::updatePolicyMap(RoutingPolicyMap::policyTypeRedistributedDynPfx, r.pluginType, r.cliMode,
                          r.configCli, r.configKey, policyMap, "absent", true);
  EXPECT_EQ("redistributedDynPfx \"P\"" + agentLine, state());
  EXPECT_DEATH(TesselTest::withTraceOnStderr([&] {
                 Tessel::updatePolicyMap(RoutingPolicyMap::PolicyType(3), r.pluginType, r.cliMode,
                                         r.configCli, r.configKey, policyMap, "P", false);
               }),
               "0 && \"Invalid PolicyType\"");
}

}  // namespace
