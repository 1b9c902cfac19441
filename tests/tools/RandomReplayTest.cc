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
#include <random>
#include <set>

#include "ReplayInvariants.h"
#include "ScenarioTestSupport.h"
#include "Tessel/CommListUsers.h"
#include "Tessel/Root.h"

namespace {

/// One random change: a route-map, peer-filter or ACL line with its clauses,
/// one top-level statement, or the versions that settle a run. Shrinking
/// removes whole steps before single lines after the first, so a clause never
/// loses its opening line.
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
    // Clauses naming community lists, so that a change of a list used by
    // several clauses is exercised often.
    "set community {add|replace} list {CA|CB|CC}{| CB}",
    "set community delete list {CA|CC}",
    "match {community|extcommunity|large-community} {CA|CB}{| CC}{| exact}",
    "match community-instances {1..2} {3..5}",
};
// Only with the other kinds, so route-map-only runs stay as they were: the
// dynamic prefix-list matches, and the clauses that name the ACLs and prefix
// lists of the other kinds, or that no other group writes.
constexpr char const* kOtherKindsClauses[] = {
    "{match {ip|ipv6} address dynamic prefix-list D{1..2}|no match ip address dynamic prefix-list}",
    "match ip address access-list {A1|A2|B}{| invert}",
    "match {ip next-hop|ip resolved-next-hop} prefix-list {P1|P2}",
    "match {ipv6 next-hop|ipv6 resolved-next-hop} prefix-list {P2|P6}",
    ("match {gateway 192.0.2.{1..2}|ipv6 next-hop 2001:db8::{1..2}|as-path-length {0..2} {2..9}|"
     "isis instance {1..3}}"),
    "match option {{101|102|120} str {x|y}|{108|115|200} int {0..3}|128 str {A|B}}",
    ("no match {community|extcommunity|large-community|community-instances|ip address access-list|"
     "ip next-hop prefix-list|ipv6 next-hop prefix-list|ipv6 address dynamic prefix-list|option "
     "101}"),
    "set community {add |replace |}{1:1|no-export|65536}{| 2:2}",
    "set {community|extcommunity|large-community} none",
    "set community delete {1:2|list {CA|CB}{| CC}}",
    "set {extcommunity|large-community} {add|replace|delete} list {CA|CB}{| CC}",
    "set extcommunity {add|replace|delete} {rt 1:{1..2}|soo 2:2|lbw 1:1000|rt 1:1 soo 2:2}",
    "set large-community {add|replace|delete} 1:2:{1..3}",
    "set link-bandwidth {divide-ratio|2000}",
    ("no set {community delete|extcommunity|large-community|metric-type|origin|isis-level|"
     "as-path replace|as-path prepend last-as|value 19|next-hop peer-address|"
     "ipv6 next-hop unchanged}"),
};

// Community lists: entries of every kind and form, some left at version zero
// and completed later.
constexpr char const* kCommunityEntry =
    "community-list {CA|CB|CC} {5|10|20}@ {permit|deny|action 7} "
    "{standard 1:{1..3}{| 2:2}|extended rt 1:{1..3}|large 1:2:{1..3}|"
    "{standard|extended|large}-regex ^1:.*|type 6 1:2:3}";

class Generator {
 public:
  /// Without `otherKinds`, route maps only.
  Generator(unsigned seed, bool otherKinds)
      : rng_(seed), listRng_(seed ^ 0x9e3779b9u), otherKinds_(otherKinds) {}

  Step next() {
    // Some runs serve another VRF, whose name every engine path carries.
    if (std::exchange(first_, false) && otherKinds_ && below(4) == 0) return {"vrf blue"};
    // With every kind in play something is nearly always pending, so now and
    // then everything is settled at once for the check and the invariants.
    if (otherKinds_ && below(8) == 0) {
      if (Step step = settleStep(); !step.empty()) return step;
    }
    // An input given back soon, as the machinery is frozen while it is away.
    if (!away_.empty() && below(3) == 0) return {"input " + std::exchange(away_, "") + " on"};
    // Prefix lists and ACLs draw from a stream of their own, so that their
    // steps do not shift the others of a seed.
    if (otherKinds_ && std::uniform_int_distribution<int>(0, 3)(listRng_) == 0)
      return withRng(listRng_);
    if (below(4) == 0) return asPathStep();
    if (otherKinds_ && below(4) == 0) return otherKind();
    if (below(4) == 0) return communityStep();
    int const r = below(100);
    if (r < 35 || maps_.empty()) {
      std::string const map = fill("{A|B|C}");
      maps_.insert(map);
      changed_.insert(map);
      Step step{fill("route-map " + map + " {permit|permit|permit|deny} {10|20|30}")};
      for (int n = below(3); n > 0; --n)
        step.push_back("  " + fill(clause()));
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
  /// Prefix lists of both families (with one IPv4 list under an IPv6 list's
  /// engine name) and access lists of every kind.
  Step listStep() {
    int const r = below(100);
    if (r < 30) {
      std::string const family = fill("{ip|ip|ipv6}");
      std::string const list = family + " prefix-list " + fill("{P1|P2|P2|.ipv6.P2}");
      std::string const prefix =
          family == "ip" ? fill("10.{0..3}.0.0/{8..24}") : fill("2001:db8:{0..3}::/{32..64}");
      prefixLists_.insert(list);
      prefixListsChanged_.insert(list);
      return {fill(list + " seq {5|10|15} {permit|permit|deny|action 7} " + prefix +
                   "{|| ge {0..40}}{|| le {0..40}}")};
    }
    if (r < 50 && !prefixListsChanged_.empty()) {
      auto it = std::next(prefixListsChanged_.begin(), below(prefixListsChanged_.size()));
      std::string const list = *it;
      prefixListsChanged_.erase(it);
      return {"version " + list};
    }
    if (r < 58 && !prefixLists_.empty()) {
      std::string const list = *std::next(prefixLists_.begin(), below(prefixLists_.size()));
      prefixListsChanged_.insert(list);
      return {fill("no " + list + " seq {5|10|15}")};
    }
    if (r < 62) {
      std::string const list = fill("{ip|ipv6} prefix-list {P1|P2|.ipv6.P2}");
      prefixLists_.erase(list);
      prefixListsChanged_.erase(list);
      return {"no " + list};
    }
    if (r < 64) {
      std::string const list = fill("{ip|ipv6} prefix-list P3");
      prefixLists_.insert(list);
      return {list};
    }
    if (r < 90) {
      Step step{fill("ip access-list {standard|standard|standard|extended} {A1|A2}")};
      for (int n = 1 + below(2); n > 0; --n) {
        step.push_back(
            fill("  {seq {10|20|30} {permit|permit|deny|action {2|5}} "
                 "{10.{0..3}.0.0/16|any|host 10.0.0.1|10.1.0.0 255.255.0.0}"
                 "{|||| vni {0..3}{| tni {0..2}}}|"
                 "seq {10|20|30} {permit|deny} any|no seq {10|20}|seq 40 missing-rule|"
                 "no current-configuration}"));
      }
      return step;
    }
    if (r < 95) {
      return {fill("{ipv6 access-list|mac access-list|access-list type 9} standard B"),
              "  seq 10 permit any"};
    }
    if (r < 98)
      return {fill("{no ip access-list {A1|A2}|no ip access-list A1|no access-list type ip}")};
    return {fill("no {ipv6 access-list B|mac access-list B|access-list type {9 B|9|ipv6|mac}}")};
  }

  /// The input given back and a version of everything changed, as one step.
  Step settleStep() {
    Step step;
    if (!away_.empty()) step.push_back("input " + std::exchange(away_, "") + " on");
    for (std::string const& map : std::exchange(changed_, {}))
      step.push_back("version " + map);
    for (std::string const& filter : std::exchange(changedFilters_, {}))
      step.push_back("version peer-filter " + filter);
    for (std::string const& list : std::exchange(changedLists_, {}))
      step.push_back("version dynamic-prefix-list " + list);
    for (std::string const& list : std::exchange(prefixListsChanged_, {}))
      step.push_back("version " + list);
    for (std::string const& list : pathLists_)
      step.push_back("version as-path-list " + list);
    return step;
  }

  char const* clause() {
    std::size_t const n = std::size(kClauses) + (otherKinds_ ? std::size(kOtherKindsClauses) : 0);
    std::size_t const i = static_cast<std::size_t>(below(n));
    return i < std::size(kClauses) ? kClauses[i] : kOtherKindsClauses[i - std::size(kClauses)];
  }

  /// Peer filters, dynamic prefix lists and listing in the policy map.
  Step otherKind() {
    int const r = below(100);
    if (r < 20 || (r < 40 && filters_.empty())) {
      std::string const filter = fill("F{1..2}");
      filters_.insert(filter);
      changedFilters_.insert(filter);
      Step step{fill("peer-filter " + filter + " {permit|deny} {10|20}")};
      for (int n = below(3); n > 0; --n)
        step.push_back("  " + fill(clause()));
      return step;
    }
    if (r < 40) {
      std::string filter = *std::next(filters_.begin(), below(filters_.size()));
      if (r < 32) {
        if (!changedFilters_.empty() && below(5)) filter = *changedFilters_.begin();
        changedFilters_.erase(filter);
        return {"version peer-filter " + filter};
      }
      if (r < 37) {
        changedFilters_.insert(filter);
        return {fill("no peer-filter " + filter + " {10|20}")};
      }
      filters_.erase(filter);
      changedFilters_.erase(filter);
      return {"no peer-filter " + filter};
    }
    if (r < 55 || (r < 75 && lists_.empty())) {
      std::string const list = fill("D{1..2}");
      lists_.insert(list);
      changedLists_.insert(list);
      return {
          fill("dynamic-prefix-list " + list + "{| ipv4 P{1..2}}{| ipv6 P6}{| match-map {A|B|C}}")};
    }
    if (r < 75) {
      std::string list = *std::next(lists_.begin(), below(lists_.size()));
      if (r < 70) {
        if (!changedLists_.empty() && below(5)) list = *changedLists_.begin();
        changedLists_.erase(list);
        return {"version dynamic-prefix-list " + list};
      }
      lists_.erase(list);
      changedLists_.erase(list);
      return {"no dynamic-prefix-list " + list};
    }
    return {fill("{list|unlist} {route-map {A|B|C|Z}|dynamic-prefix-list D{1..3}} by n{1..2}")};
  }

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

  Step communityStep() {
    // With the other kinds: a bare list, and versions given outright.
    if (otherKinds_ && below(5) == 0) {
      if (entries_.empty() || below(2)) return {fill("community-list {CA|CB|CC}")};
      std::string const entry = *std::next(entries_.begin(), below(entries_.size()));
      return {fill("community-list-version " + entry + " {5..9}")};
    }
    int const r = below(100);
    if (r < 60 || entries_.empty()) {
      std::string line = fill(kCommunityEntry);
      // Entry 0 of CA1 and entry 10 of CA run together into one set name.
      if (otherKinds_ && below(8) == 0) line.replace(15, line.find('@') - 15, "CA1 0");
      std::size_t const at = line.find('@');
      std::string const entry = line.substr(15, at - 15);
      // Only a new entry may be left incomplete.
      line.replace(at, 1,
                   !entries_.contains(entry) && below(3) == 0 ? " version 0"
                   : otherKinds_ && below(6) == 0             ? fill(" version {1..9}")
                                                              : "");
      entries_.insert(entry);
      return {line};
    }
    std::string const entry = *std::next(entries_.begin(), below(entries_.size()));
    if (r < 75) return {"community-list-version " + entry};
    if (r < 92) {
      entries_.erase(entry);
      return {"no community-list " + entry};
    }
    std::string const list = entry.substr(0, entry.find(' '));
    std::erase_if(entries_, [&](std::string const& e) { return e.starts_with(list + " "); });
    return {"no community-list " + list};
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

  /// A list step, drawn from `rng`.
  Step withRng(std::mt19937& rng) {
    std::swap(rng, rng_);
    Step step = listStep();
    std::swap(rng, rng_);
    return step;
  }

  std::mt19937 rng_;
  std::mt19937 listRng_;
  bool otherKinds_;
  std::set<std::string> maps_;
  std::set<std::string> changed_;  // since their last version
  std::set<std::string> filters_;
  std::set<std::string> changedFilters_;
  std::set<std::string> lists_;
  std::set<std::string> changedLists_;
  std::set<std::string> prefixLists_;         // "ip prefix-list P1"
  std::set<std::string> prefixListsChanged_;  // since their last version
  std::set<std::string> pathLists_;
  std::string away_;
  bool first_ = true;
  std::set<std::string> entries_;  // community-list entries, as "LIST SEQ"
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

/// Raised from a statement's hook when an invariant no longer holds, ending
/// the run there.
struct InvariantBroken {
  std::string report;
};

/// What a search did besides finding nothing: settled states checked, and how
/// often each of the invariants' named exceptions excused an entry.
struct Tally {
  std::size_t checks = 0;
  /// Runs in which the check met each known divergence.
  std::map<std::string, std::size_t> known;
  std::map<std::string_view, std::size_t> excused;
};

/// Runs the steps with the check on a new world whose model sees only what
/// `plant` lets through, asserting the invariants after every settled
/// statement and, once the world is gone, that no object outlived it.
Outcome runSteps(Steps const& steps, Plant const& plant, Tally* tally = nullptr) {
  long const liveBefore = Orb::Object::liveObjects();
  Outcome outcome;
  try {
    auto scenario = Scenario::parse(textOf(steps), "random.scenario");
    Scenario::World::Options options;
    options.vrf = scenario.vrf;
    Scenario::World world(options);
    world.modelFilterIs(plant);
    ReplayInvariants::Watch watch;
    Scenario::RunHooks hooks;
    hooks.before = [&](Scenario::Statement const&) { watch.before(world); };
    hooks.after = [&](Scenario::Statement const& s) {
      watch.after(world, s);
      if (!world.settled()) return;
      if (std::string broken = watch.broken(world); !broken.empty()) {
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
      for (auto const& [name, count] : watch.excused())
        tally->excused[name] += count;
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
constexpr std::size_t kProgressSteps = 30 * kStepsPerSeed;
std::optional<Failure> search(unsigned firstSeed, std::size_t total, Plant const& plant,
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
    Outcome const outcome = runSteps(steps, plant, tally);
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

using RandomReplayTest = ScenarioTestSupport::CheckedWorldTest;

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
  Tally tally;
  auto const failure = search(*seed, *steps, nullptr, true, &tally);
  if (*steps > kDefaultSteps) {
    std::cerr << "random replay: " << tally.checks << " settled states checked" << std::endl;
    for (auto const& [name, runs] : tally.known)
      std::cerr << "random replay: known divergence '" << name << "' in " << runs << " runs"
                << std::endl;
    for (auto const& [name, count] : tally.excused)
      std::cerr << "random replay: '" << name << "' excused " << count << " entries" << std::endl;
  }
  if (!failure) return;
  std::string const file = "random-replay-" + std::to_string(failure->seed) + ".scenario";
  std::ofstream(file) << failure->text;
  ADD_FAILURE() << "the check or an invariant failed; shrunk to " << failure->shrunk.size()
                << " steps, written to " << file << " (policy-replay --check " << file
                << " replays it; only this test asserts the invariants):\n"
                << failure->text << "\n"
                << runSteps(failure->shrunk, nullptr).report;
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
  for (std::string_view form : missing)
    text += "'" + std::string(form) + "'\n";
  EXPECT_TRUE(missing.empty()) << "never written:\n" << text;
}

TEST_F(RandomReplayTest, InvariantsNameWhatIsKeptOnPurposeAndReportWhatIsNot) {
  // The second version of A leaves its first clause recorded, and the peer
  // filter's first clause is never cleaned up: both kept on purpose, by name.
  auto const scenario = Scenario::parse(
      "route-map A permit 10\n"
      "  set community add list CA\n"
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
      "list route-map A by n1\n",
      "t.scenario");
  world.emplace(Scenario::World::Options{});
  ReplayInvariants::Watch watch;
  Scenario::RunHooks hooks;
  hooks.before = [&](Scenario::Statement const&) { watch.before(*world); };
  hooks.after = [&](Scenario::Statement const& s) { watch.after(*world, s); };
  ASSERT_FALSE(Scenario::run(scenario, *world, true, hooks).divergence);
  ASSERT_TRUE(world->settled());
  EXPECT_EQ("", watch.broken(*world));
  std::map<std::string_view, std::size_t> const excused = {
      {ReplayInvariants::kCommunityListUserStale, 1},
      {ReplayInvariants::kPeerFilterClausesKept, 1}};
  EXPECT_EQ(excused, watch.excused());

  // A reason from a sequence that names no sub-route-map, under a map no
  // one lists; and a clause recorded that no version ever recorded.
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
      "the index holds CB: .PEER_FILTER.F1 seq 10 flag 3, which no send of the peer filter "
      "recorded\n"
      "the index holds CB: A seq 20 flag 3, which the library would have removed\n",
      watch.broken(*world));
}

TEST_F(RandomReplayTest, PlantedFaultShrinksToASequenceWhoseEveryStepMatters) {
  // An engine that never receives the metric: a sequence shows it only when it
  // sets a metric sent under tag 1 and then has its map resent.
  Plant lostMetric = [](Rib::RecordedCommand const& c) {
    return !(c.name == "setIntValue" && !c.values.empty() && c.values.front().tag == 1);
  };
  // Route maps only, so the search finds the same short sequence it always has.
  auto const failure = search(1, 20 * kStepsPerSeed, lostMetric, false);
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
