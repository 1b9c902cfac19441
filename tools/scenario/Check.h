// The replay check: whenever nothing is pending, the engine state built change
// by change must equal what a fresh root builds from the same configuration.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Rib/EngineModel.h"
#include "ScenarioWorld.h"

namespace Scenario {

/// A difference between the incremental and the fresh state that the system
/// makes on purpose. The check reports it by name instead of failing.
struct KnownDivergence {
  std::string_view name;
  std::string_view reason;
  /// Whether a node that only one side holds, or holds differently, is part
  /// of this divergence, and with it everything below it on that side.
  /// `incremental` tells the side.
  bool (*covers)(std::vector<Rib::PathElement> const& path, bool incremental, World const& world);
  /// Whether a policy-map line (as RoutingPolicyMap::stateText writes it)
  /// that only one side holds is part of this divergence; null for
  /// divergences of the engine alone.
  bool (*coversPolicy)(std::string const& line, bool incremental, World const& world) = nullptr;
  /// Whether a reconcile undoes it; a world that reconciles before every
  /// check is excused only what it cannot.
  bool repairable = true;
};

/// The divergences the check knows; a later behaviour that differs on
/// purpose adds its entry here.
std::span<KnownDivergence const> knownDivergences();

/// The engine state a new root for `vrf` sends when it is given `inputs`.
/// The root is current only meanwhile; the previous one is current again
/// afterwards, and neither the live engine sink nor the trace sees it. With
/// `policyMapState`, it receives the policy map as the new root left it
/// (the root withdraws its references again when it goes).
Rib::EngineModel freshReplay(Inputs const& inputs, L3::VrfName const& vrf,
                             std::string* policyMapState = nullptr);

struct CheckResult {
  /// A difference that no known divergence accounts for.
  bool diverges = false;
  /// The known divergences that account for the differences seen.
  std::vector<KnownDivergence const*> known;
  /// What to show for a divergence: the diff of both states, or the
  /// commands the live root left uncommitted.
  std::string report;
};

/// Compares the world's engine model with a fresh replay of its shadow
/// configuration, as engine models compare: by the values they hold, not by
/// which commands wrote them. Meaningful when the world is settled.
CheckResult check(World const& world);

/// The first statement after which the check failed.
struct Divergence {
  int line = 0;
  std::string statement;
  std::string report;
};

struct RunResult {
  std::optional<Divergence> divergence;
  /// "FILE:LINE: known divergence ..." each time the set of known
  /// divergences seen changes.
  std::vector<std::string> notes;
  /// Settled states compared.
  std::size_t checks = 0;
};

/// Called around each statement, e.g. to print what it sent.
struct RunHooks {
  std::function<void(Statement const&)> before;
  std::function<void(Statement const&)> after;
};

/// Runs the statements in order on `world`. With `checking`, checks after
/// every statement that leaves the world settled (reconciling first, when
/// the world reconciles) and stops at the first divergence. A refused
/// statement raises ScenarioError.
RunResult run(Scenario const& scenario, World& world, bool checking, RunHooks const& hooks = {});

}  // namespace Scenario
