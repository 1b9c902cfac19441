// The replay check: it holds on the route-map flows, names the divergences the
// system makes on purpose, and catches faults planted on either side.
#include <gtest/gtest.h>

#include <optional>

#include "Check.h"
#include "Rib/CommandText.h"

namespace {

using Rib::RecordedCommand;

class CheckTest : public ::testing::Test {
 protected:
  void TearDown() override {
    world.reset();
    scenario = {};
    Tessel::rmRoot = nullptr;
    EXPECT_EQ(liveBefore_, Orb::Object::liveObjects()) << "objects left behind";
  }

  /// Runs `text` with the check on a new world whose model sees only what
  /// `keep` lets through (everything when null).
  Scenario::RunResult runChecked(std::string const& text,
                                 std::function<bool(RecordedCommand const&)> keep = nullptr) {
    scenario = Scenario::parse(text, "t.scenario");
    world.reset();
    world.emplace(Scenario::World::Options{});
    world->modelFilterIs(std::move(keep));
    return Scenario::run(scenario, *world, true);
  }

  static std::string summary(Scenario::RunResult const& r) {
    std::string out = "checks=" + std::to_string(r.checks) + "\n";
    for (auto const& note : r.notes)
      out += note + "\n";
    if (r.divergence) {
      out += "line " + std::to_string(r.divergence->line) + ": " + r.divergence->statement + "\n" +
             r.divergence->report;
    }
    return out;
  }

  long liveBefore_ = Orb::Object::liveObjects();
  Scenario::Scenario scenario;
  std::optional<Scenario::World> world;
};

TEST_F(CheckTest, RouteMapFlowsMatchAFreshReplayWheneverSettled) {
  auto result = runChecked(R"(route-map R permit 10
  match ip address prefix-list PL
  set metric 10
route-map S deny 5
  set next-hop peer-address
version R
version S
route-map R permit 20
  set ipv6 next-hop 2001:db8::1
  sub-route-map S
version R
no route-map R 10
route-map-mode alternate
input policy-map off
input policy-map on
no route-map R 20
no route-map S
)");
  EXPECT_EQ("checks=7\n", summary(result));
}

TEST_F(CheckTest, CommandLostOnTheWayIsReportedAtTheStatementThatSettles) {
  auto result = runChecked("route-map R permit 10\n  set next-hop 10.0.0.1\nversion R\n",
                           [](RecordedCommand const& c) { return c.name != "setNextHop"; });
  EXPECT_EQ(
      "checks=1\n"
      "line 3: version R\n"
      "the engine state differs from a fresh replay of the configuration\n"
      "(- only as sent change by change, + only in the fresh replay):\n"
      "  512\n"
      "    576=\"R\" 0:str=\"R\" (routeMap)\n"
      "      577\n"
      "        578=10 0:u32=10 1:flag=true (routeMapSeq)\n"
      "-         601 (ExtCommSetLinkBwOpts)\n"
      "+         601 7:ip=10.0.0.1 (ExtCommSetLinkBwOpts)\n",
      summary(result));
}

TEST_F(CheckTest, ShadowThatDisagreesWithWhatWasSentIsReported) {
  auto result = runChecked("route-map R permit 10\n  set metric 5\nversion R\n");
  ASSERT_EQ("checks=1\n", summary(result));
  auto entry = world->shadow().routeMapConfig->routeMap("R")->mapEntry(10);
  entry->metricIs(6);
  auto checked = Scenario::check(*world);
  EXPECT_TRUE(checked.diverges);
  EXPECT_EQ(
      "the engine state differs from a fresh replay of the configuration\n"
      "(- only as sent change by change, + only in the fresh replay):\n"
      "  512\n"
      "    576=\"R\" 0:str=\"R\" (routeMap)\n"
      "      577\n"
      "        578=10 0:u32=10 1:flag=true (routeMapSeq)\n"
      "-         601 1:u32=5 17:u32=5 (ExtCommSetLinkBwOpts)\n"
      "+         601 1:u32=6 17:u32=6 (ExtCommSetLinkBwOpts)\n",
      checked.report);
}

TEST_F(CheckTest, MapRemovedWhileAnInputWasAwayIsKnownByName) {
  auto result = runChecked(R"(route-map R permit 10
route-map S permit 10
version R
version S
input route-map-config off
no route-map R
input route-map-config on
version S
route-map R permit 20
version R
)");
  EXPECT_EQ(
      "checks=4\n"
      "t.scenario:7: known divergence 'route-map-removed-while-away': a route map removed while "
      "an input was taken away stays in the engine: the new reactor only sends the maps that "
      "are there\n",
      summary(result));
  // Made again while everything is there, R's new reactor deleted the old one.
  EXPECT_TRUE(world->staleMaps().empty());
}

TEST_F(CheckTest, MapRemovalLostWhileEverythingIsThereIsNotExcused) {
  auto droppedMapDelete = [](RecordedCommand const& c) {
    return !(c.name == "deleteRouteMap" && c.path.size() == 2);
  };
  auto result = runChecked("route-map R permit 10\nversion R\nno route-map R\n", droppedMapDelete);
  EXPECT_EQ(
      "checks=2\n"
      "line 3: no route-map R\n"
      "the engine state differs from a fresh replay of the configuration\n"
      "(- only as sent change by change, + only in the fresh replay):\n"
      "- 512\n"
      "-   576=\"R\" 0:str=\"R\" (routeMap)\n"
      "-     577\n"
      "-       578=10 0:u32=10 1:flag=true (routeMapSeq)\n"
      "-         601 (ExtCommSetLinkBwOpts)\n",
      summary(result));
}

TEST_F(CheckTest, CommandsLeftUncommittedAreADivergence) {
  auto result = runChecked("route-map R permit 10\nversion R\n", [](RecordedCommand const& c) {
    return c.kind == RecordedCommand::Kind::command;
  });
  EXPECT_EQ(
      "checks=1\n"
      "line 2: version R\n"
      "commands left uncommitted:\n"
      "  deleteRouteMap [512 576=\"R\"] delete\n"
      "  deleteRouteMap [512 576=\"R\"] delete\n"
      "  routeMap [512 576=\"R\"] 0:str=\"R\"\n"
      "  routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=true\n"
      "  ExtCommSetLinkBwOpts [512 576=\"R\" 577 578=10 601] 29:reset\n",
      summary(result));
}

TEST_F(CheckTest, SettledOnlyWhenEveryChangedMapWasResentAndEveryInputIsThere) {
  scenario = Scenario::parse(R"(route-map R permit 10
version R
route-map S permit 10
  set metric 1
version S
route-map R deny 10
no route-map R 10
input acl-config off
version S
input acl-config on
route-map T permit 10
no route-map T
)",
                             "t.scenario");
  world.emplace(Scenario::World::Options{});
  std::string settled;
  for (auto const& s : scenario.statements) {
    world->apply(s);
    settled += world->settled() ? '1' : '0';
  }
  // The removal of R's last sequence takes R out of the engine whole, and
  // giving the input back resends everything.
  EXPECT_EQ("010010100101", settled);
}

TEST(EngineContent, EmptyContainersAreNotContentWrittenNodesAre) {
  Rib::EngineModel model;
  for (char const* line : {
           "routeMap [512 576=\"a b) (c\"] 0:str=\"x \\\"(y)\\\" z\" 1:ip6=2001:db8::1",
           "routeMapSeq [512 576=\"a b) (c\" 577 578=7] 3:u32s=[1,2] 4:flag=false",
           "RouteMapSetOpMode [256] 18:u32=1",
       })
    model.apply(Rib::parseCommandLine(line));
  model.commit(Rib::CommitKind::transaction);
  EXPECT_EQ(model.stateText(), Scenario::contentOf(model).stateText());
  EXPECT_TRUE(model == Scenario::contentOf(model));

  model.apply(Rib::parseCommandLine("deleteRouteMap [512 576=\"a b) (c\"] delete"));
  model.commit(Rib::CommitKind::transaction);
  EXPECT_EQ("256 18:u32=1 (RouteMapSetOpMode)\n512\n", model.stateText());
  EXPECT_EQ("256 18:u32=1 (RouteMapSetOpMode)\n", Scenario::contentOf(model).stateText());
}

}  // namespace
