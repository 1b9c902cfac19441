// Seeded random change sequences checked against a fresh replay whenever they
// settle; a failure is shrunk and printed as a scenario for policy-replay.
//
// REPLAY_STEPS sets the number of random steps in total (default 3000) and
// REPLAY_SEED the first seed (default 1); each run of 150 steps takes the next
// seed, so a longer search is `REPLAY_STEPS=100000 test_tools_random`.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <random>
#include <set>

#include "Check.h"

namespace {

/// One random change: a route-map line with its clauses, or one top-level
/// statement. Shrinking removes whole steps, so a clause never loses its
/// route-map line.
using Step = std::vector<std::string>;
using Steps = std::vector<Step>;
using Plant = std::function<bool(Rib::RecordedCommand const&)>;

constexpr std::size_t kStepsPerSeed = 150;

unsigned envNumber(char const* name, unsigned fallback) {
  char const* text = std::getenv(name);
  return text && *text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : fallback;
}

class Generator {
 public:
  explicit Generator(unsigned seed) : rng_(seed) {}

  Step next() {
    // An input given back soon, as the machinery is frozen while it is away.
    if (away_ && below(3) == 0) return {"input " + *std::exchange(away_, std::nullopt) + " on"};
    int const r = below(100);
    if (r < 35 || maps_.empty()) {
      std::string map = pick({"A", "B", "C"});
      maps_.insert(map);
      changed_.insert(map);
      Step step{"route-map " + map + (below(4) ? " permit " : " deny ") + seqno()};
      for (int n = below(3); n > 0; --n)
        step.push_back("  " + clause());
      return step;
    }
    std::string map = existingMap();
    if (r < 68) {
      // Mostly a map that waits for its version, so the sequence settles
      // often and the check gets to compare.
      if (!changed_.empty() && below(5)) map = *changed_.begin();
      changed_.erase(map);
      return {"version " + map};
    }
    if (r < 80) return {"no route-map " + map + " " + seqno()};
    if (r < 85) {
      maps_.erase(map);
      changed_.erase(map);
      return {"no route-map " + map};
    }
    if (r < 95 || away_) return {std::string("route-map-mode ") + pick({"default", "alternate"})};
    away_ = pick({"route-map-config", "peer-filter-config", "acl-list-config", "acl-config",
                  "dynamic-prefix-list-config", "policy-map"});
    return {"input " + *away_ + " off"};
  }

 private:
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }
  std::string number(int lo, int hi) { return std::to_string(lo + below(hi - lo + 1)); }
  std::string pick(std::initializer_list<char const*> words) {
    return *(words.begin() + below(static_cast<int>(words.size())));
  }
  std::string seqno() { return pick({"10", "20", "30"}); }
  std::string existingMap() {
    auto it = maps_.begin();
    std::advance(it, below(static_cast<int>(maps_.size())));
    return *it;
  }

  std::string clause() {
    switch (below(24)) {
      case 0:
        return "match ip address prefix-list " + pick({"P1", "P2"}) + pick({"", " invert"});
      case 1:
        return "match ipv6 address prefix-list P6";
      case 2:
        return "match protocol " + number(1, 9);
      case 3:
        return "match route-type " + number(1, 5);
      case 4:
        return "match metric-type type-" + number(1, 2);
      case 5:
        return "match interface Ethernet" + number(1, 2) + pick({"", " invert"});
      case 6:
        return "match ip next-hop 10.0.0." + number(1, 2);
      case 7:
        return "match as-range 100 " + number(100, 300);
      case 8:
        return "match option " + pick({"100", "105"}) + " int " + number(0, 3);
      case 9:
        return "match community C1" + pick({"", " exact"});
      case 10:
        return "no match " + pick({"ip address prefix-list", "protocol", "route-type", "interface",
                                   "option 100"});
      case 11:
        return "set metric " + number(-5, 100) +
               pick({"", " med-type 0", " med-type 3", " med-type 5", " med-type 8"});
      case 12:
        return "set metric-type type-" + number(1, 2);
      case 13:
        return "set origin " + pick({"igp", "egp", "incomplete"});
      case 14:
        return "set isis-level " + number(1, 3);
      case 15:
        return pick({"set next-hop 10.1.0.", "set ipv6 next-hop 2001:db8::"}) + number(1, 3);
      case 16:
        return pick({"set next-hop peer-address", "set ipv6 next-hop peer-address",
                     "set next-hop unchanged", "set ipv6 next-hop unchanged"});
      case 17:
        return pick({"set as-path prepend 65001 65002", "set as-path prepend last-as 2",
                     "set as-path replace 65003"});
      case 18:
        return "set value " + pick({"3", "19", "26", "35"}) + " " + number(-3, 50);
      case 19:
        return "set value " + pick({"2", "25", "33"}) + " " + number(0, 50);
      case 20:
        return "set link-bandwidth " + pick({"aggregate", "divide-equal", "none", "1.5"});
      case 21:
        return pick({"set community add 1:1", "set community delete 1:2", "set extcommunity rt 1:1",
                     "set large-community 1:2:3"});
      case 22:
        return "no set " + pick({"metric", "origin", "next-hop", "ipv6 next-hop", "as-path prepend",
                                 "value 3", "link-bandwidth", "community", "next-hop unchanged"});
      default:
        return below(3) ? "sub-route-map " + pick({"A", "B", "C"}) : "no sub-route-map";
    }
  }

  std::mt19937 rng_;
  std::set<std::string> maps_;
  /// Maps changed since their last version.
  std::set<std::string> changed_;
  std::optional<std::string> away_;
};

std::string textOf(Steps const& steps) {
  std::string out;
  for (Step const& step : steps) {
    for (std::string const& line : step)
      out += line + "\n";
  }
  return out;
}

struct Outcome {
  bool fails = false;
  bool refused = false;
  /// The step after which the check failed.
  std::size_t failingStep = 0;
  std::string report;
};

/// Runs the steps with the check on a new world whose model sees only what
/// `plant` lets through.
Outcome runSteps(Steps const& steps, Plant const& plant) {
  Outcome outcome;
  try {
    auto scenario = Scenario::parse(textOf(steps), "random.scenario");
    Scenario::World world({});
    world.modelFilterIs(plant);
    auto result = Scenario::run(scenario, world, true);
    if (!result.divergence) return outcome;
    outcome.fails = true;
    outcome.report = "line " + std::to_string(result.divergence->line) + ": " +
                     result.divergence->statement + "\n" + result.divergence->report;
    for (std::size_t line = 0; outcome.failingStep < steps.size(); ++outcome.failingStep) {
      line += steps[outcome.failingStep].size();
      if (line >= static_cast<std::size_t>(result.divergence->line)) break;
    }
  } catch (Scenario::ScenarioError const& e) {
    outcome.refused = true;
    outcome.report = e.what();
  }
  return outcome;
}

/// The shortest failing sequence found by dropping ever smaller runs of
/// steps, then single clauses, while it still fails. Candidates that no
/// longer parse or run (a version of a map whose creation was dropped) do not
/// count as failing.
Steps shrink(Steps steps, Plant const& plant) {
  auto fails = [&](Steps const& candidate) { return runSteps(candidate, plant).fails; };
  steps.resize(runSteps(steps, plant).failingStep + 1);
  for (std::size_t chunk = std::max<std::size_t>(1, steps.size() / 2);; chunk /= 2) {
    bool removed = true;
    while (removed) {
      removed = false;
      for (std::size_t i = 0; i < steps.size();) {
        Steps candidate = steps;
        candidate.erase(
            candidate.begin() + static_cast<std::ptrdiff_t>(i),
            candidate.begin() + static_cast<std::ptrdiff_t>(std::min(i + chunk, steps.size())));
        if (!candidate.empty() && fails(candidate)) {
          steps = std::move(candidate);
          removed = true;
        } else {
          i += chunk;
        }
      }
      if (chunk > 1) break;
    }
    if (chunk == 1) break;
  }
  for (std::size_t s = 0; s < steps.size(); ++s) {
    for (std::size_t line = steps[s].size(); line-- > 1;) {
      Steps candidate = steps;
      candidate[s].erase(candidate[s].begin() + static_cast<std::ptrdiff_t>(line));
      if (fails(candidate)) steps = std::move(candidate);
    }
  }
  return steps;
}

struct Failure {
  unsigned seed = 0;
  std::size_t generated = 0;
  Steps shrunk;
  std::string report;
};

/// Searches `total` random steps from `firstSeed` on; the first failure,
/// shrunk, or nothing.
std::optional<Failure> search(unsigned firstSeed, std::size_t total, Plant const& plant) {
  for (unsigned seed = firstSeed; total > 0; ++seed) {
    std::size_t const count = std::min(total, kStepsPerSeed);
    total -= count;
    Generator generator(seed);
    Steps steps;
    for (std::size_t i = 0; i < count; ++i)
      steps.push_back(generator.next());
    Outcome outcome = runSteps(steps, plant);
    if (outcome.refused) {
      ADD_FAILURE() << "seed " << seed << ": the generator wrote a statement the replay "
                    << "refuses:\n"
                    << outcome.report;
      return std::nullopt;
    }
    if (!outcome.fails) continue;
    Failure failure{seed, steps.size(), shrink(steps, plant), {}};
    failure.report = runSteps(failure.shrunk, plant).report;
    return failure;
  }
  return std::nullopt;
}

std::string scenarioText(Failure const& f) {
  return "# Shrunk from " + std::to_string(f.generated) + " random steps of seed " +
         std::to_string(f.seed) + ".\n" + textOf(f.shrunk);
}

class RandomReplayTest : public ::testing::Test {
 protected:
  void TearDown() override {
    Tessel::rmRoot = nullptr;
    EXPECT_EQ(liveBefore_, Orb::Object::liveObjects()) << "objects left behind";
  }
  long liveBefore_ = Orb::Object::liveObjects();
};

TEST_F(RandomReplayTest, RandomChangeSequencesMatchAFreshReplayWheneverSettled) {
  unsigned const seed = envNumber("REPLAY_SEED", 1);
  std::size_t const total = envNumber("REPLAY_STEPS", 3000);
  auto failure = search(seed, total, nullptr);
  if (!failure) return;
  std::string const file = "random-replay-" + std::to_string(failure->seed) + ".scenario";
  std::ofstream(file) << scenarioText(*failure);
  ADD_FAILURE() << "the check failed; shrunk to " << failure->shrunk.size() << " steps, written to "
                << file << " (reproduce with: policy-replay --check " << file << "):\n"
                << scenarioText(*failure) << "\n"
                << failure->report;
}

TEST_F(RandomReplayTest, PlantedFaultShrinksToASequenceWhoseEveryStepMatters) {
  // An engine that never receives the metric: a sequence shows it only when it
  // sets a metric sent under tag 1 and then has its map resent.
  Plant lostMetric = [](Rib::RecordedCommand const& c) {
    return !(c.name == "setIntValue" && !c.values.empty() && c.values.front().tag == 1);
  };
  auto failure = search(1, 20 * kStepsPerSeed, lostMetric);
  ASSERT_TRUE(failure) << "no random sequence set a metric and resent it";
  std::string const text = scenarioText(*failure);
  ASSERT_LE(2u, failure->shrunk.size()) << text;
  EXPECT_EQ((Step{failure->shrunk[0][0], failure->shrunk[0][1]}), failure->shrunk[0])
      << "the map's line and its metric, nothing else:\n"
      << text;
  EXPECT_EQ(0u, failure->shrunk[0][1].rfind("  set metric ", 0)) << text;
  for (std::size_t i = 0; i < failure->shrunk.size(); ++i) {
    Steps without = failure->shrunk;
    without.erase(without.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_FALSE(runSteps(without, lostMetric).fails) << "step " << i << " is not needed:\n"
                                                      << text;
  }
  // The printed scenario reads back and fails the same way.
  Steps reread;
  for (auto const& s : Scenario::parse(text, "shrunk.scenario").statements)
    reread.push_back({s.text});
  EXPECT_TRUE(runSteps(reread, lostMetric).fails) << text;
}

}  // namespace
