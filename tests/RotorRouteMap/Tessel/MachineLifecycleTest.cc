// The per-VRF machine replaced while the configuration stays: an input
// replaced by another object, the VRF renamed, a later root. Afterwards the
// engine and the policy map hold what a fresh start on the same configuration
// gives, and nothing aborts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Harness.h"
#include "Rib/EngineModel.h"
#include "Tessel/RouteMapConfigSm.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;
using RoutingPolicyMap::Requester;

Requester const agent{RoutingPolicyMap::PluginType(3), RoutingPolicyMap::CliMode(2), "bgp",
                      "neighbor"};

/// What the engine and the policy map hold.
struct Held {
  std::string engine;
  std::string policyMap;
  friend bool operator==(Held const&, Held const&) = default;
};

std::ostream& operator<<(std::ostream& os, Held const& h) {
  return os << "engine:\n" << h.engine << "policy map:\n" << h.policyMap;
}

/// A configuration with every kind of thing a machine's tear-down undoes: a
/// listed route map whose sequence calls a sub-route-map, matches a dynamic
/// prefix list and copies a community list; that dynamic prefix list, listed,
/// with its match map; the community list with an entry made before the
/// machine and one after.
class MachineLifecycleTest : public TesselTest::RootTest {
 protected:
  MachineLifecycleTest() {
    entry(10);
    giveAllInputs();
    auto a = routeMapConfig->routeMapIs("A");
    auto s = a->mapEntryIs(10);
    s->subRouteMapIs("B");
    MatchRule dpl;
    dpl.option = Routing::RouteMap::matchDynamicPrefixList;
    dpl.strValue = "D";
    s->matchRuleIs(dpl);
    s->setFlagIs(MapEntry::SetFlags::communityAddReplace, true);
    s->communityAddReplaceIs(CommunitySet::create({Acl::commSetAdd_, true, {"CL"}, {}}));
    a->versionInc();
    for (char const* name : {"B", "M"}) {
      auto m = routeMapConfig->routeMapIs(name);
      m->mapEntryIs(10);
      m->versionInc();
    }
    auto d = dynPfxListConfig->dynamicPrefixListIs("D");
    d->ipv4PrefixListIs("P4");
    d->matchMapIs("M");
    d->versionInc();
    listAll(*policyMap);
    entry(20);
  }

  static void listAll(RoutingPolicyMap::PolicyMap& pmap) {
    pmap.routeMapIs("A")->reasonIs(agent);
    pmap.dynamicPrefixListIs("D")->reasonIs(agent);
  }
  void entry(Orb::U32 seqno) {
    auto e = aclListConfig->communityListIs("CL")->communityListEntryIs(seqno);
    e->communityValueIs({{0, 0, seqno}});
    e->versionIs(1);
  }

  /// What the stream sent so far leaves, with the live policy map.
  Held held() const {
    Rib::EngineModel model;
    for (auto const& record : engine.records())
      model.apply(record);
    return {model.stateText(), RoutingPolicyMap::stateText(*policyMap)};
  }

  /// What a new root for `vrf` on the same configuration sends into an empty
  /// engine, with a policy map that only the agent has listed in.
  Held fresh(L3::VrfName const& vrf) {
    Rib::EngineModel model;
    Rib::ScopedEngineSink into(model);
    auto pmap = RoutingPolicyMap::PolicyMap::create("fresh");
    listAll(*pmap);
    Orb::Ptr<Tessel::Root> current = std::exchange(Tessel::rmRoot, nullptr);
    Held out;
    {
      auto other = Tessel::rootFactory("fresh");
      other->vrfNameIs(vrf);
      other->routeMapConfigIs(routeMapConfig);
      other->peerFilterConfigIs(peerFilterConfig);
      other->aclListConfigIs(aclListConfig);
      other->aclConfigIs(aclConfig);
      other->dynPfxListConfigIs(dynPfxListConfig);
      other->policyMapIs(pmap);
      out = {model.stateText(), RoutingPolicyMap::stateText(*pmap)};
      Tessel::rmRoot = current;
    }
    return out;
  }

  Tessel::OrbSeqMapEntry* a10() const {
    return root->vrfStatusSm()->routeMapConfigSm()->orbRouteMap("A")->seqMapEntry(10);
  }
};

TEST_F(MachineLifecycleTest, ReplacingAnInputUndoesNothingTheNewMachineHolds) {
  Held const before = held();
  ASSERT_EQ(fresh("default"), before);
  root->aclConfigIs(Acl::Config::create("acl2"));
  EXPECT_EQ(before, held());
  EXPECT_EQ("B", a10()->prevSubRouteMap());
  EXPECT_EQ("D", a10()->prevV4DynamicPrefixList());

  // The new machine's memory of what it registered is true: a change moves
  // the references as it would have on a fresh start.
  routeMapConfig->routeMap("A")->mapEntry(10)->subRouteMapIs("M");
  routeMapConfig->routeMap("A")->mapEntry(10)->matchRuleDel(
      Routing::RouteMap::matchDynamicPrefixList);
  EXPECT_EQ(fresh("default").policyMap, held().policyMap);
}

TEST_F(MachineLifecycleTest, RenamedVrfReachesTheMachineWithTheNextInputChange) {
  root->vrfNameIs("blue");
  EXPECT_EQ(L3::VrfName("default"), root->vrfStatusSm()->vrfName());
  root->aclConfigIs(Acl::Config::create("acl2"));
  EXPECT_EQ(L3::VrfName("blue"), root->vrfStatusSm()->vrfName());
  EXPECT_EQ(fresh("blue"), held());
  // The new machine serves the new name: a change goes out under it.
  entry(30);
  EXPECT_EQ(fresh("blue"), held());
}

// A machine torn down after a rename sends its tear-down for the VRF it was
// built for: here the sets of the entries it holds alone (an entry seen come
// at version zero is noted but never written, so its successor does not hold
// it), and with an input taken away, every set it wrote.
TEST_F(MachineLifecycleTest, RenamedMachinesTearDownGoesOutForItsOwnVrf) {
  aclListConfig->communityList("CL")->communityListEntryIs(30)->communityValueIs({{0, 0, 30}});
  root->vrfNameIs("blue");
  sent();
  root->aclConfigIs(Acl::Config::create("acl2"));
  std::string const replaced = sent();
  std::string deletes;
  for (char const* node : {"524 525", "526 527", "631 632"})
    deletes += std::string("delCommunitySet [512 ") + node +
               "=\"/policy/commset .CL30\"] delete\ncommit\n";
  // After the new machine's replay, the old one's tear-down: nothing else.
  EXPECT_EQ("match_map [512 627 628=\"D\"] 3:str=\"M\"\ncommit\n" + deletes,
            replaced.substr(replaced.rfind("match_map")));

  root->vrfNameIs("red");
  root->aclListConfigIs(nullptr);
  std::string const torn = sent();
  EXPECT_THAT(torn, testing::HasSubstr("commset .CL10"));
  EXPECT_THAT(torn, testing::HasSubstr("commset .CL20"));
}

TEST_F(MachineLifecycleTest, LaterRootRetiresTheEarlierOnesMachineAndTakesOver) {
  auto later = Tessel::rootFactory("later");
  EXPECT_FALSE(root->vrfStatusSm()) << "the earlier machine went while its root was current";
  EXPECT_THAT(trace.text, testing::HasSubstr("\n1 Root root replaced by later"));
  later->vrfNameIs("blue");
  later->routeMapConfigIs(routeMapConfig);
  later->peerFilterConfigIs(peerFilterConfig);
  later->aclListConfigIs(aclListConfig);
  later->aclConfigIs(aclConfig);
  later->dynPfxListConfigIs(dynPfxListConfig);
  later->policyMapIs(policyMap);

  // The earlier root, given an input again, builds nothing beside it.
  std::size_t const sentBefore = engine.records().size();
  root->aclConfigIs(Acl::Config::create("acl2"));
  EXPECT_FALSE(root->vrfStatusSm());
  EXPECT_EQ(sentBefore, engine.records().size());
  root = nullptr;
  EXPECT_EQ(fresh("blue"), held());
}

// Dropping the earlier root after the later one has its machine undoes
// nothing of the later one's.
TEST_F(MachineLifecycleTest, EarlierRootDroppedAfterTheLaterOneIsUp) {
  Orb::Ptr<Tessel::Root> earlier = std::exchange(root, Tessel::rootFactory("later"));
  root->vrfNameIs("blue");
  giveAllInputs();
  Held const up = held();
  earlier = nullptr;
  EXPECT_EQ(up, held());
  EXPECT_EQ(fresh("blue"), held());
}

}  // namespace
