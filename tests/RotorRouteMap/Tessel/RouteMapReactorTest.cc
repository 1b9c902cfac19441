// The route-map reactor's flows: what reaches the engine, and when, as maps,
// sequences, versions and the set-operation mode change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Harness.h"
#include "Tessel/RouteMapConfigSm.h"

namespace {

using Routing::RouteMap::Map;
using TesselTest::seqLines;

std::string deleteMap(std::string const& name) {
  return "deleteRouteMap [512 576=\"" + name + "\"] delete\n";
}

// What a version notification of "R" sends.
std::string resend(bool permit = true) {
  return deleteMap("R") + "commit\n" + seqLines("R", 10, permit) + "commit\n";
}

class RouteMapReactorTest : public TesselTest::RootTest {
 protected:
  RouteMapReactorTest() {
    giveAllInputs();
    sent();
  }
  Tessel::RouteMapConfigSm* sm() const { return root->vrfStatusSm()->routeMapConfigSm(); }
  /// A map with these sequences, already sent whole.
  Orb::Ptr<Map> sentMap(char const* name, std::initializer_list<Orb::U32> seqnos) {
    auto map = routeMapConfig->routeMapIs(name);
    for (auto s : seqnos)
      map->mapEntryIs(s);
    map->versionInc();
    sent();
    return map;
  }
};

// The streams of these flows are pinned by the golden scenarios; what they
// cannot see is the reactors that must go with what was removed.
TEST_F(RouteMapReactorTest, RemovedSequencesAndMapsTakeTheirReactors) {
  auto map = sentMap("R", {10, 20});
  map->mapEntryDel(10);
  EXPECT_EQ(nullptr, sm()->orbRouteMap("R")->seqMapEntry(10));
  EXPECT_NE(nullptr, sm()->orbRouteMap("R")->seqMapEntry(20));
  routeMapConfig->routeMapDel("R");
  EXPECT_EQ(nullptr, sm()->orbRouteMap("R"));
}

TEST_F(RouteMapReactorTest, NewStatusMachineSendsTheModeThenEveryMapInNameOrder) {
  sentMap("B", {1});
  sentMap("A", {2});
  root->aclConfigIs(nullptr);
  EXPECT_EQ("", sent()) << "tearing down sends nothing for route maps";
  root->aclConfigIs(aclConfig);
  // The other reactors follow the route maps.
  EXPECT_THAT(sent(),
              ::testing::StartsWith("RouteMapSetOpMode [256] 18:u32=0\ncommit\n" + deleteMap("A") +
                                    "commit\n" + seqLines("A", 2) + "commit\n" + deleteMap("B") +
                                    "commit\n" + seqLines("B", 1) + "commit\n"));
}

TEST_F(RouteMapReactorTest, NothingRunsOnAReactorMarkedForDeletion) {
  auto map = sentMap("R", {10});
  sm()->orbRouteMap("R")->orbDoZombieReactors(true);
  map->versionInc();
  map->mapEntryDel(10);
  EXPECT_EQ("", sent());
}

TEST_F(RouteMapReactorTest, SwitchedOffReactorHearsNothingUntilSwitchedOn) {
  auto map = sentMap("R", {10});
  root->vrfStatusSm()->hasNotificationActiveIs(false);
  map->versionInc();
  routeMapConfig->routeMapOpModeIs(Routing::RouteMap::routeMapOpModeAlternate);
  EXPECT_EQ("", sent());
  root->vrfStatusSm()->hasNotificationActiveIs(true);
  map->versionInc();
  EXPECT_EQ(resend(), sent());
}

TEST_F(RouteMapReactorTest, TearDownRetiresEverySequenceReactorOnce) {
  sentMap("R", {10, 20});
  trace.text.clear();
  root->policyMapIs(nullptr);
  std::string const retired = "8 void Tessel::OrbSeqMapEntry::handleDel() rmName: R seqNo: ";
  EXPECT_THAT(trace.text, ::testing::HasSubstr(retired + "10"));
  EXPECT_THAT(trace.text, ::testing::HasSubstr(retired + "20"));
  EXPECT_EQ(trace.text.find(retired + "10"), trace.text.rfind(retired + "10")) << trace.text;
}

}  // namespace
