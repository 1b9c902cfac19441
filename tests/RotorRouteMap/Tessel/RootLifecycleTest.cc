// When the per-VRF state machine exists: created with the last input, kept
// for the same inputs, destroyed when one goes, rebuilt when one is replaced.
#include <gtest/gtest.h>

#include <vector>

#include "Harness.h"

namespace {

using Tessel::Root;
using Tessel::VrfStatusSm;
using TesselTest::RootTest;
using Attributes = std::vector<Orb::AttributeId>;

TEST_F(RootTest, StatusMachineArrivesWithTheLastInput) {
  EXPECT_EQ(root, Tessel::rmRoot);
  root->routeMapConfigIs(routeMapConfig);
  root->peerFilterConfigIs(peerFilterConfig);
  root->aclListConfigIs(aclListConfig);
  root->aclConfigIs(aclConfig);
  root->dynPfxListConfigIs(dynPfxListConfig);
  EXPECT_FALSE(root->vrfStatusSm());
  root->policyMapIs(policyMap);
  ASSERT_TRUE(root->vrfStatusSm());
  EXPECT_TRUE(root->vrfStatusSm()->hasNotificationActive());
  EXPECT_EQ(L3::VrfName("default"), root->vrfStatusSm()->vrfName());
  EXPECT_EQ(policyMap, root->vrfStatusSm()->policyMap());
}

TEST_F(RootTest, SameInputsAndNameAgainKeepTheStatusMachineSilently) {
  giveAllInputs();
  TesselTest::Notifications seen(root);
  auto* before = root->vrfStatusSm().get();
  giveAllInputs();
  root->vrfNameIs("default");
  EXPECT_EQ(before, root->vrfStatusSm().get());
  EXPECT_EQ(Attributes{}, seen.attributes);
}

TEST_F(RootTest, NullInputDestroysAndRestoringRebuilds) {
  giveAllInputs();
  TesselTest::Notifications seen(root);
  Orb::Ptr<VrfStatusSm> first = root->vrfStatusSm();
  root->aclConfigIs(nullptr);
  EXPECT_FALSE(root->vrfStatusSm());
  EXPECT_FALSE(first->hasNotificationActive());
  first = nullptr;
  root->aclConfigIs(aclConfig);
  EXPECT_TRUE(root->vrfStatusSm());
  EXPECT_EQ(
      (Attributes{Root::vrfStatusSm_, Root::aclConfig_, Root::vrfStatusSm_, Root::aclConfig_}),
      seen.attributes);
}

TEST_F(RootTest, ReplacedInputBuildsANewStatusMachine) {
  giveAllInputs();
  Orb::Ptr<VrfStatusSm> first = root->vrfStatusSm();
  auto other = Routing::RouteMap::Config::create("rm2");
  root->routeMapConfigIs(other);
  EXPECT_EQ(other, root->vrfStatusSm()->routeMapConfig());
  EXPECT_EQ(1u, first->references()) << "the old machine is held only by this test";
}

TEST_F(RootTest, VrfChangeWaitsForTheNextInputChange) {
  giveAllInputs();
  TesselTest::Notifications seen(root);
  Orb::Ptr<VrfStatusSm> first = root->vrfStatusSm();
  root->vrfNameIs("blue");
  EXPECT_EQ(Attributes{Root::vrfName_}, seen.attributes);
  EXPECT_EQ(first, root->vrfStatusSm());
  EXPECT_EQ(L3::VrfName("default"), first->vrfName());
  root->policyMapIs(RoutingPolicyMap::PolicyMap::create("pmap2"));
  EXPECT_EQ(L3::VrfName("blue"), root->vrfStatusSm()->vrfName());
}

TEST_F(RootTest, RemovingCommListUsersDestroysTheStatusMachine) {
  giveAllInputs();
  EXPECT_EQ(root.get(), root->commListUsers()->parent());
  root->commListUsersDel();
  EXPECT_FALSE(root->vrfStatusSm());
  root->commListUsersIs("comm-list-users");
  EXPECT_TRUE(root->vrfStatusSm());
}

TEST_F(RootTest, ReplacingTheUserIndexUnlinksTheOldOne) {
  Orb::Ptr<Tessel::CommListUsers> old = root->commListUsers();
  root->commListUsersIs("renamed");
  EXPECT_EQ(nullptr, old->parent());
  EXPECT_EQ(Orb::Name("renamed"), root->commListUsers()->name());
  EXPECT_EQ(root.get(), root->commListUsers()->parent());
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

}  // namespace
