// The policy map as the replay's second output: its changes in canonical
// lines, its comparison in the check with the deliberate divergences named,
// and the Graphviz picture of the references.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "Check.h"
#include "PolicyGraph.h"
#include "Rib/CommandText.h"

namespace {

class PolicyMapOutputTest : public ::testing::Test {
 protected:
  void TearDown() override {
    world.reset();
    Tessel::rmRoot = nullptr;
    EXPECT_EQ(liveBefore_, Orb::Object::liveObjects()) << "objects left behind";
  }
  Scenario::RunResult run(std::string const& text) {
    world.reset();
    stream.lines.clear();
    Scenario::World::Options options;
    options.stream = &stream;
    options.policyMap = [this](std::string const& line) { stream.lines.push_back(line); };
    world.emplace(options);
    return Scenario::run(Scenario::parse(text, "t.scenario"), *world, true);
  }
  /// The policy-map lines seen since the world was made.
  std::string changes() const {
    std::string out;
    for (auto const& line : stream.lines) {
      if (line.starts_with("policy-map ")) out += line + "\n";
    }
    return out;
  }

  /// Engine commands and policy-map lines, in the order they happened.
  struct Stream final : Rib::EngineSink {
    void execute(Rib::CogOp const& op) override {
      lines.push_back(Rib::commandLine(Rib::RecordedCommand::of(op)));
    }
    void commit(Rib::CommitKind kind) override {
      lines.push_back(Rib::commandLine(Rib::RecordedCommand::of(kind)));
    }
    std::vector<std::string> lines;
  } stream;

  long liveBefore_ = Orb::Object::liveObjects();
  std::optional<Scenario::World> world;
};

TEST_F(PolicyMapOutputTest, ChangesAreCanonicalLinesPlacedInTheStream) {
  run(R"(route-map A permit 10
  sub-route-map B
version A
list route-map A by n1
unlist route-map A by n1
)");
  EXPECT_EQ(
      "policy-map routeMap \"A\" listed\n"
      "policy-map routeMap \"B\" listed\n"
      "policy-map routeMap \"B\" + plugin=1 mode=6 cli=\"sub-route-map\" key=\"A seqNo 10\"\n"
      "policy-map routeMap \"A\" + plugin=0 mode=0 cli=\"\" key=\"n1\"\n"
      "policy-map routeMap \"A\" - plugin=0 mode=0 cli=\"\" key=\"n1\"\n"
      "policy-map routeMap \"A\" unlisted\n"
      "policy-map routeMap \"B\" - plugin=1 mode=6 cli=\"sub-route-map\" key=\"A seqNo 10\"\n"
      "policy-map routeMap \"B\" unlisted\n",
      changes());
  auto const first = std::find_if(stream.lines.begin(), stream.lines.end(),
                                  [](auto const& line) { return line.starts_with("policy-map "); });
  for (auto it = first; it != stream.lines.end(); ++it)
    EXPECT_TRUE(it->starts_with("policy-map ")) << "listing sends nothing for route maps: " << *it;
}

TEST_F(PolicyMapOutputTest, CheckComparesThePolicyMap) {
  auto const r = run("route-map A permit 10\nversion A\n");
  ASSERT_FALSE(r.divergence);
  // Written behind the library's back: only the live policy map has it.
  world->live().policyMap->dynamicPrefixListIs("X");
  auto const checked = Scenario::check(*world);
  EXPECT_TRUE(checked.diverges);
  EXPECT_THAT(checked.report, ::testing::HasSubstr("the policy map differs"));
  EXPECT_THAT(checked.report, ::testing::HasSubstr("-dynamicPrefixList \"X\"\n"));
}

TEST_F(PolicyMapOutputTest, LoopKeepingItselfListedIsAKnownDivergence) {
  auto const r = run(R"(route-map A permit 10
  sub-route-map B
route-map B permit 10
  sub-route-map A
  match ip address dynamic prefix-list D
version A
version B
dynamic-prefix-list D ipv4 P
version dynamic-prefix-list D
list route-map A by n1
unlist route-map A by n1
)");
  ASSERT_FALSE(r.divergence) << r.divergence->report;
  ASSERT_EQ(1u, r.notes.size());
  EXPECT_THAT(r.notes[0], ::testing::HasSubstr("t.scenario:11: known divergence "
                                               "'references-kept-by-a-loop'"));
}

TEST_F(PolicyMapOutputTest, ClearedPrefixListNameIsAKnownDivergence) {
  auto const r = run(R"(list dynamic-prefix-list D by n1
dynamic-prefix-list D ipv4 P4 ipv6 P6
version dynamic-prefix-list D
dynamic-prefix-list D ipv4 P4
version dynamic-prefix-list D
)");
  ASSERT_FALSE(r.divergence) << r.divergence->report;
  ASSERT_EQ(1u, r.notes.size());
  EXPECT_THAT(r.notes[0], ::testing::HasSubstr("'dynamic-prefix-list-keeps-a-cleared-name'"));
}

TEST_F(PolicyMapOutputTest, GraphDrawsReferencesRequestersAndMissingNames) {
  run(R"(route-map A permit 10
  sub-route-map GONE
  match ipv6 address dynamic prefix-list D
dynamic-prefix-list D ipv6 P6 match-map M
list route-map A by "n1"
)");
  std::string const dot = Scenario::policyGraph(world->live());
  EXPECT_EQ(
      "digraph policies {\n"
      "  rankdir=LR;\n"
      "  \"route-map A\" [label=\"A\", shape=box, style=\"filled\"];\n"
      "  \"dynamic-prefix-list D\" [label=\"D\", shape=ellipse, style=\"filled\"];\n"
      "  \"requester \\\"n1\\\"\" [label=\"\\\"n1\\\"\", shape=note];\n"
      "  \"route-map GONE\" [label=\"GONE\", shape=box, style=\"filled,dashed\"];\n"
      "  \"route-map M\" [label=\"M\", shape=box, style=\"filled,dashed\"];\n"
      "  \"route-map A\" -> \"route-map GONE\" [label=\"seq 10 sub-route-map\"];\n"
      "  \"route-map A\" -> \"dynamic-prefix-list D\" [label=\"seq 10 ipv6\"];\n"
      "  \"dynamic-prefix-list D\" -> \"route-map M\" [label=\"match-map\"];\n"
      "  \"requester \\\"n1\\\"\" -> \"route-map A\";\n"
      "}\n",
      dot);
}

}  // namespace
