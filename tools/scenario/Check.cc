// Fresh replays of the shadow configuration, the comparison with the engine
// state built change by change, and the run loop that checks after every
// settled statement.
#include "Check.h"

#include <algorithm>
#include <optional>
#include <set>

#include "Orb/Trace.h"
#include "Rib/CommandText.h"
#include "ScenarioRecords.h"

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
     sharedPrefixListIdCovers},
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
};

Rib::RecordedCommand deleteOf(std::vector<Rib::PathElement> const& path) {
  Rib::RecordedCommand command;
  command.name = "knownDivergence";  // never sent: only removes the covered subtree
  command.path = path;
  command.isDelete = true;
  return command;
}

/// Mutes tracing for its lifetime.
class TraceMute {
 public:
  TraceMute() : previous_(Orb::traceSinkIs(nullptr)) {}
  ~TraceMute() { Orb::traceSinkIs(previous_); }
  TraceMute(TraceMute const&) = delete;
  TraceMute& operator=(TraceMute const&) = delete;

 private:
  Orb::TraceSink* previous_;
};

}  // namespace

std::span<KnownDivergence const> knownDivergences() {
  return kKnown;
}

Rib::EngineModel freshReplay(Inputs const& inputs, L3::VrfName const& vrf) {
  Rib::EngineModel model;
  Rib::ScopedEngineSink installed(model);
  TraceMute mute;
  Orb::Ptr<Tessel::Root> previous = Tessel::rmRoot;
  Orb::Ptr<Tessel::Root> root = Tessel::rootFactory("check");
  root->vrfNameIs(vrf);
  root->routeMapConfigIs(inputs.routeMapConfig);
  root->peerFilterConfigIs(inputs.peerFilterConfig);
  root->aclListConfigIs(inputs.aclListConfig);
  root->aclConfigIs(inputs.aclConfig);
  root->dynPfxListConfigIs(inputs.dynPfxListConfig);
  root->policyMapIs(inputs.policyMap);
  // The live root is current again before the fresh one is torn down, and
  // the tear-down still goes to this model.
  Tessel::rmRoot = previous;
  root = nullptr;
  return model;
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
  Rib::EngineModel fresh = freshReplay(world.shadow(), world.vrf());
  if (incremental == fresh) return result;
  std::string const difference = Rib::diff(incremental, fresh);

  // A known divergence takes a node it covers out of that side with what is
  // below it, as deleting it from the engine would; the containers left
  // empty go with it. Whatever differs after that is no divergence it knows.
  std::set<KnownDivergence const*> used;
  auto discount = [&](Rib::EngineModel& side, std::vector<Rib::PathElement> const& path,
                      bool isIncremental) {
    for (KnownDivergence const& k : kKnown) {
      if (k.covers(path, isIncremental, world)) {
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
  if (incremental == fresh) return result;

  result.diverges = true;
  result.report =
      "the engine state differs from a fresh replay of the configuration\n"
      "(- only as sent change by change, + only in the fresh replay):\n" +
      difference;
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
    if (hooks.after) hooks.after(statement);
    if (!checking || !world.settled()) continue;
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
