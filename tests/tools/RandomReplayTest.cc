// Seeded random change sequences checked against a fresh replay whenever they
// settle; a failure is shrunk and printed as a scenario for policy-replay.
//
// REPLAY_STEPS sets the number of random steps in total (default 3000) and
// REPLAY_SEED the first seed (default 1); each run of 150 steps takes the next
// seed, so a longer search is `REPLAY_STEPS=100000 test_tools_random`, which
// reports its progress. A value that is not a number fails the test.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iostream>
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

// "{a|b}" stands for one of the alternatives, "{lo..hi}" for a number; groups
// nest.
constexpr char const* kClauses[] = {
    "match {ip address prefix-list {P1|P2}|interface Ethernet{1..2}}{| invert}",
    "match {ipv6 address prefix-list P6|ip next-hop 10.0.0.{1..2}|community C1{| exact}}",
    "match {protocol {1..9}|route-type {1..5}|metric-type type-{1..2}}",
    "match {as-range 100 {100..300}|option {100|105} int {0..3}}",
    "no match {ip address prefix-list|protocol|route-type|interface|option 100}",
    "set metric {-5..100}{| med-type {0|3|5|8}}",
    "set {metric-type type-{1..2}|origin {igp|egp|incomplete}|isis-level {1..3}}",
    "set {next-hop 10.1.0.|ipv6 next-hop 2001:db8::}{1..3}",
    "set {next-hop|ipv6 next-hop} {peer-address|unchanged}",
    "set as-path {prepend 65001 65002|prepend last-as 2|replace 65003}",
    "set value {{3|19|26|35} {-3..50}|{2|25|33} {0..50}}",
    "set link-bandwidth {aggregate|divide-equal|none|1.5}",
    "set {community add 1:1|community delete 1:2|extcommunity rt 1:1|large-community 1:2:3}",
    // One clause over two lines: the parentheses say the joining is meant.
    ("no set {metric|origin|next-hop|ipv6 next-hop|as-path prepend|value 3|link-bandwidth|"
     "community|next-hop unchanged}"),
    "{sub-route-map {A|B|C}|no sub-route-map}",
};

class Generator {
 public:
  explicit Generator(unsigned seed) : rng_(seed) {}

  Step next() {
    // An input given back soon, as the machinery is frozen while it is away.
    if (!away_.empty() && below(3) == 0) return {"input " + std::exchange(away_, "") + " on"};
    if (below(4) == 0) return asPathStep();
    int const r = below(100);
    if (r < 35 || maps_.empty()) {
      std::string const map = fill("{A|B|C}");
      maps_.insert(map);
      changed_.insert(map);
      Step step{fill("route-map " + map + " {permit|permit|permit|deny} {10|20|30}")};
      for (int n = below(3); n > 0; --n)
        step.push_back("  " + fill(kClauses[below(std::size(kClauses))]));
      return step;
    }
    std::string map = *std::next(maps_.begin(), below(maps_.size()));
    if (r < 68) {
      // Mostly a map that waits for its version, so the sequence settles
      // often and the check gets to compare.
      if (!changed_.empty() && below(5)) map = *changed_.begin();
      changed_.erase(map);
      return {"version " + map};
    }
    if (r < 80) return {fill("no route-map " + map + " {10|20|30}")};
    if (r < 85) {
      maps_.erase(map);
      changed_.erase(map);
      return {"no route-map " + map};
    }
    if (r < 95 || !away_.empty()) return {fill("route-map-mode {default|alternate}")};
    away_ = fill(
        "{route-map-config|peer-filter-config|acl-list-config|acl-config|"
        "dynamic-prefix-list-config|policy-map}");
    return {"input " + away_ + " off"};
  }

 private:
  /// An AS-path list entry (with an expression valid under both modes, one,
  /// or none), a version, a removal, or a mode change.
  Step asPathStep() {
    int const r = below(100);
    if (r < 40 || pathLists_.empty()) {
      std::string const list = fill("{P|Q}");
      pathLists_.insert(list);
      return {fill("as-path-list " + list +
                   " {10|20|30} {permit|deny} {_1_|_1_|(?:2)|65000)|(4}"
                   "{|| origin {igp|egp|incomplete|3}}{||| valid {none|0|1|both}}")};
    }
    std::string const list = *std::next(pathLists_.begin(), below(pathLists_.size()));
    if (r < 70) return {"version as-path-list " + list};
    if (r < 80) return {fill("no as-path-list " + list + " {10|20|30}")};
    if (r < 85) {
      pathLists_.erase(list);
      return {"no as-path-list " + list};
    }
    if (r < 88) return {"as-path-list " + list};
    return {fill("as-path-regex-mode {asn|string|0|1|2}")};
  }

  int below(std::size_t n) {
    return std::uniform_int_distribution<int>(0, static_cast<int>(n) - 1)(rng_);
  }

  // Innermost groups first, so an outer group chooses among filled-in text.
  std::string fill(std::string text) {
    for (std::size_t close; (close = text.find('}')) != std::string::npos;) {
      std::size_t const open = text.rfind('{', close);
      text.replace(open, close - open + 1, choose(text.substr(open + 1, close - open - 1)));
    }
    return text;
  }

  std::string choose(std::string_view group) {
    if (std::size_t const dots = group.find(".."); dots != std::string_view::npos) {
      int const lo = std::stoi(std::string(group.substr(0, dots)));
      int const hi = std::stoi(std::string(group.substr(dots + 2)));
      return std::to_string(lo + below(static_cast<std::size_t>(hi - lo + 1)));
    }
    std::vector<std::string_view> options;
    for (std::size_t bar; (bar = group.find('|')) != std::string_view::npos;
         group.remove_prefix(bar + 1))
      options.push_back(group.substr(0, bar));
    options.push_back(group);
    return std::string(options[below(options.size())]);
  }

  std::mt19937 rng_;
  std::set<std::string> maps_;
  std::set<std::string> changed_;  // since their last version
  std::set<std::string> pathLists_;
  std::string away_;
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
  std::string report;  // the divergence, or the refusal when it does not fail
};

/// Runs the steps with the check on a new world whose model sees only what
/// `plant` lets through.
Outcome runSteps(Steps const& steps, Plant const& plant) {
  try {
    auto scenario = Scenario::parse(textOf(steps), "random.scenario");
    Scenario::World world({});
    world.modelFilterIs(plant);
    auto const d = Scenario::run(scenario, world, true).divergence;
    if (!d) return {};
    return {true, "line " + std::to_string(d->line) + ": " + d->statement + "\n" + d->report};
  } catch (Scenario::ScenarioError const& e) {
    return {false, e.what()};
  }
}

/// A shorter failing sequence: ever smaller runs of steps are dropped, down to
/// single steps until none can go, then single clauses, while it still fails.
/// Candidates that no longer run (a version of a map whose creation was
/// dropped) do not count as failing.
Steps shrink(Steps steps, Plant const& plant) {
  auto keepIfFails = [&](Steps&& candidate) {
    bool const fails = !candidate.empty() && runSteps(candidate, plant).fails;
    if (fails) steps = std::move(candidate);
    return fails;
  };
  for (std::size_t chunk = std::max<std::size_t>(1, steps.size() / 2);; chunk = (chunk + 1) / 2) {
    bool dropped = false;
    for (std::size_t i = 0; i < steps.size();) {
      Steps candidate = steps;
      auto const first = candidate.begin() + static_cast<std::ptrdiff_t>(i);
      candidate.erase(first,
                      first + static_cast<std::ptrdiff_t>(std::min(chunk, steps.size() - i)));
      if (keepIfFails(std::move(candidate))) {
        dropped = true;
      } else {
        i += chunk;
      }
    }
    if (chunk == 1 && !dropped) break;
  }
  for (std::size_t s = 0; s < steps.size(); ++s) {
    for (std::size_t line = steps[s].size(); line-- > 1;) {
      Steps candidate = steps;
      candidate[s].erase(candidate[s].begin() + static_cast<std::ptrdiff_t>(line));
      keepIfFails(std::move(candidate));
    }
  }
  return steps;
}

struct Failure {
  unsigned seed;
  Steps shrunk;
  std::string text;  // the shrunk steps as a scenario
};

/// Searches `total` random steps from `firstSeed` on; the first failure,
/// shrunk, or nothing. A search longer than the default run reports its
/// progress on standard error every `kProgressSteps` steps.
constexpr std::size_t kDefaultSteps = 3000;
constexpr std::size_t kProgressSteps = 30 * kStepsPerSeed;
std::optional<Failure> search(unsigned firstSeed, std::size_t total, Plant const& plant) {
  std::size_t const all = total;
  for (unsigned seed = firstSeed; total > 0; ++seed) {
    std::size_t const count = std::min(total, kStepsPerSeed);
    total -= count;
    if (all > kDefaultSteps && ((all - total) % kProgressSteps == 0 || total == 0)) {
      std::cerr << "random replay: " << all - total << " of " << all << " steps, seed " << seed
                << std::endl;
    }
    Generator generator(seed);
    Steps steps;
    for (std::size_t i = 0; i < count; ++i)
      steps.push_back(generator.next());
    Outcome const outcome = runSteps(steps, plant);
    if (!outcome.fails && !outcome.report.empty()) {
      ADD_FAILURE() << "seed " << seed << ": the generator wrote a statement the replay refuses:\n"
                    << outcome.report;
      return std::nullopt;
    }
    if (!outcome.fails) continue;
    Steps shrunk = shrink(steps, plant);
    std::string text = "# Shrunk from " + std::to_string(count) + " random steps of seed " +
                       std::to_string(seed) + ".\n" + textOf(shrunk);
    return Failure{seed, std::move(shrunk), std::move(text)};
  }
  return std::nullopt;
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
  auto env = [](char const* name, unsigned fallback) -> std::optional<unsigned> {
    char const* text = std::getenv(name);
    if (!text || !*text) return fallback;
    unsigned v = 0;
    std::string_view const s = text;
    auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec == std::errc() && end == s.data() + s.size()) return v;
    ADD_FAILURE() << name << " must be a number from 0 to " << UINT_MAX << ", not '"
                  << Scenario::printable(s) << "'";
    return std::nullopt;
  };
  auto const seed = env("REPLAY_SEED", 1);
  auto const steps = env("REPLAY_STEPS", kDefaultSteps);
  if (!seed || !steps) return;
  auto const failure = search(*seed, *steps, nullptr);
  if (!failure) return;
  std::string const file = "random-replay-" + std::to_string(failure->seed) + ".scenario";
  std::ofstream(file) << failure->text;
  ADD_FAILURE() << "the check failed; shrunk to " << failure->shrunk.size() << " steps, written to "
                << file << " (reproduce with: policy-replay --check " << file << "):\n"
                << failure->text << "\n"
                << runSteps(failure->shrunk, nullptr).report;
}

TEST_F(RandomReplayTest, PlantedFaultShrinksToASequenceWhoseEveryStepMatters) {
  // An engine that never receives the metric: a sequence shows it only when it
  // sets a metric sent under tag 1 and then has its map resent.
  Plant lostMetric = [](Rib::RecordedCommand const& c) {
    return !(c.name == "setIntValue" && !c.values.empty() && c.values.front().tag == 1);
  };
  auto const failure = search(1, 20 * kStepsPerSeed, lostMetric);
  ASSERT_TRUE(failure) << "no random sequence set a metric and resent it";
  Steps const& shrunk = failure->shrunk;
  ASSERT_LE(2u, shrunk.size()) << failure->text;
  ASSERT_EQ(2u, shrunk[0].size()) << "the map's line and its metric, nothing else:\n"
                                  << failure->text;
  EXPECT_EQ(0u, shrunk[0][1].rfind("  set metric ", 0)) << failure->text;
  for (std::size_t i = 0; i < shrunk.size(); ++i) {
    Steps without = shrunk;
    without.erase(without.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_FALSE(runSteps(without, lostMetric).fails) << "step " << i << " is not needed:\n"
                                                      << failure->text;
  }
  // The printed scenario reads back and fails the same way.
  Steps reread;
  for (auto const& s : Scenario::parse(failure->text, "shrunk.scenario").statements)
    reread.push_back({s.text});
  EXPECT_EQ(runSteps(reread, lostMetric).report, runSteps(shrunk, lostMetric).report)
      << failure->text;
}

}  // namespace
