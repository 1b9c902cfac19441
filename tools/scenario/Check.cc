// Fresh replays of the shadow configuration, the comparison with the engine
// state built change by change, and the run loop that checks after every
// settled statement.
#include "Check.h"

#include <algorithm>
#include <optional>
#include <set>

#include "Orb/Trace.h"
#include "Rib/CommandText.h"

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
