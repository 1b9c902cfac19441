// The peer-filter reactor: whole resends under the prefixed engine name,
// removals, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Harness.h"
#include "Tessel/PeerFilterConfigSm.h"

namespace {

using TesselTest::seqLines;

std::string deleteMap(std::string const& name) {
  return "deleteRouteMap [512 576=\"" + name + "\"] delete\n";
}
std::string resend(std::string const& name, Orb::U32 seqno) {
  return deleteMap(name) + "commit\n" + seqLines(name, seqno) + "commit\n";
}

class PeerFilterReactorTest : public TesselTest::RootTest {
 protected:
  PeerFilterReactorTest() {
    giveAllInputs();
    sent();
  }
  Orb::Ptr<Routing::RouteMap::Map> filter(char const* name, Orb::U32 seqno) {
    auto f = peerFilterConfig->peerFilterIs(name);
    f->mapEntryIs(seqno);
    f->versionInc();
    return f;
  }
};

TEST_F(PeerFilterReactorTest, PeerFilterAndRouteMapOfOneNameAreTwoEngineMaps) {
  filter("f1", 10);
  EXPECT_EQ(deleteMap(".PEER_FILTER.f1") + "commit\ncommit\n" + resend(".PEER_FILTER.f1", 10),
            sent())
      << "a new filter is sent empty, then whole at its version";
  auto rm = routeMapConfig->routeMapIs("f1");
  rm->mapEntryIs(10);
  rm->versionInc();
  EXPECT_EQ(deleteMap("f1") + "commit\ncommit\n" + resend("f1", 10), sent());
}

TEST_F(PeerFilterReactorTest, SequenceChangesWaitForTheVersion) {
  auto f = filter("f1", 10);
  f->mapEntryIs(20);
  sent();
  f->mapEntryDel(20);
  f->mapEntry(10)->permitIs(Acl::deny);
  EXPECT_EQ("", sent()) << "no sequence reactor, no sequence removal";
  f->versionInc();
  EXPECT_EQ(deleteMap(".PEER_FILTER.f1") + "commit\n" + seqLines(".PEER_FILTER.f1", 10, false) +
                "commit\n",
            sent());
}

TEST_F(PeerFilterReactorTest, DeletingAFilterSendsOneDeleteAndACommit) {
  filter("f1", 10);
  sent();
  trace.text.clear();
  peerFilterConfig->peerFilterDel("f1");
  EXPECT_EQ(deleteMap(".PEER_FILTER.f1") + "commit\n", sent());
  EXPECT_THAT(trace.text, ::testing::HasSubstr("\n1 Delete peer filter f1"));
  EXPECT_EQ(0u, root->vrfStatusSm()->peerFilterConfigSm()->orbPeerFilters());
}

TEST_F(PeerFilterReactorTest, FiltersRegisterNothingInThePolicyMap) {
  policyMap->routeMapIs("f1");
  filter("f1", 10)->mapEntry(10)->subRouteMapIs("B");
  EXPECT_EQ(nullptr, policyMap->routeMap("B"));
}

TEST_F(PeerFilterReactorTest, NewStatusMachineResendsEveryFilter) {
  filter("a", 1);
  filter("b", 2);
  root->peerFilterConfigIs(nullptr);
  sent();
  root->peerFilterConfigIs(peerFilterConfig);
  std::string const all = sent();
  auto const a = all.find(resend(".PEER_FILTER.a", 1));
  auto const b = all.find(resend(".PEER_FILTER.b", 2));
  EXPECT_NE(std::string::npos, a) << all;
  EXPECT_NE(std::string::npos, b) << all;
  EXPECT_LT(a, b) << all;
}

}  // namespace
