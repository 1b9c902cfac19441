// The route-map reactor's flows: what reaches the engine, and when, as maps,
// sequences, versions and the set-operation mode change.
#include <gtest/gtest.h>

#include "Harness.h"
#include "Tessel/RouteMapConfigSm.h"

namespace {

using Routing::RouteMap::Map;
using Routing::RouteMap::MapEntry;
using Tessel::OrbRouteMap;
using Tessel::RouteMapConfigSm;

std::string mapLine(std::string const& name) {
  return "routeMap [512 576=\"" + name + "\"] 0:str=\"" + name + "\"\n";
}
std::string seqLines(std::string const& name, int seqno, bool permit = true) {
  std::string seq = "512 576=\"" + name + "\" 577 578=" + std::to_string(seqno);
  return mapLine(name) + "routeMapSeq [" + seq + "] 0:u32=" + std::to_string(seqno) +
         " 1:flag=" + (permit ? "true" : "false") + "\n" + "ExtCommSetLinkBwOpts [" + seq +
         " 601] 29:reset\n";
}
std::string deleteMap(std::string const& name) {
  return "deleteRouteMap [512 576=\"" + name + "\"] delete\n";
}

class RouteMapReactorTest : public TesselTest::RootTest {
 protected:
  void SetUp() override {
    RootTest::SetUp();
    giveAllInputs();
    sent();
  }
  RouteMapConfigSm* sm() const { return root->vrfStatusSm()->routeMapConfigSm(); }
  Orb::Ptr<Map> newMap(char const* name, std::initializer_list<Orb::U32> seqnos) {
    auto map = routeMapConfig->routeMapIs(name);
    for (auto s : seqnos)
      map->mapEntryIs(s);
    return map;
  }
};

TEST_F(RouteMapReactorTest, StatusMachineStartsWithTheSetOperationMode) {
  ASSERT_TRUE(sm());
  EXPECT_TRUE(sm()->initialized());
  root->policyMapIs(RoutingPolicyMap::PolicyMap::create("other"));
  EXPECT_EQ("RouteMapSetOpMode [256] 18:u32=0\ncommit\n", sent());
}

TEST_F(RouteMapReactorTest, NewMapIsDeletedThenInsertedWhole) {
  auto map = routeMapConfig->routeMapIs("R");
  EXPECT_EQ(deleteMap("R") + "commit\ncommit\n", sent()) << "an empty map inserts nothing";
  map->mapEntryIs(10);
  EXPECT_EQ("", sent()) << "a new sequence waits for the version";
  map->versionInc();
  EXPECT_EQ(deleteMap("R") + "commit\n" + seqLines("R", 10) + "commit\n", sent());
}

TEST_F(RouteMapReactorTest, VersionResendsEveryNotificationEvenUnchanged) {
  auto map = newMap("R", {10});
  map->versionInc();
  sent();
  map->versionIs(map->version());
  EXPECT_EQ(deleteMap("R") + "commit\n" + seqLines("R", 10) + "commit\n", sent());
}

TEST_F(RouteMapReactorTest, ChangedSequenceGoesWithTheNextVersion) {
  auto map = newMap("R", {10});
  map->versionInc();
  sent();
  map->mapEntry(10)->permitIs(Acl::deny);
  EXPECT_EQ("", sent());
  map->versionInc();
  EXPECT_EQ(deleteMap("R") + "commit\n" + seqLines("R", 10, false) + "commit\n", sent());
}

TEST_F(RouteMapReactorTest, RemovingOneSequenceDeletesItAlone) {
  auto map = newMap("R", {10, 20});
  map->versionInc();
  sent();
  map->mapEntryDel(10);
  EXPECT_EQ("deleteRouteMap [512 576=\"R\" 577 578=10] delete\ncommit\n", sent());
  EXPECT_EQ(1u, sm()->orbRouteMap("R")->seqMapEntries());
  EXPECT_TRUE(trace.contains("1 Delete route map sequence 10"));
}

TEST_F(RouteMapReactorTest, RemovingLastSequenceDeletesTheMap) {
  auto map = newMap("R", {10});
  map->versionInc();
  sent();
  map->mapEntryDel(10);
  EXPECT_EQ(deleteMap("R") + "commit\n", sent());
  EXPECT_EQ(0u, sm()->orbRouteMap("R")->seqMapEntries());
}

TEST_F(RouteMapReactorTest, RemovingMapDeletesItWithoutSequenceDeletes) {
  newMap("R", {10, 20})->versionInc();
  sent();
  routeMapConfig->routeMapDel("R");
  EXPECT_EQ(deleteMap("R") + "commit\n", sent());
  EXPECT_EQ(nullptr, sm()->orbRouteMap("R"));
  EXPECT_TRUE(trace.contains("1 Delete route map R"));
}

TEST_F(RouteMapReactorTest, ModeChangeIsSentWithItsCommit) {
  routeMapConfig->routeMapOpModeIs(Routing::RouteMap::routeMapOpModeAlternate);
  EXPECT_EQ("RouteMapSetOpMode [256] 18:u32=1\ncommit\n", sent());
}

TEST_F(RouteMapReactorTest, NewStatusMachineReplaysEveryMapInNameOrder) {
  newMap("B", {1})->versionInc();
  newMap("A", {2})->versionInc();
  sent();
  root->aclConfigIs(nullptr);
  EXPECT_EQ("", sent()) << "tearing down sends nothing for route maps";
  root->aclConfigIs(aclConfig);
  EXPECT_EQ("RouteMapSetOpMode [256] 18:u32=0\ncommit\n" + deleteMap("A") + "commit\n" +
                seqLines("A", 2) + "commit\n" + deleteMap("B") + "commit\n" + seqLines("B", 1) +
                "commit\n",
            sent());
}

TEST_F(RouteMapReactorTest, NothingRunsOnAReactorMarkedForDeletion) {
  auto map = newMap("R", {10});
  OrbRouteMap* rm = sm()->orbRouteMap("R");
  rm->orbDoZombieReactors(true);
  sent();
  map->versionInc();
  map->mapEntryDel(10);
  EXPECT_EQ("", sent());
}

TEST_F(RouteMapReactorTest, SwitchedOffReactorHearsNothing) {
  auto map = newMap("R", {10});
  sent();
  root->vrfStatusSm()->hasNotificationActiveIs(false);
  map->versionInc();
  routeMapConfig->routeMapOpModeIs(Routing::RouteMap::routeMapOpModeAlternate);
  EXPECT_EQ("", sent());
  root->vrfStatusSm()->hasNotificationActiveIs(true);
  map->versionInc();
  EXPECT_EQ(deleteMap("R") + "commit\n" + seqLines("R", 10) + "commit\n", sent());
}

TEST_F(RouteMapReactorTest, SequenceReactorsFollowTheMap) {
  auto map = newMap("R", {10, 20, 30});
  OrbRouteMap* rm = sm()->orbRouteMap("R");
  ASSERT_TRUE(rm);
  EXPECT_EQ(3u, rm->seqMapEntries());
  EXPECT_TRUE(rm->seqMapEntry(20)->initialized());
  EXPECT_EQ(3u, rm->commSetName().size());
  map->mapEntryDel(20);
  EXPECT_EQ(nullptr, rm->seqMapEntry(20));
  EXPECT_FALSE(rm->commSetName().contains(20));
}

}  // namespace
