// Maintenance and notification of the community-list user index.
#include "Tessel/CommListUsers.h"

#include <algorithm>

#include "Orb/TypeRegistry.h"

namespace Tessel {

namespace {
Orb::TypeRegistration collType({"Tessel::CommSetClauseMapEntryColl",
                                {{CommSetClauseMapEntryColl::commSetClause_, "commSetClause"}},
                                {}});
Orb::TypeRegistration usersType({"Tessel::CommListUsers",
                                 {{CommListUsers::commListUser_, "commListUser"}},
                                 {}});
}  // namespace

Orb::Ptr<CommSetClauseMapEntryColl> commSetClauseMapEntryCollFactory(Orb::Name name) {
  return new CommSetClauseMapEntryColl(std::move(name));
}

void CommSetClauseMapEntryColl::commSetClauseIs(CommSetClauseInMapEntry const& record) {
  MapEntryCommSetClause const& key = record.mapEntryClause();
  if (auto* existing = records_.get(key)) {
    if (*existing == record) return;
    *existing = record;
  } else {
    records_.insert(key, record);
    if (users_) users_->clauseListed(name(), key);
  }
  notify(commSetClause_, Orb::Key::of(key));
}

void CommSetClauseMapEntryColl::commSetClauseDel(MapEntryCommSetClause const& key) {
  // A copy: `key` may be the record's own, which goes below.
  MapEntryCommSetClause const gone = key;
  if (!records_.erase(gone)) return;
  if (users_) users_->clauseUnlisted(name(), gone);
  notify(commSetClause_, Orb::Key::of(gone));
}

void CommSetClauseMapEntryColl::commSetClauseDelAll() {
  std::vector<MapEntryCommSetClause> keys;
  keys.reserve(records_.size());
  for (auto const& kv : records_)
    keys.push_back(kv.first);
  for (auto const& k : keys)
    commSetClauseDel(k);
}

Orb::Ptr<CommSetClauseMapEntryColl> CommListUsers::commListUser(Orb::Name const& listName) const {
  auto const* p = colls_.get(listName);
  return p ? *p : nullptr;
}

Orb::Ptr<CommSetClauseMapEntryColl> CommListUsers::commListUserIs(Orb::Name const& listName) {
  if (auto* p = colls_.get(listName)) return *p;
  Orb::Ptr<CommSetClauseMapEntryColl> coll = commSetClauseMapEntryCollFactory(listName);
  coll->parentIs(this);
  coll->users_ = this;
  colls_.set(listName, coll);
  notify(commListUser_, Orb::Key(listName));
  return coll;
}

Orb::Ptr<CommSetClauseMapEntryColl> CommListUsers::commListUserDel(Orb::Name const& name) {
  Orb::Name const listName = name;  // `name` may live in the node erased below
  auto* p = colls_.get(listName);
  if (!p) return nullptr;
  Orb::Ptr<CommSetClauseMapEntryColl> coll = *p;
  colls_.erase(listName);
  for (auto const& [key, record] : coll->commSetClause())
    clauseUnlisted(listName, key);
  coll->users_ = nullptr;
  coll->parentIs(nullptr);
  notify(commListUser_, Orb::Key(listName));
  return coll;
}

Orb::Ptr<CommSetClauseMapEntryColl> CommListUsers::commListUserDel(Colls::const_iterator it) {
  if (it == colls_.end()) return nullptr;
  return commListUserDel(it->first);
}

void CommListUsers::commListUserDelAll() {
  while (!colls_.empty())
    commListUserDel(colls_.begin()->first);
}

CommListUsers::ClauseLists::const_iterator CommListUsers::firstClauseOf(
    Orb::String const& mapName) const {
  // The least key of the map: sequence 0, and the flag that is least as a
  // signed number.
  return clauseLists_.lowerBound(
      MapEntryCommSetClause(mapName, 0, static_cast<Acl::CommSetFlag>(0x80000000u)));
}

void CommListUsers::clauseListed(Orb::Name const& list, MapEntryCommSetClause const& key) {
  std::vector<Orb::Name>& lists = clauseLists_.insert(key, std::vector<Orb::Name>()).first->second;
  lists.insert(std::lower_bound(lists.begin(), lists.end(), list), list);
}

void CommListUsers::clauseUnlisted(Orb::Name const& list, MapEntryCommSetClause const& key) {
  std::vector<Orb::Name>* lists = clauseLists_.get(key);
  if (!lists) return;
  std::erase(*lists, list);
  if (lists->empty()) clauseLists_.erase(key);
}

}  // namespace Tessel
