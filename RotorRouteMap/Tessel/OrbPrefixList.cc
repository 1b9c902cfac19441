// Prefix-list entries batched by sequence number and applied at each version.
#include "Tessel/OrbPrefixList.h"

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

template <class Kind>
void BasicOrbPrefixList<Kind>::versionChanged() {
  ORB_TRACE(traceHandler, Kind::versionSignature << " name: " << name());
  auto cog = cogFactory(owner_->vrfName());
  for (auto const& [seqno, modified] : modifiedSeqNum_) {
    ORB_TRACE(traceDetail, "Commit seqno: " << seqno);
    if (auto const* entry = list_->prefixEntry(seqno)) {
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
