// Reconciling: what the stream left behind goes with each kind's own delete,
// what differs is written or sent whole, the policy map loses the reasons a
// fresh start would not register, and nothing is sent when nothing differs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Harness.h"
#include "Tessel/FreshStart.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using testing::HasSubstr;

class ReconcileTest : public TesselTest::RootTest {
 protected:
  ReconcileTest() { root->engineMirrorIs(true); }

  /// What a fresh start on the same inputs leaves in the engine, with a
  /// policy map only the agent listed in, and that policy map's text.
  std::pair<std::string, std::string> fresh() {
    auto pmap = RoutingPolicyMap::PolicyMap::create("fresh");
    for (auto const& [name, requester] : policyMap->routeMap()) {
      for (auto const& [reason, unused] : requester->reason()) {
        if (reason.pluginType != RoutingPolicyMap::pluginTypeRouting)
          pmap->routeMapIs(name)->reasonIs(reason);
      }
    }
    for (auto const& [name, requester] : policyMap->dynamicPrefixList()) {
      for (auto const& [reason, unused] : requester->reason()) {
        if (reason.pluginType != RoutingPolicyMap::pluginTypeRouting)
          pmap->dynamicPrefixListIs(name)->reasonIs(reason);
      }
    }
    std::string policy;
    Rib::EngineModel const model = Tessel::freshStart(
        {routeMapConfig, peerFilterConfig, aclListConfig, aclConfig, dynPfxListConfig, pmap},
        root->vrfName(), [&] { policy = RoutingPolicyMap::stateText(*pmap); });
    return {model.stateText(), policy};
  }
  std::pair<std::string, std::string> held() const {
    return {root->mirror()->stateText(), RoutingPolicyMap::stateText(*policyMap)};
  }

  Orb::Ptr<Routing::RouteMap::Map> mapWith(char const* name, Orb::U32 seqno) {
    auto map = routeMapConfig->routeMapIs(name);
    map->mapEntryIs(seqno);
    map->versionInc();
    return map;
  }
  void entry(char const* list, Orb::U32 seqno, Orb::U32 version = 1) {
    auto e = aclListConfig->communityListIs(list)->communityListEntryIs(seqno);
    e->communityValueIs({{0, 0, seqno}});
    e->versionIs(version);
  }
  RoutingPolicyMap::Requester const agent{RoutingPolicyMap::PluginType(3),
                                          RoutingPolicyMap::CliMode(2), "bgp", "neighbor"};
};

TEST_F(ReconcileTest, NothingDiffersNothingIsSent) {
  giveAllInputs();
  mapWith("R", 10);
  entry("C", 10);
  aclListConfig->prefixListIs("P")->prefixEntryIs({10, Acl::permit, {}, 0, 0});
  aclListConfig->prefixList("P")->versionInc();
  sent();
  Tessel::ReconcileCount const count = root->doReconcile();
  EXPECT_TRUE(count.reconciled);
  EXPECT_EQ(0u, count.objects);
  EXPECT_EQ(0u, count.reasons);
  EXPECT_EQ("", sent());
  EXPECT_EQ(fresh(), held());
}

TEST_F(ReconcileTest, WithoutMirrorMachineryOrCurrentVrfNothingHappens) {
  EXPECT_FALSE(root->doReconcile().reconciled) << "no machinery yet";
  giveAllInputs();
  root->vrfNameIs("blue");
  EXPECT_FALSE(root->doReconcile().reconciled) << "the rename has not reached the machinery";
  root->vrfNameIs("default");
  root->engineMirrorIs(false);
  EXPECT_FALSE(root->doReconcile().reconciled);
  EXPECT_EQ(nullptr, root->mirror());
}

// Objects removed while an input was away stay in the engine; a reconcile
// deletes each with its kind's own delete, in the engine tree's order, and
// commits once at the end (list and set deletes commit by themselves).
TEST_F(ReconcileTest, ObjectsLeftBehindGoWithTheirKindsDeletes) {
  giveAllInputs();
  mapWith("R", 10);
  mapWith("S", 10);
  auto filter = peerFilterConfig->peerFilterIs("F");
  filter->mapEntryIs(10);
  filter->versionInc();
  auto p = aclListConfig->prefixListIs("P");
  p->prefixEntryIs({10, Acl::permit, {}, 0, 0});
  p->prefixEntryIs({20, Acl::deny, {}, 0, 0});
  p->versionInc();
  aclListConfig->asPathListIs("Q")->pathEntryIs({10, "_1_", Acl::permit});
  aclListConfig->asPathList("Q")->versionInc();
  entry("C", 10);
  root->aclListConfigIs(nullptr);
  routeMapConfig->routeMapDel("S");
  peerFilterConfig->peerFilterDel("F");
  p->prefixEntryDel(20);
  aclListConfig->asPathListDel("Q");
  aclListConfig->communityListDel("C");
  root->aclListConfigIs(aclListConfig);
  sent();
  EXPECT_NE(fresh(), held());
  Tessel::ReconcileCount const count = root->doReconcile();
  // The list reactor took the entry's set with it as the input went.
  EXPECT_EQ(
      "delCommunityList [512 528 529=\"/policy/commlist .exact.C\"] delete\ncommit\n"
      "delCommunityList [512 528 529=\"/policy/commlist C\"] delete\ncommit\n"
      "deleteAsPathList [512 534 535=\"/policy/asplist Q\"] delete\n"
      "doDelIpPrefixListEntry [512 603 515=\"P\" 516=20] delete\n"
      "deleteRouteMap [512 576=\".PEER_FILTER.F\"] delete\n"
      "deleteRouteMap [512 576=\"S\"] delete\n"
      "commit\n",
      sent());
  EXPECT_EQ(6u, count.objects);
  EXPECT_EQ(fresh(), held());
  EXPECT_EQ("", (root->doReconcile(), sent())) << "a second reconcile finds nothing";
}

// A standard ACL made extended is no longer sent, and stays: it goes. A
// dynamic prefix list whose prefix-list name was cleared is deleted and sent
// again. A clause that copied an entry at version zero before it was
// complete gets its map sent whole.
TEST_F(ReconcileTest, ObjectsThatDifferAreSentAgainWhole) {
  giveAllInputs();
  auto acl = aclConfig->aclTypeConfigIs(Acl::aclTypeIp)->aclIs("A");
  acl->standardIs(true);
  Acl::AclCurrentConfig::SeqToId seqToId;
  Acl::AclCurrentConfig::IdToRule idToRule;
  seqToId.set(10, Acl::UniqueId{1});
  idToRule.set(Acl::UniqueId{1}, Acl::IpRuleConfig{1, {}});
  acl->currCfgIs(Orb::make<Acl::AclCurrentConfig>(std::move(seqToId), std::move(idToRule)));
  acl->standardIs(false);
  policyMap->dynamicPrefixListIs("D")->reasonIs(agent);
  auto d = dynPfxListConfig->dynamicPrefixListIs("D");
  d->ipv4PrefixListIs("P4");
  d->versionInc();
  d->ipv4PrefixListIs("");
  d->versionInc();
  sent();
  EXPECT_NE(fresh(), held());
  root->doReconcile();
  EXPECT_EQ(
      "doDelIpStdAcl [512 602 517=\"A\"] delete\n"
      "delDynamicPrefixList [512 627 628=\"D\"] delete\ncommit\n"
      "addDynamicPrefixList [512 627 628=\"D\"] 0:str=\"D\"\n"
      "match_map [512 627 628=\"D\"] 3:str=\"\"\ncommit\n"
      "commit\n",
      sent());
  EXPECT_EQ(fresh(), held());
}

// A loop of references keeps itself listed once the agent lets go: the
// reconcile withdraws the reasons a fresh start would not register, and the
// machinery withdraws what they listed in turn.
TEST_F(ReconcileTest, LoopOfReferencesIsWithdrawn) {
  giveAllInputs();
  for (auto [map, sub] : {std::pair{"A", "B"}, std::pair{"B", "A"}}) {
    auto m = mapWith(map, 10);
    m->mapEntry(10)->subRouteMapIs(sub);
    m->versionInc();
  }
  policyMap->routeMapIs("A")->reasonIs(agent);
  policyMap->routeMap("A")->reasonDel(agent);
  EXPECT_NE("", RoutingPolicyMap::stateText(*policyMap)) << "the loop keeps itself listed";
  sent();
  Tessel::ReconcileCount const count = root->doReconcile();
  EXPECT_EQ(1u, count.reasons) << "the first withdrawal unlists the rest of the loop";
  EXPECT_EQ("", RoutingPolicyMap::stateText(*policyMap));
  EXPECT_EQ("", sent());
  EXPECT_EQ(fresh(), held());
}

// With reconcileAtRebuild, what was left behind while an input was away
// goes as the machinery comes back; the first build, a fresh start itself,
// is not reconciled.
TEST_F(ReconcileTest, RebuildReconcilesByItself) {
  root->reconcileAtRebuildIs(true);
  giveAllInputs();
  EXPECT_THAT(trace.text, testing::Not(HasSubstr("doReconcile")));
  mapWith("S", 10);
  root->aclConfigIs(nullptr);
  routeMapConfig->routeMapDel("S");
  sent();
  root->aclConfigIs(aclConfig);
  std::string const stream = sent();
  EXPECT_THAT(trace.text, HasSubstr("doReconcile"));
  EXPECT_TRUE(stream.ends_with("deleteRouteMap [512 576=\"S\"] delete\ncommit\n")) << stream;
  EXPECT_EQ(fresh(), held());
}

// A later root takes over the mirror with the engine: it knows, and
// repairs, what the earlier one's tear-down left behind.
TEST_F(ReconcileTest, LaterRootKeepsTheMirror) {
  giveAllInputs();
  mapWith("S", 10);
  Orb::Ptr<Tessel::Root> earlier = std::exchange(root, Tessel::rootFactory("later"));
  EXPECT_FALSE(earlier->engineMirror());
  ASSERT_TRUE(root->engineMirror());
  routeMapConfig->routeMapDel("S");
  root->vrfNameIs("default");
  giveAllInputs();
  earlier = nullptr;
  sent();
  root->doReconcile();
  EXPECT_EQ("deleteRouteMap [512 576=\"S\"] delete\ncommit\n", sent());
  EXPECT_EQ(fresh(), held());
}

}  // namespace
