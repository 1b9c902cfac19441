// Tessel::Root: the library's entry. The agent makes one with rootFactory,
// gives it the VRF name and six configuration inputs; the root keeps a
// VrfStatusSm exactly while all inputs and the community-list user index are
// present, and rebuilds it when an input is replaced.
#pragma once

#include <memory>

#include "Acl/AclListConfig.h"
#include "Acl/Config.h"
#include "L3/VrfName.h"
#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Rib/EngineModel.h"
#include "Routing/DynamicPrefixList/Config.h"
#include "Routing/RouteMap/Config.h"
#include "RoutingPolicyMap/PolicyMap.h"
#include "Tessel/CommListUsers.h"
#include "Tessel/Reconcile.h"

namespace Tessel {

class VrfStatusSm;

class ROTOR_API Root : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    vrfName_ = 1,
    routeMapConfig_,
    peerFilterConfig_,
    aclListConfig_,
    aclConfig_,
    commListUsers_,
    dynPfxListConfig_,
    policyMap_,
    vrfStatusSm_,
    initialized_,
    engineMirror_,
    reconcileAtRebuild_,
  };

  using RouteMapConfigPtr = Orb::Ptr<Routing::RouteMap::Config const>;
  using PeerFilterConfigPtr = Orb::Ptr<Routing::RouteMap::PeerFilterConfig const>;
  using AclListConfigPtr = Orb::Ptr<Acl::AclListConfig const>;
  using AclConfigPtr = Orb::Ptr<Acl::Config const>;
  using DynPfxListConfigPtr = Orb::Ptr<Routing::DynamicPrefixList::Config const>;
  using PolicyMapPtr = Orb::Ptr<RoutingPolicyMap::PolicyMap>;

  ~Root() override;

  L3::VrfName const& vrfName() const noexcept { return vrfNameValue_; }
  /// Stores and notifies a new name. The running VrfStatusSm keeps its VRF
  /// until the next change of an input.
  void vrfNameIs(L3::VrfName const& name);

  RouteMapConfigPtr const& routeMapConfig() const noexcept { return routeMapConfigValue_; }
  PeerFilterConfigPtr const& peerFilterConfig() const noexcept { return peerFilterConfigValue_; }
  AclListConfigPtr const& aclListConfig() const noexcept { return aclListConfigValue_; }
  AclConfigPtr const& aclConfig() const noexcept { return aclConfigValue_; }
  DynPfxListConfigPtr const& dynPfxListConfig() const noexcept { return dynPfxListConfigValue_; }
  PolicyMapPtr const& policyMap() const noexcept { return policyMapValue_; }

  /// Each input setter does nothing for the pointer already held; otherwise
  /// it stores it, brings VrfStatusSm in line, then notifies.
  void routeMapConfigIs(RouteMapConfigPtr const& p);
  void peerFilterConfigIs(PeerFilterConfigPtr const& p);
  void aclListConfigIs(AclListConfigPtr const& p);
  void aclConfigIs(AclConfigPtr const& p);
  void dynPfxListConfigIs(DynPfxListConfigPtr const& p);
  void policyMapIs(PolicyMapPtr const& p);

  Orb::Ptr<CommListUsers> const& commListUsers() const noexcept { return commListUsersValue_; }
  /// Makes the index of community-list users (when none of that name exists).
  void commListUsersIs(Orb::Name const& name);
  void commListUsersDel();

  Orb::Ptr<VrfStatusSm> const& vrfStatusSm() const noexcept { return vrfStatusSmValue_; }
  /// Keeps the running VrfStatusSm when its VRF and inputs are these;
  /// otherwise replaces it with a new one. The new one replays before the old
  /// one is retired; the old one's tear-down then withdraws and deletes only
  /// what the new one does not hold, and goes out for the old one's VRF.
  void vrfStatusSmIs(L3::VrfName const& vrfName, RouteMapConfigPtr const& routeMapConfig,
                     PeerFilterConfigPtr const& peerFilterConfig,
                     AclListConfigPtr const& aclListConfig, AclConfigPtr const& aclConfig,
                     DynPfxListConfigPtr const& dynPfxListConfig, PolicyMapPtr const& policyMap);
  /// Retires the running VrfStatusSm, whose tear-down goes out at once for
  /// the VRF it was built for.
  void vrfStatusSmDel();

  bool initialized() const noexcept { return initializedValue_; }
  void initializedIs(bool v);
  /// Whether this is `rmRoot`. A root replaced by a later one keeps no
  /// VrfStatusSm, whatever its inputs.
  bool current() const noexcept;

  /// Whether the root keeps a mirror of the engine: every command and commit
  /// the library sends while the root is current, applied to a model of the
  /// engine's tree. doReconcile compares it with a fresh start. Off: nothing
  /// is kept and nothing costs. Turn it on before the inputs arrive, as the
  /// mirror knows only what it has seen.
  bool engineMirror() const noexcept { return mirror_ != nullptr; }
  void engineMirrorIs(bool on);
  /// The mirror, or null.
  Rib::EngineModel const* mirror() const noexcept { return mirror_.get(); }
  /// Whether every rebuild of the per-VRF machinery (inputs complete again,
  /// an input replaced, a rename reaching it, a later root's first build)
  /// ends with a reconcile; only with the mirror on. A first build into a
  /// mirror that has seen nothing is a fresh start already and is left be.
  bool reconcileAtRebuild() const noexcept { return reconcileAtRebuildValue_; }
  void reconcileAtRebuildIs(bool on);
  /// At a quiet moment (no handler running): works out what a fresh start on
  /// the present configuration leaves in the engine and the policy map,
  /// compares it with the mirror and the library's reasons, and sends only
  /// the difference, then commits. Sends nothing when nothing differs, or
  /// without the mirror, the machinery, or while a rename has not yet reached
  /// the machinery.
  ReconcileCount doReconcile();

 private:
  friend Orb::Ptr<Root> rootFactory(Orb::Name name);
  explicit Root(Orb::Name name);
  void handleInitialized();
  /// The root `by` became current: this one's machine goes.
  void handleReplaced(Orb::Name const& by);
  void handleStatusSmCtorArg();
  template <class P>
  void inputIs(P& slot, P const& p, Attribute attribute);

  L3::VrfName vrfNameValue_;
  RouteMapConfigPtr routeMapConfigValue_;
  PeerFilterConfigPtr peerFilterConfigValue_;
  AclListConfigPtr aclListConfigValue_;
  AclConfigPtr aclConfigValue_;
  Orb::Ptr<CommListUsers> commListUsersValue_;
  DynPfxListConfigPtr dynPfxListConfigValue_;
  PolicyMapPtr policyMapValue_;
  Orb::Ptr<VrfStatusSm> vrfStatusSmValue_;
  bool initializedValue_ = false;
  std::unique_ptr<Rib::EngineModel> mirror_;
  bool reconcileAtRebuildValue_ = false;
  bool reconciling_ = false;
};

/// Makes a root, which becomes the current one (`rmRoot`), with its
/// notifications on.
ROTOR_API Orb::Ptr<Root> rootFactory(Orb::Name name);

/// The current root, or null. A later root replaces an earlier one.
ROTOR_API extern Orb::Ptr<Root> rmRoot;

}  // namespace Tessel
