// Retirement of configuration reactors that are replaced or dropped: however
// one goes, its notifications end and each sequence reactor under it runs its
// deletion handler exactly once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "Harness.h"
#include "RibDynamicPrefixList/DynPfxConfigSm.h"
#include "Tessel/AclConfigSm.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/OrbCommunityList.h"
#include "Tessel/PeerFilterConfigSm.h"
#include "Tessel/RouteMapConfigSm.h"

namespace {

using Routing::RouteMap::Map;

std::size_t occurrences(std::string const& text, std::string const& piece) {
  std::size_t count = 0;
  for (auto at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1))
    ++count;
  return count;
}

// A stand-in for the reactor of any slot: it watches the route-map
// configuration and keeps two element reactors that count their deletions.
struct Probe : Orb::Reactor {
  struct Element : Orb::Reactor {
    explicit Element(std::shared_ptr<int> d) : dels(std::move(d)) {}
    void handleDel() override { ++*dels; }
    std::shared_ptr<int> dels;
  };
  struct Watcher final : Orb::ReactorNotifiee<Probe> {
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId, Orb::Key const&) override {}
  };
  Probe(Orb::Ptr<Orb::Entity const> watched, std::shared_ptr<int> const& dels)
      : watcher(this, std::move(watched)) {
    elements.insert(1, Orb::make<Element>(dels));
    elements.insert(2, Orb::make<Element>(dels));
  }
  bool anyNotificationActive() const {
    bool active = hasNotificationActive() || watcher.hasNotificationActive();
    for (auto const& kv : elements)
      active |= kv.second->hasNotificationActive();
    return active;
  }
  Watcher watcher;
  Orb::ReactorColl<Orb::U32, Element> elements{this};
};

class ReactorRetirementTest : public TesselTest::RootTest {
 protected:
  ReactorRetirementTest() {
    giveAllInputs();
    map = routeMapConfig->routeMapIs("R");
    map->mapEntryIs(10);
    map->mapEntryIs(20);
    map->versionInc();
    sent();
    trace.text.clear();
  }
  /// How often sequence `seqno` of "R" ran its deletion handler.
  std::size_t retired(Orb::U32 seqno) const {
    return occurrences(trace.text, "8 void Tessel::OrbSeqMapEntry::handleDel() rmName: R seqNo: " +
                                       std::to_string(seqno));
  }
  /// How many reactors answered the last version notification of "R".
  std::size_t resends() { return occurrences(sent(), "deleteRouteMap [512 576=\"R\"] delete"); }
  /// `old` is retired with both sequences, once, and `answering` reactors
  /// still resend "R" at its version.
  void expectRetired(Orb::Reactor const& old, std::size_t answering) {
    EXPECT_TRUE(old.isZombie());
    EXPECT_FALSE(old.hasNotificationActive());
    EXPECT_EQ(retired(10), 1u) << trace.text;
    EXPECT_EQ(retired(20), 1u) << trace.text;
    sent();
    map->versionInc();
    EXPECT_EQ(resends(), answering);
  }

  /// Beside "R": one element of every other kind, each with the reactor
  /// that watches it.
  void configureEveryKind() {
    filter = peerFilterConfig->peerFilterIs("F");
    prefixList = aclListConfig->prefixListIs("P4");
    ipv6PrefixList = aclListConfig->ipv6PrefixListIs("P6");
    asPathList = aclListConfig->asPathListIs("A");
    communityList = aclListConfig->communityListIs("C");
    communityList->communityListEntryIs(10);
    ipAcls = aclConfig->aclTypeConfigIs(Acl::aclTypeIp);
    ipAcl = ipAcls->aclIs("S");
    dynamicPrefixList = dynPfxListConfig->dynamicPrefixListIs("D");
    sent();
    trace.text.clear();
  }
  /// Every reactor of the VRF, parents before their elements.
  std::vector<Orb::Reactor const*> reactors() const {
    Tessel::VrfStatusSm const* vrf = root->vrfStatusSm().get();
    auto const* maps = vrf->routeMapConfigSm();
    auto const* lists = vrf->aclListConfigSm();
    auto const* acls = vrf->aclConfigSm();
    auto const* dyn = vrf->dynPfxConfigSm();
    return {vrf,
            maps,
            maps->orbRouteMap("R"),
            maps->orbRouteMap("R")->seqMapEntry(10),
            vrf->peerFilterConfigSm(),
            vrf->peerFilterConfigSm()->orbPeerFilter("F"),
            lists,
            lists->orbPrefixList("P4"),
            lists->orbIpv6PrefixList("P6"),
            lists->orbPathList("A"),
            lists->orbCommunityList("C"),
            lists->orbCommunityList("C")->communityListEntry(10),
            acls,
            acls->ipConfigSm(),
            acls->ipConfigSm()->acl("S"),
            dyn,
            dyn->orbDynamicPrefixList("D")};
  }

  Orb::Ptr<Map> map;
  Orb::Ptr<Map> filter;
  Orb::Ptr<Acl::PrefixList> prefixList;
  Orb::Ptr<Acl::Ipv6PrefixList> ipv6PrefixList;
  Orb::Ptr<Acl::AsPathList> asPathList;
  Orb::Ptr<Acl::CommunityList> communityList;
  Orb::Ptr<Acl::AclTypeConfig> ipAcls;
  Orb::Ptr<Acl::AclConfig> ipAcl;
  Orb::Ptr<Routing::DynamicPrefixList::DynamicPrefixListEntry> dynamicPrefixList;
};

TEST_F(ReactorRetirementTest, ReplacedRouteMapReactorIsRetiredWhileStillHeld) {
  Tessel::VrfStatusSm* vrf = root->vrfStatusSm().get();
  Orb::Ptr<Tessel::RouteMapConfigSm> old = vrf->routeMapConfigSm();
  auto otherPolicyMap = RoutingPolicyMap::PolicyMap::create("other");
  vrf->routeMapConfigSmIs(routeMapConfig, "default", otherPolicyMap);
  ASSERT_NE(vrf->routeMapConfigSm(), old.get());
  expectRetired(*old, 1);
}

TEST_F(ReactorRetirementTest, DroppedConfigurationReactorRetiresItsSequences) {
  auto sm = Tessel::routeMapConfigSmFactory(routeMapConfig, "default", policyMap);
  sm->hasNotificationActiveIs(true);
  Orb::Ptr<Tessel::OrbSeqMapEntry> held = sm->orbRouteMap("R")->seqMapEntry(20);
  trace.text.clear();
  sm = nullptr;
  EXPECT_EQ(retired(10), 1u) << trace.text;
  EXPECT_EQ(retired(20), 1u) << trace.text;
  EXPECT_TRUE(held->isZombie());
  EXPECT_FALSE(held->hasNotificationActive());
}

TEST_F(ReactorRetirementTest, EverySlotRetiresTheChildItReplaces) {
  using Tessel::VrfStatusSm;
  VrfStatusSm* vrf = root->vrfStatusSm().get();
  auto dels = std::make_shared<int>(0);
  for (int slot = 0; slot < VrfStatusSm::childCount; ++slot) {
    auto child = VrfStatusSm::Child(slot);
    auto first = Orb::make<Probe>(routeMapConfig, dels);
    vrf->childIs(child, first);
    EXPECT_TRUE(first->watcher.hasNotificationActive()) << slot;
    *dels = 0;
    vrf->childIs(child, Orb::make<Probe>(routeMapConfig, dels));
    EXPECT_EQ(*dels, 2) << slot;
    EXPECT_TRUE(first->isZombie()) << slot;
    EXPECT_FALSE(first->anyNotificationActive()) << slot;
    EXPECT_TRUE(static_cast<Probe*>(vrf->child(child))->anyNotificationActive()) << slot;
  }
  *dels = 0;
  root->policyMapIs(nullptr);
  EXPECT_EQ(*dels, 2 * VrfStatusSm::childCount) << "tear-down retires the last ones";
}

TEST_F(ReactorRetirementTest, ReplacedStatusMachineIsRetiredWhileStillHeld) {
  Orb::Ptr<Tessel::VrfStatusSm> old = root->vrfStatusSm();
  root->policyMapIs(RoutingPolicyMap::PolicyMap::create("other"));
  ASSERT_NE(root->vrfStatusSm(), old);
  expectRetired(*old, 1);
  old = nullptr;
  EXPECT_EQ(retired(10), 1u) << trace.text;
}

TEST_F(ReactorRetirementTest, MapReactorReplacedUnderTheSameNameIsRetiredWhileStillHeld) {
  Tessel::RouteMapConfigSm* sm = root->vrfStatusSm()->routeMapConfigSm();
  Orb::Ptr<Tessel::OrbRouteMap> old = sm->orbRouteMap("R");
  auto otherConfig = Routing::RouteMap::Config::create("other");
  sm->routeMapIs(otherConfig->routeMapIs("R"));
  ASSERT_NE(sm->orbRouteMap("R"), old.get());
  expectRetired(*old, 0);  // the old map's reactor is deaf
}

// A host's model may notify an element again without replacing it; every
// reactor then keeps what it has instead of rebuilding and replaying.
TEST_F(ReactorRetirementTest, SameEntityAgainKeepsEveryReactorAndSendsNothing) {
  configureEveryKind();
  std::vector<Orb::Reactor const*> const before = reactors();
  Tessel::VrfStatusSm* vrf = root->vrfStatusSm().get();
  root->vrfStatusSmIs("default", routeMapConfig, peerFilterConfig, aclListConfig, aclConfig,
                      dynPfxListConfig, policyMap);
  vrf->routeMapConfigSmIs(routeMapConfig, "default", policyMap);
  vrf->peerFilterConfigSmIs(peerFilterConfig, "default");
  vrf->aclListConfigSmIs(aclListConfig, "default");
  vrf->aclConfigSmIs(aclConfig, "default");
  vrf->dynPfxConfigSmIs(dynPfxListConfig, policyMap);
  vrf->routeMapConfigSm()->routeMapIs(map);
  vrf->routeMapConfigSm()->orbRouteMap("R")->seqMapEntryIs(map->mapEntry(10));
  vrf->peerFilterConfigSm()->peerFilterIs(filter);
  Tessel::AclListConfigSm* lists = vrf->aclListConfigSm();
  lists->prefixListIs(prefixList);
  lists->ipv6PrefixListIs(ipv6PrefixList);
  lists->pathListIs(asPathList);
  lists->communityListIs(communityList);
  lists->orbCommunityList("C")->communityListEntryIs(communityList->communityListEntry(10));
  vrf->aclConfigSm()->ipConfigSmIs(ipAcls);
  vrf->aclConfigSm()->ipConfigSm()->aclIs(ipAcl);
  vrf->dynPfxConfigSm()->dynamicPrefixListIs(dynamicPrefixList);
  EXPECT_EQ(before, reactors());
  EXPECT_EQ("", sent());
  EXPECT_EQ(retired(10), 0u) << trace.text;
}

// Emptying an element collection retires each element reactor as removing
// it one by one would: deletion handlers run, and nothing is left to answer
// the elements' later notifications.
TEST_F(ReactorRetirementTest, DelAllRetiresEveryElementReactor) {
  configureEveryKind();
  policyMap->dynamicPrefixListIs("D")->reasonIs(
      {RoutingPolicyMap::PluginType(3), RoutingPolicyMap::CliMode(2), "bgp", "neighbor"});
  sent();
  Tessel::VrfStatusSm* vrf = root->vrfStatusSm().get();
  Tessel::OrbRouteMap* orbMap = vrf->routeMapConfigSm()->orbRouteMap("R");
  orbMap->seqMapEntryDelAll();
  EXPECT_EQ(nullptr, orbMap->seqMapEntry(10));
  EXPECT_EQ(retired(10), 1u) << trace.text;
  vrf->routeMapConfigSm()->routeMapDelAll();
  EXPECT_EQ(nullptr, vrf->routeMapConfigSm()->orbRouteMap("R"));
  vrf->peerFilterConfigSm()->peerFilterDelAll();
  EXPECT_EQ(nullptr, vrf->peerFilterConfigSm()->orbPeerFilter("F"));
  EXPECT_EQ("", sent()) << "route maps and peer filters leave the engine alone";

  Tessel::AclListConfigSm* lists = vrf->aclListConfigSm();
  Tessel::OrbCommunityList* orbList = lists->orbCommunityList("C");
  orbList->communityListEntryDelAll();
  EXPECT_EQ(nullptr, orbList->communityListEntry(10));
  lists->prefixListDelAll();
  lists->ipv6PrefixListDelAll();
  lists->pathListDelAll();
  lists->communityListDelAll();
  EXPECT_EQ(0u, lists->orbPrefixLists() + lists->orbIpv6PrefixLists() + lists->orbPathLists() +
                    lists->orbCommunityLists());
  vrf->aclConfigSm()->ipConfigSm()->aclDelAll();
  EXPECT_EQ(nullptr, vrf->aclConfigSm()->ipConfigSm()->acl("S"));
  std::string entrySetDeletes;
  for (char const* node : {"524 525", "526 527", "631 632"})
    entrySetDeletes +=
        std::string("delCommunitySet [512 ") + node + "=\"/policy/commset .C10\"] delete\ncommit\n";
  EXPECT_EQ(entrySetDeletes, sent()) << "only the community list clears its entries' sets";

  vrf->dynPfxConfigSm()->dynamicPrefixListDelAll();
  EXPECT_EQ(nullptr, vrf->dynPfxConfigSm()->orbDynamicPrefixList("D"));
  EXPECT_EQ("delDynamicPrefixList [512 627 628=\"D\"] delete\ncommit\n", sent())
      << "a listed dynamic prefix list leaves the engine with its reactor";

  map->versionInc();
  filter->versionInc();
  prefixList->versionInc();
  communityList->communityListEntry(10)->versionIs(1);
  dynamicPrefixList->versionInc();
  EXPECT_EQ("", sent()) << "no reactor is left to answer";
}

}  // namespace
