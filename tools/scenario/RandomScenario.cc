// The random scenario generator: clause tables filled in from a seeded
// stream, and the per-kind step groups that keep track of what is pending.
#include "RandomScenario.h"

#include <iterator>
#include <random>
#include <set>
#include <string_view>
#include <utility>

namespace Scenario {

namespace {

using Step = RandomStep;

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

}  // namespace

class RandomGenerator::Impl {
 public:
  Impl(unsigned seed, bool otherKinds)
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
        step.push_back(std::string("  ").append(fill(clause())));
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

  /// Peer filters, dynamic prefix lists, listing in the policy map, and now
  /// and then a machine built anew.
  Step otherKind() {
    int const r = below(100);
    if (r >= 93) return lifecycleStep();
    if (r < 20 || (r < 40 && filters_.empty())) {
      std::string const filter = fill("F{1..2}");
      filters_.insert(filter);
      changedFilters_.insert(filter);
      Step step{fill("peer-filter " + filter + " {permit|deny} {10|20}")};
      for (int n = below(3); n > 0; --n)
        step.push_back(std::string("  ").append(fill(clause())));
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

  /// The per-VRF machine built anew while the configuration stays: an input
  /// replaced by a fresh copy of itself, the VRF renamed, a later root. A
  /// rename reaches a running machine only with the next input change, and
  /// the library aborts on a command built meanwhile, so one comes with it.
  Step lifecycleStep() {
    int const r = below(100);
    std::string const input = fill(
        "replace {route-map-config|peer-filter-config|acl-list-config|acl-config|"
        "dynamic-prefix-list-config|policy-map}");
    if (r < 50) return {input};
    if (r < 80) {
      Step step{fill("vrf {blue|red|default}")};
      if (away_.empty()) step.push_back(below(2) ? input : fill("root R{1..2}"));
      return step;
    }
    return {fill("root R{1..3}")};
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

RandomGenerator::RandomGenerator(unsigned seed, bool otherKinds)
    : impl_(std::make_unique<Impl>(seed, otherKinds)) {}

RandomGenerator::~RandomGenerator() = default;

RandomStep RandomGenerator::next() {
  return impl_->next();
}

std::string textOf(RandomSteps const& steps) {
  std::string out;
  for (RandomStep const& step : steps) {
    for (std::string const& line : step)
      out += line + "\n";
  }
  return out;
}

}  // namespace Scenario
