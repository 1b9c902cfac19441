// Bringing the engine and the policy map to what a fresh start on the present
// configuration leaves them, by sending only the difference with what the
// library has sent (its mirror) and registered.
//
// The stream the library sends as the configuration changes leaves some
// objects behind on purpose: objects removed while an input was away, a
// standard ACL no longer sent, a list kept withdrawn, private community lists
// of a removed map, a loop of references. A reconcile removes them, with each
// kind's own operations, and writes what is missing or differs.
#pragma once

#include <cstddef>

#include "Orb/Api.h"

namespace Tessel {

class Root;

/// What one reconcile did.
struct ReconcileCount {
  /// Whether there was anything to reconcile against: the root current,
  /// keeping a mirror and running its machinery for its own VRF.
  bool reconciled = false;
  /// Engine objects deleted, written or resent whole.
  std::size_t objects = 0;
  /// Policy-map reasons withdrawn or registered.
  std::size_t reasons = 0;
};

/// Reconciles the engine and the policy map of `root`, which must be
/// current, keep a mirror and run its per-VRF machinery for its own VRF;
/// otherwise nothing happens.
ROTOR_API ReconcileCount reconcile(Root& root);

}  // namespace Tessel
