// Tessel::CommSetClauseMapEntryColl: the route-map clauses that use one
// community list, keyed by clause.
#pragma once

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/HashMap.h"
#include "Tessel/MapEntryCommSetClause.h"

namespace Tessel {

class CommListUsers;

class ROTOR_API CommSetClauseMapEntryColl : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    commSetClause_ = 1,  // key: the MapEntryCommSetClause
  };
  using Records = Orb::HashMap<MapEntryCommSetClause, CommSetClauseInMapEntry>;

  /// Clauses in the collection's hash order (seed 0), the order refreshes
  /// walk them in.
  Records const& commSetClause() const noexcept { return records_; }
  CommSetClauseInMapEntry const* commSetClause(MapEntryCommSetClause const& key) const {
    return records_.get(key);
  }

  /// Inserts, or replaces the set of an existing clause; notifies unless the
  /// same record is already there.
  void commSetClauseIs(CommSetClauseInMapEntry const& record);
  /// Removes the clause and notifies, if present.
  void commSetClauseDel(MapEntryCommSetClause const& key);
  void commSetClauseDelAll();

 private:
  friend Orb::Ptr<CommSetClauseMapEntryColl> commSetClauseMapEntryCollFactory(Orb::Name name);
  friend class CommListUsers;
  explicit CommSetClauseMapEntryColl(Orb::Name name) : Entity(std::move(name)) {}
  Records records_;
  /// The index that holds this collection, told of every clause that comes
  /// or goes; null while the collection stands alone.
  CommListUsers* users_ = nullptr;
};

/// A new, empty collection for the community list `name`.
ROTOR_API Orb::Ptr<CommSetClauseMapEntryColl> commSetClauseMapEntryCollFactory(Orb::Name name);
inline Orb::Ptr<CommSetClauseMapEntryColl> CommSetClauseMapEntryCollIs(Orb::Name name) {
  return commSetClauseMapEntryCollFactory(std::move(name));
}

}  // namespace Tessel
