// The records that say which route-map clause uses a community list: the key
// of one use, and the use together with the clause's community set.
#pragma once

#include <iosfwd>
#include <string_view>

#include "Acl/Enums.h"
#include "Orb/Api.h"
#include "Orb/Hash.h"
#include "Orb/String.h"
#include "Routing/RouteMap/CommunitySet.h"

namespace Tessel {

/// One set clause of one route-map sequence.
class ROTOR_API MapEntryCommSetClause {
 public:
  MapEntryCommSetClause() = default;
  MapEntryCommSetClause(Orb::String mapName, Orb::U32 mapSeqno, Acl::CommSetFlag flag)
      : mapName_(std::move(mapName)), mapSeqno_(mapSeqno), flag_(flag) {}
  /// Reads the text form; raises Orb::RangeError naming the field at fault.
  explicit MapEntryCommSetClause(std::string_view text);

  Orb::String const& mapName() const noexcept { return mapName_; }
  Orb::U32 mapSeqno() const noexcept { return mapSeqno_; }
  Acl::CommSetFlag flag() const noexcept { return flag_; }

  /// True for the default value (empty name, sequence 0, flag 0).
  bool operator!() const noexcept { return *this == MapEntryCommSetClause(); }
  friend bool operator==(MapEntryCommSetClause const&, MapEntryCommSetClause const&) = default;
  /// By name, then sequence (unsigned), then flag compared as a signed number.
  friend ROTOR_API bool operator<(MapEntryCommSetClause const& a,
                                  MapEntryCommSetClause const& b) noexcept;

  /// The seed, then the name's, the sequence's and the flag's hash mixed in.
  Orb::HashValue hash(Orb::HashValue seed) const noexcept;

 private:
  Orb::String mapName_;
  Orb::U32 mapSeqno_ = 0;
  Acl::CommSetFlag flag_ = Acl::CommSetFlag(0);
};

/// A use with the community set the clause holds (one reference on it).
/// Equal when the keys are equal and the set is the same object.
class ROTOR_API CommSetClauseInMapEntry {
 public:
  CommSetClauseInMapEntry() = default;
  CommSetClauseInMapEntry(MapEntryCommSetClause key,
                          Orb::Ptr<Routing::RouteMap::CommunitySet const> commSet)
      : mapEntryClause_(std::move(key)), commSet_(std::move(commSet)) {}
  /// Reads the text form; the set is found among the live sets by address.
  explicit CommSetClauseInMapEntry(std::string_view text);

  MapEntryCommSetClause const& mapEntryClause() const noexcept { return mapEntryClause_; }
  Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet() const noexcept {
    return commSet_;
  }
  Orb::String const& mapName() const noexcept { return mapEntryClause_.mapName(); }
  Orb::U32 mapSeqno() const noexcept { return mapEntryClause_.mapSeqno(); }

  bool operator!() const noexcept { return !mapEntryClause_ && !commSet_; }
  friend bool operator==(CommSetClauseInMapEntry const&, CommSetClauseInMapEntry const&) = default;
  friend bool operator<(CommSetClauseInMapEntry const& a,
                        CommSetClauseInMapEntry const& b) noexcept {
    return a.mapEntryClause_ < b.mapEntryClause_;
  }
  Orb::HashValue hash(Orb::HashValue seed) const noexcept { return mapEntryClause_.hash(seed); }

 private:
  MapEntryCommSetClause mapEntryClause_;
  Orb::Ptr<Routing::RouteMap::CommunitySet const> commSet_;
};

}  // namespace Tessel
