// Seeded random change sequences of every configuration kind, checked against
// a fresh replay and the invariants of ReplayInvariants.h whenever they
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
#include <map>
#include <optional>
#include <set>

#include "RandomScenario.h"
#include "ReplayInvariants.h"
#include "ScenarioTestSupport.h"
#include "Tessel/CommListUsers.h"
#include "Tessel/Root.h"

namespace {

using Step = Scenario::RandomStep;
using Steps = Scenario::RandomSteps;
using Plant = std::function<bool(Rib::RecordedCommand const&)>;

/// How a run is made: a fault planted in the model's feed (none when null),
/// and whether the world reconciles before every check.
struct Mode {
  Plant plant;
  bool reconcile = false;
};
using Generator = Scenario::RandomGenerator;
using Scenario::textOf;

constexpr std::size_t kStepsPerSeed = 150;

struct Outcome {
  bool fails = false;
  std::string report;  // the divergence, or the refusal when it does not fail
};

/// Raised from a statement's hook when an invariant no longer holds, ending
/// the run there.
struct InvariantBroken {
  std::string report;
};

/// What a search did besides finding nothing: settled states checked, and the
/// runs in which the check met each known divergence.
struct Tally {
  std::size_t checks = 0;
  std::map<std::string, std::size_t> known;
};

/// Runs the steps with the check on a new world whose model sees only what
/// `plant` lets through, asserting the invariants after every settled
/// statement and, once the world is gone, that no object outlived it.
Outcome runSteps(Steps const& steps, Mode const& mode, Tally* tally = nullptr) {
  long const liveBefore = Orb::Object::liveObjects();
  Outcome outcome;
  try {
    auto scenario = Scenario::parse(textOf(steps), "random.scenario");
    Scenario::World::Options options;
    options.vrf = scenario.vrf;
    options.reconcile = mode.reconcile;
    Scenario::World world(options);
    world.modelFilterIs(mode.plant);
    Scenario::RunHooks hooks;
    hooks.after = [&](Scenario::Statement const& s) {
      if (!world.settled()) return;
      if (std::string broken = ReplayInvariants::broken(world); !broken.empty()) {
        throw InvariantBroken{"line " + std::to_string(s.line) + ": " + s.text +
                              "\ninvariants broken:\n" + broken};
      }
    };
    auto const result = Scenario::run(scenario, world, true, hooks);
    auto const& d = result.divergence;
    if (d)
      outcome = {true, "line " + std::to_string(d->line) + ": " + d->statement + "\n" + d->report};
    if (tally) {
      tally->checks += result.checks;
      std::set<std::string> known;
      for (std::string const& note : result.notes) {
        std::size_t const at = note.find("known divergence '") + 18;
        known.insert(note.substr(at, note.find('\'', at) - at));
      }
      for (std::string const& name : known)
        ++tally->known[name];
    }
  } catch (InvariantBroken const& b) {
    outcome = {true, b.report};
  } catch (Scenario::ScenarioError const& e) {
    return {false, e.what()};
  }
  if (long const live = Orb::Object::liveObjects(); live != liveBefore && !outcome.fails) {
    outcome = {true, std::to_string(live - liveBefore) + " objects outlived the root"};
  }
  return outcome;
}

/// A shorter failing sequence: ever smaller runs of steps are dropped, down to
/// single steps until none can go, then single clauses, while it still fails.
/// Candidates that no longer run (a version of a map whose creation was
/// dropped) do not count as failing.
Steps shrink(Steps steps, Mode const& mode) {
  auto keepIfFails = [&](Steps&& candidate) {
    bool const fails = !candidate.empty() && runSteps(candidate, mode).fails;
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
  // Steps that only run together (a list and its version, say) go in pairs;
  // what is left by now is short, so trying every pair is cheap.
  for (bool dropped = true; dropped;) {
    dropped = false;
    for (std::size_t i = 0; i < steps.size() && !dropped; ++i) {
      for (std::size_t j = i + 1; j < steps.size() && !dropped; ++j) {
        Steps candidate = steps;
        candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(j));
        candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(i));
        dropped = keepIfFails(std::move(candidate));
      }
    }
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
constexpr std::size_t kDefaultReconcileSteps = 1500;
constexpr std::size_t kProgressSteps = 30 * kStepsPerSeed;
std::optional<Failure> search(unsigned firstSeed, std::size_t total, Mode const& mode,
                              bool otherKinds = true, Tally* tally = nullptr) {
  std::size_t const all = total;
  for (unsigned seed = firstSeed; total > 0; ++seed) {
    std::size_t const count = std::min(total, kStepsPerSeed);
    total -= count;
    if (all > kDefaultSteps && ((all - total) % kProgressSteps == 0 || total == 0)) {
      std::cerr << "random replay: " << all - total << " of " << all << " steps, seed " << seed
                << std::endl;
    }
    Generator generator(seed, otherKinds);
    Steps steps;
    for (std::size_t i = 0; i < count; ++i)
      steps.push_back(generator.next());
    Outcome const outcome = runSteps(steps, mode, tally);
    if (!outcome.fails && !outcome.report.empty()) {
      ADD_FAILURE() << "seed " << seed << ": the generator wrote a statement the replay refuses:\n"
                    << outcome.report;
      return std::nullopt;
    }
    if (!outcome.fails) continue;
    Steps shrunk = shrink(steps, mode);
    std::string text = "# Shrunk from " + std::to_string(count) + " random steps of seed " +
                       std::to_string(seed) + ".\n" + textOf(shrunk);
    return Failure{seed, std::move(shrunk), std::move(text)};
  }
  return std::nullopt;
}

using RandomReplayTest = ScenarioTestSupport::CheckedWorldTest;

/// The search the environment asks for: `STEPS` (default `steps`) random
/// steps from `SEED` on, reported when longer than the default.
void searchAsAsked(char const* stepsVar, std::size_t steps, Mode const& mode) {
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
  auto const total = env(stepsVar, static_cast<unsigned>(steps));
  if (!seed || !total) return;
  Tally tally;
  auto const failure = search(*seed, *total, mode, true, &tally);
  if (*total > kDefaultSteps) {
    std::cerr << "random replay: " << tally.checks << " settled states checked" << std::endl;
    for (auto const& [name, runs] : tally.known)
      std::cerr << "random replay: known divergence '" << name << "' in " << runs << " runs"
                << std::endl;
  }
  if (!failure) return;
  std::string const file = "random-replay-" + std::to_string(failure->seed) + ".scenario";
  std::ofstream(file) << failure->text;
  ADD_FAILURE() << "the check or an invariant failed; shrunk to " << failure->shrunk.size()
                << " steps, written to " << file << " (policy-replay --check"
                << (mode.reconcile ? " --reconcile " : " ") << file
                << " replays it; only this test asserts the invariants):\n"
                << failure->text << "\n"
                << runSteps(failure->shrunk, mode).report;
}

TEST_F(RandomReplayTest, RandomChangeSequencesMatchAFreshReplayWheneverSettled) {
  searchAsAsked("REPLAY_STEPS", kDefaultSteps, {});
}

// With a reconcile before every check, nothing but the name collisions no
// repair undoes may differ from a fresh start.
TEST_F(RandomReplayTest, RandomChangeSequencesMatchAFreshStartAfterEveryRepair) {
  searchAsAsked("REPLAY_RECONCILE_STEPS", kDefaultReconcileSteps, {nullptr, true});
}

TEST_F(RandomReplayTest, GeneratorWritesEveryStatementAndClauseOfTheLanguage) {
  // The beginnings of every statement and clause, and the words that make a
  // form of its own within one; 15,000 steps must write each of them.
  constexpr std::string_view kForms[] = {
      "vrf ",
      "route-map ",
      "no route-map ",
      "version ",
      "route-map-mode ",
      "input ",
      "replace ",
      "root ",
      "peer-filter ",
      "no peer-filter ",
      "version peer-filter ",
      "dynamic-prefix-list ",
      "no dynamic-prefix-list ",
      "version dynamic-prefix-list ",
      "list route-map ",
      "list dynamic-prefix-list ",
      "unlist route-map ",
      "unlist dynamic-prefix-list ",
      "ip prefix-list ",
      "ipv6 prefix-list ",
      "no ip prefix-list ",
      "no ipv6 prefix-list ",
      "version ip prefix-list ",
      "version ipv6 prefix-list ",
      "ip access-list standard ",
      "ip access-list extended ",
      "ipv6 access-list ",
      "mac access-list ",
      "access-list type ",
      "no ip access-list ",
      "no ipv6 access-list ",
      "no mac access-list ",
      "no access-list type ",
      "as-path-list ",
      "no as-path-list ",
      "version as-path-list ",
      "as-path-regex-mode ",
      "community-list ",
      "community-list-version ",
      "no community-list ",
      // Clauses of route maps and peer filters.
      "  match ip address access-list ",
      "  match ip address prefix-list ",
      "  match ipv6 address prefix-list ",
      "  match ip address dynamic prefix-list ",
      "  match ipv6 address dynamic prefix-list ",
      "  match ip next-hop 1",
      "  match ipv6 next-hop 2",
      "  match ip next-hop prefix-list ",
      "  match ipv6 next-hop prefix-list ",
      "  match ip resolved-next-hop prefix-list ",
      "  match ipv6 resolved-next-hop prefix-list ",
      "  match gateway ",
      "  match interface ",
      "  match protocol ",
      "  match metric-type ",
      "  match route-type ",
      "  match as-range ",
      "  match as-path-length ",
      "  match isis instance ",
      "  match community C",
      "  match extcommunity ",
      "  match large-community ",
      "  match community-instances ",
      "  match option ",
      "  no match ",
      "  set metric ",
      "  set metric-type ",
      "  set origin ",
      "  set isis-level ",
      "  set next-hop 1",
      "  set ipv6 next-hop 2",
      "  set next-hop peer-address",
      "  set ipv6 next-hop peer-address",
      "  set next-hop unchanged",
      "  set ipv6 next-hop unchanged",
      "  set as-path prepend 6",
      "  set as-path prepend last-as ",
      "  set as-path replace ",
      "  set value ",
      "  set community add ",
      "  set community replace ",
      "  set community delete ",
      "  set community none",
      "  set community 1",
      "  set community add list ",
      "  set community delete list ",
      "  set extcommunity add list ",
      "  set large-community delete list ",
      "  set extcommunity rt",
      "  set extcommunity delete ",
      "  set large-community 1",
      "  set link-bandwidth ",
      "  no set ",
      "  sub-route-map ",
      "  no sub-route-map",
      // Clauses of access lists.
      "  seq ",
      "  no seq ",
      "  no current-configuration",
  };
  // Forms inside a line.
  constexpr std::string_view kWithin[] = {
      " version 0 ",
      " action ",
      " vni ",
      " tni ",
      " valid ",
      " origin ",
      "-regex ",
      " type 6 ",
      " le ",
      " ge ",
      " invert",
      " exact",
      " missing-rule",
      " ipv4 ",
      " ipv6 P6",
      " match-map ",
      "input policy-map off",
      "input route-map-config off",
      "input acl-config off",
      "replace policy-map",
      "replace route-map-config",
      "replace acl-list-config",
  };
  std::set<std::string_view> missing(std::begin(kForms), std::end(kForms));
  missing.insert(std::begin(kWithin), std::end(kWithin));
  for (unsigned seed = 1; seed <= 100; ++seed) {
    Generator generator(seed, true);
    for (std::size_t i = 0; i < kStepsPerSeed; ++i) {
      for (std::string const& line : generator.next()) {
        std::erase_if(missing, [&](std::string_view form) {
          bool const within =
              std::find(std::begin(kWithin), std::end(kWithin), form) != std::end(kWithin);
          return within ? line.find(form) != std::string::npos : line.starts_with(form);
        });
      }
    }
  }
  std::string text;
  for (std::string_view form : missing) {
    // Appended piece by piece: GCC 12 warns falsely on "literal" + string&&.
    text += '\'';
    text += form;
    text += "'\n";
  }
  EXPECT_TRUE(missing.empty()) << "never written:\n" << text;
}

TEST_F(RandomReplayTest, InvariantsHoldExactlyAndReportWhatIsNotOwned) {
  // A clause turned off at a later version, and one of a peer filter, are
  // forgotten; a removed map's and a removed filter's clauses go with them.
  auto const scenario = Scenario::parse(
      "route-map A permit 10\n"
      "  set community add list CA\n"
      "version A\n"
      "version A\n"
      "route-map A permit 10\n"
      "  no set community\n"
      "version A\n"
      "peer-filter F1 permit 10\n"
      "  set community delete list CA\n"
      "version peer-filter F1\n"
      "peer-filter F1 permit 10\n"
      "  no set community delete\n"
      "version peer-filter F1\n"
      "route-map B permit 10\n"
      "  set community add list CB\n"
      "version B\n"
      "peer-filter F2 permit 10\n"
      "  set community add list CB\n"
      "version peer-filter F2\n"
      "no route-map B\n"
      "no peer-filter F2\n"
      "list route-map A by n1\n",
      "t.scenario");
  world.emplace(Scenario::World::Options{});
  ASSERT_FALSE(Scenario::run(scenario, *world, true).divergence);
  ASSERT_TRUE(world->settled());
  EXPECT_EQ("", ReplayInvariants::broken(*world));
  EXPECT_TRUE(Tessel::rmRoot->commListUsers()->commListUser().empty());

  // A reason from a sequence that names no sub-route-map, under a map no
  // one lists; and clauses recorded that the configuration does not have.
  world->live().policyMap->routeMapIs("Z")->reasonIs({RoutingPolicyMap::pluginTypeRouting,
                                                      RoutingPolicyMap::cliModeRouteMap,
                                                      "sub-route-map", "A seqNo 10"});
  world->live().policyMap->routeMapIs("Y")->reasonIs(
      {RoutingPolicyMap::pluginTypeNone, RoutingPolicyMap::cliModeNone, "", "n2"});
  auto const set = Routing::RouteMap::CommunitySet::create({Acl::commSetAdd_, true, {"CB"}, {}});
  Tessel::rmRoot->commListUsers()->commListUserIs("CB")->commSetClauseIs(
      {Tessel::MapEntryCommSetClause("A", 20, Acl::commSetAdd_), set});
  Tessel::rmRoot->commListUsers()->commListUserIs("CB")->commSetClauseIs(
      {Tessel::MapEntryCommSetClause(".PEER_FILTER.F1", 10, Acl::commSetAdd_), set});
  EXPECT_EQ(
      "routeMap \"Y\" plugin=0 mode=0 cli=\"\" key=\"n2\": nothing that is still there put "
      "this reason there\n"
      "routeMap \"Z\" plugin=1 mode=6 cli=\"sub-route-map\" key=\"A seqNo 10\": nothing that "
      "is still there put this reason there\n"
      "the index holds CB: .PEER_FILTER.F1 seq 10 flag 3, which the configuration does not have\n"
      "the index holds CB: A seq 20 flag 3, which the configuration does not have\n",
      ReplayInvariants::broken(*world));
}

// Found by a long run: a policy map replaced while a dynamic prefix list's
// match map waits for its version. The copy holds what the agent listed;
// had it kept the library's reason for the old match map, nothing would
// ever withdraw it.
TEST_F(RandomReplayTest, ReplacedPolicyMapKeepsNoReasonTheLibraryNoLongerHas) {
  auto const scenario = Scenario::parse(
      "list dynamic-prefix-list D2 by n1\n"
      "dynamic-prefix-list D2 ipv6 P6 match-map C\n"
      "version dynamic-prefix-list D2\n"
      "dynamic-prefix-list D2 ipv4 P1\n"
      "replace policy-map\n",
      "t.scenario");
  world.emplace(Scenario::World::Options{});
  ASSERT_FALSE(Scenario::run(scenario, *world, true).divergence);
  EXPECT_EQ("", ReplayInvariants::broken(*world));
  EXPECT_EQ(nullptr, world->live().policyMap->routeMap("C"));
}

TEST_F(RandomReplayTest, PlantedFaultShrinksToASequenceWhoseEveryStepMatters) {
  // An engine that never receives the metric: a sequence shows it only when it
  // sets a metric sent under tag 1 and then has its map resent.
  Plant lostMetric = [](Rib::RecordedCommand const& c) {
    return !(c.name == "setIntValue" && !c.values.empty() && c.values.front().tag == 1);
  };
  // Route maps only, so the search finds the same short sequence it always has.
  auto const failure = search(1, 20 * kStepsPerSeed, {lostMetric}, false);
  ASSERT_TRUE(failure) << "no random sequence set a metric and resent it";
  Steps const& shrunk = failure->shrunk;
  ASSERT_LE(2u, shrunk.size()) << failure->text;
  ASSERT_EQ(2u, shrunk[0].size()) << "the map's line and its metric, nothing else:\n"
                                  << failure->text;
  EXPECT_EQ(0u, shrunk[0][1].rfind("  set metric ", 0)) << failure->text;
  for (std::size_t i = 0; i < shrunk.size(); ++i) {
    Steps without = shrunk;
    without.erase(without.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_FALSE(runSteps(without, {lostMetric}).fails) << "step " << i << " is not needed:\n"
                                                        << failure->text;
  }
  // The printed scenario reads back and fails the same way.
  Steps reread;
  for (auto const& s : Scenario::parse(failure->text, "shrunk.scenario").statements)
    reread.push_back({s.text});
  EXPECT_EQ(runSteps(reread, {lostMetric}).report, runSteps(shrunk, {lostMetric}).report)
      << failure->text;
}

}  // namespace
