// Retirement of configuration reactors that are replaced or dropped: however
// one goes, its notifications end and each sequence reactor under it runs its
// deletion handler exactly once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "Harness.h"
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

  Orb::Ptr<Map> map;
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

}  // namespace
