// Prefix-list entries batched by sequence number and applied at each version.
#include "Tessel/OrbPrefixList.h"

#include <algorithm>
#include <optional>
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
    Orb::U64 const writes = list_->entryWrites();
    entryChanged(seqno);
    if (list_->entryWrites() == writes) {
      ++it;
      continue;
    }
    // The handler changed the list: the next entry is the first one above
    // this number, whatever happened meanwhile.
    if (seqno == UINT32_MAX) break;
    it = entries.lowerBound(seqno + 1);
  }
}

namespace {

// From this many noted numbers on, a version looks its entries up in key
// order first; below it, a search per number costs less than the copies.
constexpr std::size_t kLargeBatch = 256;

// Sorts by the upper 32 bits in two stable 16-bit passes: linear in the batch,
// where a comparison sort of 100,000 numbers costs more than sending them.
void sortByUpperWord(std::vector<Orb::U64>& values) {
  std::vector<Orb::U64> scratch(values.size());
  for (unsigned shift : {32u, 48u}) {
    std::vector<std::size_t> start(1u << 16, 0);
    for (Orb::U64 v : values)
      ++start[(v >> shift) & 0xffff];
    std::size_t sum = 0;
    for (std::size_t& s : start)
      sum += std::exchange(s, sum);
    for (Orb::U64 v : values)
      scratch[start[(v >> shift) & 0xffff]++] = v;
    values.swap(scratch);
  }
}

// Copies of the entries of `numbers`, in that order (absent for a number with
// no entry). They are looked up in ascending number,
// so a large batch walks the list once rather than descending the tree from
// its root for every number in hash order, and the send then reads them in
// sequence.
template <class Entries>
std::vector<std::optional<typename Entries::mapped_type>> entriesOf(
    Entries const& entries, std::vector<Orb::U32> const& numbers) {
  std::vector<Orb::U64> byNumber;  // number above, place in the set below
  byNumber.reserve(numbers.size());
  for (Orb::U32 const seqno : numbers)
    byNumber.push_back(Orb::U64(seqno) << 32 | byNumber.size());
  // The counting passes cost their 65,536 buckets whatever the batch.
  if (byNumber.size() > (std::size_t(1) << 15)) {
    sortByUpperWord(byNumber);
  } else {
    std::sort(byNumber.begin(), byNumber.end());
  }
  std::vector<std::optional<typename Entries::mapped_type>> found(byNumber.size());
  // Stepping costs one node a number; a search costs the tree's depth.
  bool const walk = byNumber.size() * 4 >= entries.size();
  auto it = entries.begin();
  for (Orb::U64 const v : byNumber) {
    auto const seqno = static_cast<Orb::U32>(v >> 32);
    if (walk) {
      while (it != entries.end() && it->first < seqno)
        ++it;
    } else {
      it = entries.lowerBound(seqno);
    }
    if (it != entries.end() && it->first == seqno) found[static_cast<Orb::U32>(v)] = it->second;
  }
  return found;
}

}  // namespace

template <class Kind>
void BasicOrbPrefixList<Kind>::versionChanged() {
  ORB_TRACE(traceHandler, Kind::versionSignature << " name: " << name());
  auto cog = cogFactory(owner_->vrfName());
  auto const send = [&](Orb::U32 seqno, auto const* entry) {
    ORB_TRACE(traceDetail, "Commit seqno: " << seqno);
    if (entry) {
      Kind::doAddEntry(*cog, name(), *entry);
    } else {
      cog->doDelIpPrefixListEntry(name(), seqno, Kind::family);
    }
  };
  if (modifiedSeqNum_.size() < kLargeBatch) {
    for (auto const& [seqno, modified] : modifiedSeqNum_)
      send(seqno, list_->prefixEntry(seqno));
  } else {
    std::vector<Orb::U32> numbers;
    numbers.reserve(modifiedSeqNum_.size());
    for (auto const& [seqno, modified] : modifiedSeqNum_)
      numbers.push_back(seqno);
    auto const found = entriesOf(list_->prefixEntry(), numbers);
    for (std::size_t place = 0; place < numbers.size(); ++place)
      send(numbers[place], found[place] ? &*found[place] : nullptr);
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
