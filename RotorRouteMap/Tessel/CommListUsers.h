// Tessel::CommListUsers: the index from community-list name to the route-map
// clauses that use the list, walked in name order.
#pragma once

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

 private:
  explicit CommListUsers(Orb::Name name) : Entity(std::move(name)) {}
  Colls colls_;
};

}  // namespace Tessel
