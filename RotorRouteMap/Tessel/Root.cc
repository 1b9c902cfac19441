// The root's inputs and the life of the per-VRF state machine.
#include "Tessel/Root.h"

#include <optional>
#include <utility>

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Holds.h"
#include "Tessel/TraceLevels.h"
#include "Tessel/VrfCheck.h"
#include "Tessel/VrfStatusSm.h"

namespace Tessel {

Orb::Ptr<Root> rmRoot;

namespace {
Orb::TypeRegistration rootType({"Tessel::Root",
                                {{Root::vrfName_, "vrfName"},
                                 {Root::routeMapConfig_, "routeMapConfig"},
                                 {Root::peerFilterConfig_, "peerFilterConfig"},
                                 {Root::aclListConfig_, "aclListConfig"},
                                 {Root::aclConfig_, "aclConfig"},
                                 {Root::commListUsers_, "commListUsers"},
                                 {Root::dynPfxListConfig_, "dynPfxListConfig"},
                                 {Root::policyMap_, "policyMap"},
                                 {Root::vrfStatusSm_, "vrfStatusSm"},
                                 {Root::initialized_, "initialized"},
                                 {Root::engineMirror_, "engineMirror"},
                                 {Root::reconcileAtRebuild_, "reconcileAtRebuild"}},
                                {}});
}  // namespace

Orb::Ptr<Root> rootFactory(Orb::Name name) {
  Orb::Ptr<Root> root(new Root(std::move(name)));
  root->hasNotificationActiveIs(true);
  return root;
}

// Notifications stay off until rootFactory switches them on.
Root::Root(Orb::Name name) : Entity(std::move(name), false) {
  handleInitialized();
}

Root::~Root() {
  commListUsersDel();
  vrfStatusSmDel();
  if (mirror_ && Rib::engineMirror() == mirror_.get()) Rib::engineMirrorIs(nullptr);
  vrfCheckChanged();
}

void Root::handleInitialized() {
  ORB_TRACE(traceHandler, "void Tessel::Root::handleInitialized()");
  commListUsersIs("comm-list-users");
  initializedIs(true);
  // A later root replaces an earlier one. The earlier one's machine would
  // otherwise go on answering the same configuration, with this root's VRF
  // and index, twice over; it goes while its root is still the current one,
  // so its tear-down is checked against its own VRF and reaches its own
  // index.
  if (Orb::Ptr<Root> const earlier = rmRoot; earlier && earlier.get() != this) {
    earlier->handleReplaced(name());
    // The engine is the same: what the earlier root knew it holds, this one
    // knows, down to what that tear-down left.
    mirror_ = std::move(earlier->mirror_);
  }
  rmRoot = this;
  // The mirror follows the current root.
  Rib::engineMirrorIs(mirror_.get());
  vrfCheckChanged();
}

void Root::handleReplaced(Orb::Name const& by) {
  if (!vrfStatusSmValue_) return;
  ORB_TRACE(traceDelete, "Root " << name() << " replaced by " << by << ": delete its vrfStatusSm"
                                 << " vrf: " << vrfStatusSmValue_->vrfName());
  vrfStatusSmDel();
}

bool Root::current() const noexcept {
  return rmRoot.get() == this;
}

void Root::vrfNameIs(L3::VrfName const& name) {
  if (vrfNameValue_ == name) return;
  vrfNameValue_ = name;
  vrfCheckChanged();
  notify(vrfName_);
}

template <class P>
void Root::inputIs(P& slot, P const& p, Attribute attribute) {
  if (slot == p) return;
  slot = p;
  handleStatusSmCtorArg();
  notify(attribute);
}

void Root::routeMapConfigIs(RouteMapConfigPtr const& p) {
  inputIs(routeMapConfigValue_, p, routeMapConfig_);
}
void Root::peerFilterConfigIs(PeerFilterConfigPtr const& p) {
  inputIs(peerFilterConfigValue_, p, peerFilterConfig_);
}
void Root::aclListConfigIs(AclListConfigPtr const& p) {
  inputIs(aclListConfigValue_, p, aclListConfig_);
}
void Root::aclConfigIs(AclConfigPtr const& p) {
  inputIs(aclConfigValue_, p, aclConfig_);
}
void Root::dynPfxListConfigIs(DynPfxListConfigPtr const& p) {
  inputIs(dynPfxListConfigValue_, p, dynPfxListConfig_);
}
void Root::policyMapIs(PolicyMapPtr const& p) {
  inputIs(policyMapValue_, p, policyMap_);
}

void Root::commListUsersIs(Orb::Name const& name) {
  if (commListUsersValue_ && commListUsersValue_->name() == name) return;
  // The old index may outlive this root; it must not point back at it.
  if (commListUsersValue_) commListUsersValue_->parentIs(nullptr);
  commListUsersValue_ = CommListUsers::create(name);
  commListUsersValue_->parentIs(this);
  handleStatusSmCtorArg();
  notify(commListUsers_);
}

void Root::commListUsersDel() {
  if (!commListUsersValue_) return;
  commListUsersValue_->parentIs(nullptr);
  commListUsersValue_ = nullptr;
  handleStatusSmCtorArg();
  notify(commListUsers_);
}

void Root::handleStatusSmCtorArg() {
  ORB_TRACE(traceHandler, "void Tessel::Root::handleStatusSmCtorArg()"
                              << " vrfName is " << vrfNameValue_);
  bool const complete = routeMapConfigValue_ && peerFilterConfigValue_ && aclListConfigValue_ &&
                        aclConfigValue_ && commListUsersValue_ && dynPfxListConfigValue_ &&
                        policyMapValue_;
  if (rmRoot && !current()) {
    // A replaced root keeps no machine: it would answer the configuration
    // beside the current root's, against that root's VRF and index.
    if (complete || vrfStatusSmValue_) {
      ORB_TRACE(traceHandler, "void Tessel::Root::handleStatusSmCtorArg()"
                                  << ": not the current root, no vrfStatusSm");
    }
    vrfStatusSmDel();
  } else if (complete) {
    ORB_TRACE(traceHandler, "void Tessel::Root::handleStatusSmCtorArg()"
                                << ": created vrfStatusSm");
    vrfStatusSmIs(vrfNameValue_, routeMapConfigValue_, peerFilterConfigValue_, aclListConfigValue_,
                  aclConfigValue_, dynPfxListConfigValue_, policyMapValue_);
  } else if (vrfStatusSmValue_) {
    vrfStatusSmDel();
  }
}

void Root::vrfStatusSmIs(L3::VrfName const& vrfName, RouteMapConfigPtr const& routeMapConfig,
                         PeerFilterConfigPtr const& peerFilterConfig,
                         AclListConfigPtr const& aclListConfig, AclConfigPtr const& aclConfig,
                         DynPfxListConfigPtr const& dynPfxListConfig,
                         PolicyMapPtr const& policyMap) {
  if (VrfStatusSm const* sm = vrfStatusSmValue_.get()) {
    if (sm->vrfName() == vrfName && sm->routeMapConfig() == routeMapConfig &&
        sm->peerFilterConfig() == peerFilterConfig && sm->aclListConfig() == aclListConfig &&
        sm->aclConfig() == aclConfig && sm->dynPfxListConfig() == dynPfxListConfig &&
        sm->policyMap() == policyMap) {
      return;
    }
  }
  // The new machine replays the configuration before the old one is torn
  // down; meanwhile the new one's reactors note what they hold, which the old
  // one's tear-down leaves to them.
  std::optional<MachineReplacement> replacing;
  if (vrfStatusSmValue_) replacing.emplace();
  // A first build into a mirror that has seen nothing is a fresh start
  // already: reconciling it would only run that start a second time.
  bool const rebuild = mirror_ && mirror_->commits() > 0;
  Orb::Ptr<VrfStatusSm> fresh =
      Orb::make<VrfStatusSm>(vrfName, routeMapConfig, peerFilterConfig, aclListConfig, aclConfig,
                             dynPfxListConfig, policyMap);
  if (Orb::Ptr<VrfStatusSm> old = std::exchange(vrfStatusSmValue_, fresh)) {
    // Also when someone else still holds it. Its tear-down goes out for the
    // VRF it was built for, which a rename may have left.
    RetiringVrf const retiring(old->vrfName());
    old->retire();
  }
  replacing.reset();
  fresh->hasNotificationActiveIs(true);
  notify(vrfStatusSm_);
  if (reconcileAtRebuildValue_ && rebuild) doReconcile();
}

void Root::vrfStatusSmDel() {
  if (!vrfStatusSmValue_) return;
  Orb::Ptr<VrfStatusSm> gone = std::move(vrfStatusSmValue_);
  vrfStatusSmValue_ = nullptr;
  gone->hasNotificationActiveIs(false);
  notify(vrfStatusSm_);
  // Its tear-down goes now, for the VRF it was built for, even while someone
  // else still holds it.
  RetiringVrf const retiring(gone->vrfName());
  gone->retire();
}

void Root::engineMirrorIs(bool on) {
  if (on == engineMirror()) return;
  if (on) {
    mirror_ = std::make_unique<Rib::EngineModel>();
    if (current()) Rib::engineMirrorIs(mirror_.get());
  } else {
    if (Rib::engineMirror() == mirror_.get()) Rib::engineMirrorIs(nullptr);
    mirror_ = nullptr;
  }
  notify(engineMirror_);
}

void Root::reconcileAtRebuildIs(bool on) {
  if (on == reconcileAtRebuildValue_) return;
  reconcileAtRebuildValue_ = on;
  notify(reconcileAtRebuild_);
}

ReconcileCount Root::doReconcile() {
  // A reconcile's own fresh start builds a machine of its own, which must
  // not reconcile again.
  if (reconciling_) return {};
  reconciling_ = true;
  ReconcileCount const count = reconcile(*this);
  reconciling_ = false;
  return count;
}

void Root::initializedIs(bool v) {
  if (initializedValue_ == v) return;
  initializedValue_ = v;
  notify(initialized_);
}

}  // namespace Tessel
