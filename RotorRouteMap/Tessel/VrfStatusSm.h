// Tessel::VrfStatusSm: the per-VRF state machine. It exists while the root
// has all its inputs; constructing it creates the configuration reactors in a
// fixed order (route maps, peer filters, ACL lists, ACLs, dynamic prefix
// lists), each of which replays the present configuration into the engine.
// Destroying it marks them as zombies and removes them in the same order.
#pragma once

#include <array>

#include "Orb/Api.h"
#include "Orb/Reactor.h"
#include "Tessel/Root.h"

namespace RibDynamicPrefixList {
class DynPfxConfigSm;
}

namespace Tessel {

class RouteMapConfigSm;
class PeerFilterConfigSm;
class AclListConfigSm;
class AclConfigSm;

class ROTOR_API VrfStatusSm : public Orb::Reactor {
 public:
  VrfStatusSm(L3::VrfName vrfName, Root::RouteMapConfigPtr routeMapConfig,
              Root::PeerFilterConfigPtr peerFilterConfig, Root::AclListConfigPtr aclListConfig,
              Root::AclConfigPtr aclConfig, Root::DynPfxListConfigPtr dynPfxListConfig,
              Root::PolicyMapPtr policyMap);
  ~VrfStatusSm() override;

  L3::VrfName const& vrfName() const noexcept { return vrfName_; }
  Root::RouteMapConfigPtr const& routeMapConfig() const noexcept { return routeMapConfig_; }
  Root::PeerFilterConfigPtr const& peerFilterConfig() const noexcept { return peerFilterConfig_; }
  Root::AclListConfigPtr const& aclListConfig() const noexcept { return aclListConfig_; }
  Root::AclConfigPtr const& aclConfig() const noexcept { return aclConfig_; }
  Root::DynPfxListConfigPtr const& dynPfxListConfig() const noexcept { return dynPfxListConfig_; }
  Root::PolicyMapPtr const& policyMap() const noexcept { return policyMap_; }

  /// The five configuration reactors, in creation order.
  enum Child { routeMapChild, peerFilterChild, aclListChild, aclChild, dynPfxChild, childCount };
  /// The reactor in `slot`, or null when it does not exist (yet).
  Orb::Reactor* child(Child slot) const noexcept { return children_[slot].get(); }

  RouteMapConfigSm* routeMapConfigSm() const noexcept;
  /// Creates the route-map reactor (keeping an existing one made with the
  /// same arguments) and switches its notifications on.
  void routeMapConfigSmIs(Root::RouteMapConfigPtr const& config, L3::VrfName const& vrfName,
                          Root::PolicyMapPtr const& policyMap);

  PeerFilterConfigSm* peerFilterConfigSm() const noexcept;
  /// As routeMapConfigSmIs, for the peer-filter reactor.
  void peerFilterConfigSmIs(Root::PeerFilterConfigPtr const& config, L3::VrfName const& vrfName);

  RibDynamicPrefixList::DynPfxConfigSm* dynPfxConfigSm() const noexcept;
  /// As routeMapConfigSmIs, for the dynamic prefix-list reactor (no VRF).
  void dynPfxConfigSmIs(Root::DynPfxListConfigPtr const& config,
                        Root::PolicyMapPtr const& policyMap);
  AclListConfigSm* aclListConfigSm() const noexcept;
  /// Creates the list reactor (keeping an existing one made with the same
  /// arguments) and switches its notifications on.
  void aclListConfigSmIs(Root::AclListConfigPtr const& config, L3::VrfName const& vrfName);

  AclConfigSm* aclConfigSm() const noexcept;
  /// Creates the ACL reactor (keeping an existing one made with the same
  /// arguments) and switches its notifications on.
  void aclConfigSmIs(Root::AclConfigPtr const& config, L3::VrfName const& vrfName);

  /// Takes the reactor out of its slot with its notifications off; it goes
  /// when the caller drops it.
  Orb::Ptr<Orb::Reactor> routeMapConfigSmDel() { return childDel(routeMapChild); }
  Orb::Ptr<Orb::Reactor> peerFilterConfigSmDel() { return childDel(peerFilterChild); }
  Orb::Ptr<Orb::Reactor> aclListConfigSmDel() { return childDel(aclListChild); }
  Orb::Ptr<Orb::Reactor> aclConfigSmDel() { return childDel(aclChild); }
  Orb::Ptr<Orb::Reactor> dynPfxConfigSmDel() { return childDel(dynPfxChild); }

  /// Stores a new child in `slot` with its notifications on; the child it
  /// replaces is retired, even while others still hold it.
  void childIs(Child slot, Orb::Ptr<Orb::Reactor> reactor);

  bool initialized() const noexcept { return initialized_; }
  void initializedIs(bool v) { initialized_ = v; }

  // The notification switch and the zombie mark reach the children in
  // creation order.

 private:
  /// The children as one part of this reactor.
  class Children final : public Orb::ReactorPart {
   public:
    explicit Children(VrfStatusSm* owner) : owner_(owner) { owner->partIs(this); }
    void partNotificationIs(bool active) override;
    void partZombieIs(bool zombie) override;

   private:
    VrfStatusSm* owner_;
  };

  void handleInitialized();
  Orb::Ptr<Orb::Reactor> childDel(Child slot);

  L3::VrfName vrfName_;
  Root::RouteMapConfigPtr routeMapConfig_;
  Root::PeerFilterConfigPtr peerFilterConfig_;
  Root::AclListConfigPtr aclListConfig_;
  Root::AclConfigPtr aclConfig_;
  Root::DynPfxListConfigPtr dynPfxListConfig_;
  Root::PolicyMapPtr policyMap_;
  std::array<Orb::ReactorSlot<Orb::Reactor>, childCount> children_;
  Children childrenPart_{this};
  bool initialized_ = false;
};

}  // namespace Tessel
