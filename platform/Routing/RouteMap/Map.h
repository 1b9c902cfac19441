// Routing::RouteMap::Map: one route map (or peer filter): its sequences by
// number and the version its writer bumps when a batch of changes is complete.
#pragma once

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/HashMap.h"
#include "Routing/RouteMap/MapEntry.h"

namespace Routing::RouteMap {

class ROTOR_API Map : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    mapEntry_ = 1,  // key: the sequence number
    version_,
  };

  /// Sequences keyed by number; walked in the collection's hash order.
  Orb::HashMap<Orb::U32, Orb::Ptr<MapEntry>> const& mapEntry() const noexcept { return entries_; }
  Orb::Ptr<MapEntry> mapEntry(Orb::U32 seqno) const;
  /// The sequence `seqno`, made (and notified) when absent.
  Orb::Ptr<MapEntry> mapEntryIs(Orb::U32 seqno);
  void mapEntryDel(Orb::U32 seqno);

  Orb::U32 version() const noexcept { return versionValue_; }
  /// Stores the version and notifies, even when it is unchanged: every
  /// notification asks watchers to resend.
  void versionIs(Orb::U32 v);
  void versionInc() { versionIs(versionValue_ + 1); }

 private:
  friend class Config;
  friend class PeerFilterConfig;
  Map(Orb::Name name, Orb::Entity const* parent);

  Orb::HashMap<Orb::U32, Orb::Ptr<MapEntry>> entries_;
  Orb::U32 versionValue_ = 0;
};

}  // namespace Routing::RouteMap
