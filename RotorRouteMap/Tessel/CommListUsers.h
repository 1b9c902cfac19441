// Tessel::CommListUsers: the index from community-list name to the route-map
// clauses that use the list, walked in name order, and back from each clause
// to the lists it stands under.
#pragma once

#include <vector>

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"
#include "Tessel/CommSetClauseMapEntryColl.h"

namespace Tessel {

class ROTOR_API CommListUsers : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    commListUser_ = 1,  // key: the community-list name
  };
  using Colls = Orb::OrderedMap<Orb::Name, Orb::Ptr<CommSetClauseMapEntryColl>>;

  static Orb::Ptr<CommListUsers> create(Orb::Name name) {
    return new CommListUsers(std::move(name));
  }

  Colls const& commListUser() const noexcept { return colls_; }
  Orb::Ptr<CommSetClauseMapEntryColl> commListUser(Orb::Name const& listName) const;
  /// The collection of `listName`, made (with this index as its parent, and
  /// notified) when absent.
  Orb::Ptr<CommSetClauseMapEntryColl> commListUserIs(Orb::Name const& listName);
  /// Takes the collection out, clears its parent, notifies and returns it;
  /// null when absent.
  Orb::Ptr<CommSetClauseMapEntryColl> commListUserDel(Orb::Name const& listName);
  /// The same for the collection at `it`; null for the end. Other iterators
  /// stay valid, so the index can be emptied while walking it.
  Orb::Ptr<CommSetClauseMapEntryColl> commListUserDel(Colls::const_iterator it);
  void commListUserDelAll();

  /// For each clause in the index, the lists it stands under, in name
  /// order; clauses in key order, so a route map's clauses lie together.
  using ClauseLists = Orb::OrderedMap<MapEntryCommSetClause, std::vector<Orb::Name>>;
  ClauseLists const& clauseLists() const noexcept { return clauseLists_; }
  /// The lists `key` stands under, or null when it stands under none.
  std::vector<Orb::Name> const* listsOf(MapEntryCommSetClause const& key) const {
    return clauseLists_.get(key);
  }
  /// The first clause of route map `mapName` in clauseLists().
  ClauseLists::const_iterator firstClauseOf(Orb::String const& mapName) const;

 private:
  friend class CommSetClauseMapEntryColl;
  explicit CommListUsers(Orb::Name name) : Entity(std::move(name)) {}
  /// The collection of `list` gained or lost `key`.
  void clauseListed(Orb::Name const& list, MapEntryCommSetClause const& key);
  void clauseUnlisted(Orb::Name const& list, MapEntryCommSetClause const& key);

  Colls colls_;
  ClauseLists clauseLists_;
};

}  // namespace Tessel
