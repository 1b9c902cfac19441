// Fresh replays of the shadow configuration, the comparison with the engine
// state built change by change, and the run loop that checks after every
// settled statement.
#include "Check.h"

#include "CheckCommunity.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "Rib/CommandText.h"
#include "ScenarioRecords.h"
#include "Tessel/FreshStart.h"

namespace Scenario {

namespace {

using Kind = Rib::PathElement::Kind;

bool staleMapCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                    World const& world) {
  // A route map is [512 576="NAME"]; its sequences and clauses lie below.
  if (!incremental || path.size() < 2) return false;
  if (path[0].kind != Kind::pathId || path[0].tag != 512) return false;
  if (path[1].kind != Kind::stringKey || path[1].tag != 576) return false;
  return world.removedWhileAway(ObjectKind::routeMap).contains(Orb::Name(path[1].text));
}

/// The configured name of a prefix-list node [512 603 515="ID"] below or at
/// `path`, with its kind, or false when the path is no prefix-list node.
bool prefixListOf(std::vector<Rib::PathElement> const& path, Orb::Name& name, ObjectKind& kind) {
  if (path.size() < 3 || path[0].kind != Kind::pathId || path[0].tag != 512) return false;
  if (path[1].kind != Kind::pathId || path[1].tag != 603) return false;
  if (path[2].kind != Kind::stringKey || path[2].tag != 515) return false;
  std::string_view id = path[2].text.view();
  kind = id.starts_with(".ipv6.") ? ObjectKind::ipv6PrefixList : ObjectKind::ipv4PrefixList;
  name = Orb::Name(kind == ObjectKind::ipv6PrefixList ? id.substr(6) : id);
  return true;
}

bool stalePrefixListCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                           World const& world) {
  Orb::Name name;
  ObjectKind kind;
  if (!incremental || !prefixListOf(path, name, kind)) return false;
  return world.removedWhileAway(kind).contains(name);
}

bool unsentEntryRemovalCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                              World const& world) {
  Orb::Name name;
  ObjectKind kind;
  if (!incremental || path.size() != 4 || !prefixListOf(path, name, kind)) return false;
  if (path[3].kind != Kind::u32Key || path[3].tag != 516) return false;
  return listRecords(world.shadow())
      .strandedEntryRemovals.contains({path[2].text.str(), path[3].number});
}

bool sharedPrefixListIdCovers(std::vector<Rib::PathElement> const& path, bool, World const& world) {
  // An IPv4 list named ".ipv6.X" and the IPv6 list X are one engine node:
  // whichever goes takes the other's entries with it.
  Orb::Name name;
  ObjectKind kind;
  if (!prefixListOf(path, name, kind) || kind != ObjectKind::ipv6PrefixList) return false;
  return listRecords(world.shadow()).ipv4ListsWithIpv6Id.contains(Orb::Name(path[2].text));
}

bool staleAclCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                    World const& world) {
  // A standard ACL is [512 602 517="NAME"]; its entries lie below.
  if (!incremental || path.size() < 3) return false;
  if (path[0].kind != Kind::pathId || path[0].tag != 512) return false;
  if (path[1].kind != Kind::pathId || path[1].tag != 602) return false;
  if (path[2].kind != Kind::stringKey || path[2].tag != 517) return false;
  Orb::Name const name(path[2].text);
  Inputs const& shadow = world.shadow();
  if (world.removedWhileAway(ObjectKind::acl).contains(name)) return true;
  auto ip = shadow.aclConfig->aclTypeConfig(Acl::aclTypeIp);
  if (!ip) return true;
  auto acl = ip->acl(name);
  if (!acl) return listRecords(shadow).abandonedAcls.contains(name);
  return !acl->standard() || !acl->currCfg();
}

bool staleFilterCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                       World const& world) {
  // A peer filter is the route map [512 576=".PEER_FILTER.NAME"].
  std::string_view const prefix = ".PEER_FILTER.";
  if (!incremental || path.size() < 2) return false;
  if (path[0].kind != Kind::pathId || path[0].tag != 512) return false;
  if (path[1].kind != Kind::stringKey || path[1].tag != 576) return false;
  std::string_view const name = path[1].text.view();
  return name.starts_with(prefix) &&
         world.removedWhileAway(ObjectKind::peerFilter)
             .contains(Orb::Name(std::string(name.substr(prefix.size()))));
}

// Policies kept listed by a loop of references: a route map on a cycle of
// sub-route-maps, dynamic prefix lists and match maps registers the next
// one, which in the end registers it again, so unlisting it from outside
// leaves the loop, and all it refers to, listed. A fresh root never starts
// such a loop. Keyed "r:NAME" for route maps, "d:NAME" for dynamic prefix
// lists.
std::set<std::string> loopKept(Inputs const& in) {
  std::map<std::string, std::vector<std::string>> next;
  for (auto const& [name, map] : in.routeMapConfig->routeMap()) {
    auto& out = next["r:" + name.str()];
    for (auto const& kv : map->mapEntry()) {
      if (!kv.second->subRouteMap().empty()) out.push_back("r:" + kv.second->subRouteMap().str());
      for (auto option : {Routing::RouteMap::matchDynamicPrefixList,
                          Routing::RouteMap::matchIpv6DynamicPrefixList}) {
        if (auto const* rule = kv.second->matchRule(option))
          out.push_back("d:" + rule->strValue.str());
      }
    }
  }
  for (auto const& [name, list] : in.dynPfxListConfig->dynamicPrefixList()) {
    if (!list->matchMap().empty()) next["d:" + name.str()].push_back("r:" + list->matchMap().str());
  }
  auto reach = [&](std::string const& from) {
    std::set<std::string> seen;
    std::vector<std::string> todo = next[from];
    while (!todo.empty()) {
      std::string n = todo.back();
      todo.pop_back();
      if (!seen.insert(n).second) continue;
      for (auto const& m : next[n])
        todo.push_back(m);
    }
    return seen;
  };
  std::set<std::string> kept;
  std::vector<std::string> nodes;
  for (auto const& kv : next)
    nodes.push_back(kv.first);
  for (auto const& n : nodes) {
    auto r = reach(n);
    if (r.contains(n)) kept.insert(r.begin(), r.end());
  }
  return kept;
}

bool loopKeptPolicy(std::string const& line, bool incremental, World const& world) {
  // TYPE "NAME" ...
  auto const open = line.find('"');
  auto const close = line.find('"', open + 1);
  if (!incremental || open == std::string::npos || close == std::string::npos) return false;
  std::string const type = line.substr(0, open - 1);
  std::string const name = line.substr(open + 1, close - open - 1);
  std::string const key = (type == "routeMap" ? "r:" : type == "dynamicPrefixList" ? "d:" : "?:");
  return loopKept(world.live()).contains(key + name);
}

// A dynamic prefix list is [512 627 628="NAME"].
std::optional<std::string> dynamicPrefixListOf(std::vector<Rib::PathElement> const& path) {
  if (path.size() < 3 || path[0].kind != Kind::pathId || path[0].tag != 512) return std::nullopt;
  if (path[1].kind != Kind::pathId || path[1].tag != 627) return std::nullopt;
  if (path[2].kind != Kind::stringKey || path[2].tag != 628) return std::nullopt;
  return path[2].text.str();
}

bool loopKeptList(std::vector<Rib::PathElement> const& path, bool incremental, World const& world) {
  auto name = dynamicPrefixListOf(path);
  return incremental && name && loopKept(world.live()).contains("d:" + *name);
}

bool clearedListName(std::vector<Rib::PathElement> const& path, bool, World const& world) {
  auto name = dynamicPrefixListOf(path);
  if (!name) return false;
  auto list = world.live().dynPfxListConfig->dynamicPrefixList(Orb::Name(*name));
  return list && (list->ipv4PrefixList().empty() || list->ipv6PrefixList().empty());
}

/// The AS-path list a node belongs to: [512 534 535="/policy/asplist NAME"]
/// with entries [536 537=...] below; null for any other node. `entry` asks
/// for an entry node.
std::optional<Orb::Name> asPathListOf(std::vector<Rib::PathElement> const& path, bool entry) {
  static constexpr std::string_view prefix = "/policy/asplist ";
  if (path.size() < (entry ? 5u : 3u)) return std::nullopt;
  if (path[0].kind != Kind::pathId || path[0].tag != 512) return std::nullopt;
  if (path[1].kind != Kind::pathId || path[1].tag != 534) return std::nullopt;
  if (path[2].kind != Kind::stringKey || path[2].tag != 535) return std::nullopt;
  if (entry && (path[3].kind != Kind::pathId || path[3].tag != 536)) return std::nullopt;
  std::string_view key = path[2].text.view();
  if (!key.starts_with(prefix)) return std::nullopt;
  return Orb::Name(std::string(key.substr(prefix.size())));
}

bool correctedEntryCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                          World const& world) {
  // The fresh root sends the entries that the live one keeps out.
  if (incremental || !world.asPathHoldBack()) return false;
  auto name = asPathListOf(path, true);
  return name && world.asPathHoldBack()->correctedInPlace(*name);
}

bool staleAsPathListCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                           World const& world) {
  if (!incremental || !world.asPathHoldBack()) return false;
  auto name = asPathListOf(path, false);
  return name && world.asPathHoldBack()->stale(*name);
}

// Each kind's deliberate divergences, by name: a kind that differs on purpose
// adds its entries (and their `covers` functions above) here, after the ones
// already listed, so that notes keep their order.
KnownDivergence const kKnown[] = {
    // Route maps.
    {"route-map-removed-while-away",
     "a route map removed while an input was taken away stays in the engine: the new reactor "
     "only sends the maps that are there",
     staleMapCovers},
    // Prefix lists.
    {"prefix-list-removed-while-away",
     "a prefix list removed while an input was taken away stays in the engine: the new reactor "
     "only sends the lists that are there",
     stalePrefixListCovers},
    {"prefix-list-entry-removed-while-away",
     "a prefix-list entry removed while an input was taken away stays in the engine: the new "
     "reactor adds the entries that are there and deletes none",
     unsentEntryRemovalCovers},
    {"prefix-list-shares-ipv6-engine-name",
     "an IPv4 prefix list named \".ipv6.X\" is the engine node of the IPv6 list X: removing "
     "either removes both",
     sharedPrefixListIdCovers, nullptr, false},
    // Standard IP ACLs.
    {"acl-left-when-not-sent",
     "a standard ACL stays in the engine when it stops being sent without being removed: made "
     "extended, left without a current configuration, its IP type configuration removed, or "
     "removed while an input was taken away",
     staleAclCovers},
    // AS-path lists.
    {"as-path-entry-corrected-in-place",
     "an AS-path list withdrawn by an invalid entry stays withdrawn when that entry is made "
     "valid in place, until the entry is removed or the mode changes; a fresh root sends it",
     correctedEntryCovers},
    {"as-path-list-removed-while-away",
     "an AS-path list removed while an input was taken away stays in the engine, with its "
     "entries, until it is removed again with the reactor there or the mode changes while it "
     "is configured: the new reactor only clears the lists that are configured",
     staleAsPathListCovers},
    // Peer filters.
    {"peer-filter-removed-while-away",
     "a peer filter removed while an input was taken away stays in the engine: the new reactor "
     "only sends the filters that are there",
     staleFilterCovers},
    // Policy-map references and dynamic prefix lists.
    {"references-kept-by-a-loop",
     "route maps and dynamic prefix lists on a loop of references register each other, so the "
     "loop and all it refers to stay listed, and sent, after whatever listed it lets go",
     loopKeptList, loopKeptPolicy},
    {"dynamic-prefix-list-keeps-a-cleared-name",
     "a dynamic prefix list is resent without removing it first, so a prefix-list name cleared "
     "since it was last sent stays in the engine",
     clearedListName},
    // Community lists and the community clauses of route maps.
    {"community-set-name-shared",
     "entries of two lists whose names and numbers run together (entry 2 of a1, entry 12 of a) "
     "share one community set; the entry written last holds it",
     sharedSetNameCovers, nullptr, false},
    {"community-clause-objects-left",
     "a removed route map, or a community clause removed from a sequence already sent, leaves "
     "its private community lists and sets in the engine",
     leftClauseObjectCovers},
    {"community-list-removed-while-away",
     "a community list or entry removed while an input was taken away stays in the engine, with "
     "its exact twin: the new reactor only sends what is there",
     communityListRemovedWhileAwayCovers},
    {"community-entry-incomplete-in-clause",
     "an entry made at version zero refreshes no clause, yet a clause rebuilt since copies it "
     "into its private list",
     incompleteEntryCovers},
};

// After a reconcile only what no repair undoes is excused.
bool excusable(KnownDivergence const& k, World const& world) {
  return k.repairable ? !world.reconciles() : true;
}

// The policy-map lines only one side holds that no known divergence covers,
// as "-line" (live only) and "+line" (fresh only); the divergences that do
// cover some go into `used`.
std::string policyDifference(std::string const& live, std::string const& fresh, World const& world,
                             std::set<KnownDivergence const*>& used) {
  auto lines = [](std::string const& text) {
    std::set<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
      out.insert(line);
    return out;
  };
  std::set<std::string> const a = lines(live);
  std::set<std::string> const b = lines(fresh);
  std::string report;
  auto side = [&](std::set<std::string> const& mine, std::set<std::string> const& theirs,
                  bool incremental) {
    for (std::string const& line : mine) {
      if (theirs.contains(line)) continue;
      KnownDivergence const* known = nullptr;
      for (KnownDivergence const& k : kKnown) {
        if (!excusable(k, world)) continue;
        if (k.coversPolicy && k.coversPolicy(line, incremental, world)) known = &k;
      }
      if (known) {
        used.insert(known);
      } else {
        report += (incremental ? "-" : "+") + line + "\n";
      }
    }
  };
  side(a, b, true);
  side(b, a, false);
  return report;
}

Rib::RecordedCommand deleteOf(std::vector<Rib::PathElement> const& path) {
  Rib::RecordedCommand command;
  command.name = "knownDivergence";  // never sent: only removes the covered subtree
  command.path = path;
  command.isDelete = true;
  return command;
}

}  // namespace

std::span<KnownDivergence const> knownDivergences() {
  return kKnown;
}

Rib::EngineModel freshReplay(Inputs const& inputs, L3::VrfName const& vrf,
                             std::string* policyMapState) {
  Tessel::RootInputs const given{inputs.routeMapConfig,   inputs.peerFilterConfig,
                                 inputs.aclListConfig,    inputs.aclConfig,
                                 inputs.dynPfxListConfig, inputs.policyMap};
  return Tessel::freshStart(given, vrf, [&] {
    if (policyMapState) *policyMapState = RoutingPolicyMap::stateText(*inputs.policyMap);
  });
}

CheckResult check(World const& world) {
  CheckResult result;
  if (!world.model().pendingCommands().empty()) {
    result.diverges = true;
    result.report = "commands left uncommitted:\n";
    for (auto const& command : world.model().pendingCommands())
      result.report += "  " + Rib::commandLine(command) + "\n";
    return result;
  }
  Rib::EngineModel incremental = world.model();
  std::string freshPolicy;
  Rib::EngineModel fresh = freshReplay(world.shadow(), world.vrf(), &freshPolicy);
  std::set<KnownDivergence const*> used;
  std::string const policyReport = policyDifference(
      RoutingPolicyMap::stateText(*world.live().policyMap), freshPolicy, world, used);
  if (incremental == fresh && policyReport.empty()) {
    result.known.assign(used.begin(), used.end());
    std::sort(result.known.begin(), result.known.end());
    return result;
  }
  std::string const difference = Rib::diff(incremental, fresh);

  // A known divergence takes a node it covers out of that side with what is
  // below it, as deleting it from the engine would; the containers left
  // empty go with it. Whatever differs after that is no divergence it knows.
  auto discount = [&](Rib::EngineModel& side, std::vector<Rib::PathElement> const& path,
                      bool isIncremental) {
    for (KnownDivergence const& k : kKnown) {
      if (!excusable(k, world)) continue;
      if (k.covers && k.covers(path, isIncremental, world)) {
        used.insert(&k);
        side.apply(deleteOf(path));
        return;
      }
    }
  };
  for (Rib::NodeChange const& change : Rib::changedNodes(incremental, fresh)) {
    if (change.inA) discount(incremental, change.path, true);
    if (change.inB) discount(fresh, change.path, false);
  }
  incremental.commit(Rib::CommitKind::transaction);
  fresh.commit(Rib::CommitKind::transaction);
  result.known.assign(used.begin(), used.end());
  std::sort(result.known.begin(), result.known.end());
  if (incremental == fresh && policyReport.empty()) return result;

  result.diverges = true;
  if (!(incremental == fresh)) {
    result.report =
        "the engine state differs from a fresh replay of the configuration\n"
        "(- only as sent change by change, + only in the fresh replay):\n" +
        difference;
  }
  if (!policyReport.empty()) {
    result.report +=
        "the policy map differs from a fresh replay of the configuration\n"
        "(- only as written change by change, + only in the fresh replay):\n" +
        policyReport;
  }
  return result;
}

RunResult run(Scenario const& scenario, World& world, bool checking, RunHooks const& hooks) {
  RunResult result;
  std::vector<KnownDivergence const*> knownBefore;
  for (Statement const& statement : scenario.statements) {
    if (hooks.before) hooks.before(statement);
    try {
      world.apply(statement);
    } catch (Refusal const& refusal) {
      throw ScenarioError(scenario.file, statement.line, refusal.what());
    }
    if (!checking || !world.settled()) {
      if (hooks.after) hooks.after(statement);
      continue;
    }
    // The repair goes into the stream right after the statement it follows.
    if (world.reconciles()) world.reconcile();
    if (hooks.after) hooks.after(statement);
    ++result.checks;
    CheckResult checked = check(world);
    if (checked.known != knownBefore) {
      for (KnownDivergence const* k : checked.known) {
        result.notes.push_back(scenario.file + ":" + std::to_string(statement.line) +
                               ": known divergence '" + std::string(k->name) +
                               "': " + std::string(k->reason));
      }
      knownBefore = checked.known;
    }
    if (checked.diverges) {
      result.divergence = Divergence{statement.line, statement.text, checked.report};
      break;
    }
  }
  return result;
}

}  // namespace Scenario
