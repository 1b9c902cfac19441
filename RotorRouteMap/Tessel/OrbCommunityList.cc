// Community-list entries written at their versions, deleted as they go, and
// every change passed on to the route-map clauses that copied the list.
#include "Tessel/OrbCommunityList.h"

#include <cstdint>

#include "Orb/Trace.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/Cog.h"
#include "Tessel/Holds.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Acl::CommunityList;
using Acl::CommunityListEntry;

// ---- OrbCommunityList

namespace {

/// One entry's set: the list's name and the entry's number.
struct EntrySet {
  Orb::Name list;
  Orb::U32 seqno;
  friend bool operator<(EntrySet const& a, EntrySet const& b) {
    return a.list != b.list ? a.list < b.list : a.seqno < b.seqno;
  }
  Orb::HashValue hash(Orb::HashValue seed) const noexcept {
    return Orb::hashFinish(Orb::hashMix(Orb::hashMix(seed, list.hash()), seqno));
  }
};

/// Which list reactors hold each entry's set during a replacement. Engine
/// paths carry no VRF, so the record is the process's. Kept by name and
/// number rather than by set name: two lists whose set names run together do
/// delete each other's set.
Holds<EntrySet>& entrySets() {
  static Holds<EntrySet> holds;
  return holds;
}

}  // namespace

OrbCommunityList::OrbCommunityList(Orb::Ptr<CommunityList const> list, AclListConfigSm* owner)
    : list_(std::move(list)), owner_(owner), notifiee_(this, list_) {
  notifiee_.hasNotificationActiveIs(true);
  // Entries present now are written, and noted, by their own reactors.
  auto const& entries = list_->communityListEntry();
  communityListEntry_.delUnless([&](Orb::U32 seqno) { return entries.contains(seqno); });
  for (auto const& [seqno, entry] : entries)
    communityListEntryIs(entry);
}

L3::VrfName const& OrbCommunityList::vrfName() const noexcept {
  return owner_->vrfName();
}

void OrbCommunityList::commSetNameIs(Orb::U32 seqno, bool present) {
  commSetName_.set(seqno, present);
  if (machineReplacing()) entrySets().holdIs({name(), seqno}, this);
}

void OrbCommunityList::commSetNameDel(Orb::U32 seqno) {
  if (commSetName_.erase(seqno) && entrySets().size()) entrySets().holdDel({name(), seqno}, this);
}

void OrbCommunityList::commSetNameDelAll() {
  if (entrySets().size()) {
    for (auto const& [seqno, present] : commSetName_)
      entrySets().holdDel({name(), seqno}, this);
  }
  commSetName_.clear();
}

void OrbCommunityList::handleCommunityListEntry(Orb::U32 seqno) {
  ORB_TRACE(traceHandler, "void Tessel::OrbCommunityList::handleCommunityListEntry(U32 seqno)"
                              << " name: " << name() << " seqno: " << seqno
                              << " vrf: " << vrfName());
  if (list_->communityListEntry().contains(seqno)) {
    commSetNameIs(seqno, true);
    return;
  }
  auto cog = cogFactory(vrfName());
  cog->doDelCommunityListEntry(name(), seqno);
  cog->refreshCommListUsersOf(name());
  cog->doCommit();
  commSetNameDel(seqno);
}

void OrbCommunityList::deleteListCommSets() {
  ORB_TRACE(traceHandler, "void Tessel::OrbCommunityList::deleteListCommSets()"
                              << " name: " << name() << " vrf: " << vrfName());
  auto cog = cogFactory(vrfName());
  for (auto const& [seqno, present] : commSetName_) {
    if (entrySets().size() && entrySets().holdDel({name(), seqno}, this)) {
      ORB_TRACE(traceHandler,
                "deleteListCommSets: seqno " << seqno << " kept, another list reactor holds it");
      continue;
    }
    Orb::String const setName = Cog::getCommunitySetName(name(), seqno);
    cog->doDelCommSet(setName, Acl::communityStandard);
    cog->doDelCommSet(setName, Acl::communityExtended);
    cog->doDelCommSet(setName, Acl::communityLarge);
  }
}

void OrbCommunityList::handleDel() {
  deleteListCommSets();
}

void OrbCommunityList::communityListEntryIs(Orb::Ptr<CommunityListEntry const> const& entry) {
  if (OrbCommunityListEntry* existing = communityListEntry_.find(entry->seqno());
      existing && existing->communityListEntry() == entry) {
    return;
  }
  communityListEntry_.insert(entry->seqno(), Orb::make<OrbCommunityListEntry>(entry, this));
}

void OrbCommunityList::communityListEntryDel(Orb::U32 seqno) {
  communityListEntry_.del(seqno);
}

void OrbCommunityList::communityListEntryDelAll() {
  communityListEntry_.delAll();
}

void OrbCommunityList::ListNotifiee::onOwnerAttribute(Orb::AttributeId attribute,
                                                      Orb::Key const& key) {
  if (attribute != CommunityList::communityListEntry_ || !key.isU32()) return;
  OrbCommunityList* list = owner();
  Orb::U32 const seqno = key.u32();
  list->handleCommunityListEntry(seqno);
  if (auto entry = list->list_->communityListEntry(seqno)) {
    list->communityListEntryIs(entry);
  } else {
    list->communityListEntryDel(seqno);
  }
}

// ---- OrbCommunityListEntry

OrbCommunityListEntry::OrbCommunityListEntry(Orb::Ptr<CommunityListEntry const> entry,
                                             OrbCommunityList* owner)
    : entry_(std::move(entry)), owner_(owner), notifiee_(this, entry_) {
  notifiee_.hasNotificationActiveIs(true);
  handleVersion();
}

void OrbCommunityListEntry::handleVersion() {
  ORB_TRACE(traceCommand, "void Tessel::OrbCommunityListEntry::handleVersion()"
                              << " name: " << owner_->name() << " seqno: " << seqno()
                              << " version: " << entry_->version());
  if (entry_->version() == 0) return;
  auto cog = cogFactory(owner_->vrfName());
  cog->doAddCommunityListEntry(owner_->name(), *entry_);
  cog->refreshCommListUsersOf(owner_->name());
  cog->doCommit();
  // The set is written: the list deletes it when it goes. Entries already
  // there when the list reactor was made, and entries completed later, are
  // noted by nothing else.
  owner_->commSetNameIs(seqno(), true);
}

void OrbCommunityListEntry::EntryNotifiee::onOwnerAttribute(Orb::AttributeId attribute,
                                                            Orb::Key const&) {
  if (attribute == CommunityListEntry::version_) owner()->handleVersion();
}

}  // namespace Tessel
