// The peer-filter reactor of one VRF.
//
// Watches: the peer-filter configuration (its filters by name) and each
// filter's version. Sends: a filter whole, as the engine route map
// ".PEER_FILTER." + name (delete, commit, insert, commit), when its reactor is
// made and on every notification of its version; its removal with a commit
// when it leaves the configuration. Sequence changes wait for the next
// version: there is no per-sequence reactor, no community clean-up and no
// policy-map reference for peer filters.
#pragma once

#include "Orb/Api.h"
#include "Orb/Reactor.h"
#include "Tessel/Root.h"

namespace Tessel {

class OrbPeerFilter;

class ROTOR_API PeerFilterConfigSm : public Orb::Reactor {
 public:
  PeerFilterConfigSm(Root::PeerFilterConfigPtr peerFilterConfig, L3::VrfName vrfName);
  ~PeerFilterConfigSm() override;

  Root::PeerFilterConfigPtr const& peerFilterConfig() const noexcept { return config_; }
  L3::VrfName const& vrfName() const noexcept { return vrfName_; }
  bool initialized() const noexcept { return initialized_; }

  /// The reactor of the filter `name`, or null.
  OrbPeerFilter* orbPeerFilter(Orb::Name const& name) const { return orbPeerFilter_.find(name); }
  std::size_t orbPeerFilters() const noexcept { return orbPeerFilter_.size(); }

  /// Deletes the filter `name` from the engine when the configuration no
  /// longer holds it; a present filter is sent by its own reactor.
  void handlePeerFilter(Orb::String const& name);

  /// Makes the reactor of `map` unless one already watches that map.
  void peerFilterIs(Orb::Ptr<Routing::RouteMap::Map const> const& map);
  /// Removes the reactor of `name`; sends nothing.
  void peerFilterDel(Orb::Name const& name);
  void peerFilterDelAll();

  void handleInitialized();

  /// The engine's route-map name of a peer filter; the leading dot keeps it
  /// apart from every configurable route-map name.
  static Orb::String engineName(Orb::String const& name) { return ".PEER_FILTER." + name; }

 private:
  class OrbPeerFilterConfig final : public Orb::ReactorNotifiee<PeerFilterConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Root::PeerFilterConfigPtr config_;
  L3::VrfName vrfName_;
  OrbPeerFilterConfig configNotifiee_;
  Orb::ReactorColl<Orb::Name, OrbPeerFilter> orbPeerFilter_{this};
  bool initialized_ = false;
};

/// The reactor of one peer filter: it resends the filter on every version.
class ROTOR_API OrbPeerFilter : public Orb::Reactor {
 public:
  OrbPeerFilter(Orb::Ptr<Routing::RouteMap::Map const> map, PeerFilterConfigSm* owner);

  Orb::Ptr<Routing::RouteMap::Map const> const& peerFilter() const noexcept { return map_; }
  Orb::Name const& name() const noexcept { return map_->name(); }
  L3::VrfName const& vrfName() const noexcept { return owner_->vrfName(); }

  /// Resends the whole filter: delete, commit, insert, commit.
  void handleMapVersion();

 private:
  class MapNotifiee final : public Orb::ReactorNotifiee<OrbPeerFilter> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<Routing::RouteMap::Map const> map_;
  PeerFilterConfigSm* owner_;
  MapNotifiee notifiee_;
};

}  // namespace Tessel
