// The route-map reactor of one VRF.
//
// Watches: the route-map configuration (its maps by name and the set-operation
// mode), each map (its sequences and its version) and the policy map.
// Sends: the set-operation mode with a commit at construction and on every
// change of it; a map whole (delete, commit, insert, commit) when its reactor
// is made and on every notification of its version; the removal of a single
// sequence, or of the map when its last sequence goes, with a commit; the
// removal of a map that left the configuration, with a commit. A new or
// changed sequence is not sent by itself: it goes with the next version.
#pragma once

#include "Orb/HashMap.h"
#include "Orb/Reactor.h"
#include "Tessel/Root.h"

namespace Tessel {

class OrbRouteMap;
class OrbSeqMapEntry;

class RouteMapConfigSm : public Orb::Reactor {
 public:
  RouteMapConfigSm(Root::RouteMapConfigPtr routeMapConfig, L3::VrfName vrfName,
                   Root::PolicyMapPtr policyMap);
  ~RouteMapConfigSm() override;

  Root::RouteMapConfigPtr const& routeMapConfig() const noexcept { return routeMapConfig_; }
  L3::VrfName const& vrfName() const noexcept { return vrfName_; }
  Root::PolicyMapPtr const& policyMap() const noexcept { return policyMap_; }
  bool initialized() const noexcept { return initialized_; }

  /// The reactor of the map `name`, or null.
  OrbRouteMap* orbRouteMap(Orb::Name const& name) const { return orbRouteMap_.find(name); }
  std::size_t orbRouteMaps() const noexcept { return orbRouteMap_.size(); }

  /// Sends the configuration's set-operation mode and commits.
  void handleRouteMapSetOpConfig();
  /// Deletes the map `name` from the engine when the configuration no
  /// longer holds it; a present map is sent by its own reactor.
  void handleRouteMap(Orb::String const& name);
  /// A change of the policy map's route-map references at `name`; the
  /// references of listed maps are not tracked yet.
  void handlePolicyMapRouteMap(Orb::String const& name);

  /// Makes the reactor of `map` unless one already watches that map.
  void routeMapIs(Orb::Ptr<Routing::RouteMap::Map const> const& map);
  /// Removes the reactor of `name`; sends nothing.
  void routeMapDel(Orb::Name const& name);
  void routeMapDelAll();

  void handleInitialized();

 private:
  class OrbRouteMapConfig final : public Orb::ReactorNotifiee<RouteMapConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };
  class OrbPolicyMap final : public Orb::ReactorNotifiee<RouteMapConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Root::RouteMapConfigPtr routeMapConfig_;
  L3::VrfName vrfName_;
  Root::PolicyMapPtr policyMap_;
  OrbRouteMapConfig configNotifiee_;
  OrbPolicyMap policyMapNotifiee_;
  Orb::ReactorColl<Orb::Name, OrbRouteMap> orbRouteMap_{this};
  bool initialized_ = false;
};

/// The reactor of one route map.
class OrbRouteMap : public Orb::Reactor {
 public:
  OrbRouteMap(Orb::Ptr<Routing::RouteMap::Map const> map, RouteMapConfigSm* owner);

  Orb::Ptr<Routing::RouteMap::Map const> const& routeMap() const noexcept { return map_; }
  Orb::Name const& name() const noexcept { return map_->name(); }
  L3::VrfName const& vrfName() const noexcept { return owner_->vrfName(); }
  RouteMapConfigSm* owner() const noexcept { return owner_; }

  OrbSeqMapEntry* seqMapEntry(Orb::U32 seqno) const { return seqMapEntry_.find(seqno); }
  std::size_t seqMapEntries() const noexcept { return seqMapEntry_.size(); }

  /// Resends the whole map: delete, commit, insert, commit.
  void handleMapVersion();
  /// Notes a present sequence; sends the removal of one that is gone.
  void handleSeqno(Orb::U32 seqno);
  /// Runs handleSeqno for every sequence present.
  void handleSeqno();

  void seqMapEntryIs(Orb::Ptr<Routing::RouteMap::MapEntry const> const& entry);
  void seqMapEntryDel(Orb::U32 seqno);
  void seqMapEntryDelAll();

  /// Sequences whose community sets may be in the engine.
  Orb::HashMap<Orb::U32, bool> const& commSetName() const noexcept { return commSetName_; }
  void commSetNameIs(Orb::U32 seqno, bool present) { commSetName_.set(seqno, present); }
  void commSetNameDel(Orb::U32 seqno) { commSetName_.erase(seqno); }
  void commSetNameDelAll() { commSetName_.clear(); }
  /// Removes the community objects of every recorded sequence.
  void deleteRouteMapCommSets();

 private:
  class MapNotifiee final : public Orb::ReactorNotifiee<OrbRouteMap> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  /// The community clean-up of one sequence; the route-map clauses that use
  /// community lists plug in here.
  void deleteSequenceCommSets(Orb::U32 seqno);

  Orb::Ptr<Routing::RouteMap::Map const> map_;
  RouteMapConfigSm* owner_;
  MapNotifiee notifiee_;
  Orb::ReactorColl<Orb::U32, OrbSeqMapEntry> seqMapEntry_{this};
  Orb::HashMap<Orb::U32, bool> commSetName_;
};

/// The reactor of one sequence of a route map; it keeps what the sequence
/// has registered in the policy map.
class OrbSeqMapEntry : public Orb::Reactor {
 public:
  OrbSeqMapEntry(Orb::Ptr<Routing::RouteMap::MapEntry const> entry, OrbRouteMap* owner);

  Orb::U32 seqno() const noexcept { return entry_->seqno(); }
  Orb::Ptr<Routing::RouteMap::MapEntry const> const& seqMapEntry() const noexcept { return entry_; }
  OrbRouteMap* owner() const noexcept { return owner_; }
  bool initialized() const noexcept { return initialized_; }

  void handleInitialized();

 protected:
  void handleDel() override;

 private:
  Orb::Ptr<Routing::RouteMap::MapEntry const> entry_;
  OrbRouteMap* owner_;
  bool initialized_ = false;
};

/// Makes the route-map reactor of a VRF.
Orb::Ptr<RouteMapConfigSm> routeMapConfigSmFactory(Root::RouteMapConfigPtr const& routeMapConfig,
                                                   L3::VrfName const& vrfName,
                                                   Root::PolicyMapPtr const& policyMap);

}  // namespace Tessel
