// The reactors of one community list (`OrbCommunityList`) and of one of its
// entries (`OrbCommunityListEntry`).
//
// Watches: the list's entries by sequence number, and each entry's version.
// Sends: for an entry that goes, the deletes of its set as every kind, of the
// entry and of its exact twin, then a refresh of the route-map clauses that
// copied the list, with a commit. For an entry at a non-zero version (when
// its reactor is made and at every version notification), its set, the entry
// and its twin, the same refresh and a commit; an entry at version zero is
// incomplete and sends nothing. When a list reactor goes, it deletes the sets
// of the entries it has written or seen come, but not those a list reactor
// of the same name still holds (the successor of a machine being replaced).
#pragma once

#include "Acl/CommunityList.h"
#include "L3/VrfName.h"
#include "Orb/Api.h"
#include "Orb/HashMap.h"
#include "Orb/Reactor.h"

namespace Tessel {

class AclListConfigSm;
class OrbCommunityListEntry;

class ROTOR_API OrbCommunityList : public Orb::Reactor {
 public:
  OrbCommunityList(Orb::Ptr<Acl::CommunityList const> list, AclListConfigSm* owner);

  Orb::Ptr<Acl::CommunityList const> const& communityList() const noexcept { return list_; }
  Orb::Name const& name() const noexcept { return list_->name(); }
  L3::VrfName const& vrfName() const noexcept;
  AclListConfigSm* owner() const noexcept { return owner_; }

  /// Deletes entry `seqno` when the list no longer holds it; notes a present
  /// one, whose reactor writes it.
  void handleCommunityListEntry(Orb::U32 seqno);
  /// Deletes the set of every entry noted in commSetName, as every kind.
  void deleteListCommSets();

  /// The entries whose sets this reactor has written (or seen present), so
  /// that they can be deleted when the list goes. While a machine replaces
  /// another, the list reactors of both may note the same entry; the one
  /// that goes leaves the set to the other.
  Orb::HashMap<Orb::U32, bool> const& commSetName() const noexcept { return commSetName_; }
  void commSetNameIs(Orb::U32 seqno, bool present);
  void commSetNameDel(Orb::U32 seqno);
  void commSetNameDelAll();

  OrbCommunityListEntry* communityListEntry(Orb::U32 seqno) const {
    return communityListEntry_.find(seqno);
  }
  std::size_t communityListEntries() const noexcept { return communityListEntry_.size(); }
  /// Makes the reactor of `entry` unless one already watches it.
  void communityListEntryIs(Orb::Ptr<Acl::CommunityListEntry const> const& entry);
  void communityListEntryDel(Orb::U32 seqno);
  void communityListEntryDelAll();

 protected:
  /// The list is going: its entries' sets go with it.
  void handleDel() override;

 private:
  class ListNotifiee final : public Orb::ReactorNotifiee<OrbCommunityList> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<Acl::CommunityList const> list_;
  AclListConfigSm* owner_;
  ListNotifiee notifiee_;
  Orb::ReactorColl<Orb::U32, OrbCommunityListEntry> communityListEntry_{this};
  Orb::HashMap<Orb::U32, bool> commSetName_;
};

class ROTOR_API OrbCommunityListEntry : public Orb::Reactor {
 public:
  OrbCommunityListEntry(Orb::Ptr<Acl::CommunityListEntry const> entry, OrbCommunityList* owner);

  Orb::Ptr<Acl::CommunityListEntry const> const& communityListEntry() const noexcept {
    return entry_;
  }
  Orb::U32 seqno() const noexcept { return entry_->seqno(); }
  OrbCommunityList* owner() const noexcept { return owner_; }

  /// Writes the entry, unless it is still at version zero.
  void handleVersion();

 private:
  class EntryNotifiee final : public Orb::ReactorNotifiee<OrbCommunityListEntry> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<Acl::CommunityListEntry const> entry_;
  OrbCommunityList* owner_;
  EntryNotifiee notifiee_;
};

}  // namespace Tessel
