// When the per-VRF state machine exists: created with the last input, kept
// for the same inputs, destroyed when one goes, rebuilt when one is replaced.
#include <gtest/gtest.h>

#include "Harness.h"

namespace {

using Tessel::Root;
using Tessel::VrfStatusSm;
using TesselTest::RootTest;

/// Counts the root's notifications of `vrfStatusSm`.
class StatusWatcher final : public Orb::Notifiee {
 public:
  explicit StatusWatcher(Orb::Ptr<Root> const& root) : Notifiee(root) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId attribute, Orb::Key const&) override {
    if (attribute == Root::vrfStatusSm_) ++changes;
  }
  int changes = 0;
};

TEST_F(RootTest, RootStartsWithCommListUsersAndBecomesCurrent) {
  EXPECT_EQ(root, Tessel::rmRoot);
  EXPECT_TRUE(root->initialized());
  ASSERT_TRUE(root->commListUsers());
  EXPECT_EQ(Orb::Name("comm-list-users"), root->commListUsers()->name());
  EXPECT_EQ(root.get(), root->commListUsers()->parent());
  EXPECT_FALSE(root->vrfStatusSm());
}

TEST_F(RootTest, StatusMachineArrivesWithTheLastInput) {
  root->routeMapConfigIs(routeMapConfig);
  root->peerFilterConfigIs(peerFilterConfig);
  root->aclListConfigIs(aclListConfig);
  root->aclConfigIs(aclConfig);
  root->dynPfxListConfigIs(dynPfxListConfig);
  EXPECT_FALSE(root->vrfStatusSm());
  root->policyMapIs(policyMap);
  ASSERT_TRUE(root->vrfStatusSm());
  VrfStatusSm const& sm = *root->vrfStatusSm();
  EXPECT_TRUE(sm.initialized());
  EXPECT_TRUE(sm.hasNotificationActive());
  EXPECT_EQ(L3::VrfName("default"), sm.vrfName());
  EXPECT_EQ(routeMapConfig, sm.routeMapConfig());
  EXPECT_EQ(policyMap, sm.policyMap());
}

TEST_F(RootTest, SameInputAgainKeepsTheStatusMachine) {
  giveAllInputs();
  StatusWatcher watcher(root);
  auto* before = root->vrfStatusSm().get();
  giveAllInputs();
  EXPECT_EQ(before, root->vrfStatusSm().get());
  EXPECT_EQ(0, watcher.changes);
}

TEST_F(RootTest, NullInputDestroysAndRestoringRebuilds) {
  giveAllInputs();
  StatusWatcher watcher(root);
  Orb::Ptr<VrfStatusSm> first = root->vrfStatusSm();
  root->aclConfigIs(nullptr);
  EXPECT_FALSE(root->vrfStatusSm());
  EXPECT_FALSE(first->hasNotificationActive());
  EXPECT_EQ(1, watcher.changes);
  first = nullptr;

  root->aclConfigIs(aclConfig);
  ASSERT_TRUE(root->vrfStatusSm());
  EXPECT_EQ(2, watcher.changes);
}

TEST_F(RootTest, ReplacedInputBuildsANewStatusMachine) {
  giveAllInputs();
  Orb::Ptr<VrfStatusSm> first = root->vrfStatusSm();
  auto other = Routing::RouteMap::Config::create("rm2");
  root->routeMapConfigIs(other);
  ASSERT_TRUE(root->vrfStatusSm());
  EXPECT_NE(first, root->vrfStatusSm());
  EXPECT_EQ(other, root->vrfStatusSm()->routeMapConfig());
  EXPECT_EQ(1u, first->references()) << "the old machine is held only by this test";
}

TEST_F(RootTest, VrfChangeWaitsForTheNextInputChange) {
  giveAllInputs();
  Orb::Ptr<VrfStatusSm> first = root->vrfStatusSm();
  root->vrfNameIs("blue");
  EXPECT_EQ(first, root->vrfStatusSm());
  EXPECT_EQ(L3::VrfName("default"), root->vrfStatusSm()->vrfName());

  root->policyMapIs(RoutingPolicyMap::PolicyMap::create("pmap2"));
  EXPECT_EQ(L3::VrfName("blue"), root->vrfStatusSm()->vrfName());
}

TEST_F(RootTest, RemovingCommListUsersDestroysTheStatusMachine) {
  giveAllInputs();
  root->commListUsersDel();
  EXPECT_FALSE(root->commListUsers());
  EXPECT_FALSE(root->vrfStatusSm());
  root->commListUsersIs("comm-list-users");
  EXPECT_TRUE(root->vrfStatusSm());
}

TEST_F(RootTest, SecondRootTakesOverAndTheFirstGoesWhenReleased) {
  giveAllInputs();
  long liveWithFirst = Orb::Object::liveObjects();
  auto second = Tessel::rootFactory("second");
  EXPECT_EQ(second, Tessel::rmRoot);
  root = nullptr;  // the first root, its status machine and its index go
  EXPECT_LT(Orb::Object::liveObjects(), liveWithFirst);
  EXPECT_EQ(second, Tessel::rmRoot);
}

TEST_F(RootTest, RootNotifiesItsOwnAttributes) {
  std::vector<Orb::AttributeId> seen;
  struct Recorder final : Orb::Notifiee {
    Recorder(Orb::Ptr<Root> const& r, std::vector<Orb::AttributeId>& s) : Notifiee(r), seen(s) {
      hasNotificationActiveIs(true);
    }
    void onAttribute(Orb::AttributeId a, Orb::Key const&) override { seen.push_back(a); }
    std::vector<Orb::AttributeId>& seen;
  } recorder(root, seen);
  root->vrfNameIs("default");  // unchanged: silent
  root->vrfNameIs("blue");
  root->routeMapConfigIs(routeMapConfig);
  root->routeMapConfigIs(routeMapConfig);  // same pointer: silent
  EXPECT_EQ((std::vector<Orb::AttributeId>{Root::vrfName_, Root::routeMapConfig_}), seen);
}

TEST_F(RootTest, TooLongVrfNameIsARangeError) {
  EXPECT_THROW(root->vrfNameIs(L3::VrfName(std::string(101, 'v'))), Orb::RangeError);
}

}  // namespace
