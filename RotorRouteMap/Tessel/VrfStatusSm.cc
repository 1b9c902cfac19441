// Creation and tear-down of the per-VRF configuration reactors.
#include "Tessel/VrfStatusSm.h"

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "RibDynamicPrefixList/DynPfxConfigSm.h"
#include "Tessel/AclConfigSm.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/PeerFilterConfigSm.h"
#include "Tessel/RouteMapConfigSm.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

namespace {
Orb::TypeRegistration vrfStatusSmType({"Tessel::VrfStatusSm", {}, {}});
}

VrfStatusSm::VrfStatusSm(L3::VrfName vrfName, Root::RouteMapConfigPtr routeMapConfig,
                         Root::PeerFilterConfigPtr peerFilterConfig,
                         Root::AclListConfigPtr aclListConfig, Root::AclConfigPtr aclConfig,
                         Root::DynPfxListConfigPtr dynPfxListConfig, Root::PolicyMapPtr policyMap)
    : vrfName_(std::move(vrfName)),
      routeMapConfig_(std::move(routeMapConfig)),
      peerFilterConfig_(std::move(peerFilterConfig)),
      aclListConfig_(std::move(aclListConfig)),
      aclConfig_(std::move(aclConfig)),
      dynPfxListConfig_(std::move(dynPfxListConfig)),
      policyMap_(std::move(policyMap)) {
  handleInitialized();
}

VrfStatusSm::~VrfStatusSm() {
  orbDoZombieReactors(true);
  for (int slot = 0; slot < childCount; ++slot)
    childDel(Child(slot));
}

void VrfStatusSm::handleInitialized() {
  ORB_TRACE(traceHandler, "void Tessel::VrfStatusSm::handleInitialized()");
  // The reactors serve the VRF of the current root, which the engine paths
  // are checked against.
  L3::VrfName vrfName = rmRoot ? rmRoot->vrfName() : vrfName_;
  // The user index follows what this machine sends: it records every clause
  // afresh as it replays the maps, so what a machine before it recorded goes
  // (maps and clauses removed or changed while it was away included).
  if (CommListUsers* users = rmRoot ? rmRoot->commListUsers().get() : nullptr)
    users->commListUserDelAll();
  routeMapConfigSmIs(routeMapConfig_, vrfName, policyMap_);
  peerFilterConfigSmIs(peerFilterConfig_, vrfName);
  aclListConfigSmIs(aclListConfig_, vrfName);
  aclConfigSmIs(aclConfig_, vrfName);
  dynPfxConfigSmIs(dynPfxListConfig_, policyMap_);
  initializedIs(true);
}

RouteMapConfigSm* VrfStatusSm::routeMapConfigSm() const noexcept {
  return static_cast<RouteMapConfigSm*>(child(routeMapChild));
}

void VrfStatusSm::routeMapConfigSmIs(Root::RouteMapConfigPtr const& config,
                                     L3::VrfName const& vrfName,
                                     Root::PolicyMapPtr const& policyMap) {
  if (RouteMapConfigSm* sm = routeMapConfigSm(); sm && sm->routeMapConfig() == config &&
                                                 sm->vrfName() == vrfName &&
                                                 sm->policyMap() == policyMap) {
    return;
  }
  childIs(routeMapChild, routeMapConfigSmFactory(config, vrfName, policyMap));
}

PeerFilterConfigSm* VrfStatusSm::peerFilterConfigSm() const noexcept {
  return static_cast<PeerFilterConfigSm*>(child(peerFilterChild));
}

void VrfStatusSm::peerFilterConfigSmIs(Root::PeerFilterConfigPtr const& config,
                                       L3::VrfName const& vrfName) {
  if (PeerFilterConfigSm* sm = peerFilterConfigSm();
      sm && sm->peerFilterConfig() == config && sm->vrfName() == vrfName) {
    return;
  }
  childIs(peerFilterChild, Orb::make<PeerFilterConfigSm>(config, vrfName));
}

RibDynamicPrefixList::DynPfxConfigSm* VrfStatusSm::dynPfxConfigSm() const noexcept {
  return static_cast<RibDynamicPrefixList::DynPfxConfigSm*>(child(dynPfxChild));
}

void VrfStatusSm::dynPfxConfigSmIs(Root::DynPfxListConfigPtr const& config,
                                   Root::PolicyMapPtr const& policyMap) {
  if (auto* sm = dynPfxConfigSm(); sm && sm->config() == config && sm->policyMap() == policyMap) {
    return;
  }
  childIs(dynPfxChild, RibDynamicPrefixList::dynPfxConfigSmFactory(config, policyMap));
}

AclListConfigSm* VrfStatusSm::aclListConfigSm() const noexcept {
  return static_cast<AclListConfigSm*>(child(aclListChild));
}

void VrfStatusSm::aclListConfigSmIs(Root::AclListConfigPtr const& config,
                                    L3::VrfName const& vrfName) {
  if (AclListConfigSm* sm = aclListConfigSm();
      sm && sm->aclListConfig() == config && sm->vrfName() == vrfName) {
    return;
  }
  childIs(aclListChild, aclListConfigSmFactory(config, vrfName));
}

AclConfigSm* VrfStatusSm::aclConfigSm() const noexcept {
  return static_cast<AclConfigSm*>(child(aclChild));
}

void VrfStatusSm::aclConfigSmIs(Root::AclConfigPtr const& config, L3::VrfName const& vrfName) {
  if (AclConfigSm* sm = aclConfigSm();
      sm && sm->aclConfig() == config && sm->vrfName() == vrfName) {
    return;
  }
  childIs(aclChild, Orb::make<AclConfigSm>(config, vrfName));
}

void VrfStatusSm::childIs(Child slot, Orb::Ptr<Orb::Reactor> reactor) {
  children_[slot] = std::move(reactor);
  if (children_[slot]) children_[slot]->hasNotificationActiveIs(true);
}

Orb::Ptr<Orb::Reactor> VrfStatusSm::childDel(Child slot) {
  return children_[slot].take();
}

void VrfStatusSm::Children::partNotificationIs(bool active) {
  for (auto const& c : owner_->children_) {
    if (c) c->hasNotificationActiveIs(active);
  }
}

void VrfStatusSm::Children::partZombieIs(bool zombie) {
  for (auto const& c : owner_->children_) {
    if (c) c->orbDoZombieReactors(zombie);
  }
}

}  // namespace Tessel
