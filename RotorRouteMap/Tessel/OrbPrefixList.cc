// Prefix-list entries batched by sequence number and applied at each version.
#include "Tessel/OrbPrefixList.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Orb/Trace.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

template <class Kind>
BasicOrbPrefixList<Kind>::BasicOrbPrefixList(Orb::Ptr<List const> list, AclListConfigSm* owner)
    : list_(std::move(list)), owner_(owner), notifiee_(this, list_) {
  notifiee_.hasNotificationActiveIs(true);
  allEntriesChanged();
  versionChanged();
}

template <class Kind>
void BasicOrbPrefixList<Kind>::entryChanged(Orb::U32 seqno) {
  ORB_TRACE(traceHandler, Kind::entrySignature << " name: " << name() << " seqno: " << seqno);
  modifiedSeqNumIs(seqno, true);
}

template <class Kind>
void BasicOrbPrefixList<Kind>::allEntriesChanged() {
  auto const& entries = list_->prefixEntry();
  auto it = entries.begin();
  while (it != entries.end()) {
    Orb::U32 const seqno = it->first;
    entryChanged(seqno);
    // The handler may change the list; the next entry is the first one above
    // this number, whatever happened meanwhile.
    if (seqno == UINT32_MAX) break;
    it = entries.lowerBound(seqno + 1);
  }
}

namespace {

// The entries of the noted numbers, in the set's iteration order. They are
// looked up in ascending number, so a large batch walks the list once rather
// than descending the tree from its root for every number in hash order.
template <class Entries>
std::vector<typename Entries::mapped_type const*> entriesInSetOrder(
    Entries const& entries, Orb::HashMap<Orb::U32, bool> const& numbers) {
  std::vector<std::pair<Orb::U32, Orb::U32>> byNumber;  // number, place in the set
  byNumber.reserve(numbers.size());
  for (auto const& [seqno, modified] : numbers)
    byNumber.emplace_back(seqno, static_cast<Orb::U32>(byNumber.size()));
  std::sort(byNumber.begin(), byNumber.end());
  std::vector<typename Entries::mapped_type const*> found(byNumber.size(), nullptr);
  // Stepping costs one node a number; a search costs the tree's depth.
  bool const walk = byNumber.size() * 16 >= entries.size();
  auto it = entries.begin();
  for (auto const& [seqno, place] : byNumber) {
    if (walk) {
      while (it != entries.end() && it->first < seqno)
        ++it;
    } else {
      it = entries.lowerBound(seqno);
    }
    if (it != entries.end() && it->first == seqno) found[place] = &it->second;
  }
  return found;
}

}  // namespace

template <class Kind>
void BasicOrbPrefixList<Kind>::versionChanged() {
  ORB_TRACE(traceHandler, Kind::versionSignature << " name: " << name());
  auto cog = cogFactory(owner_->vrfName());
  auto const found = entriesInSetOrder(list_->prefixEntry(), modifiedSeqNum_);
  std::size_t place = 0;
  for (auto const& [seqno, modified] : modifiedSeqNum_) {
    ORB_TRACE(traceDetail, "Commit seqno: " << seqno);
    if (auto const* entry = found[place++]) {
      Kind::doAddEntry(*cog, name(), *entry);
    } else {
      cog->doDelIpPrefixListEntry(name(), seqno, Kind::family);
    }
  }
  cog->doCommit();
  modifiedSeqNumDelAll();
}

template <class Kind>
void BasicOrbPrefixList<Kind>::ListNotifiee::onOwnerAttribute(Orb::AttributeId attribute,
                                                              Orb::Key const& key) {
  BasicOrbPrefixList* pl = this->owner();
  switch (attribute) {
    case List::prefixEntry_:
      pl->entryChanged(key.u32());
      break;
    case List::version_:
      pl->versionChanged();
      break;
    default:
      break;
  }
}

template class BasicOrbPrefixList<Ipv4PrefixListKind>;
template class BasicOrbPrefixList<Ipv6PrefixListKind>;

OrbPrefixList::OrbPrefixList(Orb::Ptr<Acl::PrefixList const> list, AclListConfigSm* owner)
    : BasicOrbPrefixList(std::move(list), owner) {}

OrbIpv6PrefixList::OrbIpv6PrefixList(Orb::Ptr<Acl::Ipv6PrefixList const> list,
                                     AclListConfigSm* owner)
    : BasicOrbPrefixList(std::move(list), owner) {}

}  // namespace Tessel
