// Fresh replays of the shadow configuration, content comparison of engine
// models, and the run loop that checks after every settled statement.
#include "Check.h"

#include <algorithm>
#include <map>
#include <set>

#include "Orb/Text.h"
#include "Orb/Trace.h"
#include "Rib/CommandText.h"

namespace Scenario {

namespace {

bool staleMapCovers(std::vector<std::string> const& path, bool incremental, World const& world) {
  if (!incremental || path.size() < 2 || path[0] != "512") return false;
  return std::any_of(world.staleMaps().begin(), world.staleMaps().end(), [&](Orb::Name const& map) {
    return path[1] == "576=" + Orb::quote(map.view());
  });
}

KnownDivergence const kKnown[] = {
    {"route-map-removed-while-away",
     "a route map removed while an input was taken away stays in the engine: the new reactor "
     "only sends the maps that are there",
     staleMapCovers},
};

/// One node of a model's state text: its path and the rest of its line.
struct StateNode {
  std::vector<std::string> path;
  std::string values;  // as in a command line, possibly empty
  std::string writer;  // empty for a bare container

  // State text order is the same for equal trees, so lists of nodes compare
  // like the models they came from.
  friend bool operator==(StateNode const&, StateNode const&) = default;
};

/// Where the element at the start of `text` ends: at the first blank outside
/// a quoted string.
std::size_t elementEnd(std::string_view text) {
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (quoted && text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      quoted = !quoted;
    } else if (!quoted && text[i] == ' ') {
      return i;
    }
  }
  return text.size();
}

/// The nodes of `model` in state-text order, read back from its state text
/// (indentation gives the depth; a written node ends in "(<command>)").
std::vector<StateNode> nodesOf(Rib::EngineModel const& model) {
  std::vector<StateNode> nodes;
  std::vector<std::string> path;
  std::string const text = model.stateText();
  std::string_view rest = text;
  while (!rest.empty()) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    StateNode node;
    std::string_view body;
    if (line.starts_with("[]")) {
      path.clear();
      body = line.substr(2);
    } else {
      std::size_t indent = line.find_first_not_of(' ');
      std::size_t depth = indent / 2 + 1;
      line.remove_prefix(indent);
      std::size_t end = elementEnd(line);
      path.resize(depth - 1);
      path.emplace_back(line.substr(0, end));
      node.path = path;
      body = line.substr(end);
    }
    if (!body.empty()) {
      body.remove_prefix(1);  // the blank after the element
      std::size_t open = body.rfind('(');
      node.writer = std::string(body.substr(open + 1, body.size() - open - 2));
      node.values = std::string(body.substr(0, open == 0 ? 0 : open - 1));
    }
    nodes.push_back(std::move(node));
  }
  return nodes;
}

std::string joinedPath(std::vector<std::string> const& path) {
  std::string out;
  for (auto const& e : path)
    out += (out.empty() ? "" : " ") + e;
  return out;
}

/// Drops bare nodes that have no written node below them.
std::vector<StateNode> pruned(std::vector<StateNode> nodes) {
  std::set<std::vector<std::string>> needed;
  for (StateNode const& n : nodes) {
    if (n.writer.empty()) continue;
    for (std::size_t depth = 0; depth <= n.path.size(); ++depth)
      needed.emplace(n.path.begin(), n.path.begin() + static_cast<std::ptrdiff_t>(depth));
  }
  std::erase_if(nodes,
                [&](StateNode const& n) { return n.writer.empty() && !needed.contains(n.path); });
  return nodes;
}

/// A model holding exactly the written nodes: each is one command that
/// writes the node's values, and the containers come by themselves.
Rib::EngineModel modelOf(std::vector<StateNode> const& nodes) {
  Rib::EngineModel model;
  for (StateNode const& n : nodes) {
    if (n.writer.empty()) continue;
    std::string line = n.writer + " [" + joinedPath(n.path) + "]";
    if (!n.values.empty()) line += " " + n.values;
    model.apply(Rib::parseCommandLine(line));
  }
  model.commit(Rib::CommitKind::transaction);
  return model;
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

Rib::EngineModel contentOf(Rib::EngineModel const& model) {
  return modelOf(pruned(nodesOf(model)));
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
  auto incremental = pruned(nodesOf(world.model()));
  auto fresh = pruned(nodesOf(freshReplay(world.shadow(), world.vrf())));
  if (incremental == fresh) return result;
  std::string const difference = Rib::diff(modelOf(incremental), modelOf(fresh));

  // What is left once the known divergences have taken their nodes, bare
  // containers pruned again.
  auto lines = [](std::vector<StateNode> const& nodes) {
    std::map<std::vector<std::string>, std::pair<std::string, std::string>> out;
    for (auto const& n : nodes)
      out.emplace(n.path, std::pair(n.values, n.writer));
    return out;
  };
  auto const incrementalLines = lines(incremental);
  auto const freshLines = lines(fresh);
  std::set<KnownDivergence const*> used;
  auto discount = [&](std::vector<StateNode>& nodes, auto const& other, bool isIncremental) {
    std::erase_if(nodes, [&](StateNode const& n) {
      auto it = other.find(n.path);
      if (it != other.end() && it->second == std::pair(n.values, n.writer)) return false;
      for (KnownDivergence const& k : kKnown) {
        if (k.covers(n.path, isIncremental, world)) {
          used.insert(&k);
          return true;
        }
      }
      return false;
    });
  };
  discount(incremental, freshLines, true);
  discount(fresh, incrementalLines, false);
  result.known.assign(used.begin(), used.end());
  std::sort(result.known.begin(), result.known.end());
  if (pruned(incremental) == pruned(fresh)) return result;

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
