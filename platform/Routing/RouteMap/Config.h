// Routing::RouteMap::Config and PeerFilterConfig: the VRF's route maps and
// peer filters by name, and the route-map set-operation mode.
#pragma once

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"
#include "Routing/RouteMap/Map.h"
#include "Routing/RouteMap/Types.h"

namespace Routing::RouteMap {

class ROTOR_API Config : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    routeMap_ = 1,  // key: the map's name
    routeMapOpMode_,
  };

  static Orb::Ptr<Config> create(Orb::Name name) { return new Config(std::move(name)); }

  /// Route maps in name order.
  Orb::OrderedMap<Orb::Name, Orb::Ptr<Map>> const& routeMap() const noexcept { return maps_; }
  Orb::Ptr<Map> routeMap(Orb::Name const& name) const;
  /// The map `name`, made (and notified) when absent.
  Orb::Ptr<Map> routeMapIs(Orb::Name const& name);
  /// The name is taken by value: a caller may pass the key stored in the
  /// collection, which goes before the notification.
  void routeMapDel(Orb::Name name);

  RouteMapOpModeType routeMapOpMode() const noexcept { return mode_; }
  void routeMapOpModeIs(RouteMapOpModeType mode);

 private:
  explicit Config(Orb::Name name) : Entity(std::move(name)) {}
  Orb::OrderedMap<Orb::Name, Orb::Ptr<Map>> maps_;
  RouteMapOpModeType mode_ = routeMapOpModeDefault;
};

/// Peer filters have the shape of route maps but a collection of their own.
class ROTOR_API PeerFilterConfig : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    peerFilter_ = 1,  // key: the filter's name
  };

  static Orb::Ptr<PeerFilterConfig> create(Orb::Name name) {
    return new PeerFilterConfig(std::move(name));
  }

  Orb::OrderedMap<Orb::Name, Orb::Ptr<Map>> const& peerFilter() const noexcept { return filters_; }
  Orb::Ptr<Map> peerFilter(Orb::Name const& name) const;
  Orb::Ptr<Map> peerFilterIs(Orb::Name const& name);
  void peerFilterDel(Orb::Name name);

 private:
  explicit PeerFilterConfig(Orb::Name name) : Entity(std::move(name)) {}
  Orb::OrderedMap<Orb::Name, Orb::Ptr<Map>> filters_;
};

}  // namespace Routing::RouteMap
