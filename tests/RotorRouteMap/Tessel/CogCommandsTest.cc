// Paths, commits, the set-operation mode and the VRF check of the translator.
#include <gtest/gtest.h>

#include "Harness.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"

namespace {

using TesselTest::EngineTest;
using TesselTest::RootTest;

TEST_F(EngineTest, SequencePathIsMapKeySequenceNodeAndNumberKey) {
  auto cog = Tessel::cogFactory("default");
  auto op = Tessel::ribOpIs("probe", cog->ribMapSeqPathIs("R", 10));
  op->doExecute();
  EXPECT_EQ("probe [512 576=\"R\" 577 578=10]\n", sent());
}

TEST_F(EngineTest, WithoutRootAnyVrfBuildsPaths) {
  ASSERT_FALSE(Tessel::rmRoot);
  Tessel::cogFactory("red")->ribPathIs(512)->doPushPath(1);
  Tessel::cogFactory("blue")->ribPathIs(512);
  SUCCEED();
}

TEST_F(EngineTest, SyncCommitDeletesTheUnusedAsPathListAndWaits) {
  Tessel::cogFactory("default")->doSyncCommit();
  EXPECT_EQ(
      "deleteAsPathList [512 534 535=\"/policy/asplist not_a_funny_name\"] delete\n"
      "commit sync\n",
      sent());
}

TEST_F(EngineTest, SyncCommitIsOfferedThroughTheTypeRegistry) {
  auto cog = Tessel::cogFactory("default");
  EXPECT_TRUE(Orb::TypeRegistry::instance().doAction("Tessel::Cog", "doSyncCommit", *cog));
  EXPECT_EQ(2u, engine.records().size());
}

TEST_F(EngineTest, OpModeIsSentWithoutRootAndWithoutCommit) {
  auto cog = Tessel::cogFactory("any");
  cog->doRouteMapOpConfig(Routing::RouteMap::routeMapOpModeAlternate);
  EXPECT_EQ("RouteMapSetOpMode [256] 18:u32=1\n", sent());
  cog->doCommit();
  EXPECT_EQ("commit\n", sent());
}

TEST_F(RootTest, OpModeSkipsTheVrfCheck) {
  Tessel::cogFactory("other")->doRouteMapOpConfig(Routing::RouteMap::routeMapOpModeDefault);
  EXPECT_EQ("RouteMapSetOpMode [256] 18:u32=0\n", sent());
}

using RootDeathTest = RootTest;

TEST_F(RootDeathTest, PathForAnotherVrfThanTheRootsAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(Tessel::cogFactory("red")->ribPathIs(512),
               "Assertion failed: rmRoot->vrfName\\(\\) == vrfName");
}

}  // namespace
