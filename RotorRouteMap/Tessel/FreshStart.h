// What a fresh start of the library on a configuration leaves in the engine
// and in the policy map, worked out beside the running root without touching
// it: the yardstick the replay check and doReconcile compare with.
#pragma once

#include <functional>

#include "Orb/Api.h"
#include "Rib/EngineModel.h"
#include "Tessel/Root.h"

namespace Tessel {

/// The inputs of one root, as its setters take them.
struct ROTOR_API RootInputs {
  Root::RouteMapConfigPtr routeMapConfig;
  Root::PeerFilterConfigPtr peerFilterConfig;
  Root::AclListConfigPtr aclListConfig;
  Root::AclConfigPtr aclConfig;
  Root::DynPfxListConfigPtr dynPfxListConfig;
  Root::PolicyMapPtr policyMap;
};

/// The engine a new root for `vrf` on `inputs` builds from an empty one.
/// `built` runs once it has, to read `inputs.policyMap` as the new root left
/// it: its tear-down withdraws what it registered there again. Meanwhile the
/// new root is current and neither the engine sink, the mirror nor the trace
/// sees its commands; the root current before is current again afterwards.
ROTOR_API Rib::EngineModel freshStart(RootInputs const& inputs, L3::VrfName const& vrf,
                                      std::function<void()> const& built = {});

}  // namespace Tessel
