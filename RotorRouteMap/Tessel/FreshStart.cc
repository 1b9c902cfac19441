// A second root built and dropped beside the current one.
#include "Tessel/FreshStart.h"

#include <utility>

#include "Orb/Trace.h"
#include "Rib/NullSink.h"

namespace Tessel {

namespace {

/// Mutes tracing and the mirror for its lifetime.
class Aside {
 public:
  Aside() : trace_(Orb::traceSinkIs(nullptr)), mirror_(Rib::engineMirrorIs(nullptr)) {}
  ~Aside() {
    Rib::engineMirrorIs(mirror_);
    Orb::traceSinkIs(trace_);
  }
  Aside(Aside const&) = delete;
  Aside& operator=(Aside const&) = delete;

 private:
  Orb::TraceSink* trace_;
  Rib::EngineSink* mirror_;
};

}  // namespace

Rib::EngineModel freshStart(RootInputs const& inputs, L3::VrfName const& vrf,
                            std::function<void()> const& built) {
  Rib::EngineModel model;
  Aside const aside;
  // Made while no root is current, the new root replaces nothing.
  Orb::Ptr<Root> const current = std::exchange(rmRoot, nullptr);
  Orb::Ptr<Root> fresh;
  {
    Rib::ScopedEngineSink const into(model);
    fresh = rootFactory("fresh-start");
    fresh->vrfNameIs(vrf);
    fresh->routeMapConfigIs(inputs.routeMapConfig);
    fresh->peerFilterConfigIs(inputs.peerFilterConfig);
    fresh->aclListConfigIs(inputs.aclListConfig);
    fresh->aclConfigIs(inputs.aclConfig);
    fresh->dynPfxListConfigIs(inputs.dynPfxListConfig);
    fresh->policyMapIs(inputs.policyMap);
  }
  if (built) built();
  // The earlier root is current again before the new one's tear-down, which
  // is no part of a start and goes nowhere.
  rmRoot = current;
  Rib::NullSink nowhere;
  Rib::ScopedEngineSink const away(nowhere);
  fresh = nullptr;
  return model;
}

}  // namespace Tessel
