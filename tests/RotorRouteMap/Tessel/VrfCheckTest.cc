// The check of every engine path against the current root's VRF: made on
// every path, again after a rename or a new root, and passed by a machine's
// tear-down for the VRF it was built for.
#include <gtest/gtest.h>

#include "Harness.h"
#include "Tessel/VrfCheck.h"

namespace {

using TesselTest::RootTest;

TEST_F(RootTest, EveryPathIsCheckedAgainstTheRootsVrfAsItIsNow) {
  auto cog = Tessel::cogFactory("default");
  cog->doDeleteRouteMap("R");
  root->vrfNameIs("blue");
  EXPECT_DEATH(cog->doDeleteRouteMap("R"), "Assertion failed: rmRoot->vrfName\\(\\) == vrfName");
  root->vrfNameIs("default");
  cog->doDeleteRouteMap("R");

  // A later root, wherever it lives, is checked anew.
  Orb::Ptr<Tessel::Root> const first = root;
  root = Tessel::rootFactory("later");
  root->vrfNameIs("blue");
  EXPECT_DEATH(cog->doDeleteRouteMap("R"), "Assertion failed: rmRoot->vrfName\\(\\) == vrfName");
  EXPECT_EQ(2u, engine.records().size());
}

TEST_F(RootTest, RetiringMachinesVrfPassesOnlyWhileItRetires) {
  auto cog = Tessel::cogFactory("red");
  {
    Tessel::RetiringVrf const retiring("red");
    EXPECT_TRUE(Tessel::vrfRetiring("red"));
    EXPECT_FALSE(Tessel::vrfRetiring("default"));
    cog->doDeleteRouteMap("R");
  }
  EXPECT_FALSE(Tessel::vrfRetiring("red"));
  EXPECT_DEATH(cog->doDeleteRouteMap("R"), "rmRoot->vrfName\\(\\) == vrfName");
}

}  // namespace
