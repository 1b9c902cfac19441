// The route-map reactor of one VRF.
//
// Watches: the route-map configuration (its maps by name and the set-operation
// mode), each map (its sequences and its version), each sequence (its match
// rules and sub-route-map) and the policy map's route-map collection.
// Sends: the set-operation mode with a commit at construction and on every
// change of it; a map whole (delete, commit, insert, commit) when its reactor
// is made and on every notification of its version; the removal of a single
// sequence, or of the map when its last sequence goes, with a commit; the
// removal of a map that left the configuration, with a commit. A new or
// changed sequence is not sent by itself: it goes with the next version.
// Writes: while a map is listed in the policy map, each sequence registers the
// sub-route-map and dynamic prefix lists it names there, and withdraws them
// when they change, the sequence goes or the map stops being listed.
#pragma once

#include "Orb/Api.h"
#include "Orb/HashMap.h"
#include "Orb/Reactor.h"
#include "RoutingPolicyMap/Types.h"
#include "Tessel/Root.h"

namespace Tessel {

class OrbRouteMap;
class OrbSeqMapEntry;

class ROTOR_API RouteMapConfigSm : public Orb::Reactor {
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
  /// A change of the policy map's route-map collection at `name`: a map that
  /// became listed registers its sequences' references, one that stopped
  /// being listed withdraws them.
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
class ROTOR_API OrbRouteMap : public Orb::Reactor {
 public:
  OrbRouteMap(Orb::Ptr<Routing::RouteMap::Map const> map, RouteMapConfigSm* owner);

  Orb::Ptr<Routing::RouteMap::Map const> const& routeMap() const noexcept { return map_; }
  Orb::Name const& name() const noexcept { return map_->name(); }
  L3::VrfName const& vrfName() const noexcept { return owner_->vrfName(); }
  RouteMapConfigSm* owner() const noexcept { return owner_; }

  OrbSeqMapEntry* seqMapEntry(Orb::U32 seqno) const { return seqMapEntry_.find(seqno); }
  std::size_t seqMapEntries() const noexcept { return seqMapEntry_.size(); }
  /// The sequence numbers with a reactor, as a snapshot.
  std::vector<Orb::U32> seqMapEntryKeys() const { return seqMapEntry_.keys(); }

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

/// The reactor of one sequence of a route map. It watches its entry's match
/// rules and sub-route-map, and keeps what the sequence has registered in the
/// policy map, which is the only memory of what to withdraw.
class ROTOR_API OrbSeqMapEntry : public Orb::Reactor {
 public:
  OrbSeqMapEntry(Orb::Ptr<Routing::RouteMap::MapEntry const> entry, OrbRouteMap* owner);

  Orb::U32 seqno() const noexcept { return entry_->seqno(); }
  Orb::Ptr<Routing::RouteMap::MapEntry const> const& seqMapEntry() const noexcept { return entry_; }
  OrbRouteMap* owner() const noexcept { return owner_; }
  bool initialized() const noexcept { return initialized_; }

  /// The names last registered; empty when nothing is.
  Orb::String const& prevV4DynamicPrefixList() const noexcept { return prevV4Dpl_; }
  Orb::String const& prevV6DynamicPrefixList() const noexcept { return prevV6Dpl_; }
  Orb::String const& prevSubRouteMap() const noexcept { return prevSubRouteMap_; }
  /// "NAME seqNo N": the key of every reason this sequence registers.
  Orb::String configKey() const;

  /// Registers the sequence's present references when its map is listed.
  void handleInitialized();
  /// Moves the dynamic prefix-list reference of a match rule of `option` to
  /// the entry's present value; other options refer to nothing.
  void handleMatchRule(Routing::RouteMap::MatchOption option);
  /// Moves the sub-route-map reference to the entry's present value.
  void handleSubRouteMap();
  /// Registers `curr` before withdrawing a different `prev`, so a policy
  /// that both name never leaves the policy map in between.
  void updatePolicyMapDpl(RoutingPolicyMap::CliMode mode, Orb::String const& configCli,
                          Orb::String const& configKey, Orb::String const& prevDplName,
                          Orb::String const& currDplName);
  /// As updatePolicyMapDpl, in the route-map collection.
  void updatePolicyMapRouteMap(RoutingPolicyMap::CliMode mode, Orb::String const& configCli,
                               Orb::String const& configKey, Orb::String const& prevSubRmName,
                               Orb::String const& currSubRmName);
  void addReferredPoliciesToPolicyMap();
  /// Withdraws everything this sequence registered.
  void deleteReferredPoliciesFromPolicyMap();

 protected:
  void handleDel() override;

 private:
  class EntryNotifiee final : public Orb::ReactorNotifiee<OrbSeqMapEntry> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  /// Whether the policy map lists this sequence's map.
  bool mapListed() const;

  Orb::Ptr<Routing::RouteMap::MapEntry const> entry_;
  OrbRouteMap* owner_;
  EntryNotifiee notifiee_;
  Orb::String prevV4Dpl_;
  Orb::String prevV6Dpl_;
  Orb::String prevSubRouteMap_;
  bool initialized_ = false;
};

/// Makes the route-map reactor of a VRF.
ROTOR_API Orb::Ptr<RouteMapConfigSm> routeMapConfigSmFactory(
    Root::RouteMapConfigPtr const& routeMapConfig, L3::VrfName const& vrfName,
    Root::PolicyMapPtr const& policyMap);

}  // namespace Tessel
